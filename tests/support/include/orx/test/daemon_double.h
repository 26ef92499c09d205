#ifndef ORX_TEST_DAEMON_DOUBLE_H
#define ORX_TEST_DAEMON_DOUBLE_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ara/core/error_code.h"
#include "orx/maintaind/service.h"
#include "orx/maintaind/types.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/driver/fault_injecting_driver.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/skeleton.h"

namespace orx::test {

class DelayedRunner;

// What the daemon double does with one RegisterApp request.
struct ScriptedReply {
    enum class Kind : uint8_t {
        kCode,              // reply ReturnCode{code} after `delay`
        kError,             // reply with `error` after `delay`
        kNoReply,           // record the request, never reply
        kRequestSendFails,  // the client's send of this request fails (never arrives)
        kReplySendFails,    // reply after `delay`, but sending the reply fails
        kWithdraw,          // withdraw the service instead of replying; offer it again after
                            // `delay` unless the delay is zero
    };
    Kind kind{Kind::kCode};
    uint8_t code{0};
    std::chrono::milliseconds delay{0};
    std::optional<ara::core::ErrorCode> error;

    static ScriptedReply Code(uint8_t code, std::chrono::milliseconds delay = {}) {
        return {Kind::kCode, code, delay, std::nullopt};
    }
    static ScriptedReply Error(const ara::core::ErrorCode& error,
                               std::chrono::milliseconds delay = {}) {
        return {Kind::kError, 0, delay, error};
    }
    static ScriptedReply NoReply() { return {Kind::kNoReply, 0, {}, std::nullopt}; }
    static ScriptedReply RequestSendFails() {
        return {Kind::kRequestSendFails, 0, {}, std::nullopt};
    }
    static ScriptedReply ReplySendFails(std::chrono::milliseconds delay = {}) {
        return {Kind::kReplySendFails, 0, delay, std::nullopt};
    }
    static ScriptedReply Withdraw(std::chrono::milliseconds reofferAfter = {}) {
        return {Kind::kWithdraw, 0, reofferAfter, std::nullopt};
    }
};

// A stand-in for the maintenance daemon in the test's own process: offers the application side of
// the maintenance service (orx::maintaind::service: kAppServiceId, kAppServicePath, instance "1"
// by default) on the in-process driver, serves RegisterApp (kRegisterAppMethodId: one
// AppRegisterInfo in, ReturnCode out) and publishes the latency switch event
// (kSwitchLatencyEventId, LatencySwitch).
//
// Every RegisterApp request that reaches it is decoded and recorded. What it answers is scripted:
// a queue of behaviours taken one per request in arrival order, then the default (reply code 0
// at once unless changed).
//
// It installs a FaultInjectingDriver around the in-process driver for its binding in the
// DriverRegistry (restored when it is destroyed), so proxies made while it lives share it; tests
// reach it through Faults(). Thread-safe.
class DaemonDouble {
  public:
    static constexpr uint16_t kServiceId = orx::maintaind::service::kAppServiceId;
    static constexpr uint32_t kRegisterAppMethodId = orx::maintaind::service::kRegisterAppMethodId;
    static constexpr uint32_t kLatencyEventId = orx::maintaind::service::kSwitchLatencyEventId;

    struct Options {
        std::string instanceId = "1";
        vorx::vcc::api::types::DriverType binding = vorx::vcc::api::types::DriverType::DDS;
        bool offerAtStart = true;
    };

    DaemonDouble();
    explicit DaemonDouble(Options options);
    ~DaemonDouble();
    DaemonDouble(const DaemonDouble&) = delete;
    DaemonDouble& operator=(const DaemonDouble&) = delete;

    // The service as the daemon double offers it.
    const vorx::vcc::ServiceDescription& Description() const;
    bool Offer();
    void Withdraw();
    bool IsOffered() const;

    // Queues `behaviour` for the next `count` requests, after the ones queued before.
    void Script(const ScriptedReply& behaviour, size_t count = 1);
    // What requests get once the queue is empty.
    void SetDefault(const ScriptedReply& behaviour);
    size_t ScriptedLeft() const;

    // Publishes a latency switch order to the subscribers. False when not offered.
    bool PublishLatencySwitch(const orx::maintaind::LatencySwitch& order);

    // Every AppRegisterInfo received so far, in arrival order.
    std::vector<orx::maintaind::AppRegisterInfo> Received() const;
    size_t ReceivedCount() const;
    // Waits until at least `count` requests arrived; false when the deadline passed first.
    bool WaitForCount(size_t count, std::chrono::steady_clock::time_point deadline) const;
    bool WaitForCount(size_t count, std::chrono::milliseconds timeout) const {
        return WaitForCount(count, std::chrono::steady_clock::now() + timeout);
    }
    // Waits until `predicate` holds for the received requests; false on timeout.
    bool WaitFor(
        const std::function<bool(const std::vector<orx::maintaind::AppRegisterInfo>&)>& predicate,
        std::chrono::steady_clock::time_point deadline) const;
    bool WaitFor(
        const std::function<bool(const std::vector<orx::maintaind::AppRegisterInfo>&)>& predicate,
        std::chrono::milliseconds timeout) const {
        return WaitFor(predicate, std::chrono::steady_clock::now() + timeout);
    }
    // Replies the double sent (value or error) so far.
    size_t RepliesSent() const;

    const std::shared_ptr<vorx::vcc::FaultInjectingDriver>& Faults() const { return faults_; }

  private:
    struct State;

    std::shared_ptr<vorx::vcc::FaultInjectingDriver> faults_;
    std::shared_ptr<State> state_;
    std::unique_ptr<DelayedRunner> runner_;
    std::unique_ptr<vorx::vcc::Skeleton> skeleton_;
};

}  // namespace orx::test

#endif  // ORX_TEST_DAEMON_DOUBLE_H
