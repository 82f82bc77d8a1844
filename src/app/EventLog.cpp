#include "app/EventLog.h"

#include <cstdarg>
#include <cstdio>

#include "app/ProgramClock.h"

namespace halvo {

EventLog::EventLog(NowFn now, std::size_t capacity)
    : now_(std::move(now)), capacity_(capacity == 0 ? 1 : capacity) {}

EventLog::EventLog(ProgramClock& clock, std::size_t capacity)
    : EventLog([&clock] { return clock.Now(); }, capacity) {}

std::string EventLog::TimePrefix(const TimeValue& time) {
    std::int64_t secs = time.seconds;
    std::int64_t ofDay = ((secs % 86400) + 86400) % 86400;
    char buf[16];
    std::snprintf(buf, sizeof buf, "%02d:%02d:%02d  ", static_cast<int>(ofDay / 3600),
                  static_cast<int>(ofDay / 60 % 60), static_cast<int>(ofDay % 60));
    return buf;
}

void EventLog::Add(std::string_view text) {
    if (text.size() > kMaxText) text = text.substr(0, kMaxText);
    Line line;
    line.text = TimePrefix(now_ ? now_() : TimeValue{});
    line.text.append(text);
    std::function<void(const Line&)> listener;
    {
        std::lock_guard lock(mutex_);
        line.sequence = ++sequence_;
        lines_.push_back(line);
        while (lines_.size() > capacity_) lines_.pop_front();
        listener = listener_;
    }
    if (listener) listener(line);
}

void EventLog::Addf(const char* format, ...) {
    char buf[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buf, sizeof buf, format, args);
    va_end(args);
    Add(buf);
}

std::vector<EventLog::Line> EventLog::Since(std::uint64_t after) const {
    std::lock_guard lock(mutex_);
    std::vector<Line> out;
    for (const Line& line : lines_)
        if (line.sequence > after) out.push_back(line);
    return out;
}

std::vector<std::string> EventLog::Lines() const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> out;
    out.reserve(lines_.size());
    for (const Line& line : lines_) out.push_back(line.text);
    return out;
}

std::uint64_t EventLog::LastSequence() const {
    std::lock_guard lock(mutex_);
    return sequence_;
}

void EventLog::Clear() {
    std::lock_guard lock(mutex_);
    lines_.clear();
}

void EventLog::SetListener(std::function<void(const Line&)> listener) {
    std::lock_guard lock(mutex_);
    listener_ = std::move(listener);
}

}  // namespace halvo
