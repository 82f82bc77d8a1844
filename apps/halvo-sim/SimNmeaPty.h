#pragma once
// NMEA on a serial line: a pseudo-terminal whose other end a topside opens like a port. Once a
// second the five sentences go out, paced as the chosen baud rate would carry them.

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "core/TimeValue.h"

namespace halvo {

class SimNmeaPty {
  public:
    using NowFn = std::function<TimeValue()>;
    SimNmeaPty(int baud, NowFn now) : baud_(baud), now_(std::move(now)) {}
    ~SimNmeaPty();
    SimNmeaPty(const SimNmeaPty&) = delete;
    SimNmeaPty& operator=(const SimNmeaPty&) = delete;

    bool Start(std::string& error);
    void Stop();
    const std::string& slavePath() const { return slavePath_; }
    std::uint64_t sentences() const { return sentences_.load(); }

  private:
    void Run();

    int baud_;
    NowFn now_;
    int master_ = -1;
    std::string slavePath_;
    std::atomic<bool> stop_{false};
    std::atomic<std::uint64_t> sentences_{0};
    std::thread thread_;
};

}  // namespace halvo
