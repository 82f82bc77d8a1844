#pragma once
// Runs the file tool as a program; its output is read as one JSON document per line.

#include <sys/wait.h>

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

}  // namespace halvo::test
