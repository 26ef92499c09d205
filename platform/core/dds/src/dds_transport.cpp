#include "vorx/driver/dds/dds_transport.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <ctime>
#include <fstream>
#include <map>
#include <mutex>
#include <random>
#include <set>

#include "callback_slot.h"
#include "dispatch_thread.h"
#include "frame_endpoint.h"
#include "offer_board.h"
#include "participant.h"
#include "peer_topics.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

int64_t ClockNs(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

uint64_t RandomId() {
    std::random_device device;
    std::seed_seq seed{device(), device(), static_cast<unsigned>(getpid()),
                       static_cast<unsigned>(ClockNs(CLOCK_MONOTONIC))};
    std::mt19937_64 engine(seed);
    return engine();
}

std::string HostName() {
    char name[256] = {};
    if (gethostname(name, sizeof(name) - 1) != 0) {
        return std::string();
    }
    return std::string(name);
}

uint64_t Fnv1a(const std::string& text) {
    uint64_t hash = 1469598103934665603ull;
    for (const char c : text) {
        hash ^= static_cast<uint8_t>(c);
        hash *= 1099511628211ull;
    }
    return hash;
}

uint64_t ReadBootId() {
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string text;
    if (!std::getline(file, text) || text.empty()) {
        text = HostName();
    }
    return Fnv1a(text) | 1u;
}

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

}  // namespace

int64_t MonotonicNowNs() {
    return ClockNs(CLOCK_MONOTONIC);
}
int64_t RealtimeNowNs() {
    return ClockNs(CLOCK_REALTIME);
}

uint64_t DdsTransport::BootId() {
    static const uint64_t id = ReadBootId();
    return id;
}

int64_t LocalMonotonicSendTime(const Frame& frame) {
    if (frame.bootId == DdsTransport::BootId()) {
        return frame.sendTimeMonoNs;
    }
    return MonotonicNowNs() - (RealtimeNowNs() - frame.sendTimeRealNs);
}

class DdsTransport::Impl {
  public:
    explicit Impl(std::shared_ptr<Participant> participant)
        : participant_(std::move(participant)), idBase_(RandomId() & ~0xFFFFFFFFull) {}

    ~Impl() {
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
            std::lock_guard<std::mutex> lock(endpointsMutex_);
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
        return peers_->Start();
    }

    // The endpoint of `topic`, made with `qos` on first use. With `role` set,
    // its reader of that role exists (tagged with `readerTag` when made) and
    // hands its frames to that role's handlers.
    std::shared_ptr<FrameEndpoint> Endpoint(const std::string& topic, const EndpointQos& qos,
                                            const ReaderRole* role, const std::string& readerTag,
                                            DdsStatus* status) {
        std::shared_ptr<FrameEndpoint> endpoint;
        {
            std::lock_guard<std::mutex> lock(endpointsMutex_);
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
        std::lock_guard<std::mutex> lock(endpointsMutex_);
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
        std::lock_guard<std::mutex> lock(routesMutex_);
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
            std::lock_guard<std::mutex> lock(routesMutex_);
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
            std::lock_guard<std::mutex> lock(routesMutex_);
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
            std::lock_guard<std::mutex> lock(routesMutex_);
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
            std::lock_guard<std::mutex> lock(routesMutex_);
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

    struct EndpointEntry {
        std::shared_ptr<FrameEndpoint> endpoint;
    };
    std::mutex endpointsMutex_;
    std::map<std::string, EndpointEntry> endpoints_;  // guarded by endpointsMutex_

    struct Server {
        uint16_t serviceId;
        std::shared_ptr<Slot> slot;
    };
    // Held while the handlers of one role run (see Drain).
    std::recursive_mutex serverCalls_;
    std::recursive_mutex clientCalls_;

    std::mutex routesMutex_;
    std::map<uint64_t, Server> servers_;                 // guarded by routesMutex_
    std::multiset<uint16_t> servedServices_;             // guarded by routesMutex_
    std::map<uint64_t, std::shared_ptr<Slot>> clients_;  // guarded by routesMutex_
    std::map<uint64_t, Subscription> subscriptions_;     // guarded by routesMutex_
    std::shared_ptr<LostSlot> lostSlot_;                 // guarded by routesMutex_
};

std::shared_ptr<DdsTransport> DdsTransport::Create(const ParticipantSettings& settings,
                                                   DdsStatus* status) {
    auto participant = Participant::Create(settings, status);
    if (!participant) {
        return nullptr;
    }
    auto impl = std::make_unique<Impl>(std::move(participant));
    *status = impl->Start();
    if (!status->ok()) {
        return nullptr;
    }
    return std::shared_ptr<DdsTransport>(new DdsTransport(std::move(impl)));
}

DdsTransport::DdsTransport(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

DdsTransport::~DdsTransport() = default;

uint32_t DdsTransport::DomainId() const {
    return impl_->participant_->DomainId();
}

const ParticipantGuid& DdsTransport::Guid() const {
    return impl_->participant_->Guid();
}

uint64_t DdsTransport::NewId() {
    return impl_->idBase_ | ((impl_->idCounter_.fetch_add(1) + 1) & 0xFFFFFFFFull);
}

void DdsTransport::SetMatchWait(std::chrono::milliseconds wait) {
    impl_->matchWaitMs_.store(wait.count(), std::memory_order_relaxed);
}

DdsStatus DdsTransport::Offer(const ServiceOffer& offer) {
    return impl_->offers_->Offer(offer);
}

DdsStatus DdsTransport::StopOffer(uint64_t providerId) {
    return impl_->offers_->StopOffer(providerId);
}

uint64_t DdsTransport::StartFind(const FindFilter& filter, OfferListHandler handler) {
    return impl_->offers_->StartFind(filter, std::move(handler));
}

void DdsTransport::StopFind(uint64_t findId) {
    impl_->offers_->StopFind(findId);
}

std::vector<ServiceOffer> DdsTransport::CurrentOffers(const FindFilter& filter) const {
    return impl_->offers_->Current(filter);
}

std::optional<ServiceOffer> DdsTransport::KnownOffer(uint64_t providerId) const {
    return impl_->offers_->Known(providerId);
}

void DdsTransport::SetOfferLostHandler(OfferLostHandler handler) {
    std::shared_ptr<LostSlot> previous;
    {
        std::lock_guard<std::mutex> lock(impl_->routesMutex_);
        previous = impl_->lostSlot_;
        impl_->lostSlot_ = handler ? std::make_shared<LostSlot>(std::move(handler)) : nullptr;
    }
    if (previous) {
        previous->Close();
    }
}

DdsStatus DdsTransport::Serve(uint64_t providerId, uint16_t serviceId, FrameHandler onRequest) {
    std::shared_ptr<Slot> previous;
    {
        std::lock_guard<std::mutex> lock(impl_->routesMutex_);
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
        std::lock_guard<std::mutex> lock(impl_->routesMutex_);
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
        std::lock_guard<std::mutex> lock(impl_->routesMutex_);
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
        std::lock_guard<std::mutex> lock(impl_->routesMutex_);
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
        std::lock_guard<std::mutex> lock(impl_->routesMutex_);
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
        std::lock_guard<std::mutex> lock(impl_->routesMutex_);
        auto found = impl_->subscriptions_.find(subscriptionId);
        if (found == impl_->subscriptions_.end()) {
            return;
        }
        slot = found->second.slot;
        impl_->subscriptions_.erase(found);
    }
    slot->Close();
}

void DdsTransport::PostToClientThread(std::function<void()> task) {
    Impl* impl = impl_.get();
    impl->client_->Post([impl, task = std::move(task)] {
        std::lock_guard<std::recursive_mutex> serial(impl->clientCalls_);
        task();
    });
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
