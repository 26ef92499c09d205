#ifndef VORX_VCC_APP_SRC_CONSUMER_CORE_H
#define VORX_VCC_APP_SRC_CONSUMER_CORE_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dfx_reports.h"
#include "orx/sync/mutex.h"
#include "serial_executor.h"
#include "vorx/vcc/api/types/subscriber_listener.h"
#include "vorx/vcc/app/internal/latency_stats.h"
#include "vorx/vcc/app/internal/sample_timeout_monitor.h"
#include "vorx/vcc/app/service_consumer.h"
#include "vorx/vcc/driver/driver.h"

namespace vorx::vcc::app {

// What a ServiceConsumer owns: the search, the proxy for methods, one driver connection of its
// own for events (it needs each sample's send stamp, which the proxy's event cache does not
// keep), the subscriptions with their latency figures and sample-timeout watches, and the thread
// that runs the application's handlers.
//
// Driver callbacks and scheduled jobs hold it weakly. `mutex` is never held while calling into a
// driver operation that may wait for a callback, or while stopping a timeout watch.
class ServiceConsumer::Core : public std::enable_shared_from_this<ServiceConsumer::Core> {
  public:
    using TimeoutHandler = std::function<void(const std::string&, uint32_t)>;

    struct Subscription {
        const EventDeployment* event{nullptr};  // points into `deployment`
        bool isField{false};
        std::string listenerName;  // "<service path>:<instance id>:<event name>"
        SampleHandler handler;
        std::shared_ptr<LatencyStats> stats;
        std::shared_ptr<SampleTimeoutMonitor> monitor;             // null without a threshold
        std::shared_ptr<api::types::SubscriberListener> listener;  // the plug-in's, may be null
    };

    Core(ServiceDeployment deployment, ConsumerSettings settings);
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    // Reports the consumer and starts the search. Call once, right after construction.
    void Start();
    // Ends everything; see ~ServiceConsumer.
    void Shutdown();

    bool Subscribe(const EventDeployment& event, bool isField, SampleHandler handler);
    void Unsubscribe(const EventDeployment& event);

    const ServiceDeployment deployment;
    const ConsumerSettings settings;
    const detail::DfxReports reports;
    const std::optional<api::types::DriverType> traffic;
    // Descriptions for the method proxies, by entity id (methods, getters and setters).
    std::map<uint32_t, std::shared_ptr<api::types::MethodInfo>> methodInfos;

    mutable orx::sync::Mutex mutex;
    mutable orx::sync::CondVar availabilityChanged;
    bool available GUARDED_BY(mutex){false};
    std::shared_ptr<Proxy> proxy GUARDED_BY(mutex);
    std::function<void(bool)> availabilityHandler GUARDED_BY(mutex);
    TimeoutHandler timeoutHandler GUARDED_BY(mutex);
    std::map<uint32_t, std::shared_ptr<Subscription>> subscriptions GUARDED_BY(mutex);

  private:
    void OnOffers(const ServiceHandleContainer& handles);
    void Connect(const HandleType& handle);
    void OnEvent(const EventSample& sample);
    void OnTimeout(const std::weak_ptr<Subscription>& weak, uint32_t count);
    // Starts the timeout watches while the service is available, stops them otherwise.
    void ApplyWatch() EXCLUDES(mutex, watchMutex_);
    void RegisterLatency(const std::shared_ptr<Subscription>& subscription) const;
    std::vector<std::shared_ptr<SampleTimeoutMonitor>> MonitorsLocked() const REQUIRES(mutex);

    detail::SerialExecutor executor_;
    orx::sync::Mutex watchMutex_;  // serialises ApplyWatch; never taken by a timeout notice
    FindServiceHandle find_;       // set by Start, then constant
    std::shared_ptr<Driver> eventDriver_ GUARDED_BY(mutex);  // set with eventClient_
    ClientId eventClient_ GUARDED_BY(mutex){0};              // 0 until the service is found
    bool shutDown_ GUARDED_BY(mutex){false};
};

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_SRC_CONSUMER_CORE_H
