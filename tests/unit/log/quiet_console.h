#ifndef TESTS_UNIT_LOG_QUIET_CONSOLE_H
#define TESTS_UNIT_LOG_QUIET_CONSOLE_H

#include <gtest/gtest.h>

#include "ara/kelda/common/log/log.h"

// Silences the console for one test so that the thresholds under test are those of the test's
// own sinks, and restores it afterwards.
class QuietConsoleTest : public ::testing::Test {
  protected:
    void SetUp() override {
        saved_ = ara::kelda::common::log::ConsoleThreshold();
        ara::kelda::common::log::SetConsoleThreshold(ara::kelda::common::log::LogLevel::kOff);
    }
    void TearDown() override { ara::kelda::common::log::SetConsoleThreshold(saved_); }

  private:
    ara::kelda::common::log::LogLevel saved_ = ara::kelda::common::log::LogLevel::kInfo;
};

#endif  // TESTS_UNIT_LOG_QUIET_CONSOLE_H
