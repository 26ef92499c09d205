#include "vorx/vcc/skeleton.h"

#include <map>
#include <utility>

#include "com_log.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/driver/driver_registry.h"

namespace vorx::vcc {

// What a Skeleton owns. Driver callbacks hold it weakly.
class Skeleton::Core : public std::enable_shared_from_this<Skeleton::Core> {
  public:
    explicit Core(const ServiceDescription& descIn)
        : desc(descIn), driver(DriverRegistry::GetInstance()->GetDriver(descIn.driverType)) {}

    void Dispatch(ProviderId provider, const MethodCall& call) {
        MethodHandler handler;
        {
            orx::sync::MutexLock lock(mutex);
            auto it = methods.find(call.entityId);
            if (it != methods.end()) {
                handler = it->second;
            }
        }
        if (!handler) {
            ComLog().LogWarn(Limit("Skeleton_UnknownMethod"))
                << "[Skeleton][Request for a method without handler][methodEntityId="
                << call.entityId << ", sessionId=" << call.sessionId << "]";
            return;
        }
        auto channel = std::make_shared<ReplyChannel>(driver, provider, call);
        if (!handler(call, channel)) {
            ComLog().LogWarn(Limit("Skeleton_RequestDeserialize"))
                << "[Skeleton][Method arguments cannot be read][methodEntityId=" << call.entityId
                << ", sessionId=" << call.sessionId << "]";
        }
    }

    const ServiceDescription desc;
    const std::shared_ptr<Driver> driver;
    mutable orx::sync::Mutex mutex;
    ProviderId provider GUARDED_BY(mutex){0};
    std::map<uint32_t, MethodHandler> methods GUARDED_BY(mutex);
    orx::sync::Mutex offerMutex;  // serialises offering and withdrawing
};

Skeleton::Skeleton(const ServiceDescription& desc) : core_(std::make_shared<Core>(desc)) {}

Skeleton::~Skeleton() {
    StopOfferService();
}

bool Skeleton::OfferService() {
    orx::sync::MutexLock offerLock(core_->offerMutex);
    if (IsOffered()) {
        return true;
    }
    std::weak_ptr<Core> weak = core_;
    ServerCallbacks callbacks;
    callbacks.onRequest = [weak](ProviderId provider, const MethodCall& call) {
        if (auto self = weak.lock()) {
            self->Dispatch(provider, call);
        }
    };
    const ProviderId provider = core_->driver->Offer(core_->desc, std::move(callbacks));
    if (provider == 0) {
        ComLog().LogError() << "[Skeleton][The driver refused the offer][driver="
                            << core_->driver->Name() << ", serviceId=" << core_->desc.serviceId
                            << ", instanceId=" << core_->desc.instanceId << "]";
        return false;
    }
    orx::sync::MutexLock lock(core_->mutex);
    core_->provider = provider;
    return true;
}

void Skeleton::StopOfferService() {
    orx::sync::MutexLock offerLock(core_->offerMutex);
    ProviderId provider = 0;
    {
        orx::sync::MutexLock lock(core_->mutex);
        std::swap(provider, core_->provider);
    }
    if (provider != 0) {
        core_->driver->StopOffer(provider);
    }
}

bool Skeleton::IsOffered() const {
    orx::sync::MutexLock lock(core_->mutex);
    return core_->provider != 0;
}

const ServiceDescription& Skeleton::GetDescription() const {
    return core_->desc;
}

void Skeleton::AddMethod(uint32_t entityId, MethodHandler handler) {
    orx::sync::MutexLock lock(core_->mutex);
    core_->methods[entityId] = std::move(handler);
}

bool Skeleton::PublishesObjects() const {
    return core_->driver->GetPayloadMode() == PayloadMode::kObjects;
}

bool Skeleton::Publish(uint32_t entityId, Payload payload) {
    ProviderId provider = 0;
    {
        orx::sync::MutexLock lock(core_->mutex);
        provider = core_->provider;
    }
    if (provider == 0) {
        return false;
    }
    EventSample sample;
    sample.entityId = entityId;
    sample.payload = std::move(payload);
    return core_->driver->Publish(provider, std::move(sample));
}

void Skeleton::LogEncodeFailure(uint32_t entityId) const {
    ComLog().LogWarn(Limit("Skeleton_EventSerialize"))
        << "[Skeleton][Event sample serialize failed][entityId=" << entityId << "]";
}

}  // namespace vorx::vcc
