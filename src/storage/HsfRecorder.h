#pragma once
// The files of one recording: the data file found by the name search, its optional ".alt" side
// file, and the byte counts that drive the roll and the periodic close and reopen. Every write is
// one unbuffered call straight from the caller's bytes. Used on the bus thread only.

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace halvo {

class SonarMessage;

class HsfRecorder {
  public:
    // The data file is closed and reopened at its end each time this many more bytes went in,
    // so its length and contents show on disk during a long run.
    static constexpr std::uint64_t kReopenBytes = 5'000'000;
    // With no roll size set, a file still rolls once it holds more than this many millions.
    static constexpr std::uint64_t kCeilingMillions = 2000;
    static constexpr std::uint32_t kSideLinePeriodMs = 2000;

    enum class Target { Data, Side };
    enum class WriteResult { Written, Skipped, Failed };

    HsfRecorder() = default;
    ~HsfRecorder();
    HsfRecorder(const HsfRecorder&) = delete;
    HsfRecorder& operator=(const HsfRecorder&) = delete;

    // Searches a free name from 000 upward and clears the counts. With `sideFile` the ".alt"
    // companion is made by the same create-new rule; recording goes on without it if that
    // fails. False when every name was taken.
    bool Open(const std::string& base, bool sideFile);
    // Closes both files. Nothing happens without a recording.
    void Close();

    // A recording is under way. Its data handle may still be invalid after a failed reopen.
    bool IsRecording() const { return recording_; }
    bool HasDataHandle() const { return dataFd_ >= 0; }
    bool HasSideFile() const { return sideFd_ >= 0; }
    const std::string& Name() const { return name_; }
    int Number() const { return number_; }
    std::uint64_t BytesWritten() const { return bytesWritten_; }
    // Size of the data file read from its handle; -1 without one.
    std::int64_t FileSize() const;

    // The roll rule: whole millions written at or past maxMillions (when above 0), or past the
    // ceiling whatever the setting.
    static bool RollDue(std::uint64_t bytesWritten, std::int32_t maxMillions);
    bool RollDue(std::int32_t maxMillions) const { return RollDue(bytesWritten_, maxMillions); }
    // Closes and reopens the data file when kReopenBytes more went in since the last time. A
    // failed reopen leaves the handle invalid and later data writes are skipped.
    void ReopenIfDue();

    // Writes all bytes with one call. Skipped for an empty buffer or an unopened target.
    // A short or failed data write removes its partial bytes again, so the file ends on the last
    // whole message, and reports Failed; the caller closes. A failed side write closes the side
    // file alone. The count grows by the length after every attempted write, side bytes too.
    WriteResult Write(std::span<const std::uint8_t> bytes, Target target);

    // The side file line of a trace, or nothing when the trace header is incomplete.
    static std::optional<std::string> SideLine(const SonarMessage& trace);
    // A side line is due when none was written in this file yet, the tick moved back, or more
    // than kSideLinePeriodMs passed since the last.
    bool SideLineDue(std::uint32_t tick) const;
    void SideLineWritten(std::uint32_t tick);

  private:
    static void CloseFd(int& fd);

    bool recording_ = false;
    int dataFd_ = -1;
    int sideFd_ = -1;
    std::string name_;
    int number_ = -1;
    std::uint64_t bytesWritten_ = 0;
    std::uint64_t bytesAtReopen_ = 0;
    std::int64_t dataEnd_ = 0;  // where the next data write lands
    bool sideLineYet_ = false;
    std::uint32_t lastSideTick_ = 0;
};

}  // namespace halvo
