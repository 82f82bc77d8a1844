#include "storage/MessageLogLines.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "core/SensorPayloads.h"
#include "core/SonarMessage.h"
#include "storage/LoggingSettings.h"

namespace halvo {

namespace {

using Bytes = std::span<const std::uint8_t>;

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
    char buffer[256];
    va_list args;
    va_start(args, format);
    const int n = std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    if (n <= 0) return {};
    return std::string(buffer,
                       std::min<std::size_t>(static_cast<std::size_t>(n), sizeof buffer - 1));
}

// The flag bit that a type needs besides the stream's master switch; 0 for every other type.
std::int32_t TypeBit(std::uint16_t type) {
    switch (type) {
        case MsgPressure:
            return LoggingSettings::kPressure;
        case MsgPitchRoll:
            return LoggingSettings::kPitchRoll;
        case MsgTrace:
        case MsgSideScanTrace:
            return LoggingSettings::kSonarMsg;
        case MsgAnalog:
            return LoggingSettings::kLowADC;
        case MsgNmea:
            return LoggingSettings::kNmea;
        case MsgSerial:
            return LoggingSettings::kSerial;
        default:
            return 0;
    }
}

// Text from a payload up to its first zero byte, with control bytes shown as '?'.
std::string Text(Bytes bytes) {
    std::string out;
    for (std::uint8_t b : bytes) {
        if (b == 0) break;
        out.push_back(b < 32 || b == 127 ? '?' : static_cast<char>(b));
    }
    return out;
}

double Double(Bytes p, std::size_t offset) {
    return GetLE<double>(p, offset);
}

}  // namespace

bool MessageLogLines::Wanted(std::uint16_t type, std::uint8_t direction, LogStream stream,
                             std::int32_t flags) {
    if (stream == LogStream::Data) {
        if ((flags & LoggingSettings::kDataSock) == 0) return false;
    } else {
        if ((flags & LoggingSettings::kCmdSock) == 0 || direction == DirQuery) return false;
    }
    const std::int32_t bit = TypeBit(type);
    return bit == 0 || (flags & bit) != 0;
}

std::string MessageLogLines::HeaderLine(const SonarMessage& m, LogStream stream) {
    const char* prefix = stream == LogStream::Data ? "SONRDAT" : "SONRCMD";
    return Format("%s : Cmd %d Dir %d Sub %d Chan %d Bytes = %d", prefix, m.type(), m.direction(),
                  m.subsystem(), m.channel(), m.size()) +
           Label(m);
}

std::string MessageLogLines::Label(const SonarMessage& m) {
    const Bytes p = m.Payload();
    switch (m.type()) {
        case MsgTrace:
            if (p.size() < 12) return {};
            return Format(" [Segy Data Ping %d]", GetLE<std::int32_t>(p, 8));
        case MsgSideScanTrace:
            if (p.size() < 8) return {};
            return Format(" [SS Data Ping %d]", GetLE<std::int32_t>(p, 4));
        case MsgSonarOn:
            // Only a set carries the value.
            if (m.direction() != DirSet || p.size() < 4) return {};
            return Format(" [SonarOn %d]", GetLE<std::int32_t>(p, 0));
        case MsgPulseName:
            return " [Pulse " + Text(p) + "]";
        case MsgSituation:
            if (p.size() < 76) return {};
            return Format(" [SIT %4.1f %4.1f %4.1f]", Double(p, 60), Double(p, 68), Double(p, 52));
        default:
            return std::string(MessageLogLabel(m.type()));
    }
}

std::optional<std::string> MessageLogLines::VerboseLine(const SonarMessage& m) {
    const Bytes p = m.Payload();
    const auto i16 = [&](std::size_t off) { return static_cast<int>(GetLE<std::int16_t>(p, off)); };
    const auto i32 = [&](std::size_t off) { return GetLE<std::int32_t>(p, off); };
    switch (m.type()) {
        case MsgContainerTime:
            if (p.size() < 8) return std::nullopt;
            return Format("Time %d %d", i32(0), i32(4));
        case MsgSerial: {
            if (p.size() < 12) return std::nullopt;
            std::string out;
            for (std::size_t i = 12; i < p.size() && out.size() < kSerialBytesShown; ++i) {
                const std::uint8_t b = p[i];
                out.push_back(static_cast<char>(b < 26 || b == 127 ? 127 : b));
            }
            return out;
        }
        case MsgNmea:
            if (p.size() < 12) return std::nullopt;
            return Text(p.subspan(12));
        case MsgPitchRoll:
            if (p.size() < 40) return std::nullopt;
            return Format("Pitch %.2f Roll %.2f Heave %d Heading %.2f Flags %X",
                          i16(24) * 180.0 / 32768.0, i16(26) * 180.0 / 32768.0, i16(32),
                          GetLE<std::uint16_t>(p, 34) / 100.0, GetLE<std::uint32_t>(p, 36));
        case MsgAnalog:
            if (p.size() < 36) return std::nullopt;
            return Format("AIO %d %d %d %d %d %d %d %d", i16(12), i16(14), i16(16), i16(18),
                          i16(20), i16(22), i16(24), i16(26));
        case MsgPressure:
            if (p.size() < 40) return std::nullopt;
            return Format("PSI %.3f Temp %.3f SAL %.3f CON %.3f SV %.3f Depth %.3f Flags %X",
                          i32(12) / 1000.0, i32(16) / 1000.0, i32(20) / 1000.0, i32(28) / 1000.0,
                          i32(32) / 1000.0, i32(36) / 1000.0, GetLE<std::uint32_t>(p, 24));
        case MsgAltitude:
            if (p.size() < 20) return std::nullopt;
            return Format("Altitude %d Flags %X", i32(16), GetLE<std::uint32_t>(p, 12));
        case MsgDvl: {
            const std::optional<DvlReading> d = ReadDvl(p);
            if (!d) return std::nullopt;
            return Format(" DVL V=(%d %d %d) T=%d P=%d R=%d C=%d A=(%d %d %d %d)", d->velocity[0],
                          d->velocity[1], d->velocity[2], d->temperature, d->pitch, d->roll,
                          d->compass, d->beamRange[0], d->beamRange[1], d->beamRange[2],
                          d->beamRange[3]);
        }
        case MsgSituation:
            if (p.size() < 124) return std::nullopt;
            return Format("SIT vel:%f %f %f pos:%f %f %f", Double(p, 100), Double(p, 108),
                          Double(p, 116), Double(p, 76), Double(p, 84), Double(p, 92));
        default:
            return std::nullopt;
    }
}

std::vector<std::string> MessageLogLines::Lines(const SonarMessage& m, LogStream stream,
                                                std::int32_t flags) {
    std::vector<std::string> out;
    if (!Wanted(m.type(), m.direction(), stream, flags)) return out;
    out.push_back(HeaderLine(m, stream));
    if ((flags & LoggingSettings::kVerbose) != 0) {
        if (std::optional<std::string> v = VerboseLine(m)) out.push_back(std::move(*v));
    }
    return out;
}

}  // namespace halvo
