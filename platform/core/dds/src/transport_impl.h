// The inside of DdsTransport: its participant, threads, endpoints and the
// routes from frames to handlers. Shared by the transport's source files.
#ifndef VORX_DRIVER_DDS_SRC_TRANSPORT_IMPL_H
#define VORX_DRIVER_DDS_SRC_TRANSPORT_IMPL_H

#include <unistd.h>

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "callback_slot.h"
#include "dispatch_thread.h"
#include "frame_endpoint.h"
#include "host_identity.h"
#include "offer_board.h"
#include "orx/sync/mutex.h"
#include "participant.h"
#include "peer_participants.h"
#include "peer_topics.h"
#include "vorx/driver/dds/dds_transport.h"

namespace vorx {
namespace driver {
namespace dds {

using Slot = CallbackSlot<DdsTransport::FrameHandler>;
using LostSlot = CallbackSlot<DdsTransport::OfferLostHandler>;

struct Subscription {
    uint16_t serviceId;
    std::string instanceId;
    uint32_t entityId;
    std::shared_ptr<Slot> slot;

    bool Wants(const Frame& frame) const {
        return frame.serviceId == serviceId && frame.entityId == entityId &&
               (IsAnyInstance(instanceId) || frame.instanceId == instanceId);
    }
};

class DdsTransport::Impl {
  public:
    explicit Impl(std::shared_ptr<Participant> participant)
        : participant_(std::move(participant)), idBase_(RandomId() & ~0xFFFFFFFFull) {}

    ~Impl() {
        if (participants_) {
            participants_->Stop();
        }
        if (peers_) {
            peers_->Stop();
        }
        if (offers_) {
            offers_->Stop();
        }
        for (auto* thread : {discovery_.get(), client_.get(), server_.get()}) {
            if (thread != nullptr) {
                thread->Stop();
            }
        }
        // Deleting a reader waits for its listener to return; that listener may
        // need endpointsMutex_, so the endpoints go outside of it.
        std::map<std::string, EndpointEntry> endpoints;
        {
            orx::sync::MutexLock lock(endpointsMutex_);
            endpoints.swap(endpoints_);
        }
        endpoints.clear();
    }

    DdsStatus Start() {
        DdsStatus status;
        discovery_ = DispatchThread::Start(participant_->Handle(), "dds-discovery", &status);
        if (!discovery_) {
            return status;
        }
        client_ = DispatchThread::Start(participant_->Handle(), "dds-client", &status);
        if (!client_) {
            return status;
        }
        server_ = DispatchThread::Start(participant_->Handle(), "dds-server", &status);
        if (!server_) {
            return status;
        }
        ServiceOffer identity;
        identity.providerGuid = participant_->Guid();
        identity.processId = static_cast<int32_t>(getpid());
        identity.hostName = HostName();
        offers_ =
            std::make_unique<OfferBoard>(participant_, discovery_.get(), identity,
                                         [this](const ServiceOffer& offer) { OnLost(offer); });
        status = offers_->Start();
        if (!status.ok()) {
            return status;
        }
        peers_ = std::make_unique<PeerTopics>(
            participant_, discovery_.get(),
            [this](uint16_t serviceId, const std::string& topic) {
                OnRequestTopic(serviceId, topic);
            },
            [this](uint16_t serviceId, const std::string& topic) {
                OnEventTopic(serviceId, topic);
            });
        status = peers_->Start();
        if (!status.ok()) {
            return status;
        }
        participants_ = std::make_unique<PeerParticipants>(participant_, discovery_.get());
        return participants_->Start();
    }

    // The endpoint of `topic`, made with `qos` on first use. With `role` set,
    // its reader of that role exists (tagged with `readerTag` when made) and
    // hands its frames to that role's handlers.
    std::shared_ptr<FrameEndpoint> Endpoint(const std::string& topic, const EndpointQos& qos,
                                            const ReaderRole* role, const std::string& readerTag,
                                            DdsStatus* status) {
        std::shared_ptr<FrameEndpoint> endpoint;
        {
            orx::sync::MutexLock lock(endpointsMutex_);
            auto& entry = endpoints_[topic];
            if (!entry.endpoint) {
                entry.endpoint = std::make_shared<FrameEndpoint>(participant_, topic, qos);
            }
            endpoint = entry.endpoint;
        }
        *status = DdsStatus::Ok();
        // The reader is made outside endpointsMutex_: making entities may wait
        // for listeners, and listeners look endpoints up.
        if (role != nullptr && !endpoint->HasReader(*role)) {
            FrameEndpoint* raw = endpoint.get();
            const ReaderRole which = *role;
            const dds_entity_t reader = raw->Reader(
                which, readerTag,
                [this, which](dds_entity_t ready) { OnDataAvailable(ready, which); }, status);
            if (reader < 0) {
                return nullptr;
            }
        }
        return endpoint;
    }

    // Cyclone calls this when a reader holds new samples: on its receive
    // thread for samples from other processes, and in the writer's thread for
    // samples of this process. The first are handled right there (no thread
    // switch on the way of a request or reply); the second are handed to the
    // role's thread, because callbacks never run on a caller's thread.
    void OnDataAvailable(dds_entity_t reader, ReaderRole role) {
        if (InOwnWrite()) {
            DispatchThread* thread = role == ReaderRole::kServer ? server_.get() : client_.get();
            thread->Post([this, reader, role] { Drain(reader, role); });
            return;
        }
        ListenerScope inListener(reader);
        Drain(reader, role);
    }

    // Takes the reader's frames and routes them, one role at a time: the
    // handlers of a role never run concurrently (a handler may still get here
    // again on its own thread).
    void Drain(dds_entity_t reader, ReaderRole role) {
        std::vector<Frame> frames;
        FrameEndpoint::TakeAll(reader, &frames);
        if (frames.empty()) {
            return;
        }
        if (role == ReaderRole::kServer) {
            std::lock_guard<std::recursive_mutex> serial(serverCalls_);
            OnServerFrames(std::move(frames));
        } else {
            std::lock_guard<std::recursive_mutex> serial(clientCalls_);
            OnClientFrames(std::move(frames));
        }
    }

    // The endpoint of `topic` if it exists; never makes one.
    std::shared_ptr<FrameEndpoint> Existing(const std::string& topic) {
        orx::sync::MutexLock lock(endpointsMutex_);
        auto found = endpoints_.find(topic);
        return found == endpoints_.end() ? nullptr : found->second.endpoint;
    }

    // Inside a listener, a send that would make an entity or wait for a peer
    // is done on another thread instead (see InListener); the caller then
    // reports success, as for any send on its way.
    static bool MustDefer(bool readyInline) { return !readyInline && InListener(); }

    std::shared_ptr<FrameEndpoint> Endpoint(const std::string& topic, const EndpointQos& qos,
                                            DdsStatus* status) {
        return Endpoint(topic, qos, nullptr, std::string(), status);
    }

    DdsStatus ListenForRequests(const std::string& topic) {
        const ReaderRole role = ReaderRole::kServer;
        DdsStatus status;
        Endpoint(topic, MethodEndpointQos(), &role, std::string(), &status);
        return status;
    }

    DdsStatus ListenForReplies(const std::string& topic) {
        const ReaderRole role = ReaderRole::kClient;
        DdsStatus status;
        Endpoint(topic, MethodEndpointQos(), &role, std::string(), &status);
        return status;
    }

    bool Served(uint16_t serviceId) {
        orx::sync::MutexLock lock(routesMutex_);
        return servedServices_.count(serviceId) != 0;
    }

    void OnRequestTopic(uint16_t serviceId, const std::string& topic) {
        if (Served(serviceId)) {
            ListenForRequests(topic);
        }
    }

    // A subscriber of an event of `serviceId` showed up. When we offer that
    // service, make the writer of its topic now: the subscriber then knows the
    // writer before the first sample, and the writer knows the subscriber.
    void OnEventTopic(uint16_t serviceId, const std::string& topic) {
        if (Served(serviceId)) {
            server_->Post([this, topic] { PrepareEventWriter(topic); });
        }
    }

    void PrepareEventWriter(const std::string& topic) {
        EventTopic settings;
        settings.topic = topic;
        DdsStatus status;
        if (auto endpoint = Endpoint(topic, EventEndpointQos(settings), &status)) {
            endpoint->PrepareWriter(FrameKind::kEvent, std::string());
        }
    }

    bool OnOwnThread() const {
        return discovery_->OnThisThread() || client_->OnThisThread() || server_->OnThisThread();
    }

    void OnLost(const ServiceOffer& offer) {
        std::shared_ptr<LostSlot> slot;
        {
            orx::sync::MutexLock lock(routesMutex_);
            slot = lostSlot_;
        }
        if (slot) {
            slot->Invoke(offer);
        }
    }

    // Server thread: requests go to their offer's handler; replies that share
    // the topic are the client reader's business.
    void OnServerFrames(std::vector<Frame> frames) {
        for (auto& frame : frames) {
            if (frame.kind == FrameKind::kRequest) {
                RouteRequest(std::move(frame));
            }
        }
    }

    // Client thread: replies and event samples; requests that share the topic
    // are the server reader's business.
    void OnClientFrames(std::vector<Frame> frames) {
        for (auto& frame : frames) {
            if (frame.kind == FrameKind::kReply) {
                RouteReply(std::move(frame));
            } else if (frame.kind == FrameKind::kEvent) {
                RouteEvent(std::move(frame));
            }
        }
    }

    void RouteRequest(Frame frame) {
        std::shared_ptr<Slot> slot;
        {
            orx::sync::MutexLock lock(routesMutex_);
            auto found = servers_.find(frame.providerId);
            if (found != servers_.end()) {
                slot = found->second.slot;
            }
        }
        if (slot) {
            slot->Invoke(std::move(frame));
        }
    }

    void RouteReply(Frame frame) {
        std::shared_ptr<Slot> slot;
        {
            orx::sync::MutexLock lock(routesMutex_);
            auto found = clients_.find(frame.clientId);
            if (found != clients_.end()) {
                slot = found->second;
            }
        }
        if (slot) {
            slot->Invoke(std::move(frame));
        }
    }

    void RouteEvent(Frame frame) {
        std::vector<std::shared_ptr<Slot>> slots;
        {
            orx::sync::MutexLock lock(routesMutex_);
            for (const auto& entry : subscriptions_) {
                if (entry.second.Wants(frame)) {
                    slots.push_back(entry.second.slot);
                }
            }
        }
        for (size_t i = 0; i < slots.size(); ++i) {
            if (i + 1 == slots.size()) {
                slots[i]->Invoke(std::move(frame));
            } else {
                slots[i]->Invoke(Frame(frame));
            }
        }
    }

    void Stamp(Frame& frame, FrameKind kind) const {
        frame.kind = kind;
        frame.senderGuid = participant_->Guid();
        frame.sendTimeMonoNs = MonotonicNowNs();
        frame.sendTimeRealNs = RealtimeNowNs();
        frame.bootId = DdsTransport::BootId();
    }

    std::chrono::milliseconds MatchWait() const {
        return std::chrono::milliseconds(matchWaitMs_.load(std::memory_order_relaxed));
    }

    const std::shared_ptr<Participant> participant_;
    const uint64_t idBase_;
    std::atomic<uint64_t> idCounter_{0};
    std::atomic<int64_t> matchWaitMs_{1000};

    std::unique_ptr<DispatchThread> discovery_;
    std::unique_ptr<DispatchThread> client_;
    std::unique_ptr<DispatchThread> server_;
    std::unique_ptr<OfferBoard> offers_;
    std::unique_ptr<PeerTopics> peers_;
    std::unique_ptr<PeerParticipants> participants_;

    struct EndpointEntry {
        std::shared_ptr<FrameEndpoint> endpoint;
    };
    orx::sync::Mutex endpointsMutex_;
    std::map<std::string, EndpointEntry> endpoints_ GUARDED_BY(endpointsMutex_);

    struct Server {
        uint16_t serviceId;
        std::shared_ptr<Slot> slot;
    };
    // Held while the handlers of one role run (see Drain). Recursive, because a handler may
    // drain again on its own thread; they guard no member, so they stay standard mutexes (clang's
    // lock check has no recursive kind).
    std::recursive_mutex serverCalls_;
    std::recursive_mutex clientCalls_;

    orx::sync::Mutex routesMutex_;
    std::map<uint64_t, Server> servers_ GUARDED_BY(routesMutex_);
    std::multiset<uint16_t> servedServices_ GUARDED_BY(routesMutex_);
    std::map<uint64_t, std::shared_ptr<Slot>> clients_ GUARDED_BY(routesMutex_);
    std::map<uint64_t, Subscription> subscriptions_ GUARDED_BY(routesMutex_);
    std::shared_ptr<LostSlot> lostSlot_ GUARDED_BY(routesMutex_);
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
