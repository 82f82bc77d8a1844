#include "halvo-hsf/FileSummary.h"

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "core/SonarMessage.h"
#include "halvo-hsf/Progress.h"

namespace halvo::hsf {

namespace {

// Seconds since 1970 of a calendar date given as year and day of the year.
std::int64_t SecondsOf(int year, int dayOfYear, int hour, int minute, int second) {
    std::int64_t y = year - 1;
    const std::int64_t days = 365 * (y - 1969) + (y / 4 - 492) - (y / 100 - 19) + (y / 400 - 4);
    return (days + dayOfYear - 1) * 86400 + hour * 3600 + minute * 60 + second;
}

}  // namespace

void FileSummary::Add(std::span<const std::uint8_t> record) {
    MessageHeader h;
    if (!MessageHeader::Read(record, h)) return;
    const auto p = record.subspan(kMessageHeaderSize);
    ++records;
    recordBytes += record.size();
    ++byTypeDirection[{h.type, h.direction}];
    ChannelSummary& ch = channels[{h.subsystem, h.channel}];
    ++ch.records;

    bool trace = false;
    std::int64_t ping = 0;
    bool havePing = false;
    int format = -1;
    int code = 0;
    std::int64_t sampleCount = -1;
    switch (h.type) {
        case MsgTrace: {
            if (p.size() < 240) break;
            trace = true;
            const std::uint16_t word = GetLE<std::uint16_t>(p, 34);
            format = word & 0xFF;
            code = word >> 8;
            sampleCount = GetLE<std::uint16_t>(p, 114);
            if (code != 0)
                sampleCount += std::int64_t((GetLE<std::uint16_t>(p, 16) >> 8) & 0xF) << 16;
            ping = GetLE<std::int32_t>(p, 8);
            havePing = true;
            const std::int32_t t = GetLE<std::int32_t>(p, 0);
            if (t != 0) seconds.Add(t);
            break;
        }
        case MsgSideScanTrace: {
            if (p.size() < 80) break;
            trace = true;
            const std::uint16_t word = GetLE<std::uint16_t>(p, 36);
            format = word & 0xFF;
            code = word >> 8;
            sampleCount = GetLE<std::int32_t>(p, 12);
            ping = GetLE<std::int32_t>(p, 4);
            havePing = true;
            const int year = GetLE<std::int16_t>(p, 44);
            if (year > 1970) {
                seconds.Add(SecondsOf(year, GetLE<std::int16_t>(p, 46), GetLE<std::int16_t>(p, 48),
                                      GetLE<std::int16_t>(p, 50), GetLE<std::int16_t>(p, 52)));
            }
            break;
        }
        case MsgCompactTrace:
        case MsgCompactSideScanTrace: {
            if (p.size() < 16) break;
            trace = true;
            const std::uint32_t w1 = GetLE<std::uint32_t>(p, 4);
            format = static_cast<int>((w1 >> 24) & 7);
            code = static_cast<int>(w1 >> 27);
            break;
        }
        default:
            break;
    }
    if (!trace) return;
    ++ch.traces;
    if (havePing) {
        ch.pings.Add(ping);
        pings.Add(ping);
    }
    FormatSummary& f = formats[format];
    ++f.traces;
    if (sampleCount >= 0) {
        f.samples.Add(sampleCount);
        f.totalSamples += static_cast<std::uint64_t>(sampleCount);
    }
    if (code != 0) ++packed[{h.type, code}];
}

FileSummary Summarise(const std::string& file) {
    FileSummary s;
    s.file = file;
    HsfReader reader;
    if (!reader.Open(file)) {
        s.openError = reader.Error();
        return s;
    }
    s.opened = true;
    s.size = reader.FileSize();
    Progress progress(file, s.size);
    for (;;) {
        std::span<const std::uint8_t> record;
        const ReadStatus status = reader.NextView(record);
        s.layout = reader.Layout();
        if (status == ReadStatus::Record) {
            s.Add(record);
            progress.Update(reader.Position());
            continue;
        }
        if (status == ReadStatus::Deferred) {
            if (s.skipped++ == 0) s.firstSkipOffset = reader.RecordOffset();
            continue;
        }
        s.end = status;
        s.endText = reader.Error();
        s.endOffset = reader.RecordOffset();
        return s;
    }
}

}  // namespace halvo::hsf
