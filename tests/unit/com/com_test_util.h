#ifndef TESTS_UNIT_COM_COM_TEST_UTIL_H
#define TESTS_UNIT_COM_COM_TEST_UTIL_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "orx/test/wait.h"
#include "vorx/vcc/handle_type.h"

namespace vorx::vcc::test {

using namespace std::chrono_literals;

// A service of the test binding.
inline ServiceDescription TestService(
    const std::string& instanceId = "7",
    api::types::DriverType binding = api::types::DriverType::PROLOC) {
    ServiceDescription desc;
    desc.serviceId = 0x1234;
    desc.instanceId = instanceId;
    desc.serviceName = "/test/RadarService";
    desc.driverType = binding;
    return desc;
}

// Records the lists a service search reports and lets the test wait for one.
class FoundLists {
  public:
    FindServiceHandler Handler() {
        return [this](ServiceHandleContainer handles) {
            std::lock_guard<std::mutex> lock(mutex_);
            lists_.push_back(std::move(handles));
            changed_.notify_all();
        };
    }

    // Waits until the latest list satisfies `predicate`.
    bool WaitForLast(const std::function<bool(const ServiceHandleContainer&)>& predicate,
                     std::chrono::milliseconds timeout = 2s) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, timeout,
                                 [&] { return !lists_.empty() && predicate(lists_.back()); });
    }

    bool WaitForSize(size_t size, std::chrono::milliseconds timeout = 2s) {
        return WaitForLast([size](const ServiceHandleContainer& l) { return l.size() == size; },
                           timeout);
    }

    std::vector<ServiceHandleContainer> All() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return lists_;
    }

    size_t Calls() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return lists_.size();
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<ServiceHandleContainer> lists_;
};

using orx::test::WaitFor;

}  // namespace vorx::vcc::test

#endif  // TESTS_UNIT_COM_COM_TEST_UTIL_H
