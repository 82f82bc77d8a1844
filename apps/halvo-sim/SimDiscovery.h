#pragma once
// The device side of the network search: answers a query with the device's address list, and
// a device record naming one of its addresses with that record, both to the asker's address at
// the reply port. It only ever answers the host that asked; it never broadcasts.

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace halvo {

constexpr std::uint32_t kSimDiscoveryMagic = 0x1235;
constexpr std::size_t kSimDiscoveryQuerySize = 32;
constexpr std::size_t kSimDiscoveryListSize = 164;
constexpr std::size_t kSimDiscoveryRecordSize = 92;

// Pure record builders, for the responder and for tests.
std::vector<std::uint8_t> SimDiscoveryQuery();
std::vector<std::uint8_t> SimAddressList(const std::vector<std::uint32_t>& addressesNetOrder,
                                         const std::string& name);
std::vector<std::uint8_t> SimDeviceRecord(std::uint32_t listCount, std::uint32_t addressNetOrder,
                                          const std::string& name);

class SimDiscovery {
  public:
    SimDiscovery(std::string host, int port, int replyPort, std::string name);
    ~SimDiscovery();
    SimDiscovery(const SimDiscovery&) = delete;
    SimDiscovery& operator=(const SimDiscovery&) = delete;

    bool Start(std::string& error);
    void Stop();
    int port() const { return boundPort_; }
    int replyPort() const { return replyPort_ >= 0 ? replyPort_ : boundPort_ + 1; }
    std::uint64_t answered() const { return answered_.load(); }

  private:
    void Run();
    void Answer(std::span<const std::uint8_t> packet, std::uint32_t fromNetOrder);

    std::string host_;
    int port_;
    int replyPort_;
    std::string name_;
    int fd_ = -1;
    int boundPort_ = 0;
    std::uint32_t address_ = 0;  // network order
    std::atomic<bool> stop_{false};
    std::atomic<std::uint64_t> answered_{0};
    std::thread thread_;
};

}  // namespace halvo
