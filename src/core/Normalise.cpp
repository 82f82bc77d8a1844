#include "core/Normalise.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>

#include "core/MessageTypes.h"
#include "core/PackedSamples.h"
#include "core/TraceHeader.h"

namespace halvo {

namespace {

constexpr std::size_t kSideScanHeaderSize = 80;

bool DoubledFormat(int format) {
    return format == 1 || format == 7 || format == 9;
}
int FormatWidth(int format) {
    return (format == 7 || format == 10) ? 4 : 2;
}

std::int64_t Capped(std::int64_t expanded, std::int32_t stored) {
    return expanded > kMaxNormalisedPayload ? stored : expanded;
}

// Sample count of a type 80 header: 16 bits at 114, plus bits 8..11 of the word at 16 as 16..19.
std::int64_t TraceSamples(std::span<const std::uint8_t> p) {
    const std::uint32_t low = GetLE<std::uint16_t>(p, 114);
    const std::uint32_t high = (GetLE<std::uint16_t>(p, 16) >> 8) & 0x0Fu;
    return static_cast<std::int64_t>(low | (high << 16));
}

// Unpacks `values` values of `width` bytes. The plain copy of code 0 is counted in 16-bit words,
// so for 4-byte formats it is told twice as many to move the same bytes.
void UnpackValues(std::span<std::uint8_t> target, std::span<const std::uint8_t> source,
                  std::int64_t values, int width, int code) {
    if (values <= 0) return;
    std::size_t count = static_cast<std::size_t>(values);
    if (code == 0 && width == 4) count *= 2;
    Unpack(target, source, count, code);
}

std::span<const std::uint8_t> From(std::span<const std::uint8_t> p, std::size_t offset) {
    return offset <= p.size() ? p.subspan(offset) : std::span<const std::uint8_t>{};
}
std::span<std::uint8_t> From(std::span<std::uint8_t> p, std::size_t offset) {
    return offset <= p.size() ? p.subspan(offset) : std::span<std::uint8_t>{};
}

void CopyField16(std::span<std::uint8_t> dst, std::size_t d, std::span<const std::uint8_t> src,
                 std::size_t s) {
    PutLE<std::uint16_t>(dst, d, GetLE<std::uint16_t>(src, s));
}
void CopyField32(std::span<std::uint8_t> dst, std::size_t d, std::span<const std::uint8_t> src,
                 std::size_t s) {
    PutLE<std::uint32_t>(dst, d, GetLE<std::uint32_t>(src, s));
}

struct CompactHeader {
    std::uint32_t w0, w1, w2, w3;
    int format() const { return static_cast<int>((w1 >> 24) & 7u); }
    int code() const { return static_cast<int>(w1 >> 27); }
    std::int16_t gainExponent() const { return static_cast<std::int8_t>((w1 >> 16) & 0xFFu); }
};

CompactHeader ReadCompact(std::span<const std::uint8_t> p) {
    return {GetLE<std::uint32_t>(p, 0), GetLE<std::uint32_t>(p, 4), GetLE<std::uint32_t>(p, 8),
            GetLE<std::uint32_t>(p, 12)};
}

void ExpandCompactTrace(std::span<const std::uint8_t> src, std::span<std::uint8_t> dst,
                        std::int32_t newSize, std::int64_t utcSeconds) {
    const CompactHeader c = ReadCompact(src);
    std::fill_n(dst.begin(), std::min(dst.size(), kTraceHeaderSize), std::uint8_t{0});
    PutLE<std::uint16_t>(dst, 8, static_cast<std::uint16_t>(c.w0));
    PutLE<std::uint16_t>(dst, 4, static_cast<std::uint16_t>(c.w0 >> 16));
    PutLE<std::uint16_t>(dst, 204, static_cast<std::uint16_t>(c.w1));
    PutLE<std::int16_t>(dst, 168, c.gainExponent());
    PutLE<std::uint16_t>(dst, 34, static_cast<std::uint16_t>(c.format()));
    PutLE<std::uint32_t>(dst, 116, c.w2);
    PutLE<std::uint32_t>(dst, 200, c.w3 & 0xFFFFu);
    // The weighting reaches 2^(255/16), about 62,800, but the gain field is a signed 16-bit word:
    // codes above 239 are held to its top rather than wrapped to a negative gain.
    const double n = static_cast<double>((c.w3 >> 16) & 0xFFu);
    const double weight = std::min(std::pow(2.0, n / 16.0) + 0.5, 32767.0);
    PutLE<std::int16_t>(dst, 120, static_cast<std::int16_t>(weight));

    const UtcCalendar t = BreakDownUtc(utcSeconds);
    PutLE<std::int16_t>(dst, 156, static_cast<std::int16_t>(t.year));
    PutLE<std::int16_t>(dst, 158, static_cast<std::int16_t>(t.dayOfYear));
    PutLE<std::int16_t>(dst, 160, static_cast<std::int16_t>(t.hour));
    PutLE<std::int16_t>(dst, 162, static_cast<std::int16_t>(t.minute));
    PutLE<std::int16_t>(dst, 164, static_cast<std::int16_t>(t.second));

    const int format = c.format();
    std::int64_t samples = (static_cast<std::int64_t>(newSize) - 240) / 2;
    if (format == 1 || format == 9) samples /= 2;
    if (samples < 0) samples = 0;
    PutLE<std::uint16_t>(dst, 114, static_cast<std::uint16_t>(samples & 0xFFFF));
    const std::uint16_t msb = GetLE<std::uint16_t>(dst, 16);
    PutLE<std::uint16_t>(dst, 16,
                         static_cast<std::uint16_t>((msb & ~0x0F00u) | ((samples >> 8) & 0x0F00)));
    const std::int64_t values = (format == 1 || format == 9) ? samples * 2 : samples;
    UnpackValues(From(dst, kTraceHeaderSize), From(src, 16), values, 2, c.code());
}

void ExpandCompactSideScan(std::span<const std::uint8_t> src, std::span<std::uint8_t> dst,
                           std::int32_t newSize, std::uint8_t subsystem, std::uint8_t channel,
                           std::int64_t utcSeconds) {
    const CompactHeader c = ReadCompact(src);
    std::fill_n(dst.begin(), std::min(dst.size(), kSideScanHeaderSize), std::uint8_t{0});
    PutLE<std::uint16_t>(dst, 0, subsystem);
    PutLE<std::uint16_t>(dst, 2, channel);
    PutLE<std::uint16_t>(dst, 4, static_cast<std::uint16_t>(c.w0));
    PutLE<std::uint16_t>(dst, 20, static_cast<std::uint16_t>(c.w0 >> 16));
    PutLE<std::uint16_t>(dst, 28, static_cast<std::uint16_t>(c.w1));
    PutLE<std::int16_t>(dst, 24, c.gainExponent());
    PutLE<std::uint16_t>(dst, 36, static_cast<std::uint16_t>(c.format()));
    PutLE<std::uint32_t>(dst, 16, c.w2);
    const std::uint32_t ms = c.w3 & 0xFFFFu;
    PutLE<std::uint32_t>(dst, 40, ms);

    const UtcCalendar t = BreakDownUtc(utcSeconds);
    PutLE<std::int16_t>(dst, 44, static_cast<std::int16_t>(t.year));
    PutLE<std::int16_t>(dst, 46, static_cast<std::int16_t>(t.dayOfYear));
    PutLE<std::int16_t>(dst, 48, static_cast<std::int16_t>(ms / 3600000u));
    PutLE<std::int16_t>(dst, 50, static_cast<std::int16_t>((ms / 60000u) % 60u));
    PutLE<std::int16_t>(dst, 52, static_cast<std::int16_t>((ms / 1000u) % 60u));

    const int format = c.format();
    std::int64_t samples = (static_cast<std::int64_t>(newSize) - 80) / 2;
    if (format == 1 || format == 9) samples /= 2;
    if (samples < 0) samples = 0;
    PutLE<std::uint32_t>(dst, 12, static_cast<std::uint32_t>(samples));
    const std::int64_t values = (format == 1 || format == 9) ? samples * 2 : samples;
    UnpackValues(From(dst, kSideScanHeaderSize), From(src, 16), values, 2, c.code());
}

// Maps the older 80-byte side-scan header onto the trace header: {82 offset, 80 offset, kind}.
enum class Map : std::uint8_t { U16, U32, U16ToU32, U8ToU16 };
struct MapEntry {
    std::uint8_t from;
    std::uint8_t to;
    Map kind;
};
constexpr MapEntry kSideScanMap[] = {
    {2, 12, Map::U16ToU32}, {4, 8, Map::U32},    {8, 220, Map::U16},      {10, 182, Map::U16},
    {12, 114, Map::U16},    {16, 116, Map::U32}, {20, 4, Map::U32},       {24, 168, Map::U16},
    {26, 120, Map::U16},    {28, 204, Map::U16}, {30, 130, Map::U16},     {32, 142, Map::U16},
    {34, 184, Map::U16},    {36, 34, Map::U16},  {38, 170, Map::U8ToU16}, {40, 200, Map::U32},
    {44, 156, Map::U16},    {46, 158, Map::U16}, {48, 160, Map::U16},     {50, 162, Map::U16},
    {52, 164, Map::U16},    {56, 174, Map::U16}, {58, 176, Map::U16},     {60, 180, Map::U16},
};

SonarMessage SideScanToTrace(const SonarMessage& m) {
    const auto src = m.Payload();
    const std::int32_t count = GetLE<std::int32_t>(src, 12);
    if (count < 1) return {};
    const int format = GetLE<std::uint16_t>(src, 36) & 0xFF;
    const std::int64_t values = (format == 1 || format == 9) ? std::int64_t{count} * 2 : count;
    const std::int64_t size = 240 + 2 * values;
    if (size > kMaxNormalisedPayload) return {};
    SonarMessage out = SonarMessage::Allocate(static_cast<std::size_t>(size));
    if (!out) return {};
    std::memcpy(out.Block().data(), m.Block().data(), 12);
    out.set_type(MsgTrace);
    out.set_size(static_cast<std::int32_t>(size));
    auto dst = out.Payload();
    for (const MapEntry& e : kSideScanMap) {
        switch (e.kind) {
            case Map::U16:
                CopyField16(dst, e.to, src, e.from);
                break;
            case Map::U32:
                CopyField32(dst, e.to, src, e.from);
                break;
            case Map::U16ToU32:
                PutLE<std::uint32_t>(dst, e.to, GetLE<std::uint16_t>(src, e.from));
                break;
            case Map::U8ToU16:
                PutLE<std::uint16_t>(dst, e.to, GetLE<std::uint8_t>(src, e.from));
                break;
        }
    }
    const auto samples = From(src, kSideScanHeaderSize);
    const std::size_t bytes =
        std::min<std::size_t>(static_cast<std::size_t>(2 * values), samples.size());
    if (bytes > 0) std::memcpy(dst.data() + kTraceHeaderSize, samples.data(), bytes);
    return out;
}

}  // namespace

UtcCalendar BreakDownUtc(std::int64_t utcSeconds) {
    std::tm tm{};
    const std::time_t t = static_cast<std::time_t>(utcSeconds);
    if (static_cast<std::int64_t>(t) != utcSeconds || gmtime_r(&t, &tm) == nullptr ||
        tm.tm_year + 1900 > 32767 || tm.tm_year + 1900 < 0) {
        const std::time_t fallback = 86400;
        gmtime_r(&fallback, &tm);
    }
    return UtcCalendar{tm.tm_year + 1900, tm.tm_yday + 1, tm.tm_hour, tm.tm_min, tm.tm_sec};
}

std::int64_t ExpandedSize(const SonarMessage& m) {
    const std::int32_t size = m.size();
    if (size < 0) return size;
    const auto p = m.Payload();
    switch (m.type()) {
        case MsgTrace: {
            if (p.size() < kTraceHeaderSize) return size;
            const std::uint16_t word = GetLE<std::uint16_t>(p, 34);
            if ((word >> 8) == 0) return size;
            const int format = word & 0xFF;
            const std::int64_t samples = TraceSamples(p);
            const std::int64_t values = DoubledFormat(format) ? samples * 2 : samples;
            return Capped(240 + values * FormatWidth(format), size);
        }
        case MsgSideScanTrace: {
            if (p.size() < kSideScanHeaderSize) return size;
            const std::int64_t samples = GetLE<std::uint32_t>(p, 12);
            const int format = GetLE<std::uint16_t>(p, 36) & 0xFF;
            const std::int64_t values = DoubledFormat(format) ? samples * 2 : samples;
            return Capped(80 + values * FormatWidth(format), size);
        }
        case MsgCompactTrace:
        case MsgCompactSideScanTrace: {
            if (p.size() < 16) return size;
            const double ratio = PackingRatio(ReadCompact(p).code());
            const std::int64_t base = m.type() == MsgCompactTrace ? 240 : 80;
            if (ratio > 1.1) {
                return Capped(base + static_cast<std::int64_t>((size - 16) * ratio + 0.1), size);
            }
            return Capped(base - 16 + size, size);
        }
        default:
            return size;
    }
}

bool NeedsExpansion(const SonarMessage& m) {
    return ExpandedSize(m) != m.size();
}

bool Expand(const SonarMessage& source, SonarMessage& target, std::int64_t utcSeconds) {
    const std::int32_t size = source.size();
    const std::int64_t expanded = ExpandedSize(source);
    const std::int64_t room =
        std::max<std::int64_t>(expanded, static_cast<std::int64_t>(source.Payload().size()));
    if (!target || static_cast<std::int64_t>(target.BlockSize()) < 16 + room) return false;

    std::memcpy(target.Block().data(), source.Block().data(), kMessageHeaderSize);
    const auto src = source.Payload();
    if (expanded <= size) {
        if (!src.empty())
            std::memcpy(target.Block().data() + kMessageHeaderSize, src.data(), src.size());
        return true;
    }
    target.set_size(static_cast<std::int32_t>(expanded));
    auto dst = target.Payload();
    switch (source.type()) {
        case MsgTrace: {
            std::memcpy(dst.data(), src.data(), kTraceHeaderSize);
            const std::uint16_t word = GetLE<std::uint16_t>(src, 34);
            const int format = word & 0xFF;
            PutLE<std::uint16_t>(dst, 34, static_cast<std::uint16_t>(format));
            const std::int64_t samples = TraceSamples(src);
            const std::int64_t values = DoubledFormat(format) ? samples * 2 : samples;
            UnpackValues(From(dst, kTraceHeaderSize), From(src, kTraceHeaderSize), values,
                         FormatWidth(format), word >> 8);
            break;
        }
        case MsgSideScanTrace: {
            std::memcpy(dst.data(), src.data(), kSideScanHeaderSize);
            const std::uint16_t word = GetLE<std::uint16_t>(src, 36);
            const int format = word & 0xFF;
            PutLE<std::uint16_t>(dst, 36, static_cast<std::uint16_t>(format));
            const std::int64_t count = GetLE<std::uint32_t>(src, 12);
            const std::int64_t values = DoubledFormat(format) ? count * 2 : count;
            UnpackValues(From(dst, kSideScanHeaderSize), From(src, kSideScanHeaderSize), values,
                         FormatWidth(format), word >> 8);
            break;
        }
        case MsgCompactTrace:
            target.set_type(MsgTrace);
            ExpandCompactTrace(src, dst, static_cast<std::int32_t>(expanded), utcSeconds);
            break;
        case MsgCompactSideScanTrace:
            target.set_type(MsgSideScanTrace);
            ExpandCompactSideScan(src, dst, static_cast<std::int32_t>(expanded), source.subsystem(),
                                  source.channel(), utcSeconds);
            break;
        default:
            break;
    }
    return true;
}

SonarMessage Normalise(const SonarMessage& message, const UtcSecondsFn& utcNow) {
    SonarMessage expanded;
    if (NeedsExpansion(message)) {
        // Room for the expansion, or for the bytes actually held when a message is copied whole:
        // never for a size the header merely claims.
        const std::int64_t room = std::max<std::int64_t>(
            ExpandedSize(message), static_cast<std::int64_t>(message.Payload().size()));
        expanded = SonarMessage::Allocate(static_cast<std::size_t>(room));
        if (expanded) {
            const std::int64_t now =
                (message.type() == MsgCompactTrace || message.type() == MsgCompactSideScanTrace) &&
                        utcNow
                    ? utcNow()
                    : 0;
            Expand(message, expanded, now);
        }
    }
    const SonarMessage& current = expanded ? expanded : message;
    if (current.type() == MsgSideScanTrace) {
        SonarMessage trace = SideScanToTrace(current);
        if (trace) return trace;
    }
    return expanded;
}

}  // namespace halvo
