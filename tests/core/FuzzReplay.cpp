// Replays a fuzz target's seed corpus and every input that once made it fail, through the same
// entry point the fuzzer calls, in an ordinary build. A target checks its own rules and traps
// when one breaks, so a regression ends this test with a crash.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> Inputs(const fs::path& dir) {
    std::vector<fs::path> out;
    std::error_code ec;
    if (!fs::is_directory(dir, ec)) return out;
    for (const auto& e : fs::directory_iterator(dir)) {
        if (e.is_regular_file()) out.push_back(e.path());
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::size_t Replay(const fs::path& dir) {
    std::size_t n = 0;
    for (const fs::path& p : Inputs(dir)) {
        std::ifstream in(p, std::ios::binary);
        const std::vector<std::uint8_t> bytes(std::istreambuf_iterator<char>(in), {});
        SCOPED_TRACE(p.string());
        // Same result as the fuzzer expects: the target accepts the input and returns 0.
        EXPECT_EQ(LLVMFuzzerTestOneInput(bytes.data(), bytes.size()), 0);
        ++n;
    }
    return n;
}

const fs::path kRoot = fs::path(HALVO_SOURCE_DIR) / "fuzz";

// The suite is named after the target, so every target's tests have names of their own.
#define HALVO_REPLAY_TEST(suite, name) TEST(suite, name)

HALVO_REPLAY_TEST(HALVO_FUZZ_SUITE, SeedCorpus) {
    EXPECT_GT(Replay(kRoot / "corpus" / HALVO_FUZZ_NAME), 0u) << "no seeds for " HALVO_FUZZ_NAME;
}

HALVO_REPLAY_TEST(HALVO_FUZZ_SUITE, FoundFaults) {
    // Inputs that once crashed or broke a rule; an empty folder means none was ever found.
    Replay(kRoot / "regressions" / HALVO_FUZZ_NAME);
}

}  // namespace
