#ifndef ARA_KELDA_COMMON_LOG_TESTING_H
#define ARA_KELDA_COMMON_LOG_TESTING_H

#include <memory>

#include "ara/kelda/common/log/capture_sink.h"
#include "ara/kelda/common/log/log_sink.h"

namespace ara::kelda::common::log {

// Registers a CaptureSink for the life of the object and unregisters it at the end of the
// scope. Use one per test.
class ScopedCaptureSink {
  public:
    explicit ScopedCaptureSink(LogLevel threshold = LogLevel::kVerbose)
        : sink_(std::make_shared<CaptureSink>(threshold)) {
        AddSink(sink_);
    }
    ~ScopedCaptureSink() { RemoveSink(sink_); }
    ScopedCaptureSink(const ScopedCaptureSink&) = delete;
    ScopedCaptureSink& operator=(const ScopedCaptureSink&) = delete;

    CaptureSink& operator*() const { return *sink_; }
    CaptureSink* operator->() const { return sink_.get(); }
    const std::shared_ptr<CaptureSink>& Get() const { return sink_; }

  private:
    std::shared_ptr<CaptureSink> sink_;
};

}  // namespace ara::kelda::common::log

#endif  // ARA_KELDA_COMMON_LOG_TESTING_H
