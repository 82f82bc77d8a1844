#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "core/MessageTypes.h"
#include "core/TraceHeader.h"
#include "nav/AntennaCorrection.h"
#include "storage/HsfTestWriter.h"
#include "storage/PlaybackPreparer.h"

namespace halvo {
namespace {

SonarMessage TraceAt(std::int32_t ping, std::int32_t x, std::int32_t y, std::uint8_t channel = 0,
                     std::uint8_t subsystem = 0) {
    TraceSpec s;
    s.ping = ping;
    s.groupCoordX = x;
    s.groupCoordY = y;
    s.channel = channel;
    s.subsystem = subsystem;
    return HsfTestWriter::MakeTrace(s);
}

TEST(AntennaCorrection, OffsetsFollowCourseAndLatitude) {
    // 1852 cm back is one hundredth of a minute of arc: 100 units.
    struct Case {
        std::int16_t o, r, course;
        std::int32_t lat;
        double dx, dy;
    };
    const double f60 = std::cos(60.0 * 60 * 10000 * M_PI / 108000000.0);
    const std::vector<Case> cases = {
        {0, 1852, 0, 0, 0.0, -100.0},               // course 0: all in latitude
        {0, 1852, 90, 0, 100.0, 0.0},               // course 90: all in longitude
        {0, 1852, 90, 36000000, 100.0 / f60, 0.0},  // at 60 degrees north a minute of
                                                    // longitude is half as long
        {1852, 0, 0, 0, -100.0, 0.0},               // sideways offset on course 0
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.o << " " << c.r << " " << c.course);
        const AntennaOffset a = AntennaCorrection(true, c.o, c.r, c.course, c.lat);
        EXPECT_NEAR(a.dx, c.dx, 1e-6);
        EXPECT_NEAR(a.dy, c.dy, 1e-6);
        const AntennaOffset off = AntennaCorrection(false, c.o, c.r, c.course, c.lat);
        EXPECT_EQ(off.dx, 0.0);
        EXPECT_EQ(off.dy, 0.0);
    }
}

TEST(PlaybackPreparer, SensorHidingFollowsReparseData) {
    const std::pair<std::uint16_t, bool> types[] = {
        {MsgNmea, true},    {MsgAnalog, true},    {MsgPressure, true}, {MsgPitchRoll, true},
        {MsgSerial, false}, {MsgAltitude, false}, {MsgTrace, false},   {MsgSideScanTrace, false}};
    for (int flags : {0, 1, 2, 3}) {
        StorageSettings s;
        s.flags = flags;
        PlaybackPreparer p;
        for (const auto& [type, sensor] : types) {
            SonarMessage m = HsfTestWriter::MakeMessage(type, 2, 101, 0, {});
            p.Prepare(m, s, {});
            const bool hidden = sensor && !(flags & 1);
            EXPECT_EQ(m.type(), hidden ? std::uint16_t{MsgAlive} : type)
                << type << " flags " << flags;
        }
    }
}

TEST(PlaybackPreparer, RangeHidingIsInclusive) {
    struct Case {
        int rangeType;
        std::int32_t r0, r1;
        std::int32_t ping, x, y;
        bool hidden;
    };
    const std::vector<Case> cases = {
        {0, 5, 5, 1, 0, 0, false},     // "All Data"
        {1, 10, 20, 10, 0, 0, false},  // lower bound is in
        {1, 10, 20, 20, 0, 0, false},  // upper bound is in
        {1, 10, 20, 9, 0, 0, true},       {1, 10, 20, 21, 0, 0, true},
        {2, -500, 500, 0, 0, 500, false}, {2, -500, 500, 0, 0, 501, true},
        {3, 100, 200, 0, 99, 0, true},    {3, 100, 200, 0, 150, 0, false},
        {2, 0, 0, 0, 0, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.rangeType << " ping " << c.ping << " x "
                                        << c.x << " y " << c.y);
        StorageSettings s;
        s.playbackRangeType = c.rangeType;
        s.playbackRange0 = c.r0;
        s.playbackRange1 = c.r1;
        PlaybackPreparer p;
        SonarMessage m = TraceAt(c.ping, c.x, c.y);
        EXPECT_EQ(p.Prepare(m, s, {}), c.hidden);
        EXPECT_EQ(m.type(), c.hidden ? MsgAlive : MsgTrace);
    }
}

TEST(PlaybackPreparer, LatitudeRangeAddsTheAntennaOffset) {
    // 1852 cm back on a northward course moves the body 100 units south.
    SonarMessage m = TraceAt(1, 0, 1000);
    TraceHeaderView th(m.Payload());
    th.SetInt(TraceField::NMEAAntennaeR, 1852);
    StorageSettings s;
    s.playbackRangeType = 2;
    s.playbackRange0 = 850;
    s.playbackRange1 = 950;
    PlaybackContext layback;
    layback.gpsFlags = [] { return std::int16_t{1}; };
    PlaybackPreparer p;
    SonarMessage kept = m.Clone();
    EXPECT_FALSE(p.Prepare(kept, s, layback));
    EXPECT_TRUE(p.Prepare(m, s, {}));  // without "Layback Enable" the raw 1000 is out of range
}

TEST(PlaybackPreparer, MarksTheFirstTwoTracesOfEachChannel) {
    StorageSettings s;
    s.markFileStart = 1;
    PlaybackContext ctx;
    // Subsystem 20 is the second sonar, whose channels start at index 2.
    ctx.firstChannelOf = [](std::uint8_t sub) -> std::optional<int> {
        if (sub == 20) return 2;
        return std::nullopt;
    };
    PlaybackPreparer p;
    auto mark = [&](std::uint8_t channel, std::uint8_t subsystem) {
        SonarMessage m = TraceAt(1, 0, 0, channel, subsystem);
        p.Prepare(m, s, ctx);
        return ConstTraceHeaderView(m.Payload()).GetInt(TraceField::MarkNumber);
    };
    // A sensor message on channel 0 takes no mark and uses none up.
    SonarMessage sensor = HsfTestWriter::MakeMessage(MsgAltitude, 2, 0, 0, {});
    p.Prepare(sensor, s, ctx);
    EXPECT_EQ(mark(0, 0), 1);
    EXPECT_EQ(mark(0, 0), 1);
    EXPECT_EQ(mark(0, 0), 0);
    EXPECT_EQ(mark(0, 20), 1);  // index 2
    EXPECT_EQ(mark(2, 0), 1);   // index 2 again: second and last
    EXPECT_EQ(mark(0, 20), 0);
    EXPECT_EQ(mark(13, 0), 1);  // the last of the fourteen
    EXPECT_EQ(mark(14, 0), 0);  // beyond the mask
    EXPECT_EQ(mark(12, 20), 0);
    // Type 82 has its word at payload offset 34 cleared instead.
    std::vector<std::uint8_t> ss(80 + 8, 0xFF);
    SonarMessage side = HsfTestWriter::MakeMessage(MsgSideScanTrace, 2, 0, 1, ss);
    p.Prepare(side, s, ctx);
    EXPECT_EQ(GetLE<std::uint16_t>(side.Payload(), 34), 0);
    // Reopening starts the count again.
    p.ResetMarks();
    EXPECT_EQ(p.MarkMask(), PlaybackPreparer::kFullMarkMask);
    EXPECT_EQ(mark(0, 0), 1);
    // With MarkFileStart off nothing is touched.
    s.markFileStart = 0;
    p.ResetMarks();
    EXPECT_EQ(mark(0, 0), 0);
}

}  // namespace
}  // namespace halvo
