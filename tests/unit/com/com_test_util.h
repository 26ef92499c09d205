#ifndef TESTS_UNIT_COM_COM_TEST_UTIL_H
#define TESTS_UNIT_COM_COM_TEST_UTIL_H

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "orx/test/wait.h"
#include "orx/test/watched.h"
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
            lists_.Change([&](auto& lists) { lists.push_back(std::move(handles)); });
        };
    }

    // Waits until the latest list satisfies `predicate`.
    bool WaitForLast(const std::function<bool(const ServiceHandleContainer&)>& predicate,
                     std::chrono::milliseconds timeout = 2s) {
        return lists_.WaitFor(
            [&](const auto& lists) { return !lists.empty() && predicate(lists.back()); }, timeout);
    }

    bool WaitForSize(size_t size, std::chrono::milliseconds timeout = 2s) {
        return WaitForLast([size](const ServiceHandleContainer& l) { return l.size() == size; },
                           timeout);
    }

    std::vector<ServiceHandleContainer> All() const { return lists_.Get(); }
    size_t Calls() const { return lists_.Get().size(); }

  private:
    orx::test::Watched<std::vector<ServiceHandleContainer>> lists_;
};

using orx::test::WaitFor;

}  // namespace vorx::vcc::test

#endif  // TESTS_UNIT_COM_COM_TEST_UTIL_H
