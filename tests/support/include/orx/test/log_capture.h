#ifndef ORX_TEST_LOG_CAPTURE_H
#define ORX_TEST_LOG_CAPTURE_H

#include <gtest/gtest.h>

#include <memory>

#include "ara/kelda/common/log/capture_sink.h"
#include "ara/kelda/common/log/log_level.h"

namespace orx::test {

// Captures every log line (all levels) while it lives, and prints the captured lines to standard
// output when the running test has failed by the time it is destroyed.
class ScopedLogCapture {
  public:
    ScopedLogCapture();
    ~ScopedLogCapture();
    ScopedLogCapture(const ScopedLogCapture&) = delete;
    ScopedLogCapture& operator=(const ScopedLogCapture&) = delete;

    ara::kelda::common::log::CaptureSink& Sink() const { return *sink_; }
    ara::kelda::common::log::CaptureSink* operator->() const { return sink_.get(); }

  private:
    std::shared_ptr<ara::kelda::common::log::CaptureSink> sink_;
};

// A fixture base whose tests read what was logged through Log(); on failure the lines are shown.
class LogCaptureTest : public ::testing::Test {
  protected:
    ara::kelda::common::log::CaptureSink& Log() const { return capture_.Sink(); }

  private:
    ScopedLogCapture capture_;
};

}  // namespace orx::test

#endif  // ORX_TEST_LOG_CAPTURE_H
