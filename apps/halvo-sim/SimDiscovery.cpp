#include "halvo-sim/SimDiscovery.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <span>

#include "core/ByteOrder.h"

namespace halvo {

namespace {
void PutAddress(std::vector<std::uint8_t>& b, std::size_t offset, std::uint32_t netOrder) {
    std::memcpy(b.data() + offset, &netOrder, 4);  // bytes as they lie in memory: a.b.c.d
}
void PutName(std::vector<std::uint8_t>& b, std::size_t offset, const std::string& name) {
    std::memcpy(b.data() + offset, name.data(), std::min<std::size_t>(name.size(), 79));
}
}  // namespace

std::vector<std::uint8_t> SimDiscoveryQuery() {
    std::vector<std::uint8_t> q(kSimDiscoveryQuerySize, 0);
    for (std::uint32_t i = 0; i < 4; ++i) PutLE<std::uint32_t>(q, 4 * i, kSimDiscoveryMagic + i);
    return q;
}

std::vector<std::uint8_t> SimAddressList(const std::vector<std::uint32_t>& addresses,
                                         const std::string& name) {
    std::vector<std::uint8_t> b(kSimDiscoveryListSize, 0);
    PutLE<std::uint32_t>(b, 0, kSimDiscoveryMagic);
    for (std::size_t i = 0; i < addresses.size() && i < 20; ++i)
        PutAddress(b, 4 + 4 * i, addresses[i]);
    PutName(b, 84, name);
    return b;
}

std::vector<std::uint8_t> SimDeviceRecord(std::uint32_t listCount, std::uint32_t address,
                                          const std::string& name) {
    std::vector<std::uint8_t> b(kSimDiscoveryRecordSize, 0);
    PutLE<std::uint32_t>(b, 0, kSimDiscoveryMagic);
    PutLE<std::uint32_t>(b, 4, listCount);
    PutAddress(b, 8, address);
    PutName(b, 12, name);
    return b;
}

SimDiscovery::SimDiscovery(std::string host, int port, int replyPort, std::string name)
    : host_(std::move(host)), port_(port), replyPort_(replyPort), name_(std::move(name)) {}

SimDiscovery::~SimDiscovery() {
    Stop();
}

bool SimDiscovery::Start(std::string& error) {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<std::uint16_t>(port_));
    if (inet_pton(AF_INET, host_.c_str(), &a.sin_addr) != 1) {
        error = "discovery: not an IPv4 address: " + host_;
        return false;
    }
    // A wildcard bind still names one address in the list: the loopback one.
    address_ = a.sin_addr.s_addr == htonl(INADDR_ANY) ? htonl(INADDR_LOOPBACK) : a.sin_addr.s_addr;
    fd_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd_ < 0 || ::bind(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
        error = "discovery port " + std::to_string(port_) + ": " + std::strerror(errno);
        if (fd_ >= 0) ::close(fd_);
        fd_ = -1;
        return false;
    }
    socklen_t len = sizeof a;
    ::getsockname(fd_, reinterpret_cast<sockaddr*>(&a), &len);
    boundPort_ = ntohs(a.sin_port);
    thread_ = std::thread([this] { Run(); });
    return true;
}

void SimDiscovery::Stop() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

void SimDiscovery::Run() {
    std::uint8_t buf[2048];
    while (!stop_) {
        pollfd p{fd_, POLLIN, 0};
        if (::poll(&p, 1, 100) <= 0) continue;
        sockaddr_in from{};
        socklen_t len = sizeof from;
        const ssize_t n =
            ::recvfrom(fd_, buf, sizeof buf, 0, reinterpret_cast<sockaddr*>(&from), &len);
        if (n <= 0 || from.sin_family != AF_INET) continue;
        Answer(std::span<const std::uint8_t>(buf, static_cast<std::size_t>(n)),
               from.sin_addr.s_addr);
    }
}

void SimDiscovery::Answer(std::span<const std::uint8_t> packet, std::uint32_t from) {
    if (GetLE<std::uint32_t>(packet, 0) != kSimDiscoveryMagic) return;
    // Only ever to the asker, never to a broadcast or multicast address.
    const std::uint32_t host = ntohl(from);
    if (from == 0 || host == 0xFFFFFFFFu || (host >> 28) == 0xE) return;
    std::vector<std::uint8_t> reply;
    if (packet.size() == kSimDiscoveryQuerySize &&
        GetLE<std::uint32_t>(packet, 4) == kSimDiscoveryMagic + 1) {
        reply = SimAddressList({address_}, name_);
    } else if (packet.size() == kSimDiscoveryRecordSize) {
        std::uint32_t asked = 0;
        std::memcpy(&asked, packet.data() + 8, 4);
        if (asked != address_) return;
        reply = SimDeviceRecord(GetLE<std::uint32_t>(packet, 4), address_, name_);
    } else {
        return;
    }
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = from;
    to.sin_port = htons(static_cast<std::uint16_t>(replyPort()));
    if (::sendto(fd_, reply.data(), reply.size(), 0, reinterpret_cast<sockaddr*>(&to), sizeof to) >
        0)
        ++answered_;
}

}  // namespace halvo
