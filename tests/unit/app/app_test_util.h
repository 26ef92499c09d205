#ifndef ORX_TESTS_UNIT_APP_APP_TEST_UTIL_H
#define ORX_TESTS_UNIT_APP_APP_TEST_UTIL_H

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "orx/maintaind/record.h"
#include "orx/test/wait.h"
#include "test_deployments.h"
#include "vorx/vcc/app/deployment_parser.h"

namespace orx::test {

// The payload the tests send: a number and a text.
struct TestSample {
    uint32_t value{};
    std::string text;

    ORX_MAINTAIND_RECORD(TestSample, value, text)
};

// The FullService deployment (DDS and SOME/IP; DDS runs on the in-process driver in unit tests)
// for `role`, parsed.
inline vorx::vcc::app::ServiceDeployment SensorDeployment(const std::string& role) {
    auto result = vorx::vcc::app::ParseDeployments(Document({FullService(role)}), "orx.json");
    return result.services.at(0);
}

// Values handed over from other threads. Tests wait for them with orx::test::WaitFor:
// WaitFor(inbox.HasAtLeast(2)).
template <class T>
class Inbox {
  public:
    void Put(const T& value) {
        std::lock_guard<std::mutex> lock(mutex_);
        values_.push_back(value);
    }
    std::vector<T> Values() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return values_;
    }
    size_t Size() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return values_.size();
    }
    auto HasAtLeast(size_t count) const {
        return [this, count] { return Size() >= count; };
    }

  private:
    mutable std::mutex mutex_;
    std::vector<T> values_;
};

}  // namespace orx::test

#endif  // ORX_TESTS_UNIT_APP_APP_TEST_UTIL_H
