#include "orx/test/log_capture.h"

#include <iostream>

#include "ara/kelda/common/log/log_sink.h"

namespace orx::test {

ScopedLogCapture::ScopedLogCapture()
    : sink_(std::make_shared<ara::kelda::common::log::CaptureSink>(
          ara::kelda::common::log::LogLevel::kVerbose)) {
    ara::kelda::common::log::AddSink(sink_);
}

ScopedLogCapture::~ScopedLogCapture() {
    ara::kelda::common::log::RemoveSink(sink_);
    if (::testing::Test::HasFailure()) {
        std::cout << "---- captured log lines ----\n" << sink_->Dump() << "---- end of log ----\n";
    }
}

}  // namespace orx::test
