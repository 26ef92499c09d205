// Small builders shared by the latency tests.
#ifndef TESTS_UNIT_PLUGIN_LATENCY_LATENCY_TEST_SUPPORT_H
#define TESTS_UNIT_PLUGIN_LATENCY_LATENCY_TEST_SUPPORT_H

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "orx/maintaind/latency.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"
#include "vorx/vcc/api/types/latency.h"

namespace orx::test::latency {

using CoreDriverType = vorx::vcc::api::types::DriverType;
using EventInfoMap = std::map<CoreDriverType, std::shared_ptr<vorx::vcc::api::types::EventInfo>>;
using vorx::vcc::api::types::LatencyAnalysisMode;

inline std::shared_ptr<vorx::driver::dds::DDSEventInfo> DdsEvent(uint16_t serviceId,
                                                                 const std::string& instanceId,
                                                                 const std::string& topic) {
    auto info = std::make_shared<vorx::driver::dds::DDSEventInfo>();
    info->SetServiceId(serviceId);
    info->SetInstanceId(instanceId);
    info->SetTopicName(topic);
    return info;
}

inline std::shared_ptr<vorx::driver::someip::SomeipEventInfo> SomeipEvent(
    uint16_t serviceId, const std::string& instanceId, uint16_t eventId) {
    auto info = std::make_shared<vorx::driver::someip::SomeipEventInfo>();
    info->SetServiceId(serviceId);
    info->SetInstanceId(instanceId);
    info->SetEventId(eventId);
    return info;
}

// An order of the daemon. `driverTypes` uses the daemon's numbering (0 DDS, 1 SOME/IP).
inline orx::maintaind::LatencyIndex Index(std::vector<orx::maintaind::DriverType> driverTypes,
                                          uint16_t serviceId, uint16_t instanceId,
                                          const std::string& topic, uint16_t eventId = 0) {
    orx::maintaind::LatencyIndex index;
    index.driverTypes = std::move(driverTypes);
    index.serviceId = serviceId;
    index.instanceId = instanceId;
    index.eventName = topic;
    index.eventId = eventId;
    return index;
}

// Counts the cases that began in this process so far, the calling one included. Cases that need
// a fresh process (the client singleton, the process-wide query task) skip when it is above 1:
// ctest runs every case alone, a hand run of the whole binary does not.
inline int CountCaseInThisProcess() {
    static int count = 0;
    return ++count;
}

inline constexpr const char* kNeedsOwnProcess =
    "needs a process of its own: run it through ctest or with --gtest_filter naming this one case";

constexpr auto kDds = orx::maintaind::DriverType::DDS;
constexpr auto kSomeip = orx::maintaind::DriverType::SOMEIP;
constexpr auto kEnable = orx::maintaind::LatencyMode::ENABLE;
constexpr auto kDisable = orx::maintaind::LatencyMode::DISABLE;

// Records the modes a handler was called with; the handler may run on any thread and may
// outlive the recorder (the client's jobs keep handlers until the process ends).
class ModeRecorder {
  public:
    std::function<void(const LatencyAnalysisMode&)> Handler() const {
        return [state = state_](const LatencyAnalysisMode& mode) {
            std::lock_guard<std::mutex> lock(state->mutex);
            state->modes.push_back(static_cast<int>(mode));
        };
    }
    std::vector<int> Modes() const {
        std::lock_guard<std::mutex> lock(state_->mutex);
        return state_->modes;
    }

  private:
    struct State {
        std::mutex mutex;
        std::vector<int> modes;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

// A query handler returning fixed figures and counting its calls; it may outlive the stub.
class QueryStub {
  public:
    explicit QueryStub(vorx::vcc::api::types::LatencyResult result)
        : state_(std::make_shared<State>()) {
        state_->result = result;
    }
    std::function<vorx::vcc::api::types::LatencyResult()> Handler() const {
        return [state = state_]() {
            ++state->calls;
            return state->result;
        };
    }
    int Calls() const { return state_->calls.load(); }

  private:
    struct State {
        vorx::vcc::api::types::LatencyResult result;
        std::atomic<int> calls{0};
    };
    std::shared_ptr<State> state_;
};

}  // namespace orx::test::latency

#endif  // TESTS_UNIT_PLUGIN_LATENCY_LATENCY_TEST_SUPPORT_H
