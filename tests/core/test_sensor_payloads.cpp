#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "core/ByteOrder.h"
#include "core/SensorPayloads.h"

namespace halvo {
namespace {

// A payload of n zero bytes with fields poked in.
struct Bytes {
    std::vector<std::uint8_t> b;
    explicit Bytes(std::size_t n) : b(n, 0) {}
    template <class T>
    Bytes& At(std::size_t off, T v) {
        EXPECT_TRUE(PutLE<T>(b, off, v));
        return *this;
    }
    Payload P() const { return b; }
};

template <auto Reader>
bool Reads(Payload p) {
    return Reader(p).has_value();
}
template <std::uint16_t Type>
bool ReadsAux(Payload p) {
    return ReadAuxiliary(Type, p).has_value();
}

TEST(SensorPayloads, ShortMessagesAreIgnoredWhole) {
    // minimum size, flag offset and a flag word that makes the message count
    struct Case {
        bool (*reads)(Payload);
        std::size_t minimum, flagAt;
        std::uint32_t flags;
    } cases[] = {{Reads<ReadSerial>, 12, 0, 0},
                 {Reads<ReadPitchRoll>, 44, 36, 0x40},
                 {Reads<ReadAnalog>, 36, 0, 0},
                 {Reads<ReadPressure>, 76, 24, 0},
                 {Reads<ReadAltitude>, 44, 12, 0},
                 {Reads<ReadDvl>, 56, 0, 0},
                 {Reads<ReadSituation>, 276, 12, 0x10},
                 {Reads<ReadCompactSituation>, 100, 12, 0},
                 {ReadsAux<2100>, 32, 20, 1},
                 {ReadsAux<2101>, 20, 16, 1},
                 {ReadsAux<8060>, 14, 8, 1},
                 {Reads<ReadAttitude>, 32, 8, 0},
                 {Reads<ReadEnvironment>, 36, 8, 0},
                 {Reads<ReadRange>, 24, 8, 0},
                 {Reads<ReadPosition>, 56, 8, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);  // the row
        Bytes full(c.minimum), shorter(c.minimum - 1);
        if (c.flagAt) {
            full.At<std::uint16_t>(c.flagAt, static_cast<std::uint16_t>(c.flags));
            if (c.flagAt + 2 <= c.minimum - 1)
                shorter.At<std::uint16_t>(c.flagAt, static_cast<std::uint16_t>(c.flags));
        }
        EXPECT_TRUE(c.reads(full.P()));
        EXPECT_FALSE(c.reads(shorter.P()));
    }
}

TEST(SensorPayloads, PitchRollNeedsFlag40ForEverything) {
    Bytes b(44);
    b.At<std::int16_t>(24, 16384).At<std::int16_t>(26, -8192).At<std::int16_t>(32, -250);
    b.At<std::uint16_t>(34, 27012).At<std::uint32_t>(36, 0x300);
    EXPECT_FALSE(ReadPitchRoll(b.P()));  // heave and heading flags alone do not count

    b.At<std::uint32_t>(36, 0x340);
    auto r = ReadPitchRoll(b.P());
    ASSERT_TRUE(r);
    EXPECT_DOUBLE_EQ(r->pitchDegrees, 90.0);
    EXPECT_DOUBLE_EQ(r->rollDegrees, -45.0);
    EXPECT_TRUE(r->heaveMm.valid);
    EXPECT_EQ(r->heaveMm.value, -250);
    EXPECT_EQ(r->headingCentiDegrees.value, 27012);

    b.At<std::uint32_t>(36, 0x40);
    r = ReadPitchRoll(b.P());
    ASSERT_TRUE(r);
    EXPECT_FALSE(r->heaveMm.valid);
    EXPECT_FALSE(r->headingCentiDegrees.valid);
}

TEST(SensorPayloads, PressureFieldsFollowTheirFlags) {
    Bytes b(76);
    for (std::size_t off : {12, 16, 20, 28, 32, 36}) b.At<std::int32_t>(off, 1000 * (int)off + 500);
    const std::uint32_t bits[] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x20};
    for (std::uint32_t only : bits) {
        b.At<std::uint32_t>(24, only);
        auto r = ReadPressure(b.P());
        ASSERT_TRUE(r);
        const Flagged<double>* f[] = {&r->pressurePsi,  &r->temperature, &r->salinity,
                                      &r->conductivity, &r->soundSpeed,  &r->depth};
        const std::size_t offsets[] = {12, 16, 20, 28, 32, 36};
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(f[i]->valid, bits[i] == only);
            if (f[i]->valid) {
                EXPECT_DOUBLE_EQ(f[i]->value, offsets[i] + 0.5);
            }
        }
    }
}

TEST(SensorPayloads, SituationMaskAndDerivedMotion) {
    Bytes b(276);
    b.At<std::uint32_t>(12, 0x01).At<double>(28, 55.5).At<double>(52, 90.0);
    b.At<double>(100, 3.0).At<double>(108, 4.0);
    EXPECT_FALSE(ReadSituation(b.P()));  // bit 0x01 lies outside the mask

    b.At<std::uint32_t>(12, 0x04);  // the mask is 0x1111110 as written: 0x04 alone is outside
    EXPECT_FALSE(ReadSituation(b.P()));
    b.At<std::uint32_t>(12, 0x04 | 0x100);  // either position bit will do
    auto r = ReadSituation(b.P());
    ASSERT_TRUE(r);
    EXPECT_TRUE(r->latitude.valid);
    EXPECT_DOUBLE_EQ(r->latitude.value, 55.5);
    EXPECT_FALSE(r->heading.valid);
    EXPECT_FALSE(r->speed.valid);

    b.At<std::uint32_t>(12, 0x400 | 0x800 | 0x10);
    r = ReadSituation(b.P());
    ASSERT_TRUE(r);
    EXPECT_DOUBLE_EQ(r->speed.value, 5.0);
    EXPECT_NEAR(r->course.value, std::atan2(4.0, 3.0) * 180 / 3.1415926535 + 90.0, 1e-9);
}

TEST(SensorPayloads, CourseFromVelocityWrapsAllQuadrants) {
    struct {
        double vx, vy, heading, course;
    } cases[] = {{1, 0, 0, 0},     {0, 1, 0, 90},   {-1, 0, 0, 180},  {0, -1, 0, 270},
                 {0, -1, 100, 10}, {1, 0, 370, 10}, {1, 0, -30, 330}, {-1, 0, 180, 0}};
    for (const auto& c : cases) {
        const double got = CourseFromVelocity(c.vx, c.vy, c.heading);
        EXPECT_GE(got, 0.0);
        EXPECT_LT(got, 360.0);
        EXPECT_NEAR(got, c.course, 1e-6) << c.vx << "," << c.vy << " h " << c.heading;
    }
}

TEST(SensorPayloads, CompactSituationNeedsBothBitsOfAPair) {
    Bytes b(100);
    b.At<double>(28, 1.0).At<double>(36, 2.0).At<float>(68, 3.0f).At<float>(72, 4.0f);
    b.At<float>(56, 6.0f).At<float>(60, 8.0f).At<std::uint8_t>(16, 1);
    for (std::uint32_t flags : {0x02u, 0x04u, 0x100u, 0x200u, 0x40u}) {
        b.At<std::uint32_t>(12, flags);
        auto r = ReadCompactSituation(b.P());
        ASSERT_TRUE(r);
        EXPECT_FALSE(r->latitude.valid || r->pitch.valid || r->speed.valid || r->courseRule.valid);
    }
    b.At<std::uint32_t>(12, 0x02 | 0x04 | 0x100 | 0x200 | 0x40 | 0x80);
    auto r = ReadCompactSituation(b.P());
    ASSERT_TRUE(r);
    EXPECT_DOUBLE_EQ(r->longitude.value, 2.0);
    EXPECT_FLOAT_EQ(r->roll.value, 4.0f);
    EXPECT_DOUBLE_EQ(r->speed.value, 10.0);
    EXPECT_EQ(r->courseRule.value, 1);
}

TEST(SensorPayloads, AuxiliaryGuardsAndNanosecondStamps) {
    Bytes aux(14);
    aux.At<float>(0, 2.5f);
    EXPECT_FALSE(ReadAuxiliary(8060, aux.P()));  // guard zero
    aux.At<std::uint16_t>(8, 1);
    auto a = ReadAuxiliary(8060, aux.P());
    ASSERT_TRUE(a);
    EXPECT_TRUE(a->timedByNmea);
    EXPECT_FLOAT_EQ(a->value, 2.5f);
    EXPECT_FALSE(ReadAuxiliary(2000, aux.P()));

    Bytes pos(56);
    pos.At<std::int32_t>(0, 1000).At<std::int32_t>(4, 123456789).At<std::uint16_t>(8, 0x08);
    pos.At<double>(28, -45.5).At<double>(36, 170.25);
    auto p = ReadPosition(pos.P());
    ASSERT_TRUE(p);
    EXPECT_FALSE(p->latitude.valid);  // 0x08 without 0x10
    EXPECT_EQ(p->stamp.source, 4);
    EXPECT_EQ(p->stamp.Time(), (TimeValue{1000, 123}));
    pos.At<std::uint16_t>(8, 0x18);
    EXPECT_DOUBLE_EQ(ReadPosition(pos.P())->longitude.value, 170.25);
}

TEST(SensorPayloads, NmeaTextLengthComesFromTheSize) {
    auto text = [](std::string_view s, bool terminator) {
        Bytes b(12 + s.size() + (terminator ? 1 : 0));
        std::copy(s.begin(), s.end(), b.b.begin() + 12);
        return std::string(ReadNmea(b.P())->text);
    };
    EXPECT_EQ(text("$GPHDT,1.0,T", true), "$GPHDT,1.0,T");
    EXPECT_EQ(text("$GPHDT,1.0,T", false), "$GPHDT,1.0,T");
    struct {
        std::size_t length;
        bool parsable;
    } limits[] = {{5, false}, {6, true}, {199, true}, {200, false}};
    for (const auto& l : limits) {
        const std::string t = text(std::string(l.length, 'A'), true);
        NmeaReading r;
        r.text = t;
        EXPECT_EQ(r.Parsable(), l.parsable) << l.length;
    }
}

TEST(SensorPayloads, ContainerTimeAppliesToOneMessageOnly) {
    const TimeValue now{5000, 1};
    Bytes container(12);
    container.At<std::int32_t>(0, 2000).At<std::int32_t>(4, 250);
    SensorStamp stamp{1000, 7};

    ContainerTime c;
    EXPECT_EQ(c.ReadingTime(stamp, now), (TimeValue{1000, 7}));
    EXPECT_EQ(c.ReadingTime(SensorStamp{}, now), now);

    c.AfterMessage(2111, container.P());
    EXPECT_EQ(c.ReadingTime(stamp, now), (TimeValue{2000, 250}));
    EXPECT_EQ(c.ReadingTime(SensorStamp{1995, 0}, now), (TimeValue{1995, 0}));  // 5 apart
    EXPECT_EQ(c.ReadingTime(SensorStamp{1994, 0}, now), (TimeValue{2000, 250}));
    c.AfterMessage(2002, container.P());
    EXPECT_EQ(c.ReadingTime(stamp, now), (TimeValue{1000, 7}));

    c.AfterMessage(2111, container.P());
    Bytes wrongSize(16);
    wrongSize.At<std::int32_t>(0, 2000);
    c.AfterMessage(2111, wrongSize.P());  // clears, does not set
    EXPECT_FALSE(c.Pending());
    EXPECT_EQ(c.ReadingTime(stamp, now), (TimeValue{1000, 7}));
}

}  // namespace
}  // namespace halvo
