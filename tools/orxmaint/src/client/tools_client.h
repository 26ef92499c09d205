// The connection to maintaind's tools-side service: finds the service, binds its methods on first
// use and performs one request at a time with a deadline.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "ara/com/com_error_domain.h"
#include "client/call_outcome.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/proxy.h"

namespace orx::orxmaint {

using Clock = std::chrono::steady_clock;

// Where the tools service is looked for.
struct ClientSettings {
    std::string instanceId{"1"};
    vorx::vcc::api::types::DriverType binding{vorx::vcc::api::types::DriverType::DDS};
    // How the transport is named in messages, e.g. "DDS domain 0".
    std::string where{"DDS domain 0"};
    std::chrono::milliseconds timeout{2000};
};

class ToolsClient {
  public:
    // Starts searching for the service at once, so discovery overlaps whatever the caller does
    // before the first call. A search that cannot start shows up as "not reachable" on the first
    // call.
    explicit ToolsClient(ClientSettings settings);
    // Stops the search; waits for a running discovery callback.
    ~ToolsClient();
    ToolsClient(const ToolsClient&) = delete;
    ToolsClient& operator=(const ToolsClient&) = delete;

    const ClientSettings& Settings() const { return settings_; }

    // Calls method `entityId` (named `methodName` in messages) with `request`. Waits until
    // `deadline` for the service to be found and for the reply. On success stores the reply in
    // `reply` (whatever its code) and returns an ok outcome; otherwise `reply` is untouched and
    // the outcome says what went wrong. Call from one thread at a time.
    template <class Reply, class Request>
    CallOutcome Call(uint32_t entityId, const char* methodName, const Request& request,
                     Reply& reply, Clock::time_point deadline) {
        const std::shared_ptr<vorx::vcc::Proxy> proxy = WaitForProxy(deadline);
        if (!proxy) {
            return NotReachable();
        }
        const auto method = proxy->InitializeMethodProxy<Reply>(MethodInfoOf(entityId));
        if (!method) {
            return CallOutcome::Failed(std::string("the core could not bind ") + methodName +
                                       " (see the log with --verbose)");
        }
        const Clock::time_point sent = Clock::now();
        auto future = method->Request(request);
        const auto left = deadline - Clock::now();
        if (future.wait_for(left > Clock::duration::zero() ? left : Clock::duration::zero()) !=
            ara::core::future_status::ready) {
            return NoReply(methodName);
        }
        auto result = future.GetResult();
        if (!result.HasValue()) {
            return Failed(methodName, result.Error());
        }
        reply = std::move(result).Value();
        LogAnswered(methodName, Clock::now() - sent);
        return CallOutcome::Ok();
    }

    // Subscribes event `entityId` of the tools service once the service is found (waits until
    // `deadline`). `onSample` runs on the core's event thread for every sample, in arrival order,
    // possibly after this object is gone; it must own what it touches. False when the service was
    // not found or the core refused the subscription. Once per event.
    template <class T>
    bool Subscribe(uint32_t entityId, std::function<void(const T&)> onSample,
                   Clock::time_point deadline) {
        const std::shared_ptr<vorx::vcc::Proxy> proxy = WaitForProxy(deadline);
        if (!proxy) {
            return false;
        }
        const std::weak_ptr<vorx::vcc::Proxy> weak = proxy;
        proxy->SetReceiveHandler(
            [weak, entityId, onSample]() {
                const std::shared_ptr<vorx::vcc::Proxy> alive = weak.lock();
                while (alive &&
                       alive->GetNewSamples<T>(
                           [&](vorx::vcc::SamplePtr<const T> sample) { onSample(*sample); },
                           entityId, kSamplesPerTake) > 0) {
                }
            },
            entityId);
        return proxy->Subscribe<T>(entityId, EventInfoOf(entityId), kEventCacheSize);
    }

  private:
    static constexpr size_t kSamplesPerTake = 256;
    static constexpr size_t kEventCacheSize = 1024;  // unread samples kept per event

    std::shared_ptr<vorx::vcc::api::types::EventInfo> EventInfoOf(uint32_t entityId) const;
    // The proxy of the found service, made on first need; nullptr when nothing was found by
    // `deadline`.
    std::shared_ptr<vorx::vcc::Proxy> WaitForProxy(Clock::time_point deadline);
    std::shared_ptr<vorx::vcc::api::types::MethodInfo> MethodInfoOf(uint32_t entityId) const;
    void OnOffers(const vorx::vcc::ServiceHandleContainer& handles);
    // Debug lines that show where the time of a command goes.
    void LogFound() const;
    void LogAnswered(const char* methodName, Clock::duration took) const;

    CallOutcome NotReachable() const;
    CallOutcome NoReply(const char* methodName) const;
    CallOutcome Failed(const char* methodName, const ara::core::ErrorCode& error) const;

    const ClientSettings settings_;
    const Clock::time_point started_;
    vorx::vcc::FindServiceHandle search_;
    orx::sync::Mutex mutex_;
    orx::sync::CondVar offered_;
    std::shared_ptr<vorx::vcc::HandleType> offer_ GUARDED_BY(mutex_);  // newest offer seen
    std::shared_ptr<vorx::vcc::Proxy> proxy_ GUARDED_BY(mutex_);
};

}  // namespace orx::orxmaint
