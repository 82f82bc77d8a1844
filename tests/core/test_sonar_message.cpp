#include <gtest/gtest.h>

#include "core/MessageTypes.h"
#include "core/SonarMessage.h"

namespace halvo {

TEST(SonarMessage, BuiltHeaderHasMarkerVersionAndZeroesTheRest) {
    SonarMessage m = SonarMessage::Build(MsgPingRate, DirSet, 20, 3, 4);
    ASSERT_TRUE(m);
    const std::uint8_t expected[16] = {0x01, 0x16, 13, 0, 124, 0, 0, 20, 3, 0, 0, 0, 4, 0, 0, 0};
    ASSERT_EQ(m.BlockSize(), 20u);
    EXPECT_TRUE(std::equal(expected, expected + 16, m.Block().begin()));
    EXPECT_EQ(m.Payload().size(), 4u);
}

TEST(SonarMessage, HeaderRoundTripKeepsFieldsNobodyReads) {
    const std::uint8_t raw[20] = {0x01, 0x16, 7, 9, 0x50, 0, 2, 21, 1, 5,
                                  0x34, 0x12, 4, 0, 0,    0, 1, 2,  3, 4};
    MessageHeader h;
    ASSERT_TRUE(MessageHeader::Read(raw, h));
    EXPECT_TRUE(h.HasMarker());
    EXPECT_EQ(h.version, 7);
    EXPECT_EQ(h.session, 9);
    EXPECT_EQ(h.type, 80);
    EXPECT_EQ(h.sequence, 5);
    EXPECT_EQ(h.reserved, 0x1234);
    std::uint8_t out[16] = {};
    ASSERT_TRUE(h.Write(out));
    EXPECT_TRUE(std::equal(out, out + 16, raw));
    EXPECT_FALSE(MessageHeader::Read(std::span<const std::uint8_t>(raw, 15), h));
}

TEST(SonarMessage, PayloadIsClippedToTheBlockWhateverTheSizeSays) {
    std::uint8_t raw[18] = {0x01, 0x16, 13, 0, 80, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 8};
    raw[12] = 0xE8;  // claims 1000 bytes
    raw[13] = 0x03;
    SonarMessage m = SonarMessage::FromBytes(raw);
    EXPECT_EQ(m.size(), 1000);
    EXPECT_EQ(m.Payload().size(), 2u);
    EXPECT_EQ(m.Wire().size(), 18u);
    m.set_size(-5);
    EXPECT_TRUE(m.Payload().empty());
    SonarMessage c = m.Clone();
    EXPECT_EQ(c.Wire().size(), 16u);
}

TEST(SonarMessage, MovingPassesTheBlockOn) {
    SonarMessage a = SonarMessage::Build(MsgAlive, DirQuery, 0, 0, 4);
    const std::uint8_t* block = a.Block().data();
    SonarMessage b = std::move(a);
    EXPECT_FALSE(a);
    EXPECT_EQ(b.Block().data(), block);
    std::size_t n = 0;
    std::uint8_t* raw = b.Release(n);
    EXPECT_FALSE(b);
    SonarMessage c = SonarMessage::Adopt(raw, n);
    EXPECT_EQ(c.type(), MsgAlive);
}

// The log labels are checked where the event log prints them, the direction classes through the
// acquire filter's table; here only the names that no table row spells out.
TEST(MessageTypes, MultiPingRangeSharesOneNameAndUnknownTypesHaveNone) {
    EXPECT_EQ(MessageTypeName(1183), "MsgMultiPing");
    EXPECT_EQ(MessageTypeName(9999), "");
}

}  // namespace halvo
