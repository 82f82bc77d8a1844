// Every line of the real receiver logs goes through the parser, as a sentence and as a 2002
// message. Sentences the parser knows must be accepted exactly when the fields it needs are
// filled in; one is checked value by value against the log text (the values of the other kinds
// are checked in the parser's own tests).

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "core/ByteOrder.h"
#include "nav/SentenceParser.h"

namespace halvo {
namespace {

namespace fs = std::filesystem;

const fs::path kLogs = fs::path(HALVO_SHARED_DATA_DIR) / "nmea";

std::vector<std::string> Lines(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::vector<std::string> out;
    std::string line;
    for (int guard = 0; guard < 100000 && std::getline(in, line); ++guard)
        out.push_back(line + "\n");
    return out;
}

std::vector<std::string> Split(const std::string& sentence) {
    std::string body = sentence.substr(0, sentence.find_first_of("*\r\n"));
    std::vector<std::string> f;
    std::stringstream ss(body);
    std::string item;
    while (std::getline(ss, item, ',')) f.push_back(item);
    if (!body.empty() && body.back() == ',') f.emplace_back();
    return f;
}

// Well formed for our parser: the fields it needs are present and non-empty.
bool WellFormed(const std::string& type, const std::vector<std::string>& f) {
    auto filled = [&](std::initializer_list<std::size_t> idx) {
        for (std::size_t i : idx)
            if (i >= f.size() || f[i].empty()) return false;
        return true;
    };
    if (type == "GLL") return filled({1, 2, 3, 4});
    if (type == "GGA") return filled({2, 3, 4, 5});
    if (type == "RMC") return filled({1, 2, 3, 4, 5, 6, 7, 8});
    if (type == "ZDA") return filled({4});
    if (type == "VTG") return filled({1, 2, 3, 4, 5, 6, 7, 8});
    if (type == "HDT" || type == "HDG" || type == "MTW" || type == "DPT") return filled({1});
    if (type == "DBT") return filled({1}) || filled({3}) || filled({5});
    return false;
}

TEST(NmeaLogs, EveryLineOfEveryLog) {
    if (!fs::is_directory(kLogs)) GTEST_SKIP() << "no receiver logs at " << kLogs;
    std::map<std::string, std::pair<int, int>> counts;  // kind: accepted, refused
    SentenceParser messages;
    int files = 0;
    for (const auto& entry : fs::directory_iterator(kLogs)) {
        if (entry.path().extension() != ".log") continue;
        ++files;
        SentenceParser p;
        for (const std::string& line : Lines(entry.path())) {
            const SentenceResult r = p.ParseSentence(line, 1000, 0);
            if (r.kind == SentenceKind::None) {
                EXPECT_FALSE(r.accepted);
                continue;
            }
            const std::string name(SentenceKindName(r.kind));
            auto& c = counts[name];
            (r.accepted ? c.first : c.second)++;
            EXPECT_EQ(r.accepted, WellFormed(line.substr(3, 3), Split(line)))
                << entry.path().filename() << ": " << line;

            std::vector<std::uint8_t> payload(12 + line.size() + 1, 0);
            std::memcpy(payload.data() + 12, line.data(), line.size());
            const SentenceResult m = messages.ProcessMessage({2002, 13, 0, payload}, {1, 0});
            EXPECT_EQ(m.accepted, r.accepted) << line;
        }
    }
    EXPECT_EQ(files, 10);
    EXPECT_GT(counts["GGA"].first, 300);
    EXPECT_GT(counts["HDG"].first, 1400);
}

TEST(NmeaLogs, ValuesLandWhereTheLogSays) {
    if (!fs::is_directory(kLogs)) GTEST_SKIP() << "no receiver logs at " << kLogs;
    auto first = [](const char* file, const char* prefix) {
        for (const std::string& l : Lines(kLogs / file))
            if (l.rfind(prefix, 0) == 0) return l;
        return std::string();
    };
    SentenceParser p;
    // $GNGGA,003956.00,4552.65403,S,17030.00668,E,...
    ASSERT_TRUE(p.ParseSentence(first("ublox-zed-f9p-nmea.log", "$GNGGA"), 1, 0));
    const LatLonRecord& g = p.Fix().gga;
    EXPECT_EQ(std::tie(g.hour, g.minute, g.second, g.latDegrees, g.latHemisphere, g.lonDegrees),
              std::make_tuple(0, 39, 56.0f, 45, 'S', 170));
    EXPECT_NEAR(g.latMinutes, 52.65403, 1e-4);
    EXPECT_NEAR(g.lonMinutes, 30.00668, 1e-4);
}

}  // namespace
}  // namespace halvo
