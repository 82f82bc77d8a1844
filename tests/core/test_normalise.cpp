#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "core/MessageTypes.h"
#include "core/Normalise.h"
#include "core/PackedSamples.h"
#include "core/TraceHeader.h"

namespace halvo {

namespace {

constexpr std::int64_t kLeapDayNoon = 1709210096;  // 2024-02-29 12:34:56 UTC
std::int64_t FixedUtc() {
    return kLeapDayNoon;
}

SonarMessage Compact(std::uint16_t type, std::uint32_t w0, std::uint32_t w1, std::uint32_t w2,
                     std::uint32_t w3, const std::vector<std::uint8_t>& packed) {
    SonarMessage m =
        SonarMessage::Build(type, DirReply, 20, 1, static_cast<std::int32_t>(16 + packed.size()));
    auto p = m.Payload();
    StoreLE(p.data(), w0);
    StoreLE(p.data() + 4, w1);
    StoreLE(p.data() + 8, w2);
    StoreLE(p.data() + 12, w3);
    std::memcpy(p.data() + 16, packed.data(), packed.size());
    return m;
}

std::vector<std::uint8_t> PackA(const std::vector<std::int32_t>& v) {
    std::vector<std::uint8_t> out(PackedBytes(v.size(), 1));
    Pack(out, v, 1);
    return out;
}

SonarMessage SideScan(std::int32_t count, int format, std::int32_t size) {
    SonarMessage m = SonarMessage::Build(MsgSideScanTrace, DirReply, 20, 2, size);
    auto p = m.Payload();
    PutLE<std::int32_t>(p, 12, count);
    PutLE<std::uint16_t>(p, 36, static_cast<std::uint16_t>(format));
    return m;
}

}  // namespace

TEST(Normalise, ExpandedSizeRules) {
    // Type 80: high byte 0 means untouched whatever the size; otherwise samples and format rule.
    SonarMessage t = SonarMessage::Build(MsgTrace, DirReply, 0, 0, 300);
    EXPECT_EQ(ExpandedSize(t), 300);
    EXPECT_FALSE(NeedsExpansion(t));
    PutLE<std::uint16_t>(t.Payload(), 34, 0x0107);  // code 1, format 7: doubled and 4 bytes wide
    PutLE<std::uint16_t>(t.Payload(), 114, 100);
    PutLE<std::uint16_t>(t.Payload(), 16, 0x0300);  // bits 16..19 of the count
    EXPECT_EQ(ExpandedSize(t), 240 + (100 + (3 << 16)) * 2 * 4);

    EXPECT_EQ(ExpandedSize(SideScan(10, 1, 80)), 80 + 10 * 2 * 2);
    EXPECT_EQ(ExpandedSize(SideScan(10, 10, 80)), 80 + 10 * 4);

    // Compact forms: code 0 adds the header difference, packed codes scale by the ratio.
    EXPECT_EQ(ExpandedSize(Compact(MsgCompactTrace, 0, 0, 0, 0, std::vector<std::uint8_t>(20))),
              224 + 36);
    EXPECT_EQ(
        ExpandedSize(Compact(MsgCompactTrace, 0, 5u << 27, 0, 0, std::vector<std::uint8_t>(8))),
        240 + 28);  // trunc(8 * 3.5 + 0.1)
    EXPECT_EQ(ExpandedSize(Compact(MsgCompactSideScanTrace, 0, 1u << 27, 0, 0,
                                   std::vector<std::uint8_t>(12))),
              80 + 18);
    // A corrupt count beyond any real trace is left alone.
    EXPECT_EQ(ExpandedSize(SideScan(0x7FFFFFFF, 0, 80)), 80);
}

TEST(Normalise, CompactTraceFillsTheTraceHeaderAndDatesItNow) {
    const std::vector<std::int32_t> samples = {1, 2, 3, 4, 5, 6};
    const std::uint32_t w1 = (1u << 27) | (0u << 24) | (0xFDu << 16) | 32000u;  // gain exp -3
    SonarMessage m = Compact(MsgCompactTrace, (7u << 16) | 1234u, w1, 20833u, (32u << 16) | 4567u,
                             PackA(samples));
    SonarMessage out = Normalise(m, FixedUtc);
    ASSERT_TRUE(out);
    EXPECT_EQ(out.type(), MsgTrace);
    ASSERT_EQ(out.size(), 240 + 12);  // trunc(8 * 1.5 + 0.1) + 240
    ConstTraceHeaderView h(out.Payload());
    EXPECT_EQ(h.GetInt(TraceField::PingNumber), 1234);
    EXPECT_EQ(h.GetInt(TraceField::StartDepth), 7);
    EXPECT_EQ(h.GetInt(TraceField::ADCMax), 32000);
    EXPECT_EQ(h.GetInt(TraceField::WeightingFactor), -3);
    EXPECT_EQ(h.GetInt(TraceField::SampleIntervalNS), 20833);
    EXPECT_EQ(h.GetInt(TraceField::MillisecondsToday), 4567);
    EXPECT_EQ(h.GetInt(TraceField::ADCGain), 4);  // 2^(32/16) + 0.5
    EXPECT_EQ(h.GetInt(TraceField::Samples), 6);
    EXPECT_EQ(h.GetInt(TraceField::Year), 2024);
    EXPECT_EQ(h.GetInt(TraceField::Day), 60);
    EXPECT_EQ(h.GetInt(TraceField::Hour), 12);
    EXPECT_EQ(h.GetInt(TraceField::Minute), 34);
    EXPECT_EQ(h.GetInt(TraceField::Second), 56);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(LoadLE<std::int16_t>(out.Payload().data() + 240 + 2 * i), i + 1);
}

TEST(Normalise, CompactSideScanBecomesATraceThroughTheOlderForm) {
    const std::vector<std::int32_t> samples = {10, 20, 30};
    const std::uint32_t ms = 3 * 60000 + 7 * 1000;  // only 16 bits travel: 187000 & 0xFFFF
    SonarMessage m = Compact(MsgCompactSideScanTrace, 77, 1u << 27, 1000, ms, PackA(samples));
    SonarMessage out = Normalise(m, FixedUtc);
    ASSERT_TRUE(out);
    ASSERT_EQ(out.type(), MsgTrace);
    ConstTraceHeaderView h(out.Payload());
    EXPECT_EQ(h.GetInt(TraceField::ChannelNumber), 1);  // the header's channel, widened
    EXPECT_EQ(h.GetInt(TraceField::PingNumber), 77);
    EXPECT_EQ(h.GetInt(TraceField::SampleIntervalNS), 1000);
    const std::uint32_t kept = ms & 0xFFFF;
    EXPECT_EQ(h.GetInt(TraceField::MillisecondsToday), static_cast<std::int32_t>(kept));
    EXPECT_EQ(h.GetInt(TraceField::Minute), static_cast<std::int32_t>((kept / 60000) % 60));
    EXPECT_EQ(h.GetInt(TraceField::Year), 2024);
    EXPECT_EQ(out.size(), 240 + 2 * h.GetInt(TraceField::Samples));
    EXPECT_EQ(LoadLE<std::int16_t>(out.Payload().data() + 240 + 4), 30);
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
    ConstTraceHeaderView h(out.Payload());
    EXPECT_EQ(h.GetInt(TraceField::ChannelNumber), 200);
    EXPECT_EQ(h.GetInt(TraceField::PingNumber), 99);
    EXPECT_EQ(h.GetInt(TraceField::NumOfPulses), 250);
    EXPECT_EQ(h.GetInt(TraceField::HeaveCompensationSamples), -5);
    EXPECT_EQ(h.GetInt(TraceField::Samples), 4);
    EXPECT_EQ(LoadLE<std::uint16_t>(out.Payload().data() + 240), 0xBEEF);
    EXPECT_EQ(LoadLE<std::uint16_t>(out.Payload().data() + 242), 0x1234);
    EXPECT_EQ(LoadLE<std::uint16_t>(out.Payload().data() + 244), 0);

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
    SonarMessage plain = SonarMessage::Build(MsgTrace, DirReply, 0, 0, 240 + 8);
    EXPECT_FALSE(Normalise(plain, FixedUtc));
    SonarMessage sensor = SonarMessage::Build(MsgPressure, DirReply, 101, 0, 20);
    EXPECT_FALSE(Normalise(sensor, FixedUtc));
    SonarMessage shortCompact = SonarMessage::Build(MsgCompactTrace, DirReply, 0, 0, 8);
    EXPECT_FALSE(Normalise(shortCompact, FixedUtc));
    SonarMessage shortTrace = SonarMessage::Build(MsgTrace, DirReply, 0, 0, 40);
    PutLE<std::uint16_t>(shortTrace.Payload(), 34, 0x0500);
    EXPECT_FALSE(Normalise(shortTrace, FixedUtc));
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
    EXPECT_EQ(bad.year, 1970);
    EXPECT_EQ(bad.dayOfYear, 2);
    EXPECT_EQ(bad.hour, 0);
    const UtcCalendar century = BreakDownUtc(951782400);  // 2000-02-29 00:00:00
    EXPECT_EQ(century.year, 2000);
    EXPECT_EQ(century.dayOfYear, 60);
}

}  // namespace halvo
