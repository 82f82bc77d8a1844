#pragma once
// Everything the simulator can be told on its command line, with the defaults a bench uses.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace halvo {

// The sonar configurations the simulator can play.
enum class SimConfig { SBSS, SB, R90, MPX, SBRC900 };

struct SimOptions {
    std::string host = "127.0.0.1";
    int portBase = 1600;  // command port; data port is one above. 0 picks two free ports
    double duration = 0;  // seconds; 0 runs until a signal
    SimConfig config = SimConfig::SBSS;
    int form = 80;    // 80, 82, 84 or 85
    int packing = 0;  // 0 to 12
    double rateMultiplier = 1.0;
    bool autostart = false;
    std::uint32_t seed = 1;
    std::string logFile;      // received messages, JSON lines
    std::string sentLogFile;  // sent messages, JSON lines with CRC-32
    bool sendClockSet = false;
    bool sensors = true;
    // Discovery: -1 turns it off, 0 picks a free port.
    int discoveryPort = 1700;
    std::string discoveryHost = "127.0.0.1";
    int discoveryReplyPort = -1;  // -1: discovery port + 1
    std::string deviceName = "halvo-sim";
    bool nmeaPty = false;
    int nmeaBaud = 4800;
    int videoWidth = 320;
    int videoHeight = 240;
    // Faults.
    double dropEvery = 0;
    long badMarkerAfter = -1;
    long oversizeAfter = -1;
    long stallAfter = -1;
    bool silent = false;
    bool slowReader = false;
    bool quiet = false;  // no status lines beyond the port line
};

// Parses argv. On a bad command line or --help returns nothing and fills `message` with the
// text to print; `exitCode` says what the process should return.
std::optional<SimOptions> ParseSimOptions(int argc, const char* const* argv, std::string& message,
                                          int& exitCode);

// Checks combinations the parser cannot: float packing codes exist only for the full forms.
// Returns an empty string when the options are usable.
std::string ValidateSimOptions(const SimOptions& options);

const char* SimConfigName(SimConfig c);
std::optional<SimConfig> SimConfigFromName(const std::string& name);

}  // namespace halvo
