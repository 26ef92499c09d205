// DdsTransport: event samples.
#include "vorx/driver/dds/dds_transport.h"

#include "orx/sync/mutex.h"
#include "transport_impl.h"

namespace vorx {
namespace driver {
namespace dds {

DdsStatus DdsTransport::PrepareEvent(const EventTopic& topic) {
    DdsStatus status;
    auto endpoint = impl_->Endpoint(topic.topic, EventEndpointQos(topic), &status);
    if (!endpoint) {
        return status;
    }
    return endpoint->PrepareWriter(FrameKind::kEvent, std::string());
}

DdsStatus DdsTransport::Publish(const EventTopic& topic, Frame sample) {
    std::set<std::string> topics = impl_->peers_->EventTopics(sample.serviceId, sample.entityId);
    topics.insert(topic.topic);
    if (InListener()) {
        bool ready = true;
        for (const auto& name : topics) {
            auto existing = impl_->Existing(name);
            ready = ready && existing && existing->CanWriteInline(FrameKind::kEvent, nullptr);
        }
        if (Impl::MustDefer(ready)) {
            impl_->server_->Post(
                [this, topic, sample = std::move(sample)] { Publish(topic, sample); });
            return DdsStatus::Ok();
        }
    }
    impl_->Stamp(sample, FrameKind::kEvent);
    DdsStatus result;
    for (const auto& name : topics) {
        EventTopic settings = topic;
        settings.topic = name;
        DdsStatus status;
        auto endpoint = impl_->Endpoint(name, EventEndpointQos(settings), &status);
        if (endpoint) {
            status = endpoint->Write(sample, nullptr, std::chrono::milliseconds(0));
        }
        if (!status.ok() && result.ok()) {
            result = status;
        }
    }
    return result;
}

uint64_t DdsTransport::Subscribe(const EventTopic& topic, uint16_t serviceId,
                                 const std::string& instanceId, uint32_t entityId,
                                 FrameHandler onSample, const ParticipantGuid* provider,
                                 DdsStatus* status) {
    const ReaderRole role = ReaderRole::kClient;
    auto endpoint = impl_->Endpoint(topic.topic, EventEndpointQos(topic), &role,
                                    PeerTopics::EventTag(serviceId, entityId), status);
    if (!endpoint) {
        return 0;
    }
    const uint64_t id = NewId();
    {
        orx::sync::MutexLock lock(impl_->routesMutex_);
        impl_->subscriptions_.emplace(id,
                                      Subscription{serviceId, instanceId, entityId,
                                                   std::make_shared<Slot>(std::move(onSample))});
    }
    if (provider != nullptr && !impl_->OnOwnThread() && !InListener()) {
        // Not an error when it does not come: the provider may never publish
        // this event.
        endpoint->WaitForWriterOf(*provider, impl_->MatchWait());
    }
    return id;
}

void DdsTransport::Unsubscribe(uint64_t subscriptionId) {
    std::shared_ptr<Slot> slot;
    {
        orx::sync::MutexLock lock(impl_->routesMutex_);
        auto found = impl_->subscriptions_.find(subscriptionId);
        if (found == impl_->subscriptions_.end()) {
            return;
        }
        slot = found->second.slot;
        impl_->subscriptions_.erase(found);
    }
    slot->Close();
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
