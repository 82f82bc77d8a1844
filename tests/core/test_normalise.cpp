#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "core/MessageTypes.h"
#include "core/Normalise.h"
#include "core/PackedSamples.h"
#include "core/TraceHeader.h"

namespace halvo {

namespace {

using F = TraceField;

// 2024-02-29 12:34:56 UTC
const UtcSecondsFn FixedUtc = [] { return std::int64_t{1709210096}; };

SonarMessage Compact(std::uint16_t type, std::uint32_t w0, std::uint32_t w1, std::uint32_t w2,
                     std::uint32_t w3, const std::vector<std::uint8_t>& packed) {
    SonarMessage m =
        SonarMessage::Build(type, DirReply, 20, 1, static_cast<std::int32_t>(16 + packed.size()));
    const std::uint32_t words[] = {w0, w1, w2, w3};
    for (int i = 0; i < 4; ++i) StoreLE(m.Payload().data() + 4 * i, words[i]);
    std::memcpy(m.Payload().data() + 16, packed.data(), packed.size());
    return m;
}

std::vector<std::uint8_t> PackA(const std::vector<std::int32_t>& v) {
    std::vector<std::uint8_t> out(PackedBytes(v.size(), 1));
    Pack(out, v, 1);
    return out;
}

SonarMessage SideScan(std::int32_t count, int format, std::int32_t size) {
    SonarMessage m = SonarMessage::Build(MsgSideScanTrace, DirReply, 20, 2, size);
    PutLE<std::int32_t>(m.Payload(), 12, count);
    PutLE<std::uint16_t>(m.Payload(), 36, static_cast<std::uint16_t>(format));
    return m;
}

void ExpectFields(const SonarMessage&) {}
// Pairs of field and value, in any number.
template <class... Rest>
void ExpectFields(const SonarMessage& m, F field, std::int64_t value, Rest... rest) {
    EXPECT_EQ(ConstTraceHeaderView(m.Payload()).GetInt(field), value) << InfoOf(field).name;
    ExpectFields(m, rest...);
}

std::int16_t SampleAt(const SonarMessage& m, int i) {
    return LoadLE<std::int16_t>(m.Payload().data() + 240 + 2 * i);
}

}  // namespace

TEST(Normalise, ExpandedSizeRules) {
    // Type 80 with a packing code: samples and format rule. (High byte 0 is left alone: see
    // PlainMessagesAndShortOnesAreLeftAlone.)
    SonarMessage t = SonarMessage::Build(MsgTrace, DirReply, 0, 0, 300);
    PutLE<std::uint16_t>(t.Payload(), 34, 0x0107);  // code 1, format 7: doubled and 4 bytes wide
    PutLE<std::uint16_t>(t.Payload(), 114, 100);
    PutLE<std::uint16_t>(t.Payload(), 16, 0x0300);  // bits 16..19 of the count
    EXPECT_EQ(ExpandedSize(t), 240 + (100 + (3 << 16)) * 2 * 4);

    EXPECT_EQ(ExpandedSize(SideScan(10, 1, 80)), 80 + 10 * 2 * 2);
    EXPECT_EQ(ExpandedSize(SideScan(10, 10, 80)), 80 + 10 * 4);
    // Compact forms: code 0 adds the header difference, packed codes scale by the ratio.
    const std::vector<std::uint8_t> z8(8), z12(12), z20(20);
    EXPECT_EQ(ExpandedSize(Compact(MsgCompactTrace, 0, 0, 0, 0, z20)), 224 + 36);
    EXPECT_EQ(ExpandedSize(Compact(MsgCompactTrace, 0, 5u << 27, 0, 0, z8)),
              240 + 28);  // trunc(8 * 3.5 + 0.1)
    EXPECT_EQ(ExpandedSize(Compact(MsgCompactSideScanTrace, 0, 1u << 27, 0, 0, z12)), 80 + 18);
    // A corrupt count beyond any real trace is left alone.
    EXPECT_EQ(ExpandedSize(SideScan(0x7FFFFFFF, 0, 80)), 80);
}

TEST(Normalise, CompactTraceFillsTheTraceHeaderAndDatesItNow) {
    const std::uint32_t w1 = (1u << 27) | (0xFDu << 16) | 32000u;  // code 1, gain exp -3
    SonarMessage m = Compact(MsgCompactTrace, (7u << 16) | 1234u, w1, 20833u, (32u << 16) | 4567u,
                             PackA({1, 2, 3, 4, 5, 6}));
    SonarMessage out = Normalise(m, FixedUtc);
    ASSERT_TRUE(out);
    EXPECT_EQ(out.type(), MsgTrace);
    ASSERT_EQ(out.size(), 240 + 12);  // trunc(8 * 1.5 + 0.1) + 240
    // ADC gain: 2^(32/16) + 0.5.
    ExpectFields(out, F::PingNumber, 1234, F::StartDepth, 7, F::ADCMax, 32000, F::WeightingFactor,
                 -3, F::SampleIntervalNS, 20833, F::MillisecondsToday, 4567, F::ADCGain, 4,
                 F::Samples, 6, F::Year, 2024, F::Day, 60, F::Hour, 12, F::Minute, 34, F::Second,
                 56);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(SampleAt(out, i), i + 1);

    // The top weighting codes overflow the signed gain word and are held to its top.
    m = Compact(MsgCompactTrace, 0, w1, 0, 255u << 16, PackA({1, 2}));
    ExpectFields(Normalise(m, FixedUtc), F::ADCGain, 32767);
}

TEST(Normalise, CompactSideScanBecomesATraceThroughTheOlderForm) {
    const std::uint32_t ms = 3 * 60000 + 7 * 1000;  // only 16 bits travel: 187000 & 0xFFFF
    const std::int64_t kept = ms & 0xFFFF;
    SonarMessage m = Compact(MsgCompactSideScanTrace, 77, 1u << 27, 1000, ms, PackA({10, 20, 30}));
    SonarMessage out = Normalise(m, FixedUtc);
    ASSERT_TRUE(out);
    ASSERT_EQ(out.type(), MsgTrace);
    // The header's channel, widened.
    ExpectFields(out, F::ChannelNumber, 1, F::PingNumber, 77, F::SampleIntervalNS, 1000,
                 F::MillisecondsToday, kept, F::Minute, (kept / 60000) % 60, F::Year, 2024);
    EXPECT_EQ(out.size(), 240 + 2 * ConstTraceHeaderView(out.Payload()).GetInt(F::Samples));
    EXPECT_EQ(SampleAt(out, 2), 30);
}

TEST(Normalise, SideScanMappingAndItsSizeCases) {
    // A size that disagrees with the count: expanded to the count (plain copy), then mapped.
    SonarMessage m = SideScan(4, 0, 80 + 4);
    auto p = m.Payload();
    PutLE<std::uint16_t>(p, 2, 200);  // widened unsigned into Channel Number
    PutLE<std::int32_t>(p, 4, 99);
    PutLE<std::uint8_t>(p, 38, 250);  // widened into Num of Pulses
    PutLE<std::int16_t>(p, 60, -5);   // heave
    PutLE<std::uint16_t>(p, 80, 0xBEEF);
    PutLE<std::uint16_t>(p, 82, 0x1234);
    SonarMessage out = Normalise(m, FixedUtc);
    ASSERT_TRUE(out);
    ASSERT_EQ(out.type(), MsgTrace);
    ASSERT_EQ(out.size(), 240 + 8);
    ExpectFields(out, F::ChannelNumber, 200, F::PingNumber, 99, F::NumOfPulses, 250,
                 F::HeaveCompensationSamples, -5, F::Samples, 4);
    EXPECT_EQ(SampleAt(out, 0), std::int16_t(0xBEEF));
    EXPECT_EQ(SampleAt(out, 1), 0x1234);
    EXPECT_EQ(SampleAt(out, 2), 0);

    // Longer than the count says: copied as it stands, then mapped by the count.
    SonarMessage longer = SideScan(2, 1, 80 + 100);
    SonarMessage out2 = Normalise(longer, FixedUtc);
    ASSERT_TRUE(out2);
    EXPECT_EQ(out2.size(), 240 + 2 * 4);

    // A zero count stays type 82 and is not replaced.
    SonarMessage zero = SideScan(0, 0, 80);
    EXPECT_FALSE(Normalise(zero, FixedUtc));
    EXPECT_EQ(zero.type(), MsgSideScanTrace);
}

TEST(Normalise, PlainMessagesAndShortOnesAreLeftAlone) {
    SonarMessage shortTrace = SonarMessage::Build(MsgTrace, DirReply, 0, 0, 40);
    PutLE<std::uint16_t>(shortTrace.Payload(), 34, 0x0500);
    SonarMessage cases[] = {SonarMessage::Build(MsgTrace, DirReply, 0, 0, 240 + 8),
                            SonarMessage::Build(MsgPressure, DirReply, 101, 0, 20),
                            SonarMessage::Build(MsgCompactTrace, DirReply, 0, 0, 8),
                            std::move(shortTrace)};
    for (SonarMessage& m : cases) EXPECT_FALSE(Normalise(m, FixedUtc)) << m.type();
}

TEST(Normalise, ALyingSizeNeverSizesTheNewBlock) {
    // A side-scan header that claims 1.7 GB while the block holds 88 bytes: the copy is made
    // of what is there, not of what the header says.
    std::vector<std::uint8_t> raw(16 + 88);
    MessageHeader::Make(MsgSideScanTrace, DirReply, 20, 1, 0x69000058).Write(raw);
    PutLE<std::int32_t>(raw, 16 + 12, 4);
    SonarMessage m = SonarMessage::FromBytes(raw);
    SonarMessage out = Normalise(m, FixedUtc);
    ASSERT_TRUE(out);
    EXPECT_LT(out.BlockSize(), 4096u);
    EXPECT_EQ(out.type(), MsgTrace);
}

TEST(Normalise, CalendarFallsBackToTheSecondDayOfTheEpoch) {
    const UtcCalendar bad = BreakDownUtc(INT64_MAX);
    EXPECT_EQ(std::tie(bad.year, bad.dayOfYear, bad.hour), std::make_tuple(1970, 2, 0));
}

}  // namespace halvo
