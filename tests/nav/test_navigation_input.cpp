#include <gtest/gtest.h>

#include <stdlib.h>
#include <tuple>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "core/SensorPayloads.h"
#include "nav/DiagnosticPulse.h"
#include "nav/SerialInputRig.h"

namespace halvo {
namespace {

using test::PtyPair;
using test::SerialInputRig;
using test::WaitFor;
using namespace std::chrono_literals;

TEST(NavigationInput, PostsEachLineAsStampedMessage2002WithSource4AndPulses) {
    const std::string sent = "$GPGLL,5741.4000,N,01148.0000,E*4A\r\n";
    const std::string line = "$GPGLL,5741.4000,N,01148.0000,E*4A\n";
    for (int index : {0, 2}) {
        SerialInputRig rig;
        PtyPair pty;
        NavigationConfig c = rig.store.Get();
        c.tsScopeOutEnable = 1, c.tsScopeOutPort = 0x3BC;
        rig.store.Set(c);
        ASSERT_TRUE(rig.StartOn(index, pty.path()));
        ASSERT_TRUE(pty.Write(sent + "X\n" + sent));  // the short line is no line: no pulse
        ASSERT_TRUE(WaitFor([&] { return rig.collector.Count() == 2; }));
        EXPECT_EQ(rig.input.LinesPosted(index), 2u);
        // The scope port is prepared once, then pulsed once per line.
        EXPECT_EQ(rig.parallel.Writes().size(), 5u);

        auto seen = rig.collector.Take();
        const SonarMessage& m = seen[0].message;
        EXPECT_EQ(seen[0].source, SourceSerial);
        EXPECT_EQ((std::vector<int>{m.version(), m.direction(), m.subsystem(), m.channel()}),
                  (std::vector<int>{13, 2, 100, index}));
        EXPECT_EQ(m.size(), static_cast<std::int32_t>(line.size() + 13));
        const auto p = m.Payload();
        EXPECT_EQ(GetLE<std::int32_t>(p, 0), SerialInputRig::kNow.seconds);
        EXPECT_EQ(GetLE<std::int32_t>(p, 4), SerialInputRig::kNow.ms);
        EXPECT_EQ(GetLE<std::uint32_t>(p, 8), 0u);
        EXPECT_EQ(p.back(), 0);  // the terminating zero is stored
        const auto reading = ReadNmea(p);
        ASSERT_TRUE(reading.has_value());
        EXPECT_EQ(reading->text, line);
    }
}

TEST(NavigationInput, MissingPortIsRetriedAndPickedUpWhenItComesBack) {
    char dir[] = "/tmp/halvo-serial-XXXXXX";
    ASSERT_NE(::mkdtemp(dir), nullptr);
    const std::filesystem::path link = std::filesystem::path(dir) / "gps";
    SerialInputRig rig;
    rig.EnablePort(1, link.string());
    rig.input.Start();
    ASSERT_TRUE(WaitFor([&] { return rig.input.StatusText() == "[Cannot Open Port] "; }));

    // Plugged in late, pulled, then a different adapter under the same name.
    for (int round = 0; round < 2; ++round) {
        PtyPair pty;
        std::filesystem::remove(link);
        std::filesystem::create_symlink(pty.path(), link);
        ASSERT_TRUE(WaitFor([&] { return rig.input.Input(1).isOpen(); })) << round;
        ASSERT_TRUE(pty.Write("$GPZDA,round\n"));
        ASSERT_TRUE(WaitFor([&] { return rig.input.LinesPosted(1) == round + 1u; })) << round;
        pty.CloseMaster();
        ASSERT_TRUE(WaitFor([&] { return !rig.input.Input(1).isOpen(); })) << round;
        EXPECT_EQ(rig.input.StatusText(), "[Cannot Open Port] ");
    }
    std::filesystem::remove_all(dir);
}

TEST(NavigationInput, PlaybackClosesThePortsAndHoldsBackNewOnes) {
    SerialInputRig rig;
    PtyPair first;
    PtyPair second;
    ASSERT_TRUE(rig.StartOn(0, first.path()));

    rig.playback = true;
    ASSERT_TRUE(WaitFor([&] { return !rig.input.Input(0).isOpen(); }));
    // A port enabled while a file plays stays shut, and nothing typed meanwhile comes through.
    rig.EnablePort(1, second.path());
    ASSERT_TRUE(first.Write("$GPGLL,during\n"));
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(rig.input.Input(1).isOpen());
    EXPECT_EQ(rig.input.StatusText(), "[Playback Mode] [Playback Mode] ");
    EXPECT_EQ(rig.collector.Count(), 0u);

    rig.playback = false;
    ASSERT_TRUE(
        WaitFor([&] { return rig.input.Input(0).isOpen() && rig.input.Input(1).isOpen(); }));
    ASSERT_TRUE(first.Write("$GPGLL,after\n"));
    ASSERT_TRUE(second.Write("$GPGGA,after\n"));
    ASSERT_TRUE(WaitFor([&] { return rig.collector.Count() == 2; }));
    for (const auto& s : rig.collector.Take()) {
        EXPECT_NE(ReadNmea(s.message.Payload())->text.find("after"), std::string_view::npos);
    }
}

TEST(NavigationInput, RefusedMessageIsDroppedNotRetried) {
    SerialInputRig rig(/*startBus=*/false);
    PtyPair pty;
    ASSERT_TRUE(rig.StartOn(0, pty.path()));
    ASSERT_TRUE(pty.Write("$GPGLL,1\n$GPGLL,2\n"));
    ASSERT_TRUE(WaitFor([&] { return rig.input.LinesDropped(0) == 2; }));
    EXPECT_EQ(rig.input.LinesPosted(0), 0u);
}

TEST(NavigationInput, StatusTextBadBaudAndChangesThatDoNotReopen) {
    SerialInputRig rig;
    PtyPair pty;
    rig.EnablePort(2, "/tmp/halvo-no-such-serial-device");
    ASSERT_TRUE(rig.StartOn(0, pty.path(), 4000));
    EXPECT_EQ(rig.input.Input(0).baud(), 2400);  // not a listed rate
    ASSERT_TRUE(pty.Write("$GPGLL,1\n"));
    ASSERT_TRUE(WaitFor([&] { return rig.input.LinesPosted(0) == 1; }));
    const std::string ports = "[Bytes=9 OF=0] [Cannot Open Port] ";
    EXPECT_EQ(rig.input.StatusText(), ports);

    // Other settings change on the open line: a reopen would clear the byte count.
    NavigationConfig c = rig.store.Get();
    c.tsEnable = 1;
    c.tsBias = 40;
    rig.store.Set(c);
    std::this_thread::sleep_for(100ms);
    const std::tuple<std::int32_t, double, const char*> cases[] = {
        {12, 3.9, "[Time(Cur=12 Avg=3)] "},
        {-7, -3.9, "[Time(Cur=-7 Avg=-3)] "},
        {0, 1e300, "[Time(Cur=0 Avg=2147483647)] "},
    };
    for (const auto& [current, average, tail] : cases) {
        EXPECT_EQ(rig.input.StatusText(current, average), ports + tail);
    }
}

TEST(DiagnosticPulse, PreparesEachNewAddressThenPulses) {
    using W = FakeParallelPort::PortWrite;
    FakeParallelPort port;
    DiagnosticPulse pulse(port);
    pulse.Run(0, 0x378);   // not enabled
    pulse.Run(1, 0);       // no address
    pulse.Run(1, 0xFFFE);  // address + 2 would not exist
    pulse.Run(1, -0x378);  // not an address
    EXPECT_TRUE(port.Writes().empty());

    pulse.Run(1, 0x378);
    pulse.Run(1, 0x378);
    pulse.Run(1, 0x278);
    const std::vector<W> expected = {W(0x37A, 0x00), W(0x378, 0x0F), W(0x378, 0xF0),
                                     W(0x378, 0x0F), W(0x378, 0xF0), W(0x27A, 0x00),
                                     W(0x278, 0x0F), W(0x278, 0xF0)};
    EXPECT_EQ(port.Writes(), expected);
}

}  // namespace
}  // namespace halvo
