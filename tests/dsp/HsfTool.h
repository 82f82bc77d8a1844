#pragma once
// Runs the file tool as a program; its output is read as one JSON document per line. Byte lines
// in that output are base64.

#include <sys/wait.h>

#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace halvo::test {

struct ToolRun {
    int status = -1;
    std::vector<nlohmann::json> lines;
};

inline ToolRun RunHsf(const std::string& args) {
    ToolRun r;
    FILE* p = ::popen((std::string(HALVO_HSF_BIN) + " " + args + " 2>/dev/null").c_str(), "r");
    if (!p) return r;
    std::string out;
    char buf[65536];
    for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
    const int raw = ::pclose(p);
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    std::istringstream in(out);
    for (std::string l; std::getline(in, l);)
        r.lines.push_back(nlohmann::json::parse(l, nullptr, false));
    return r;
}

inline std::vector<std::uint8_t> FromBase64(const std::string& s) {
    static const std::string digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<std::uint8_t> out;
    std::uint32_t acc = 0;
    int bits = 0;
    for (std::size_t i = 0; i < s.size() && digits.find(s[i]) != std::string::npos; ++i) {
        acc = (acc << 6) | static_cast<std::uint32_t>(digits.find(s[i]));
        if ((bits += 6) >= 8) out.push_back(static_cast<std::uint8_t>(acc >> (bits -= 8)));
    }
    return out;
}

}  // namespace halvo::test
