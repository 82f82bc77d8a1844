#include <gtest/gtest.h>

#include <vector>

#include "core/TraceHeader.h"

namespace halvo {

TEST(TraceHeader, FieldsTileTheHeaderWithoutGaps) {
    std::size_t next = 0;
    for (const TraceFieldInfo& f : AllTraceFields()) {
        ASSERT_EQ(f.offset, next) << f.name;
        next += (f.kind == FieldKind::Int32 || f.kind == FieldKind::Flt32) ? 4 : 2;
    }
    EXPECT_EQ(next, kTraceHeaderSize);
}

TEST(TraceHeader, ReadAndWriteByNameAndByField) {
    std::vector<std::uint8_t> bytes(kTraceHeaderSize);
    TraceHeaderView h(bytes);
    ASSERT_TRUE(h.valid());
    const auto ping = FindTraceField("Ping Number");
    ASSERT_TRUE(ping);
    h.SetInt(*ping, 123456);
    EXPECT_EQ(bytes[8], 0x40);
    EXPECT_EQ(bytes[9], 0xE2);
    EXPECT_EQ(bytes[10], 0x01);
    h.SetInt(TraceField::Roll, -32768);
    EXPECT_EQ(h.GetInt(TraceField::Roll), -32768);
    h.SetFloat(TraceField::SoundSpeed, 1500.5f);
    EXPECT_FLOAT_EQ(h.GetFloat(TraceField::SoundSpeed), 1500.5f);
    h.SetNumber(TraceField::DepthMM, 1e12);  // held, not undefined
    EXPECT_EQ(h.GetInt(TraceField::DepthMM), 2147483647);
    // The table names "Reserved3A" twice; by name the first (32-bit, offset 48) is found.
    EXPECT_EQ(InfoOf(*FindTraceField("Reserved3A")).offset, 48);
    EXPECT_FALSE(FindTraceField("ping number"));
    // A view over too few bytes reads zero and writes nothing.
    std::vector<std::uint8_t> shortBytes(100, 0xFF);
    TraceHeaderView s(shortBytes);
    EXPECT_FALSE(s.valid());
    EXPECT_EQ(s.GetInt(TraceField::PingNumber), 0);
    s.SetInt(TraceField::PingNumber, 0);
    EXPECT_EQ(shortBytes[8], 0xFF);
}

}  // namespace halvo
