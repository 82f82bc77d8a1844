#include "halvo-sim/SimOptions.h"

#include <CLI/CLI.hpp>
#include <cstdio>

namespace halvo {

const char* SimConfigName(SimConfig c) {
    switch (c) {
        case SimConfig::SBSS:
            return "SBSS";
        case SimConfig::SB:
            return "SB";
        case SimConfig::R90:
            return "R90";
        case SimConfig::MPX:
            return "MPX";
        case SimConfig::SBRC900:
            return "SBRC900";
    }
    return "SBSS";
}

std::optional<SimConfig> SimConfigFromName(const std::string& name) {
    for (SimConfig c :
         {SimConfig::SBSS, SimConfig::SB, SimConfig::R90, SimConfig::MPX, SimConfig::SBRC900}) {
        if (name == SimConfigName(c)) return c;
    }
    return std::nullopt;
}

std::string ValidateSimOptions(const SimOptions& o) {
    if (o.form != 80 && o.form != 82 && o.form != 84 && o.form != 85)
        return "--form must be 80, 82, 84 or 85";
    if (o.packing < 0 || o.packing > 12) return "--packing must be 0 to 12";
    // Float codes widen to 32-bit values; only the full header can say so (data format 7 or 10).
    if (o.packing >= 7 && o.form != 80) return "--packing 7 to 12 needs --form 80";
    if (o.rateMultiplier <= 0) return "--rate-multiplier must be above 0";
    if (o.portBase < 0 || o.portBase > 65534) return "--port-base must be 0 to 65534";
    if (o.discoveryPort < -1 || o.discoveryPort > 65534) return "--discovery-port out of range";
    if (o.videoWidth < 8 || o.videoWidth > 4096 || o.videoHeight < 8 || o.videoHeight > 4096)
        return "--video-size must lie between 8x8 and 4096x4096";
    if (o.nmeaBaud <= 0) return "--nmea-baud must be above 0";
    return {};
}

std::optional<SimOptions> ParseSimOptions(int argc, const char* const* argv, std::string& message,
                                          int& exitCode) {
    SimOptions o;
    CLI::App app{
        "halvo-sim: sonar simulator, the device side of the command, data and discovery "
        "links"};
    std::string config = "SBSS";
    std::string videoSize;
    app.add_option("--host", o.host, "address to listen on")->capture_default_str();
    app.add_option("--port-base", o.portBase, "command port; the data port is one above (0: any)")
        ->capture_default_str();
    app.add_option("--duration", o.duration,
                   "stop after this many seconds (0: run until a signal)");
    app.add_option("--config", config, "SBSS, SB, R90, MPX or SBRC900")->capture_default_str();
    app.add_option("--form", o.form, "trace message form: 80, 82, 84 or 85")->capture_default_str();
    app.add_option("--packing", o.packing, "packing code 0 to 12")->capture_default_str();
    app.add_option("--rate-multiplier", o.rateMultiplier, "pings this many times faster")
        ->capture_default_str();
    app.add_flag("--autostart", o.autostart, "turn every subsystem on without a topside command");
    app.add_option("--seed", o.seed, "seed of the scene's noise")->capture_default_str();
    app.add_option("--log", o.logFile, "JSON-lines log of every message received");
    app.add_option("--sent-log", o.sentLogFile, "JSON-lines log of every message sent");
    app.add_flag("--send-clock-set", o.sendClockSet,
                 "send the topside a clock set now and then (never by default)");
    app.add_flag("!--no-sensors", o.sensors, "send no sensor messages");
    app.add_option("--discovery-port", o.discoveryPort, "UDP discovery port (-1: off, 0: any)")
        ->capture_default_str();
    app.add_option("--discovery-host", o.discoveryHost, "address the discovery socket binds to")
        ->capture_default_str();
    app.add_option("--discovery-reply-port", o.discoveryReplyPort,
                   "port replies go to (default: discovery port + 1)");
    app.add_option("--name", o.deviceName, "device name in discovery replies")
        ->capture_default_str();
    app.add_flag("--nmea-pty", o.nmeaPty, "write NMEA sentences to a pseudo-terminal");
    app.add_option("--nmea-baud", o.nmeaBaud, "baud rate of the pseudo-terminal")
        ->capture_default_str();
    app.add_option("--video-size", videoSize, "camera picture size, WxH (default 320x240)");
    app.add_option("--drop-every", o.dropEvery, "close both links every S seconds");
    app.add_option("--bad-marker-after", o.badMarkerAfter,
                   "send a bad marker after N data messages");
    app.add_option("--oversize-after", o.oversizeAfter,
                   "send a header of size 5000000 after N data messages");
    app.add_option("--stall-after", o.stallAfter,
                   "stop reading the command link after N messages received");
    app.add_flag("--silent", o.silent, "answer nothing on the command link");
    app.add_flag("--slow-reader", o.slowReader, "read the command link a few bytes at a time");
    app.add_flag("--quiet", o.quiet, "print only the port lines");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        exitCode = e.get_exit_code();
        message = e.get_name() == "CallForHelp" ? app.help() : std::string(e.what());
        return std::nullopt;
    }
    const auto c = SimConfigFromName(config);
    if (!c) {
        message = "--config: unknown configuration " + config;
        exitCode = 2;
        return std::nullopt;
    }
    o.config = *c;
    if (!videoSize.empty()) {
        int w = 0, h = 0;
        char x = 0;
        if (std::sscanf(videoSize.c_str(), "%d%c%d", &w, &x, &h) != 3 || (x != 'x' && x != 'X')) {
            message = "--video-size: expected WxH";
            exitCode = 2;
            return std::nullopt;
        }
        o.videoWidth = w;
        o.videoHeight = h;
    }
    message = ValidateSimOptions(o);
    if (!message.empty()) {
        exitCode = 2;
        return std::nullopt;
    }
    exitCode = 0;
    return o;
}

}  // namespace halvo
