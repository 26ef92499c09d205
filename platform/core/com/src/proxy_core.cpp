#include "proxy_core.h"

#include "ara/com/com_error_domain.h"
#include "com_log.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/driver/driver_registry.h"

namespace vorx::vcc {

Proxy::Core::Core(const HandleType& handleIn) : handle(handleIn) {}

void Proxy::Core::Connect() {
    driver = DriverRegistry::GetInstance()->GetDriver(handle.GetDriverType());
    std::weak_ptr<Core> weak = weak_from_this();
    ClientCallbacks callbacks;
    callbacks.onReply = [weak](const MethodReply& reply) {
        if (auto self = weak.lock()) {
            self->OnReply(reply);
        }
    };
    callbacks.onEvent = [weak](const EventSample& sample) {
        if (auto self = weak.lock()) {
            self->events.OnSample(sample);
        }
    };
    callbacks.onServiceLost = [weak] {
        if (auto self = weak.lock()) {
            self->OnServiceLost();
        }
    };
    client = driver->Connect(handle, std::move(callbacks));
    if (client == 0) {
        ComLog().LogError() << "[Proxy][The driver refused the connection][driver="
                            << driver->Name() << ", serviceName=" << handle.GetServiceName()
                            << ", instanceId=" << handle.GetInstanceId() << "]";
    }
}

std::vector<std::shared_ptr<MethodProxyBase>> Proxy::Core::Methods() const {
    std::vector<std::shared_ptr<MethodProxyBase>> all;
    orx::sync::MutexLock lock(mutex);
    all.reserve(methods.size());
    for (const auto& [entityId, entry] : methods) {
        all.push_back(entry.proxy);
    }
    return all;
}

void Proxy::Core::Shutdown() {
    const auto methodProxies = Methods();
    for (const auto& method : methodProxies) {
        method->Detach();
    }
    if (client != 0) {
        driver->Disconnect(client);
    }
    for (const auto& method : methodProxies) {
        method->DestroyWaitingPromise(
            ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable));
    }
    events.Stop();
}

void Proxy::Core::OnReply(const MethodReply& reply) {
    std::shared_ptr<MethodProxyBase> method;
    {
        orx::sync::MutexLock lock(mutex);
        auto it = methods.find(reply.entityId);
        if (it != methods.end()) {
            method = it->second.proxy;
        }
    }
    if (!method) {
        ComLog().LogWarn() << "[Proxy][Reply for a method without method proxy][methodEntityId="
                           << reply.entityId << ", sessionId=" << reply.sessionId << "]";
        return;
    }
    method->OnDataAvailable(reply);
}

void Proxy::Core::OnServiceLost() {
    for (const auto& method : Methods()) {
        method->DestroyWaitingPromise(
            ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable));
    }
}

}  // namespace vorx::vcc
