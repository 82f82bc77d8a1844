// Discovery answers on loopback, and the pty carries sentences.

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstring>

#include "core/ByteOrder.h"
#include "halvo-sim/SimDiscovery.h"
#include "halvo-sim/SimNmea.h"
#include "sim/SimTestServer.h"

namespace halvo::test {
namespace {

struct Udp {
    Udp() {
        fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
        socklen_t len = sizeof a;
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len);
        port = ntohs(a.sin_port);
    }
    ~Udp() { ::close(fd); }
    void SendTo(int to, const std::vector<std::uint8_t>& b) const {
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_port = htons(static_cast<std::uint16_t>(to));
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::sendto(fd, b.data(), b.size(), 0, reinterpret_cast<sockaddr*>(&a), sizeof a);
    }
    std::vector<std::uint8_t> Receive(int timeoutMs) const {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, timeoutMs) <= 0) return {};
        std::vector<std::uint8_t> b(2048);
        const ssize_t n = ::recv(fd, b.data(), b.size(), 0);
        b.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
        return b;
    }
    int fd = -1;
    int port = 0;
};

TEST(SimDiscovery, AnswersAQueryAndAnAskedAddressOnLoopback) {
    Udp asker;
    SimOptions o = TestOptions();
    o.discoveryPort = 0;
    o.discoveryReplyPort = asker.port;
    o.deviceName = "bench sonar";
    RunningSim sim(o);
    const int port = sim.server->discoveryPort();
    ASSERT_GT(port, 0);

    asker.SendTo(port, SimDiscoveryQuery());
    const auto list = asker.Receive(2000);
    ASSERT_EQ(list.size(), kSimDiscoveryListSize);
    EXPECT_EQ(GetLE<std::uint32_t>(list, 0), kSimDiscoveryMagic);
    const std::uint8_t loopback[4] = {127, 0, 0, 1};
    EXPECT_EQ(std::memcmp(list.data() + 4, loopback, 4), 0);
    EXPECT_EQ(GetLE<std::uint32_t>(list, 8), 0u);  // zero after the last address
    EXPECT_STREQ(reinterpret_cast<const char*>(list.data() + 84), "bench sonar");

    std::uint32_t address = 0;
    std::memcpy(&address, loopback, 4);
    asker.SendTo(port, SimDeviceRecord(1, address, "bench sonar"));
    const auto record = asker.Receive(2000);
    ASSERT_EQ(record.size(), kSimDiscoveryRecordSize);
    EXPECT_EQ(GetLE<std::uint32_t>(record, 4), 1u);
    EXPECT_EQ(std::memcmp(record.data() + 8, loopback, 4), 0);
    EXPECT_STREQ(reinterpret_cast<const char*>(record.data() + 12), "bench sonar");

    // Not ours, not a record, or the wrong magic: no answer.
    const std::uint8_t other[4] = {10, 1, 2, 3};
    std::memcpy(&address, other, 4);
    asker.SendTo(port, SimDeviceRecord(1, address, "x"));
    auto wrong = SimDiscoveryQuery();
    wrong[0] = 0x99;
    asker.SendTo(port, wrong);
    asker.SendTo(port, std::vector<std::uint8_t>(40, 0));
    EXPECT_TRUE(asker.Receive(300).empty());
}

TEST(SimNmeaPty, CarriesSentencesWithValidChecksums) {
    SimOptions o = TestOptions();
    o.nmeaPty = true;
    o.nmeaBaud = 38400;
    RunningSim sim(o);
    const std::string path = sim.server->ptyPath();
    ASSERT_FALSE(path.empty());
    const int fd = ::open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    std::string text;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(2500);
    while (std::chrono::steady_clock::now() < deadline &&
           text.find("$GPGLL") == std::string::npos) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 100) <= 0) continue;
        char buf[512];
        const ssize_t n = ::read(fd, buf, sizeof buf);
        if (n > 0) text.append(buf, static_cast<std::size_t>(n));
    }
    ::close(fd);
    // Whole sentences from the first "$" on; each checks out.
    const auto first = text.find('$');
    ASSERT_NE(first, std::string::npos);
    int checked = 0;
    for (std::size_t at = first; at < text.size();) {
        const auto end = text.find("\r\n", at);
        if (end == std::string::npos) break;
        const std::string s = text.substr(at, end - at + 2);
        const auto star = s.find('*');
        ASSERT_NE(star, std::string::npos) << s;
        EXPECT_EQ(std::stoi(s.substr(star + 1, 2), nullptr, 16), SimNmeaChecksumOf(s)) << s;
        ++checked;
        at = end + 2;
    }
    EXPECT_GE(checked, 1);
    EXPECT_NE(text.find("$GPGLL"), std::string::npos);
}

}  // namespace
}  // namespace halvo::test
