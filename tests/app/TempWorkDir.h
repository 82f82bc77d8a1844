#pragma once
// A fresh folder under /tmp that becomes the working directory for one test, so that the
// "./X.ini" names of the settings code land there. Removed, and the old directory restored, at
// the end.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace halvo::test {

class TempWorkDir : public ::testing::Test {
  protected:
    void SetUp() override {
        previous_ = std::filesystem::current_path();
        char pattern[] = "/tmp/halvo-settings-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        dir_ = pattern;
        std::filesystem::current_path(dir_);
    }
    void TearDown() override {
        std::filesystem::current_path(previous_);
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
    }

    static void WriteFile(const std::string& name, const std::string& bytes) {
        std::ofstream(name, std::ios::binary) << bytes;
    }
    static std::string ReadFile(const std::string& name) {
        std::ifstream in(name, std::ios::binary);
        std::ostringstream out;
        out << in.rdbuf();
        return out.str();
    }

    std::filesystem::path dir_;
    std::filesystem::path previous_;
};

}  // namespace halvo::test
