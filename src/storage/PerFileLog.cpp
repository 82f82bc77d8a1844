#include "storage/PerFileLog.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>

#include "app/EventLog.h"
#include "app/Notifier.h"
#include "storage/LoggingControl.h"

namespace halvo {

namespace {

void Append(std::string& out, const char* format, ...) __attribute__((format(printf, 2, 3)));
void Append(std::string& out, const char* format, ...) {
    char buffer[512];
    va_list args;
    va_start(args, format);
    const int n = std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    if (n > 0)
        out.append(buffer, std::min<std::size_t>(static_cast<std::size_t>(n), sizeof buffer - 1));
}

const char* DataTypeWord(int dataType) {
    switch (dataType) {
        case 0:
            return "Envelope ";
        case 1:
            return "Complex ";
        case 2:
            return "RAW ";
        default:
            return nullptr;
    }
}

}  // namespace

PerFileLog::PerFileLog(PerFileLogSources sources, LoggingControl* logging, Notifier* notifier,
                       EventLog* events)
    : sources_(std::move(sources)), logging_(logging), notifier_(notifier), events_(events) {}

std::string PerFileLog::LogName(const std::string& dataName) {
    std::string name = dataName;
    if (name.size() > 3 && name.compare(name.size() - 4, 4, ".hsf") == 0) {
        name.replace(name.size() - 4, 4, ".txt");
    }
    return name;
}

std::string PerFileLog::TimeText(const TimeValue& time) {
    const std::time_t t = time.seconds;
    std::tm tm{};
    if (!::gmtime_r(&t, &tm)) return "0000/00/00 00:00:00";
    std::string out;
    Append(out, "%04d/%02d/%02d %02d:%02d:%02d", tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday,
           tm.tm_hour, tm.tm_min, tm.tm_sec);
    return out;
}

std::string PerFileLog::SonarText(const SonarSnapshot& s) {
    std::string out;
    Append(out, "Sonar%d : ", s.index);
    if (s.firstChannel < 63) {
        Append(out, "On %d PingNum %d ADCRate %f DataType ", s.on, s.pingNumber, s.adcRate);
        if (const char* word = DataTypeWord(s.dataType)) {
            out += word;
        } else {
            Append(out, "%d ", s.dataType);
        }
        if (s.rangeMode) {
            Append(out, "Range %7.2f M", s.rateOrRange);
        } else {
            Append(out, "Rate %7.2f pps ", s.rateOrRange);
        }
        Append(out, "Trigger %d ", s.trigger);
        Append(out, "\n   ADC : Delay %2.0f Depth %2.0f Decimation %d %d Mux %x Gain ", s.delay,
               s.depth, s.decimationPre, s.decimationPost, s.mux);
        for (std::size_t i = 0; i < s.gains.size() && i < kMaxChannelsShown; ++i) {
            const ChannelGainSnapshot& g = s.gains[i];
            if (g.automatic) {
                out += "AGC=>";
            } else {
                Append(out, "%2.0f=>", g.manualGain);
            }
            Append(out, "%d ", g.measuredGain);
        }
        out += "\n   DAC : ";
        Append(out, "DACGain %7.1f of", s.dacGain);
        for (std::size_t i = 0; i < s.dac.size() && i < kMaxChannelsShown; ++i) {
            Append(out, "%7.1f ", s.dac[i]);
        }
        Append(out, "Pulse %s ", s.pulse.c_str());
    }
    out += "\n";
    return out;
}

void PerFileLog::Line(const std::string& text) {
    if (events_) events_->Add(text);
}

void PerFileLog::Opened(const std::string& dataName, std::uint32_t tick) {
    Line("RECORD : New File: " + dataName);
    name_.clear();
    held_ = 0;
    if (!logging_) return;
    int count = 0;
    const LoggingSettings settings = logging_->getSettings(count);
    if (!settings.PerFileLog()) return;
    const std::string name = LogName(dataName);
    // A log left behind by a deleted data file of the same number belongs to nothing now.
    std::FILE* f = std::fopen(name.c_str(), "w");
    if (!f) return;
    const TimeValue now = sources_.now ? sources_.now() : TimeValue{};
    std::fprintf(f, "Log File %s Created On %s\n", name.c_str(), TimeText(now).c_str());
    std::fclose(f);
    name_ = name;
    Snapshot(tick);
}

void PerFileLog::Activity(std::uint32_t tick) {
    if (name_.empty()) return;
    const std::int32_t mark = sources_.markNumber ? sources_.markNumber() : 0;
    const int parameters = sources_.parameterChanges ? sources_.parameterChanges() : 0;
    const int logging = logging_ ? logging_->ChangeCount() : 0;
    const bool changed =
        mark != lastMark_ || parameters != lastParameters_ || logging != lastLogging_;
    if (!changed && held_ == 0) return;
    // Unsigned: a tick that went backward counts as long past and lets one through.
    if (tick - lastTick_ < kHoldBackMs) {
        if (changed) {
            ++held_;
            lastMark_ = mark;
            lastParameters_ = parameters;
            lastLogging_ = logging;
        }
        return;
    }
    Snapshot(tick);
}

void PerFileLog::Closed(std::uint32_t tick) {
    if (name_.size() > 4) Snapshot(tick);
    name_.clear();
    held_ = 0;
    Line("RECORD : File Closed");
}

void PerFileLog::Snapshot(std::uint32_t tick) {
    int count = 0;
    const LoggingSettings settings = logging_ ? logging_->getSettings(count) : LoggingSettings{};
    lastTick_ = tick;
    lastMark_ = sources_.markNumber ? sources_.markNumber() : 0;
    lastParameters_ = sources_.parameterChanges ? sources_.parameterChanges() : 0;
    lastLogging_ = count;
    held_ = 0;
    if (!anySnapshotYet_) {
        anySnapshotYet_ = true;
        if (settings.CommentsBlank() && notifier_) notifier_->Notify(kBlankTitle, kBlankText);
    }
    std::FILE* f = std::fopen(name_.c_str(), "a");
    if (!f) return;  // skipped without a report
    const std::string text = SnapshotText(settings);
    std::fwrite(text.data(), 1, text.size(), f);
    std::fclose(f);
    ++snapshots_;
}

std::string PerFileLog::SnapshotText(const LoggingSettings& settings) const {
    std::string out;
    for (const std::string* c : {&settings.commentLine1, &settings.commentLine2}) {
        if (!c->empty()) Append(out, "=======: %s\n", c->c_str());
    }
    const GpsSnapshot gps = sources_.gps ? sources_.gps() : GpsSnapshot{};
    Append(out, "GPS    : %s %s %s Mark %d\n", gps.time.c_str(), gps.position.c_str(),
           gps.speed.c_str(), gps.markNumber);
    if (sources_.sonars) {
        for (const SonarSnapshot& s : sources_.sonars()) out += SonarText(s);
    }
    const SensorSnapshot sensors = sources_.sensors ? sources_.sensors() : SensorSnapshot{};
    Append(out, "Sensors: %s Depth %7.2f Pressure %7.2f\n", sensors.attitude.c_str(),
           sensors.depthM, sensors.pressurePsi);
    out += "\n";
    return out;
}

}  // namespace halvo
