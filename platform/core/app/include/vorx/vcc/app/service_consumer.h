#ifndef VORX_VCC_APP_SERVICE_CONSUMER_H
#define VORX_VCC_APP_SERVICE_CONSUMER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "ara/com/com_error_domain.h"
#include "ara/core/error_code.h"
#include "ara/core/future.h"
#include "vorx/vcc/app/deployment.h"
#include "vorx/vcc/codec.h"
#include "vorx/vcc/export.h"
#include "vorx/vcc/payload.h"
#include "vorx/vcc/proxy.h"

namespace vorx::vcc::app {

// What a consumer takes from the runtime's configuration.
struct ConsumerSettings {
    // Sample-timeout threshold of every subscription in milliseconds
    // ("dfx.sampleTimeoutThresholdMs"); 0: no sample-timeout watch.
    uint32_t sampleTimeoutThresholdMs{0};
    // Samples that may wait for the event handlers before the oldest is dropped.
    size_t handlerQueueSize{256};
};

// The using side of one deployed service: finds it, subscribes its events, calls its methods,
// reads and writes its fields. Made by Runtime::Require (or directly from a deployment).
//
// The search starts at construction on the deployment's traffic binding (DDS, else
// process-local; a SOME/IP-only deployment is reported but never found). The consumer keeps
// working when the service goes away and comes back: subscriptions and calls resume.
//
// Maintenance: construction reports the process (RegisterNodePid) and the methods and fields as
// the using side; Subscribe reports the event with its E2E settings and registers its latency
// switch and latency query; Unsubscribe and destruction withdraw them. While latency analysis of
// a subscribed event is switched on, every sample's latency (send stamp to reception) is measured
// (see LatencyStats). With a sample-timeout threshold, an event subscription (not a field's
// notifier, which sends on change only) that gets no sample within it while the service is
// available is reported to the plug-in's listener (OnSampleTimeout with name, threshold and
// running count) and to the sample-timeout handler; the watch runs on the core's
// EventController, never on a receiving thread.
//
// Threads: every member may be called from any thread. Event handlers and the sample-timeout
// handler run on this consumer's handler thread, one at a time; the availability handler runs
// on the driver's discovery thread; method futures complete on the driver's client thread (so a
// `then` continuation must not wait for another reply).
class VCC_EXPORT ServiceConsumer {
  public:
    template <class T>
    using ResultFuture = ara::core::Future<T, ara::core::ErrorCode>;

    explicit ServiceConsumer(ServiceDeployment deployment, ConsumerSettings settings = {});
    // Stops the search and the subscriptions (waits for a running handler unless called from
    // one) and reports the withdrawals. Waiting calls fail with kServiceNotAvailable. No handler
    // runs after it returns, so what the handlers use must live until then.
    ~ServiceConsumer();
    ServiceConsumer(const ServiceConsumer&) = delete;
    ServiceConsumer& operator=(const ServiceConsumer&) = delete;

    const ServiceDeployment& Deployment() const;

    // True while an offer of the service is known.
    bool IsAvailable() const;
    // Waits until the service is available; false when `timeout` passed first.
    bool WaitForService(std::chrono::milliseconds timeout) const;
    // Called with true when the service is found and with false when its last offer goes away;
    // at once with true when it is available already.
    void SetAvailabilityHandler(std::function<void(bool available)> handler);
    // Called with the event (or field) name and the running count on every sample timeout.
    void SetSampleTimeoutHandler(
        std::function<void(const std::string& event, uint32_t count)> handler);

    // Subscribes `event`; `handler` gets every sample. Before the service is found the
    // subscription waits for it. False (logged) when the event is not deployed or subscribed
    // already.
    template <class T>
    bool Subscribe(const std::string& event, std::function<void(const T&)> handler) {
        return AddSubscription(event, false, MakeSampleHandler<T>(std::move(handler)));
    }
    void Unsubscribe(const std::string& event);

    // Calls `method` and returns the future of its reply: the value, or an error of the Com
    // domain: kServiceNotAvailable at once when the service has not been found (or goes away
    // before the reply), kNetworkBindingFailure at once when the method is not deployed or the
    // service carries no traffic, or what the method proxy reports (see MethodProxyImpl).
    template <class R, class... Args>
    ResultFuture<R> Call(const std::string& method, const Args&... args) {
        return Request<R>(method, MethodKind::kMethod, args...);
    }

    // A field's getter, setter (the reply is the value the provider took) and notifier.
    template <class T>
    ResultFuture<T> GetField(const std::string& field) {
        return Request<T>(field, MethodKind::kGetter);
    }
    template <class T>
    ResultFuture<T> SetField(const std::string& field, const T& value) {
        return Request<T>(field, MethodKind::kSetter, value);
    }
    template <class T>
    bool SubscribeField(const std::string& field, std::function<void(const T&)> handler) {
        return AddSubscription(field, true, MakeSampleHandler<T>(std::move(handler)));
    }
    void UnsubscribeField(const std::string& field);

  private:
    // Reads one sample and hands it on; false when the payload cannot be read as the type.
    using SampleHandler = std::function<bool(const Payload&)>;
    enum class MethodKind : uint8_t { kMethod, kGetter, kSetter };

    template <class T>
    static SampleHandler MakeSampleHandler(std::function<void(const T&)> handler) {
        return [handler = std::move(handler)](const Payload& payload) {
            T value{};
            if (!codec::ReadValue(payload, value)) {
                return false;
            }
            if (handler) {
                handler(value);
            }
            return true;
        };
    }

    template <class R>
    static ResultFuture<R> Failed(ara::com::ComErrc code) {
        ara::core::Promise<R, ara::core::ErrorCode> promise;
        auto future = promise.get_future();
        promise.SetError(ara::com::MakeErrorCode(code));
        return future;
    }

    template <class R, class... Args>
    ResultFuture<R> Request(const std::string& name, MethodKind kind, const Args&... args) {
        std::shared_ptr<api::types::MethodInfo> info;
        ara::com::ComErrc error = ara::com::ComErrc::kServiceNotAvailable;
        const std::shared_ptr<Proxy> proxy = PrepareCall(name, kind, info, error);
        if (!proxy) {
            return Failed<R>(error);
        }
        const auto method = proxy->InitializeMethodProxy<R>(info);
        if (!method) {
            return Failed<R>(ara::com::ComErrc::kNetworkBindingFailure);
        }
        return method->Request(args...);
    }

    bool AddSubscription(const std::string& name, bool field, SampleHandler handler);
    void RemoveSubscription(const std::string& name, bool field);
    // The proxy to call `name` on and the method's description; nullptr with `error` set when
    // the call cannot be made now.
    std::shared_ptr<Proxy> PrepareCall(const std::string& name, MethodKind kind,
                                       std::shared_ptr<api::types::MethodInfo>& info,
                                       ara::com::ComErrc& error) const;

    class Core;
    std::shared_ptr<Core> core_;
};

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_SERVICE_CONSUMER_H
