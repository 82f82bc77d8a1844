#include "halvo-sim/SimLog.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>

#include "core/SonarMessage.h"

namespace halvo {

namespace {
constexpr std::array<std::uint32_t, 256> MakeCrcTable() {
    std::array<std::uint32_t, 256> t{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t c = i;
        for (int k = 0; k < 8; ++k) c = (c & 1u) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        t[i] = c;
    }
    return t;
}
constexpr std::array<std::uint32_t, 256> kCrcTable = MakeCrcTable();
}  // namespace

std::uint32_t SimCrc32(std::span<const std::uint8_t> bytes) {
    std::uint32_t c = 0xFFFFFFFFu;
    for (std::uint8_t b : bytes) c = kCrcTable[(c ^ b) & 0xFFu] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

SimLog::~SimLog() {
    if (file_) std::fclose(file_);
}

bool SimLog::Open(const std::string& path) {
    std::lock_guard lock(mutex_);
    if (file_) std::fclose(file_);
    file_ = std::fopen(path.c_str(), "w");
    if (!file_) {
        error_ = path + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

void SimLog::Record(const char* link, int port, std::span<const std::uint8_t> wire) {
    if (!file_) return;
    MessageHeader h;
    if (!MessageHeader::Read(wire, h)) return;
    const auto payload = wire.subspan(kMessageHeaderSize);
    nlohmann::json j;
    j["time"] = static_cast<double>(clock_.NowMs()) / 1000.0;
    j["link"] = link;
    j["port"] = port;
    j["type"] = h.type;
    j["direction"] = h.direction;
    j["subsystem"] = h.subsystem;
    j["channel"] = h.channel;
    j["size"] = h.size;
    auto words = nlohmann::json::array();
    for (std::size_t off = 0; off + 4 <= payload.size() && off < 16; off += 4)
        words.push_back(GetLE<std::int32_t>(payload, off));
    j["words"] = std::move(words);
    if (withCrc_) j["crc32"] = SimCrc32(wire);
    std::lock_guard lock(mutex_);
    if (!file_) return;
    j["seq"] = count_++;
    const std::string line = j.dump() + "\n";
    std::fwrite(line.data(), 1, line.size(), file_);
    std::fflush(file_);
}

}  // namespace halvo
