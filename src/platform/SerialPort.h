#pragma once
// One serial line on termios: opened exclusively, 8 data bits, no parity, one stop bit, raw,
// DTR and RTS raised, no flow control. Reads follow the old comm timeouts: a read returns when
// the buffer is full, when the gap after a byte exceeds the interval timeout, or when the total
// timeout runs out, whichever comes first. Nothing here knows about lines or sentences.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace halvo {

class SerialPort {
  public:
    enum class ReadStatus {
        Ok,        // `count` bytes read (possibly 0 on a timeout)
        Error,     // a read error; nothing read
        Vanished,  // the device is gone (unplugged adapter, closed pty master)
        NotOpen,
    };

    struct ReadResult {
        ReadStatus status = ReadStatus::NotOpen;
        std::size_t count = 0;
    };

    SerialPort() = default;
    ~SerialPort();
    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    // True for the speeds the line can be set to here (50 to 4000000 in the usual steps).
    static bool SupportsBaud(int baud);

    // Closes any open line, then opens `path` for reading and writing, exclusively, with the
    // given speed. A failure leaves the port closed and the reason in `error`.
    bool Open(const std::string& path, int baud, std::string& error);
    void Close();
    bool IsOpen() const { return fd_ >= 0; }

    // Gap allowed between two bytes of one read (0: no gap rule) and the whole read's limit.
    void SetReadTimeouts(int intervalMs, int totalMs);
    int IntervalTimeoutMs() const { return intervalMs_; }
    int TotalTimeoutMs() const { return totalMs_; }

    ReadResult Read(std::span<std::uint8_t> buffer);
    // Throws away whatever waits in both directions.
    void Purge();

    // Whether DTR and RTS could be raised at the last open; a pseudo-terminal has no modem lines.
    bool ModemLinesSet() const { return modemLinesSet_; }

  private:
    int fd_ = -1;
    int intervalMs_ = 0;
    int totalMs_ = 100;
    bool modemLinesSet_ = false;
};

}  // namespace halvo
