// DdsTransport: method requests and replies.
#include "vorx/driver/dds/dds_transport.h"

#include "orx/sync/mutex.h"
#include "transport_impl.h"

namespace vorx {
namespace driver {
namespace dds {

DdsStatus DdsTransport::Serve(uint64_t providerId, uint16_t serviceId, FrameHandler onRequest) {
    std::shared_ptr<Slot> previous;
    {
        orx::sync::MutexLock lock(impl_->routesMutex_);
        auto found = impl_->servers_.find(providerId);
        if (found != impl_->servers_.end()) {
            previous = found->second.slot;
            impl_->servedServices_.erase(impl_->servedServices_.find(found->second.serviceId));
        }
        impl_->servers_[providerId] =
            Impl::Server{serviceId, std::make_shared<Slot>(std::move(onRequest))};
        impl_->servedServices_.insert(serviceId);
    }
    if (previous) {
        previous->Close();
    }
    // Read the request topics that clients of this service announced so far;
    // later ones arrive through OnRequestTopic.
    for (const auto& topic : impl_->peers_->RequestTopics(serviceId)) {
        DdsStatus status = impl_->ListenForRequests(topic);
        if (!status.ok()) {
            return status;
        }
    }
    for (const auto& topic : impl_->peers_->EventTopics(serviceId)) {
        impl_->PrepareEventWriter(topic);
    }
    return DdsStatus::Ok();
}

void DdsTransport::StopServing(uint64_t providerId) {
    std::shared_ptr<Slot> slot;
    {
        orx::sync::MutexLock lock(impl_->routesMutex_);
        auto found = impl_->servers_.find(providerId);
        if (found == impl_->servers_.end()) {
            return;
        }
        slot = found->second.slot;
        impl_->servedServices_.erase(impl_->servedServices_.find(found->second.serviceId));
        impl_->servers_.erase(found);
    }
    slot->Close();
}

std::set<std::string> DdsTransport::AnnouncedRequestTopics(uint16_t serviceId) const {
    return impl_->peers_->RequestTopics(serviceId);
}

DdsStatus DdsTransport::ListenForRequests(uint16_t /*serviceId*/, const std::string& topic) {
    return impl_->ListenForRequests(topic);
}

DdsStatus DdsTransport::SendReply(const std::string& replyTopic, Frame reply,
                                  const ParticipantGuid& client) {
    std::shared_ptr<FrameEndpoint> endpoint = impl_->Existing(replyTopic);
    const bool ready = endpoint && endpoint->CanWriteInline(FrameKind::kReply, &client);
    if (Impl::MustDefer(ready)) {
        impl_->server_->Post([this, replyTopic, reply = std::move(reply), client] {
            SendReply(replyTopic, reply, client);
        });
        return DdsStatus::Ok();
    }
    DdsStatus status;
    if (!endpoint) {
        endpoint = impl_->Endpoint(replyTopic, MethodEndpointQos(), &status);
        if (!endpoint) {
            return status;
        }
    }
    impl_->Stamp(reply, FrameKind::kReply);
    return endpoint->Write(reply, &client, impl_->MatchWait());
}

DdsStatus DdsTransport::OpenClient(uint64_t clientId, FrameHandler onReply) {
    std::shared_ptr<Slot> previous;
    {
        orx::sync::MutexLock lock(impl_->routesMutex_);
        auto& slot = impl_->clients_[clientId];
        previous = slot;
        slot = std::make_shared<Slot>(std::move(onReply));
    }
    if (previous) {
        previous->Close();
    }
    return DdsStatus::Ok();
}

void DdsTransport::CloseClient(uint64_t clientId) {
    std::shared_ptr<Slot> slot;
    {
        orx::sync::MutexLock lock(impl_->routesMutex_);
        auto found = impl_->clients_.find(clientId);
        if (found == impl_->clients_.end()) {
            return;
        }
        slot = found->second;
        impl_->clients_.erase(found);
    }
    slot->Close();
}

DdsStatus DdsTransport::SendRequest(const MethodTopics& topics, Frame request,
                                    const ParticipantGuid& provider) {
    const std::shared_ptr<FrameEndpoint> replies = impl_->Existing(topics.replyTopic);
    std::shared_ptr<FrameEndpoint> requests = impl_->Existing(topics.requestTopic);
    const bool listening = replies && replies->HasReader(ReaderRole::kClient);
    const bool ready =
        listening && requests && requests->CanWriteInline(FrameKind::kRequest, &provider);
    if (Impl::MustDefer(ready)) {
        impl_->client_->Post([this, topics, request = std::move(request), provider] {
            SendRequest(topics, request, provider);
        });
        return DdsStatus::Ok();
    }
    DdsStatus status;
    if (!listening) {
        status = impl_->ListenForReplies(topics.replyTopic);
        if (!status.ok()) {
            return status;
        }
    }
    if (!requests) {
        requests = impl_->Endpoint(topics.requestTopic, MethodEndpointQos(), &status);
        if (!requests) {
            return status;
        }
    }
    impl_->Stamp(request, FrameKind::kRequest);
    request.replyTopic = topics.replyTopic;
    return requests->Write(request, &provider, impl_->MatchWait());
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
