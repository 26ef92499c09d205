#include "vorx/vcc/proxy.h"

#include <string>
#include <utility>

#include "com_log.h"
#include "dfx_config_gate.h"
#include "orx/sync/mutex.h"
#include "proxy_core.h"

namespace vorx::vcc {

Proxy::Proxy(const HandleType& handle) : core_(std::make_shared<Core>(handle)) {
    core_->Connect();
}

Proxy::~Proxy() {
    core_->Shutdown();
}

const HandleType& Proxy::GetHandle() const {
    return core_->handle;
}

std::shared_ptr<MethodProxyBase> Proxy::LookupMethod(uint32_t entityId, const std::type_info& type,
                                                     bool logMismatch) const {
    orx::sync::MutexLock lock(core_->mutex);
    auto it = core_->methods.find(entityId);
    if (it == core_->methods.end()) {
        return nullptr;
    }
    if (*it->second.type != type) {
        if (logMismatch) {
            ComLog().LogError()
                << "[Proxy][Method proxy exists with another return type][methodEntityId="
                << entityId << "]";
        }
        return nullptr;
    }
    return it->second.proxy;
}

bool Proxy::HasMethod(uint32_t entityId) const {
    orx::sync::MutexLock lock(core_->mutex);
    return core_->methods.count(entityId) != 0;
}

bool Proxy::PrepareMethod(const api::types::MethodInfo& info, MethodBinding& binding) {
    const HandleType& handle = core_->handle;
    if (!AcceptMethod(handle, info)) {
        ComLog().LogError() << "[Proxy][Method proxy cannot be created][methodEntityId="
                            << info.GetEntityId() << "]";
        return false;
    }
    binding.settings.entityId = info.GetEntityId();
    binding.settings.methodUuid = handle.GetServiceName() + ":" + handle.GetInstanceId() + ":" +
                                  std::to_string(info.GetEntityId());
    binding.settings.errorDomains = info.GetErrorDomains();
    binding.settings.requestSerializeType = info.GetRequestSerializeType();
    binding.settings.requestSerializeConfig = info.GetRequestSerializeConfig().serializeType;
    binding.driver = core_->driver;
    binding.client = core_->client;
    return true;
}

std::shared_ptr<MethodProxyBase> Proxy::AddMethod(uint32_t entityId, const std::type_info& type,
                                                  std::shared_ptr<MethodProxyBase> created) {
    orx::sync::MutexLock lock(core_->mutex);
    auto [it, inserted] = core_->methods.emplace(entityId, Core::MethodEntry{&type, created});
    if (!inserted && *it->second.type != type) {
        return nullptr;
    }
    return it->second.proxy;
}

void Proxy::SetEventThreadNumber(uint16_t priority, uint16_t queueSize) {
    core_->events.SetThreadSettings(priority, queueSize);
}

void Proxy::SetReceiveHandler(const std::function<void()>& handler, const uint32_t& entityId) {
    core_->events.SetHandler(entityId, handler);
}

bool Proxy::SubscribeEntity(uint32_t entityId, const api::types::EventInfo* info,
                            size_t cacheSize) {
    if (core_->events.IsSubscribed(entityId)) {
        ComLog().LogWarn() << "Event subscription alreay initialized " << entityId;
        return false;
    }
    if (!AcceptEvent(core_->handle, entityId, info)) {
        return false;
    }
    if (!core_->events.Add(entityId, cacheSize)) {
        ComLog().LogWarn() << "Event subscription alreay initialized " << entityId;
        return false;
    }
    if (core_->client == 0 || !core_->driver->Subscribe(core_->client, entityId)) {
        core_->events.Remove(entityId);
        ComLog().LogWarn() << "[Proxy][Event subscription failed][entityId=" << entityId << "]";
        return false;
    }
    return true;
}

std::vector<EventSample> Proxy::TakeSamples(uint32_t entityId, size_t maxCount) {
    return core_->events.Take(entityId, maxCount);
}

void Proxy::Unsubscribe(const uint32_t& entityId) {
    if (core_->events.Remove(entityId) && core_->client != 0) {
        core_->driver->Unsubscribe(core_->client, entityId);
    }
}

void Proxy::LogUnreadableSample(uint32_t entityId, uint64_t sequence) const {
    ComLog().LogWarn(Limit("Proxy_GetNewSamples_Decode"))
        << "[Proxy][Event sample cannot be read, dropped][entityId=" << entityId
        << ", sequence=" << sequence << "]";
}

void Proxy::LogNullMethodInfo() const {
    ComLog().LogError() << "[Proxy][Method proxy cannot be created without method info]";
}

}  // namespace vorx::vcc
