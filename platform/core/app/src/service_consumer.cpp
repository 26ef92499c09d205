#include "vorx/vcc/app/service_consumer.h"

#include "app_log.h"
#include "consumer_core.h"
#include "orx/sync/mutex.h"

namespace vorx::vcc::app {
namespace {

const EventDeployment* FindSubscribable(const ServiceDeployment& service, const std::string& name,
                                        bool field) {
    if (!field) {
        return service.FindEvent(name);
    }
    const FieldDeployment* deployment = service.FindField(name);
    return deployment != nullptr && deployment->notifier ? &*deployment->notifier : nullptr;
}

}  // namespace

ServiceConsumer::ServiceConsumer(ServiceDeployment deployment, ConsumerSettings settings)
    : core_(std::make_shared<Core>(std::move(deployment), settings)) {
    core_->Start();
}

ServiceConsumer::~ServiceConsumer() {
    core_->Shutdown();
}

const ServiceDeployment& ServiceConsumer::Deployment() const {
    return core_->deployment;
}

bool ServiceConsumer::IsAvailable() const {
    orx::sync::MutexLock lock(core_->mutex);
    return core_->available;
}

bool ServiceConsumer::WaitForService(std::chrono::milliseconds timeout) const {
    orx::sync::MutexLock lock(core_->mutex);
    return core_->availabilityChanged.WaitFor(
        core_->mutex, timeout, [this]() REQUIRES(core_->mutex) { return core_->available; });
}

void ServiceConsumer::SetAvailabilityHandler(std::function<void(bool available)> handler) {
    bool availableNow = false;
    {
        orx::sync::MutexLock lock(core_->mutex);
        core_->availabilityHandler = handler;
        availableNow = core_->available;
    }
    if (availableNow && handler) {
        handler(true);
    }
}

void ServiceConsumer::SetSampleTimeoutHandler(
    std::function<void(const std::string& event, uint32_t count)> handler) {
    orx::sync::MutexLock lock(core_->mutex);
    core_->timeoutHandler = std::move(handler);
}

void ServiceConsumer::Unsubscribe(const std::string& event) {
    RemoveSubscription(event, false);
}

void ServiceConsumer::UnsubscribeField(const std::string& field) {
    RemoveSubscription(field, true);
}

bool ServiceConsumer::AddSubscription(const std::string& name, bool field, SampleHandler handler) {
    const EventDeployment* event = FindSubscribable(core_->deployment, name, field);
    if (event == nullptr) {
        detail::AppLog()->LogError() << "[App][" << (field ? "Field notifier" : "Event")
                                     << " not deployed][service=" << core_->deployment.serviceName
                                     << ", name=" << name << "]";
        return false;
    }
    if (!core_->Subscribe(*event, field, std::move(handler))) {
        detail::AppLog()->LogWarn()
            << "[App][Subscribed already][service=" << core_->deployment.serviceName
            << ", name=" << name << "]";
        return false;
    }
    return true;
}

void ServiceConsumer::RemoveSubscription(const std::string& name, bool field) {
    if (const EventDeployment* event = FindSubscribable(core_->deployment, name, field)) {
        core_->Unsubscribe(*event);
    }
}

std::shared_ptr<Proxy> ServiceConsumer::PrepareCall(const std::string& name, MethodKind kind,
                                                    std::shared_ptr<api::types::MethodInfo>& info,
                                                    ara::com::ComErrc& error) const {
    const ServiceDeployment& service = core_->deployment;
    const MethodDeployment* method = nullptr;
    if (kind == MethodKind::kMethod) {
        method = service.FindMethod(name);
    } else if (const FieldDeployment* field = service.FindField(name)) {
        method = kind == MethodKind::kGetter ? (field->getter ? &*field->getter : nullptr)
                                             : (field->setter ? &*field->setter : nullptr);
    }
    const auto it =
        method != nullptr ? core_->methodInfos.find(method->entityId) : core_->methodInfos.end();
    if (it == core_->methodInfos.end()) {
        detail::AppLog()->LogError()
            << "[App][Method not deployed or without traffic][service=" << service.serviceName
            << ", name=" << name << "]";
        error = ara::com::ComErrc::kNetworkBindingFailure;
        return nullptr;
    }
    info = it->second;
    orx::sync::MutexLock lock(core_->mutex);
    if (!core_->proxy) {
        error = ara::com::ComErrc::kServiceNotAvailable;
    }
    return core_->proxy;
}

}  // namespace vorx::vcc::app
