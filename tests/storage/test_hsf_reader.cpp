#include <gtest/gtest.h>

#include <cstring>
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
    for (int guard = 0; guard < 1000; ++guard) {
        SonarMessage m;
        std::span<const std::uint8_t> v;
        const ReadStatus s = views ? r.NextView(v) : r.Next(m);
        if (s == ReadStatus::Record) {
            ++o.records;
            continue;
        }
        o.end = s;
        o.openAfter = r.IsOpen();
        o.endOffset = r.RecordOffset();
        break;
    }
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

std::vector<std::uint8_t> Payload(std::size_t n) {
    return std::vector<std::uint8_t>(n, 0x5A);
}

struct FailureCase {
    const char* name;
    std::vector<std::uint8_t> bytes;
    int records;
    ReadStatus end;
    std::int64_t endOffset;
};

TEST(HsfReader, FailureTableOutcomes) {
    const SonarMessage t1 = Trace(1);
    const SonarMessage t2 = Trace(2);
    const auto w1 = t1.Wire();
    const std::int64_t one = static_cast<std::int64_t>(w1.size());
    auto two = [&] { return HsfTestWriter().Add(t1).Add(t2); };
    std::vector<std::uint8_t> cutHeader = two().Bytes();
    cutHeader.resize(static_cast<std::size_t>(one) + 7);
    std::vector<std::uint8_t> cutPayload = two().Bytes();
    cutPayload.resize(static_cast<std::size_t>(one) + 16 + 100);
    const SonarMessage exact = HsfTestWriter::MakeMessage(MsgSerial, 2, 100, 0, Payload(1'000'000));
    const SonarMessage over = HsfTestWriter::MakeMessage(MsgSerial, 2, 100, 0, Payload(1'000'001));
    const SonarMessage empty = HsfTestWriter::MakeMessage(MsgAlive, 1, 0, 0, {});
    // A lying size field far above the bound, with no payload behind it.
    const auto huge = HsfTestWriter().Add(t1).Header(kMessageMarker, MsgTrace, 0xFFFFFFF0u);

    const std::vector<FailureCase> cases = {
        {"empty file", {}, 0, ReadStatus::EndOfFile, 0},
        {"one byte", {0x01}, 0, ReadStatus::EndOfFile, 0},
        {"one record", HsfTestWriter().Add(t1).Bytes(), 1, ReadStatus::EndOfFile, one},
        {"payload size 0", HsfTestWriter().Add(empty).Add(t1).Bytes(), 2, ReadStatus::EndOfFile,
         16 + one},
        {"cut in a header", cutHeader, 1, ReadStatus::EndOfFile, one},
        {"cut in a payload", cutPayload, 1, ReadStatus::Error, one},
        {"bad marker", HsfTestWriter().Add(t1).Header(0x1602, MsgTrace, 0).Bytes(), 1,
         ReadStatus::Error, one},
        {"size 1,000,000", HsfTestWriter().Add(exact).Bytes(), 1, ReadStatus::EndOfFile,
         16 + 1'000'000},
        {"size 1,000,001", HsfTestWriter().Add(t1).Add(over).Bytes(), 1, ReadStatus::Error, one},
        {"negative size", huge.Bytes(), 1, ReadStatus::Error, one},
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

TEST(HsfReader, RecordsComeBackByteForByte) {
    const SonarMessage t = Trace(7, 300, 1, 40000, 3);
    const SonarMessage nmea = HsfTestWriter::MakeMessage(MsgNmea, 2, 100, 1, Payload(33));
    HsfTestWriter w;
    w.Add(t).Add(nmea);
    HsfReader r;
    r.Attach(std::make_unique<MemorySource>(w.Bytes()));
    SonarMessage a, b;
    ASSERT_EQ(r.Next(a), ReadStatus::Record);
    EXPECT_EQ(r.Layout(), HsfLayout::Hsf);
    ASSERT_EQ(r.Next(b), ReadStatus::Record);
    EXPECT_EQ(r.RecordOffset(), static_cast<std::int64_t>(t.Wire().size()));
    ASSERT_EQ(a.Wire().size(), t.Wire().size());
    EXPECT_EQ(0, std::memcmp(a.Wire().data(), t.Wire().data(), t.Wire().size()));
    EXPECT_EQ(0, std::memcmp(b.Wire().data(), nmea.Wire().data(), nmea.Wire().size()));
}

TEST(HsfReader, LegacyLayoutAndItsFailures) {
    const SonarMessage a = Trace(1, 20, 0, 40000, 5);
    const SonarMessage b = Trace(2, 20);
    std::vector<std::uint8_t> cutHeader = HsfTestWriter().Legacy(a).Legacy(b).Bytes();
    cutHeader.resize(a.Payload().size() + 100);
    std::vector<std::uint8_t> cutSamples = HsfTestWriter().Legacy(a).Legacy(b).Bytes();
    cutSamples.resize(a.Payload().size() + 250);
    SonarMessage none = Trace(3, 0);
    const std::int64_t first = static_cast<std::int64_t>(a.Payload().size());

    const std::vector<FailureCase> cases = {
        {"two traces", HsfTestWriter().Legacy(a).Legacy(b).Bytes(), 2, ReadStatus::EndOfFile,
         2 * first},
        {"cut in a trace header", cutHeader, 1, ReadStatus::EndOfFile, first},
        {"cut in the samples", cutSamples, 1, ReadStatus::Error, first},
        {"no samples", HsfTestWriter().Legacy(a).Legacy(none).Bytes(), 1, ReadStatus::Error, first},
    };
    for (const FailureCase& c : cases) {
        SCOPED_TRACE(c.name);
        const Outcome o = ReadAll(c.bytes);
        EXPECT_EQ(o.records, c.records);
        EXPECT_EQ(o.end, c.end);
        EXPECT_FALSE(o.openAfter);
        EXPECT_EQ(o.endOffset, c.endOffset);
    }

    // The built messages: type 80, channel from the header, the first keeps the detection bytes.
    HsfReader r;
    r.Attach(std::make_unique<MemorySource>(HsfTestWriter().Legacy(a).Legacy(b).Bytes()));
    SonarMessage m1, m2;
    ASSERT_EQ(r.Next(m1), ReadStatus::Record);
    ASSERT_EQ(r.Next(m2), ReadStatus::Record);
    EXPECT_EQ(r.Layout(), HsfLayout::Legacy);
    EXPECT_EQ(m1.type(), MsgTrace);
    EXPECT_EQ(m1.channel(), 5);
    EXPECT_EQ(m1.subsystem(), 0);
    EXPECT_EQ(m1.size(), static_cast<std::int32_t>(a.Payload().size()));
    EXPECT_EQ(m1.marker(), GetLE<std::uint16_t>(a.Payload(), 0));
    EXPECT_EQ(m2.marker(), 0);
    EXPECT_EQ(0, std::memcmp(m2.Payload().data(), b.Payload().data(), b.Payload().size()));
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

TEST(HsfReader, LegacyFileStartingWithTheMarkerIsReadAsHsf) {
    // Time Since 1970 whose low bytes happen to be the marker; Channel Number lands in the
    // size field of the header the reader thinks it sees.
    struct Case {
        std::int32_t channelNumber;
        int records;
        std::int64_t endOffset;
    };
    for (const Case& c : std::vector<Case>{{0, 1, 16}, {2'000'000, 0, 0}}) {
        SCOPED_TRACE(c.channelNumber);
        SonarMessage t = Trace(1);
        TraceHeaderView(t.Payload()).SetInt(TraceField::TimeSince1970, 0x12341601);
        TraceHeaderView(t.Payload()).SetInt(TraceField::ChannelNumber, c.channelNumber);
        const Outcome o = ReadAll(HsfTestWriter().Legacy(t).Legacy(t).Bytes());
        EXPECT_EQ(o.records, c.records);
        EXPECT_EQ(o.end, ReadStatus::Error);
        EXPECT_EQ(o.endOffset, c.endOffset);
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
