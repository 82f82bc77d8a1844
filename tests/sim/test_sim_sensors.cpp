// Sensor payloads read back through the core's readers, the NMEA sentences carry correct
// checksums, a running simulator sends every sensor, and video frames reassemble and decode.

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <set>
#include <tuple>

#include "core/ByteOrder.h"
#include "core/MessageTypes.h"
#include "core/SensorPayloads.h"
#include "halvo-sim/SimSensors.h"
#include "halvo-sim/SimVideo.h"
#include "sim/SimTestClient.h"
#include "sim/SimTestServer.h"

namespace halvo::test {
namespace {

using namespace std::chrono_literals;
const TimeValue kT{1700000000, 250};

TEST(SimSensors, PayloadsReadBackThroughTheReaders) {
    const SimFix fix{57.7, 11.8, 45.0, 1.94};
    auto pr = ReadPitchRoll(SimPitchRollMessage(kT, 3, 2.5, -4.0, 0.35, 359.995).Payload());
    ASSERT_TRUE(pr);
    EXPECT_EQ(std::tie(pr->stamp.seconds, pr->stamp.subsecond, pr->stamp.source),
              std::make_tuple(kT.seconds, kT.ms, 3));
    EXPECT_NEAR(pr->pitchDegrees, 2.5, 0.01);
    EXPECT_NEAR(pr->rollDegrees, -4.0, 0.01);
    EXPECT_TRUE(pr->heaveMm.valid && pr->headingCentiDegrees.valid);
    EXPECT_EQ(pr->heaveMm.value, 350);
    EXPECT_EQ(pr->headingCentiDegrees.value, 0);  // wrapped, not 36000

    SonarMessage pm = SimPressureMessage(kT, 1, 25.0, 9.5, 1489.25);
    EXPECT_EQ(pm.size(), 76);
    auto p = ReadPressure(pm.Payload());
    ASSERT_TRUE(p);
    EXPECT_NEAR(p->depth.value, 25.0, 1e-3);
    EXPECT_NEAR(p->temperature.value, 9.5, 1e-3);
    EXPECT_NEAR(p->soundSpeed.value, 1489.25, 1e-3);
    EXPECT_NEAR(p->pressurePsi.value, 14.696 + 25.0 * 1.4503, 1e-2);
    EXPECT_TRUE(p->salinity.valid && p->conductivity.valid);

    auto alt = ReadAltitude(SimAltitudeMessage(kT, 2, 13.25).Payload());
    ASSERT_TRUE(alt && alt->altitudeMm.valid);
    EXPECT_EQ(alt->altitudeMm.value, 13250);

    std::array<std::int16_t, 12> v{};
    for (int i = 0; i < 12; ++i) v[i] = static_cast<std::int16_t>(i * 100 - 300);
    auto analog = ReadAnalog(SimAnalogMessage(kT, v).Payload());
    ASSERT_TRUE(analog);
    EXPECT_EQ(analog->values, v);

    SonarMessage sm = SimSituationMessage(kT, 4, fix, 30.0, 45.0, 1.0, -2.0, 0.2, 1.0);
    EXPECT_EQ(sm.size(), 276);
    auto sit = ReadSituation(sm.Payload());
    ASSERT_TRUE(sit && sit->speed.valid);
    EXPECT_EQ(std::tie(sit->latitude.value, sit->longitude.value, sit->heading.value),
              std::make_tuple(57.7, 11.8, 45.0));
    EXPECT_NEAR(sit->speed.value, 1.0, 1e-9);
    EXPECT_NEAR(sit->course.value, 45.0, 1e-6);

    const std::string gga = SimGGA(kT, fix);
    const SonarMessage nm = SimNmeaMessage(kT, 0, gga);  // the reading views into its payload
    auto nmea = ReadNmea(nm.Payload());
    ASSERT_TRUE(nmea);
    EXPECT_EQ(nmea->text, gga);
    EXPECT_TRUE(nmea->Parsable());

    SonarMessage ct = SimContainerTimeMessage(kT);
    EXPECT_EQ(ct.size(), 12);
    EXPECT_EQ(ReadContainerTime(ct.Payload()), kT);
}

TEST(SimSensors, SentencesHaveValidChecksumsAndFields) {
    const SimFix fix{-33.5, -70.25, 123.0, 3.0};
    const auto sentences = SimNmeaSecond(TimeValue{1699920000 + 3723, 450}, fix);
    const std::set<std::string> want = {"GGA", "RMC", "ZDA", "VTG", "GLL"};
    std::set<std::string> seen;
    for (const std::string& s : sentences) {
        ASSERT_GE(s.size(), 10u);
        EXPECT_EQ(s.substr(s.size() - 2), "\r\n");
        const auto star = s.find('*');
        ASSERT_NE(star, std::string::npos);
        EXPECT_EQ(std::stoi(s.substr(star + 1, 2), nullptr, 16), SimNmeaChecksumOf(s)) << s;
        seen.insert(s.substr(3, 3));
    }
    EXPECT_EQ(seen, want);
    // South and west show as hemispheres, 33 deg 30 min and 70 deg 15 min.
    EXPECT_NE(sentences[0].find(",3330.0000,S,07015.0000,W,"), std::string::npos) << sentences[0];
    EXPECT_NE(sentences[0].find(",010203.45,"), std::string::npos) << sentences[0];
}

TEST(SimSensors, ARunningSimulatorSendsEverySensor) {
    SimOptions o = TestOptions();
    RunningSim sim(o);
    SimTestClient data(sim.server->dataPort());
    std::set<std::uint16_t> seen;
    const std::set<std::uint16_t> want = {MsgPitchRoll, MsgPressure,  MsgAltitude,
                                          MsgAnalog,    MsgSituation, MsgNmea};
    auto found = data.ReadUntil(
        [&](const SonarMessage& m) {
            seen.insert(m.type());
            EXPECT_EQ(m.direction(), DirReply);
            return std::includes(seen.begin(), seen.end(), want.begin(), want.end());
        },
        3s);
    EXPECT_TRUE(found.has_value());
    EXPECT_EQ(sim.server->Counters().traces, 0u);  // the sonar waits to be told
}

TEST(SimVideo, FramesReassembleAndDecode) {
    struct Case {
        std::int32_t flags;
        std::uint8_t type;
    };
    for (const Case k : {Case{SimVideoEnable | SimVideoColour, 0}, Case{SimVideoEnable, 1},
                         Case{SimVideoEnable | SimVideoNoJpeg, 3},
                         Case{SimVideoEnable | SimVideoColour | SimVideoNoJpeg, 2}}) {
        SCOPED_TRACE(k.flags);
        SimVideo video(160, 120);
        const auto parts = video.Frame(5, k.flags, 60, 2000);
        ASSERT_FALSE(parts.empty());
        std::vector<std::uint8_t> bytes;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            const auto p = parts[i].Payload();
            EXPECT_EQ(parts[i].type(), MsgVideoFrame);
            EXPECT_EQ(GetLE<std::uint8_t>(p, 20), k.type);
            EXPECT_EQ(GetLE<std::int32_t>(p, 24), 5);
            EXPECT_EQ(GetLE<std::int16_t>(p, 28), static_cast<std::int16_t>(i));
            EXPECT_EQ(GetLE<std::int16_t>(p, 30), static_cast<std::int16_t>(parts.size()));
            EXPECT_EQ(GetLE<std::int16_t>(p, 16), 160);
            EXPECT_EQ(GetLE<std::int16_t>(p, 18), 120);
            bytes.insert(bytes.end(), p.begin() + kSimVideoHeaderSize, p.end());
        }
        EXPECT_EQ(static_cast<std::int32_t>(bytes.size()),
                  GetLE<std::int32_t>(parts[0].Payload(), 8));
        const bool colour = k.type == 0 || k.type == 2;
        if (k.type >= 2) {
            EXPECT_EQ(bytes, video.Picture(5, colour));
            continue;
        }
        tjhandle d = tjInitDecompress();
        int w = 0, h = 0, sub = 0, space = 0;
        ASSERT_EQ(tjDecompressHeader3(d, bytes.data(), bytes.size(), &w, &h, &sub, &space), 0);
        EXPECT_EQ(w, 160);
        EXPECT_EQ(h, 120);
        EXPECT_EQ(space == TJCS_GRAY, !colour);
        tjDestroy(d);
    }
}

TEST(SimVideo, ControlMessageStartsTheCamera) {
    SimOptions o = TestOptions();
    o.sensors = false;
    o.videoWidth = 64;
    o.videoHeight = 48;
    RunningSim sim(o);
    SimTestClient cmd(sim.server->commandPort());
    SimTestClient data(sim.server->dataPort());
    EXPECT_FALSE(data.Read(300ms).has_value());  // no video until asked
    SonarMessage control = SonarMessage::Build(MsgVideoControl, DirSet, SubVideo, 0, 136);
    PutLE<std::int32_t>(control.Payload(), 0, SimVideoEnable | SimVideoNoJpeg);
    PutLE<std::int32_t>(control.Payload(), 12, 3);
    ASSERT_TRUE(cmd.Send(control));
    auto frame =
        data.ReadUntil([](const SonarMessage& m) { return m.type() == MsgVideoFrame; }, 2s);
    ASSERT_TRUE(frame.has_value());
    EXPECT_EQ(GetLE<std::int32_t>(frame->Payload(), 8), 64 * 48);
    EXPECT_EQ(GetLE<std::uint8_t>(frame->Payload(), 20), 3);
}

}  // namespace
}  // namespace halvo::test
