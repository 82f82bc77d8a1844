#pragma once
// The settings of the network layer: four endpoint records (sections MessageSonarCommand,
// MessageSonarData, MessageTopsideCommand, MessageTopsideData; only the first two are made into
// links), the switches of section Message and the timings of section Network. Plain records,
// copied whole between threads.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace halvo {

class IniFile;

struct EndpointSettings {
    std::string HostName;
    std::int32_t Port = 0;
    std::int32_t HandlerType = 0;  // stored, not used
    std::int32_t XmitSize = 100000;
    std::int32_t RecvSize = 100000;
    std::int32_t NagleState = 0;   // non-zero sets TCP_NODELAY
    std::int32_t QueueSize = 200;  // transmit queue; 0 or less makes none

    friend bool operator==(const EndpointSettings&, const EndpointSettings&) = default;
};

struct NetworkSettings {
    enum Endpoint : int { SonarCommand = 0, SonarData = 1, TopsideCommand = 2, TopsideData = 3 };
    static constexpr int kEndpoints = 4;
    static constexpr std::array<std::string_view, kEndpoints> kNames = {
        "SonarCommand", "SonarData", "TopsideCommand", "TopsideData"};
    // The sonar electronics' fixed address on the ship's network; set per installation.
    static constexpr std::string_view kDefaultSonarHost = "192.168.1.90";
    static constexpr std::string_view kDefaultTopsideHost = "DKIU";

    std::array<EndpointSettings, kEndpoints> endpoints = Defaults();
    std::int32_t EnableNetworkIO = 1;
    std::int32_t EnableTimeSync = 0;
    std::int32_t AliveTimeout = 6000;        // ms, first probe and give-up alike
    std::int32_t ReconnectInterval = 10000;  // ms between connection attempts

    static std::array<EndpointSettings, kEndpoints> Defaults();
    // "Message" joined with the endpoint's name.
    static std::string SectionName(int endpoint);

    // Reads every key; a missing key gives its default. Values that cannot work are held to
    // what can (see docs/network.md).
    void Load(IniFile& ini);
    // Writes every key of every section.
    void Save(IniFile& ini) const;
    // The reconnect interval as used: never at or below the point where clients stop retrying.
    std::int32_t EffectiveReconnectMs() const;

    friend bool operator==(const NetworkSettings&, const NetworkSettings&) = default;
};

}  // namespace halvo
