// One endpoint against a raw loopback peer that writes the stream byte for byte: size limits,
// broken headers, reconnection, commands out and commands dropped while the link is down.

#include <gtest/gtest.h>

#include "app/ProgramClock.h"
#include "core/MessageHub.h"
#include "core/MessageTypes.h"
#include "net/NetTestRig.h"
#include "net/NetworkIO.h"
#include "net/SocketIO.h"
#include "net/SocketManager.h"
#include "platform/FakeSystemClock.h"
#include "platform/FakeTickSource.h"
#include "platform/MonotonicTickSource.h"

namespace halvo::test {
namespace {

constexpr int kTimerMs = 100;
constexpr int kReconnectMs = 300;

// One data endpoint on its own socket manager with a fine timer grain.
struct Link {
    explicit Link(int port, int source = SourceSonarData, int aliveMs = 0,
                  std::chrono::microseconds observerDelay = {})
        : kept(SourceSonarData, observerDelay) {
        run.Raise();
        hub.Start();
        hub.DataBus().Attach(&kept);
        EndpointSettings s;
        s.HostName = "127.0.0.1";
        s.Port = port;
        io = std::make_unique<NetworkIO>(
            "SonarData", s, source, source == SourceSonarData ? hub.DataBus() : hub.CommandBus(),
            status, sockets, clock);
        io->Start(source == SourceSonarCommand ? &hub.CommandBus() : nullptr, aliveMs,
                  kReconnectMs);
    }
    KeepingObserver kept;
    RunFlag run;
    MessageHub hub{run};
    MonotonicTickSource ticks;
    FakeTickSource fakeTicks;
    FakeSystemClock system;
    ProgramClock clock{fakeTicks, system};
    SocketStatusCell status;
    SocketManager sockets{ticks, kTimerMs};
    std::unique_ptr<NetworkIO> io;
};

TEST(SocketLink, SizeLimitsAndBrokenHeaders) {
    struct Case {
        const char* name;
        std::uint16_t marker;
        std::int32_t size;    // as announced
        std::size_t payload;  // bytes actually sent behind the header
        bool delivered;
        const char* errorPart;  // expected in the socket's error text when refused
    };
    const Case cases[] = {
        {"largest block", kMessageMarker, 2000000 - 16, 2000000 - 16, true, ""},
        {"one byte over", kMessageMarker, 2000001 - 16, 2000001 - 16, false,
         "Message size too large"},
        {"empty body", kMessageMarker, 0, 0, true, ""},
        {"negative size", kMessageMarker, -1, 0, false, "Bad header"},
        {"announced too much", kMessageMarker, 5000000, 0, false, "Bad header"},
        {"bad marker", 0x4242, 8, 8, false, "Bad header"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        RawPeer peer;
        Link link(peer.port());
        ASSERT_TRUE(peer.Accept(2s));
        ASSERT_TRUE(WaitFor([&] { return link.io->IsConnected() > 0; }, 2s));
        const auto frame = Frame(c.marker, MsgTrace, c.size, c.payload);
        // A refused stream may be closed before the peer has written it all.
        const bool sent = peer.Send(frame);
        if (c.delivered) {
            ASSERT_TRUE(sent);
            ASSERT_TRUE(WaitFor([&] { return link.kept.count() == 1; }, 5s));
            EXPECT_EQ(link.kept.Kept()[0], frame);
            EXPECT_EQ(link.io->Status().received, 1);
            EXPECT_TRUE(link.io->Status().IsConnected());
        } else {
            EXPECT_TRUE(peer.WaitClosed(2s));
            EXPECT_NE(link.io->ErrorText().find(c.errorPart), std::string::npos)
                << link.io->ErrorText();
            EXPECT_EQ(link.kept.count(), 0);
            // The link comes back by itself after the reconnect interval.
            ASSERT_TRUE(peer.Accept(std::chrono::milliseconds(kReconnectMs + 5 * kTimerMs + 1000)));
            EXPECT_TRUE(WaitFor([&] { return link.io->Status().connectionCount >= 3; }, 2s));
            // And it carries messages again.
            const auto good = Frame(kMessageMarker, MsgAltitude, 4, 4);
            ASSERT_TRUE(peer.Send(good));
            ASSERT_TRUE(WaitFor([&] { return link.kept.count() == 1; }, 2s));
            EXPECT_EQ(link.kept.Kept()[0], good);
        }
    }
}

TEST(SocketLink, WhatArrivedBeforeAResetIsDeliveredWhole) {
    // A slow bus: the link stops reading while the bus is full, so most of the stream is still
    // queued on this side when the sonar resets the connection. None of it may be lost.
    RawPeer peer;
    Link link(peer.port(), SourceSonarData, 0, std::chrono::microseconds(3000));
    ASSERT_TRUE(peer.Accept(2s));
    ASSERT_TRUE(WaitFor([&] { return link.io->IsConnected() > 0; }, 2s));
    constexpr int kMessages = 400;
    std::vector<std::uint8_t> stream;
    for (int i = 0; i < kMessages; ++i) {
        auto frame = Frame(kMessageMarker, MsgTrace, 200, 200);
        frame[kMessageHeaderSize] = static_cast<std::uint8_t>(i);
        frame[kMessageHeaderSize + 1] = static_cast<std::uint8_t>(i >> 8);
        stream.insert(stream.end(), frame.begin(), frame.end());
    }
    ASSERT_TRUE(peer.Send(stream));
    ASSERT_TRUE(peer.Reset(2s));
    ASSERT_LT(link.kept.count(), kMessages);  // the reset came while the stream was queued
    ASSERT_TRUE(WaitFor([&] { return link.kept.count() == kMessages; }, 10s)) << link.kept.count();
    const auto kept = link.kept.Kept();
    for (int i = 0; i < kMessages; ++i) {
        EXPECT_EQ(kept[i][kMessageHeaderSize] | kept[i][kMessageHeaderSize + 1] << 8, i);
    }
    // Then the reset is reported and the link comes back.
    EXPECT_TRUE(WaitFor([&] { return !link.io->ErrorText().empty(); }, 2s));
    EXPECT_TRUE(peer.Accept(std::chrono::milliseconds(kReconnectMs + 5 * kTimerMs + 1000)));
}

TEST(SocketLink, CommandsGoOutWholeWhileUpAndAreDroppedWhileDown) {
    // A port nobody listens on yet: the link is down.
    int port = 0;
    {
        RawPeer probe;
        port = probe.port();
    }
    Link link(port, SourceSonarCommand);
    ASSERT_TRUE(WaitFor([&] { return link.io->linkState() == NetworkIO::LinkDown; }, 2s));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(link.hub.SendCommand(nullptr, 0, MsgPingRate, i, DirQuery, 0), 0);
    }
    // The tick takes them off the queue and counts them as gone.
    ASSERT_TRUE(WaitFor([&] { return link.io->Status().sent == 3; }, 3s));
    EXPECT_EQ(link.io->QueueDepth(), 0u);

    // Now a sonar appears on that port: nothing of the dropped commands reaches it, and what is
    // made while the link is up goes out whole and in order.
    RawPeer peer(port);
    ASSERT_EQ(peer.port(), port);
    ASSERT_TRUE(peer.Accept(std::chrono::milliseconds(kReconnectMs + 5 * kTimerMs + 1000)));
    ASSERT_TRUE(WaitFor([&] { return link.io->linkState() == NetworkIO::LinkUp; }, 2s));
    const std::uint32_t word = 0x01020304;
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(link.hub.SendCommand(&word, sizeof word, MsgChannelGain, i, DirSet, 20), 0);
    }
    std::vector<std::uint8_t> got;
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(peer.Read(got, kMessageHeaderSize + 4, 2s)) << i;
        MessageHeader h;
        ASSERT_TRUE(MessageHeader::Read(got, h));
        EXPECT_EQ(h.type, MsgChannelGain);
        EXPECT_EQ(h.channel, i);
        EXPECT_EQ(GetLE<std::uint32_t>(got, kMessageHeaderSize), word);
    }
    EXPECT_TRUE(WaitFor([&] { return link.io->Status().sent == 23; }, 2s));
    // A reply that comes back on this link is not sent back out.
    const auto reply = Frame(kMessageMarker, MsgPingRate, 4, 4);
    ASSERT_TRUE(peer.Send(reply));
    EXPECT_FALSE(peer.Read(got, 1, 300ms));
}

}  // namespace
}  // namespace halvo::test
