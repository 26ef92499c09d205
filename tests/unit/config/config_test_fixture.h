#ifndef TESTS_UNIT_CONFIG_CONFIG_TEST_FIXTURE_H
#define TESTS_UNIT_CONFIG_CONFIG_TEST_FIXTURE_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "ara/kelda/common/log/testing.h"

// Each test gets its own directory for config files, removed afterwards, and a capture of the
// log lines; the console stays quiet and ORX_CONFIG is cleared afterwards.
class ConfigFileTest : public ::testing::Test {
  protected:
    using LogLevel = ara::kelda::common::log::LogLevel;

    void SetUp() override {
        ara::kelda::common::log::SetConsoleThreshold(LogLevel::kOff);
        char dir[] = "/tmp/orx_config_test_XXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        dir_ = dir;
    }
    void TearDown() override {
        unsetenv("ORX_CONFIG");
        std::filesystem::remove_all(dir_);
    }

    // Writes `content` to a file of that name in the test's directory and returns its path.
    std::string WriteFile(const std::string& content, const std::string& name = "orx.json") {
        const std::string path = dir_ + "/" + name;
        std::ofstream(path, std::ios::trunc) << content;
        return path;
    }
    const std::string& Dir() const { return dir_; }
    size_t Errors() const { return capture_->CountContaining(LogLevel::kError, ""); }
    size_t ErrorsContaining(const std::string& part) const {
        return capture_->CountContaining(LogLevel::kError, part);
    }

    ara::kelda::common::log::ScopedCaptureSink capture_;

  private:
    std::string dir_;
};

#endif  // TESTS_UNIT_CONFIG_CONFIG_TEST_FIXTURE_H
