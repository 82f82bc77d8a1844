#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "storage/HsfReader.h"
#include "storage/HsfTestWriter.h"

namespace halvo {
namespace {

struct Outcome {
    int records = 0;
    ReadStatus end = ReadStatus::Closed;
    bool openAfter = false;
    std::int64_t endOffset = -1;
};

Outcome ReadAll(const std::vector<std::uint8_t>& bytes, bool views = false) {
    HsfReader r;
    r.Attach(std::make_unique<MemorySource>(bytes));
    Outcome o;
    SonarMessage m;
    std::span<const std::uint8_t> v;
    while ((o.end = views ? r.NextView(v) : r.Next(m)) == ReadStatus::Record && o.records < 1000)
        ++o.records;
    o.openAfter = r.IsOpen();
    o.endOffset = r.RecordOffset();
    return o;
}

SonarMessage Trace(std::int32_t ping, std::uint16_t samples = 16, std::int16_t format = 0,
                   std::int32_t interval = 40000, std::uint8_t channel = 0) {
    TraceSpec s;
    s.ping = ping;
    s.samples = samples;
    s.format = format;
    s.sampleIntervalNs = interval;
    s.channel = channel;
    return HsfTestWriter::MakeTrace(s);
}

struct FailureCase {
    const char* name;
    std::vector<std::uint8_t> bytes;
    int records;
    ReadStatus end;
    std::int64_t endOffset;
};

// Both layouts, read whole and as views: how many records, how reading ended and where.
TEST(HsfReader, FailureTableOutcomes) {
    const SonarMessage t1 = Trace(1), t2 = Trace(2);
    const std::int64_t one = static_cast<std::int64_t>(t1.Wire().size());
    auto cut = [](const HsfTestWriter& w, std::int64_t keep) {
        std::vector<std::uint8_t> bytes = w.Bytes();
        bytes.resize(static_cast<std::size_t>(keep));
        return bytes;
    };
    const auto two = HsfTestWriter().Add(t1).Add(t2);
    auto message = [](std::uint16_t type, std::size_t size) {
        return HsfTestWriter::MakeMessage(type, 2, 100, 0, std::vector<std::uint8_t>(size, 0x5A));
    };
    // A lying size field far above the bound, with no payload behind it.
    const auto huge = HsfTestWriter().Add(t1).Header(kMessageMarker, MsgTrace, 0xFFFFFFF0u);
    // Legacy: bare trace headers and samples.
    const SonarMessage a = Trace(1, 20, 0, 40000, 5), b = Trace(2, 20);
    const auto legacy = HsfTestWriter().Legacy(a).Legacy(b);
    const std::int64_t first = static_cast<std::int64_t>(a.Payload().size());
    // Time Since 1970 whose low bytes happen to be the marker: read as the other layout, with
    // Channel Number in the size field of the header the reader thinks it sees.
    auto markerLike = [](std::int32_t channelNumber) {
        SonarMessage t = Trace(1);
        TraceHeaderView(t.Payload()).SetInt(TraceField::TimeSince1970, 0x12341601);
        TraceHeaderView(t.Payload()).SetInt(TraceField::ChannelNumber, channelNumber);
        return HsfTestWriter().Legacy(t).Legacy(t).Bytes();
    };

    const std::vector<FailureCase> cases = {
        {"empty file", {}, 0, ReadStatus::EndOfFile, 0},
        {"one byte", {0x01}, 0, ReadStatus::EndOfFile, 0},
        {"one record", HsfTestWriter().Add(t1).Bytes(), 1, ReadStatus::EndOfFile, one},
        {"payload size 0", HsfTestWriter().Add(message(MsgAlive, 0)).Add(t1).Bytes(), 2,
         ReadStatus::EndOfFile, 16 + one},
        {"cut in a header", cut(two, one + 7), 1, ReadStatus::EndOfFile, one},
        {"cut in a payload", cut(two, one + 16 + 100), 1, ReadStatus::Error, one},
        {"bad marker", HsfTestWriter().Add(t1).Header(0x1602, MsgTrace, 0).Bytes(), 1,
         ReadStatus::Error, one},
        {"size 1,000,000", HsfTestWriter().Add(message(MsgSerial, 1'000'000)).Bytes(), 1,
         ReadStatus::EndOfFile, 16 + 1'000'000},
        {"size 1,000,001", HsfTestWriter().Add(t1).Add(message(MsgSerial, 1'000'001)).Bytes(), 1,
         ReadStatus::Error, one},
        {"negative size", huge.Bytes(), 1, ReadStatus::Error, one},
        {"legacy: two traces", legacy.Bytes(), 2, ReadStatus::EndOfFile, 2 * first},
        {"legacy: cut in a trace header", cut(legacy, first + 100), 1, ReadStatus::EndOfFile,
         first},
        {"legacy: cut in the samples", cut(legacy, first + 250), 1, ReadStatus::Error, first},
        {"legacy: no samples", HsfTestWriter().Legacy(a).Legacy(Trace(3, 0)).Bytes(), 1,
         ReadStatus::Error, first},
        {"legacy read as the other layout", markerLike(0), 1, ReadStatus::Error, 16},
        {"... with a size past the bound", markerLike(2'000'000), 0, ReadStatus::Error, 0},
    };
    for (const FailureCase& c : cases) {
        for (bool views : {false, true}) {
            SCOPED_TRACE(std::string(c.name) + (views ? " (views)" : ""));
            const Outcome o = ReadAll(c.bytes, views);
            EXPECT_EQ(o.records, c.records);
            EXPECT_EQ(o.end, c.end);
            EXPECT_FALSE(o.openAfter);
            EXPECT_EQ(o.endOffset, c.endOffset);
        }
    }
}

TEST(HsfReader, RecordsOfBothLayoutsComeBackWhole) {
    const SonarMessage t = Trace(7, 300, 1, 40000, 3);
    const SonarMessage nmea =
        HsfTestWriter::MakeMessage(MsgNmea, 2, 100, 1, std::vector<std::uint8_t>(33, 0x5A));
    HsfReader r;
    r.Attach(std::make_unique<MemorySource>(HsfTestWriter().Add(t).Add(nmea).Bytes()));
    SonarMessage a, b;
    ASSERT_EQ(r.Next(a), ReadStatus::Record);
    EXPECT_EQ(r.Layout(), HsfLayout::Hsf);
    ASSERT_EQ(r.Next(b), ReadStatus::Record);
    EXPECT_EQ(r.RecordOffset(), static_cast<std::int64_t>(t.Wire().size()));
    EXPECT_TRUE(std::ranges::equal(a.Wire(), t.Wire()));
    EXPECT_TRUE(std::ranges::equal(b.Wire(), nmea.Wire()));

    // Legacy: type 80, channel from the header, the first keeps the detection bytes.
    const SonarMessage t1 = Trace(1, 20, 0, 40000, 5), t2 = Trace(2, 20);
    r.Attach(std::make_unique<MemorySource>(HsfTestWriter().Legacy(t1).Legacy(t2).Bytes()));
    ASSERT_EQ(r.Next(a), ReadStatus::Record);
    ASSERT_EQ(r.Next(b), ReadStatus::Record);
    EXPECT_EQ(r.Layout(), HsfLayout::Legacy);
    EXPECT_EQ(a.type(), MsgTrace);
    EXPECT_EQ(a.channel(), 5);
    EXPECT_EQ(a.subsystem(), 0);
    EXPECT_EQ(a.size(), static_cast<std::int32_t>(t1.Payload().size()));
    EXPECT_EQ(a.marker(), GetLE<std::uint16_t>(t1.Payload(), 0));
    EXPECT_EQ(b.marker(), 0);
    EXPECT_TRUE(std::ranges::equal(b.Payload(), t2.Payload()));
}

TEST(HsfReader, LegacyComplexIntervalRule) {
    struct Case {
        std::int16_t format;
        std::int32_t interval;
        std::int32_t expectSamplesField;
        std::int32_t expectInterval;
        std::size_t sampleBytes;
    };
    // 40 samples in the count field; the file holds the bytes the rule says.
    const std::vector<Case> cases = {
        {1, 40, 20, 40000, 80},      // old style: count halved, microseconds to nanoseconds
        {9, 999, 20, 999000, 80},    // just below the boundary
        {1, 1000, 40, 1000, 160},    // at the boundary: new style, bytes doubled
        {9, 40000, 40, 40000, 160},  // new style
        {2, 40, 40, 40, 80},         // not complex: the rule does not apply
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "format " << c.format << " interval " << c.interval);
        SonarMessage t = Trace(9, 40, 2, c.interval);
        TraceHeaderView(t.Payload()).SetInt(TraceField::DataFormat, c.format);
        std::vector<std::uint8_t> bytes(t.Payload().begin(), t.Payload().begin() + 240);
        bytes.resize(240 + c.sampleBytes, 0x11);
        // A second record behind proves the first consumed exactly its bytes.
        const auto tail = HsfTestWriter().Legacy(Trace(10, 4)).Bytes();
        bytes.insert(bytes.end(), tail.begin(), tail.end());
        HsfReader r;
        r.Attach(std::make_unique<MemorySource>(bytes));
        SonarMessage m, n;
        ASSERT_EQ(r.Next(m), ReadStatus::Record);
        const ConstTraceHeaderView th(m.Payload());
        EXPECT_EQ(th.GetInt(TraceField::Samples), c.expectSamplesField);
        EXPECT_EQ(th.GetInt(TraceField::SampleIntervalNS), c.expectInterval);
        EXPECT_EQ(m.size(), static_cast<std::int32_t>(240 + c.sampleBytes));
        ASSERT_EQ(r.Next(n), ReadStatus::Record);
        EXPECT_EQ(ConstTraceHeaderView(n.Payload()).GetInt(TraceField::PingNumber), 10);
    }
}

TEST(HsfReader, MissingFileAndFileOnDisk) {
    HsfReader r;
    EXPECT_FALSE(r.Open("/nonexistent/halvo/00000000.000"));
    EXPECT_FALSE(r.Error().empty());
    EXPECT_EQ(r.Next(*std::make_unique<SonarMessage>()), ReadStatus::Closed);
}

}  // namespace
}  // namespace halvo
