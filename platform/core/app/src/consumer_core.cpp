#include "consumer_core.h"

#include "app_log.h"
#include "dds_topics.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/app/descriptions.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/event_controller.h"
#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace vorx::vcc::app {
namespace {

std::shared_ptr<api::types::SubscriberListener> MaintenanceListener() {
    auto maintaind = RegisterDfxInterface::GetOrxMaintaindInterface();
    return maintaind ? maintaind->GetMaintaindClientListener().listener : nullptr;
}

}  // namespace

ServiceConsumer::Core::Core(ServiceDeployment deploymentIn, ConsumerSettings settingsIn)
    : deployment(std::move(deploymentIn)),
      settings(settingsIn),
      reports(deployment),
      traffic(deployment.TrafficBinding()),
      executor_(deployment.serviceName, settingsIn.handlerQueueSize) {
    if (!traffic) {
        return;
    }
    for (const auto& method : deployment.methods) {
        methodInfos[method.entityId] = TrafficMethodInfo(deployment, method);
    }
    for (const auto& field : deployment.fields) {
        if (field.getter) {
            methodInfos[field.getter->entityId] =
                TrafficMethodInfo(deployment, *field.getter, true);
        }
        if (field.setter) {
            methodInfos[field.setter->entityId] =
                TrafficMethodInfo(deployment, *field.setter, true);
        }
    }
}

void ServiceConsumer::Core::Start() {
    reports.Node();
    reports.MethodsUp(detail::DfxReports::AllMethods(deployment));
    reports.FieldsUp(detail::DfxReports::AllFields(deployment));
    if (!traffic) {
        detail::AppLog()->LogInfo() << "[App][Service deployed on SOME/IP only, reported but "
                                       "never found][service="
                                    << deployment.serviceName << "]";
        return;
    }
    detail::ApplyDdsTopics(deployment);
    std::weak_ptr<Core> weak = weak_from_this();
    find_ = Proxy::StartFindService(
        [weak](ServiceHandleContainer handles) {
            if (auto self = weak.lock()) {
                self->OnOffers(handles);
            }
        },
        DescribeService(deployment));
}

void ServiceConsumer::Core::Shutdown() {
    Proxy::StopFindService(find_);  // no discovery callback runs after this
    std::shared_ptr<Driver> driver;
    ClientId client = 0;
    std::shared_ptr<Proxy> oldProxy;
    std::vector<const EventDeployment*> events;
    std::vector<std::shared_ptr<SampleTimeoutMonitor>> monitors;
    {
        orx::sync::MutexLock lock(mutex);
        shutDown_ = true;
        available = false;
        driver = std::move(eventDriver_);
        client = eventClient_;
        eventClient_ = 0;
        oldProxy = std::move(proxy);
        monitors = MonitorsLocked();
        for (const auto& [entityId, subscription] : subscriptions) {
            if (!subscription->isField) {
                events.push_back(subscription->event);
            }
        }
        subscriptions.clear();
    }
    availabilityChanged.NotifyAll();
    if (driver && client != 0) {
        driver->Disconnect(client);  // waits for a sample being delivered right now
    }
    {
        orx::sync::MutexLock watchLock(watchMutex_);
        for (const auto& monitor : monitors) {
            monitor->Stop();
        }
    }
    executor_.Stop();
    oldProxy.reset();  // waiting calls fail with kServiceNotAvailable
    reports.EventsDown(events);
    reports.MethodsDown(detail::DfxReports::AllMethods(deployment));
    reports.FieldsDown(detail::DfxReports::AllFields(deployment));
}

bool ServiceConsumer::Core::Subscribe(const EventDeployment& event, bool isField,
                                      SampleHandler handler) {
    auto subscription = std::make_shared<Subscription>();
    subscription->event = &event;
    subscription->isField = isField;
    subscription->listenerName =
        deployment.serviceName + ":" + deployment.instanceId + ":" + event.name;
    subscription->handler = std::move(handler);
    subscription->stats = std::make_shared<LatencyStats>();
    // A field's notifier sends on change only, so silence is no sign of trouble there.
    if (settings.sampleTimeoutThresholdMs > 0 && traffic && !isField) {
        subscription->listener = MaintenanceListener();
        std::weak_ptr<Core> weakCore = weak_from_this();
        std::weak_ptr<Subscription> weakSubscription = subscription;
        subscription->monitor = std::make_shared<SampleTimeoutMonitor>(
            settings.sampleTimeoutThresholdMs, [weakCore, weakSubscription](uint32_t count) {
                if (auto self = weakCore.lock()) {
                    self->OnTimeout(weakSubscription, count);
                }
            });
    }
    std::shared_ptr<Driver> driver;
    ClientId client = 0;
    {
        orx::sync::MutexLock lock(mutex);
        if (shutDown_ || !subscriptions.emplace(event.entityId, subscription).second) {
            return false;
        }
        driver = eventDriver_;
        client = eventClient_;
    }
    if (driver && client != 0) {
        driver->Subscribe(client, event.entityId);
    }
    ApplyWatch();
    if (!isField) {
        reports.EventsUp({&event});
        RegisterLatency(subscription);
    }
    return true;
}

void ServiceConsumer::Core::Unsubscribe(const EventDeployment& event) {
    std::shared_ptr<Subscription> subscription;
    std::shared_ptr<Driver> driver;
    ClientId client = 0;
    {
        orx::sync::MutexLock lock(mutex);
        auto it = subscriptions.find(event.entityId);
        if (it == subscriptions.end()) {
            return;
        }
        subscription = it->second;
        subscriptions.erase(it);
        driver = eventDriver_;
        client = eventClient_;
    }
    if (driver && client != 0) {
        driver->Unsubscribe(client, event.entityId);
    }
    if (subscription->monitor) {
        orx::sync::MutexLock watchLock(watchMutex_);
        subscription->monitor->Stop();
    }
    if (!subscription->isField) {
        reports.EventsDown({&event});
    }
}

void ServiceConsumer::Core::OnOffers(const ServiceHandleContainer& handles) {
    std::function<void(bool)> handler;
    const bool nowAvailable = !handles.empty();
    if (nowAvailable) {
        Connect(handles.front());
    }
    {
        orx::sync::MutexLock lock(mutex);
        if (shutDown_ || available == nowAvailable) {
            return;
        }
        available = nowAvailable;
        handler = availabilityHandler;
    }
    availabilityChanged.NotifyAll();
    ApplyWatch();
    detail::AppLog()->LogInfo() << "[App][Service " << (nowAvailable ? "found" : "lost")
                                << "][service=" << deployment.serviceName
                                << ", instanceId=" << deployment.instanceId << "]";
    if (handler) {
        handler(nowAvailable);
    }
}

void ServiceConsumer::Core::ApplyWatch() {
    // The watch runs while the service is there: a withdrawn service is not expected to send.
    orx::sync::MutexLock watchLock(watchMutex_);
    bool watch = false;
    std::vector<std::shared_ptr<SampleTimeoutMonitor>> monitors;
    {
        orx::sync::MutexLock lock(mutex);
        watch = available && !shutDown_;
        monitors = MonitorsLocked();
    }
    for (const auto& monitor : monitors) {
        if (watch) {
            monitor->Start();
        } else {
            monitor->Stop();
        }
    }
}

void ServiceConsumer::Core::Connect(const HandleType& handle) {
    {
        orx::sync::MutexLock lock(mutex);
        if (proxy || shutDown_) {
            return;  // both survive the service going away and coming back
        }
    }
    // Made outside the lock: connecting may call back into the driver.
    auto newProxy = std::make_shared<Proxy>(handle);
    auto driver = DriverRegistry::GetInstance()->GetDriver(handle.GetDriverType());
    std::weak_ptr<Core> weak = weak_from_this();
    ClientCallbacks callbacks;
    callbacks.onEvent = [weak](const EventSample& sample) {
        if (auto self = weak.lock()) {
            self->OnEvent(sample);
        }
    };
    const ClientId client = driver->Connect(handle, std::move(callbacks));
    if (client == 0) {
        detail::AppLog()->LogError()
            << "[App][The driver refused the event connection][service=" << deployment.serviceName
            << ", driver=" << driver->Name() << "]";
    }
    std::vector<uint32_t> entities;
    {
        orx::sync::MutexLock lock(mutex);
        proxy = std::move(newProxy);
        eventDriver_ = driver;
        eventClient_ = client;
        for (const auto& [entityId, subscription] : subscriptions) {
            entities.push_back(entityId);
        }
    }
    if (client == 0) {
        return;
    }
    for (const uint32_t entityId : entities) {
        driver->Subscribe(client, entityId);
    }
}

void ServiceConsumer::Core::OnEvent(const EventSample& sample) {
    const long receivedNs = GetCurMonoTime();
    std::shared_ptr<Subscription> subscription;
    {
        orx::sync::MutexLock lock(mutex);
        auto it = subscriptions.find(sample.entityId);
        if (it == subscriptions.end()) {
            return;
        }
        subscription = it->second;
    }
    subscription->stats->AddSample(sample.sendTimeNs, receivedNs);
    if (subscription->monitor) {
        subscription->monitor->OnSample(receivedNs);
    }
    executor_.Post([subscription, payload = sample.payload, sequence = sample.sequence] {
        if (!subscription->handler(payload)) {
            detail::AppLog()->LogWarn(detail::AppLimit("App_UnreadableSample"))
                << "[App][Event sample cannot be read, dropped][subscriber="
                << subscription->listenerName << ", sequence=" << sequence << "]";
        }
    });
}

void ServiceConsumer::Core::OnTimeout(const std::weak_ptr<Subscription>& weak, uint32_t count) {
    auto subscription = weak.lock();
    if (!subscription) {
        return;
    }
    const EventDeployment& event = *subscription->event;
    detail::AppLog()->LogWarn(detail::AppLimit("App_SampleTimeout"))
        << "[App][Sample timeout][subscriber=" << subscription->listenerName
        << ", thresholdMs=" << settings.sampleTimeoutThresholdMs << ", count=" << count << "]";
    if (subscription->listener) {
        api::types::ListenerTimeoutInfo info;
        info.serviceId = deployment.serviceId;
        info.instanceId = deployment.instanceId;
        info.entityId = event.entityId;
        info.name = subscription->listenerName;
        info.sampleTimeout = settings.sampleTimeoutThresholdMs;
        info.sampleTimeoutCount = count;
        subscription->listener->OnSampleTimeout(info, *traffic);
    }
    TimeoutHandler handler;
    {
        orx::sync::MutexLock lock(mutex);
        handler = timeoutHandler;
    }
    if (handler) {
        executor_.Post([handler, name = event.name, count] { handler(name, count); });
    }
}

void ServiceConsumer::Core::RegisterLatency(
    const std::shared_ptr<Subscription>& subscription) const {
    std::weak_ptr<LatencyStats> weak = subscription->stats;
    const EventDeployment& event = *subscription->event;
    reports.LatencyMode(event, [weak, service = deployment.serviceName,
                                name = event.name](const api::types::LatencyAnalysisMode& mode) {
        const bool on = mode == api::types::LatencyAnalysisMode::ENABLE;
        if (auto stats = weak.lock()) {
            stats->SetEnabled(on);
        }
        detail::AppLog()->LogInfo()
            << "[App][Latency analysis switched " << (on ? "on" : "off") << "][service=" << service
            << ", event=" << name << ", side=subscriber]";
    });
    reports.LatencyQuery(event, [weak] {
        auto stats = weak.lock();
        return stats ? stats->TakePeriod() : api::types::LatencyResult{};
    });
}

std::vector<std::shared_ptr<SampleTimeoutMonitor>> ServiceConsumer::Core::MonitorsLocked() const {
    std::vector<std::shared_ptr<SampleTimeoutMonitor>> monitors;
    for (const auto& [entityId, subscription] : subscriptions) {
        if (subscription->monitor) {
            monitors.push_back(subscription->monitor);
        }
    }
    return monitors;
}

}  // namespace vorx::vcc::app
