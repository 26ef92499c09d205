#include "vorx/driver/dds/dds_driver.h"

#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "ara/kelda/common/log/log.h"
#include "callback_slot.h"
#include "driver_frames.h"
#include "orx/sync/mutex.h"
#include "topic_resolver.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/mono_time.h"
#include "vorx/vcc/process_identity.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

using ara::kelda::common::log::DefaultLimitConfig;
using ara::kelda::common::log::Log;

constexpr const char* kDriverName = "dds";

std::shared_ptr<Log> DriverLog() {
    return Log::GetLog("CM");
}

// Everything one client's callbacks need; shared with the transport's handlers.
struct ClientState {
    vcc::ClientCallbacks callbacks;
    Gate gate;
};

struct ReplyRoute {
    std::string topic;
    ParticipantGuid client{};
};

struct OfferEntry {
    vcc::ServiceDescription desc;
    std::map<uint32_t, uint64_t> lastSequence;   // per event
    std::map<uint32_t, EventTopic> eventTopics;  // resolved per event
    // Where the reply to each open request goes, by (client, method, session);
    // an entry leaves when its reply is sent.
    std::map<std::tuple<uint64_t, uint32_t, uint16_t>, ReplyRoute> replyRoutes;
};

struct ClientEntry {
    vcc::HandleType handle;
    std::shared_ptr<ClientState> state;
    vcc::ProviderId target{0};  // the offer requests went to last; 0 before the first one
    // That offer, while it lasts (cleared with target when it goes away).
    std::shared_ptr<const ServiceOffer> targetOffer;
    // When it was last made sure that the process behind targetOffer still runs (monotonic ns).
    long targetCheckedNs{0};
    std::map<uint32_t, std::shared_ptr<const MethodTopics>> methodTopics;  // resolved per method
    std::map<uint32_t, uint64_t> subscriptions;  // event -> transport subscription
};

}  // namespace

// How often a client makes sure that the process behind the offer it sends to still runs.
constexpr long kTargetCheckPeriodNs = 100L * 1000 * 1000;

class DdsDriver::Impl {
  public:
    explicit Impl(std::shared_ptr<DdsTransport> transport) : transport_(std::move(transport)) {}

    void Start() {
        transport_->SetOfferLostHandler([this](const ServiceOffer& offer) { OnOfferLost(offer); });
    }

    ~Impl() { transport_->SetOfferLostHandler(nullptr); }

    vcc::ProviderId Offer(const vcc::ServiceDescription& desc, vcc::ServerCallbacks callbacks) {
        const vcc::ProviderId provider = transport_->NewId();
        {
            orx::sync::MutexLock lock(mutex_);
            offers_[provider] = OfferEntry{desc, {}, {}, {}};
        }
        auto onRequest = std::move(callbacks.onRequest);
        DdsStatus status =
            transport_->Serve(provider, desc.serviceId, [this, provider, onRequest](Frame frame) {
                OnRequest(provider, onRequest, std::move(frame));
            });
        if (status.ok()) {
            ServiceOffer offer;
            offer.providerId = provider;
            offer.serviceId = desc.serviceId;
            offer.instanceId = desc.instanceId;
            offer.servicePath = desc.serviceName;
            offer.driverType = static_cast<uint8_t>(desc.driverType);
            status = transport_->Offer(offer);
        }
        if (!status.ok()) {
            DriverLog()->LogWarn()
                << "[DdsDriver][Offer failed][serviceId=" << desc.serviceId
                << ", instanceId=" << desc.instanceId << ", reason=" << status.message() << "]";
            transport_->StopServing(provider);
            orx::sync::MutexLock lock(mutex_);
            offers_.erase(provider);
            return 0;
        }
        return provider;
    }

    void StopOffer(vcc::ProviderId provider) {
        {
            orx::sync::MutexLock lock(mutex_);
            if (offers_.erase(provider) == 0) {
                return;
            }
        }
        const DdsStatus status = transport_->StopOffer(provider);
        if (!status.ok()) {
            DriverLog()->LogWarn()
                << "[DdsDriver][Withdrawing an offer failed][reason=" << status.message() << "]";
        }
        transport_->StopServing(provider);
    }

    vcc::FindId StartFind(const vcc::ServiceDescription& search, vcc::FindCallback callback) {
        const std::string network = search.network;
        return transport_->StartFind(
            FilterOf(search),
            [callback = std::move(callback), network](const std::vector<ServiceOffer>& offers) {
                vcc::ServiceHandleContainer handles;
                handles.reserve(offers.size());
                for (const auto& offer : offers) {
                    handles.push_back(HandleOf(offer, network));
                }
                if (callback) {
                    callback(handles);
                }
            });
    }

    void StopFind(vcc::FindId find) { transport_->StopFind(find); }

    vcc::ClientId Connect(const vcc::HandleType& handle, vcc::ClientCallbacks callbacks) {
        const vcc::ClientId client = transport_->NewId();
        auto state = std::make_shared<ClientState>();
        state->callbacks = std::move(callbacks);
        {
            orx::sync::MutexLock lock(mutex_);
            ClientEntry entry;
            entry.handle = handle;
            entry.state = state;
            clients_[client] = std::move(entry);
        }
        transport_->OpenClient(client, [state](Frame frame) {
            state->gate.Run([&] {
                if (state->callbacks.onReply) {
                    state->callbacks.onReply(ReplyOf(std::move(frame)));
                }
            });
        });
        return client;
    }

    void Disconnect(vcc::ClientId client) {
        std::shared_ptr<ClientState> state;
        std::map<uint32_t, uint64_t> subscriptions;
        {
            orx::sync::MutexLock lock(mutex_);
            auto found = clients_.find(client);
            if (found == clients_.end()) {
                return;
            }
            state = found->second.state;
            subscriptions.swap(found->second.subscriptions);
            clients_.erase(found);
        }
        transport_->CloseClient(client);
        for (const auto& entry : subscriptions) {
            transport_->Unsubscribe(entry.second);
        }
        state->gate.Close();
    }

    bool SendRequest(vcc::ClientId client, vcc::MethodCall call) {
        std::optional<vcc::HandleType> handle;
        std::shared_ptr<const ServiceOffer> offer;
        std::shared_ptr<const MethodTopics> topics;
        bool checkTarget = false;
        {
            orx::sync::MutexLock lock(mutex_);
            auto found = clients_.find(client);
            if (found == clients_.end()) {
                return false;
            }
            ClientEntry& entry = found->second;
            if (entry.target != 0 && entry.targetOffer) {
                offer = entry.targetOffer;
                const long now = vcc::GetCurMonoTime();
                if (now - entry.targetCheckedNs >= kTargetCheckPeriodNs) {
                    entry.targetCheckedNs = now;
                    checkTarget = true;
                }
            }
            auto known = entry.methodTopics.find(call.entityId);
            if (known != entry.methodTopics.end()) {
                topics = known->second;
            }
            if (!offer || !topics) {
                handle = entry.handle;
            }
        }
        if (checkTarget && ProcessEnded(*offer)) {
            // The server was killed and its lease has not run out yet: another offer of the
            // service (the server started again) takes the requests meanwhile.
            orx::sync::MutexLock lock(mutex_);
            auto found = clients_.find(client);
            if (found == clients_.end()) {
                return false;
            }
            found->second.target = 0;
            found->second.targetOffer.reset();
            handle = found->second.handle;
            offer.reset();
        }
        if (!offer) {
            auto target = TargetOffer(*handle);
            if (!target) {
                return false;
            }
            offer = std::make_shared<const ServiceOffer>(std::move(*target));
        }
        if (!topics) {
            topics = std::make_shared<const MethodTopics>(
                resolver_.ResolveMethod(handle->GetDescription(), call.entityId));
        }
        Frame frame;
        if (!WireBytes(call.payload, &frame.payload)) {
            LogRefusedObject("request", call.entityId);
            return false;
        }
        frame.serviceId = offer->serviceId;
        frame.instanceId = offer->instanceId;
        frame.entityId = call.entityId;
        frame.providerId = offer->providerId;
        frame.clientId = client;
        frame.sessionId = call.sessionId;
        const DdsStatus status =
            transport_->SendRequest(*topics, std::move(frame), offer->providerGuid);
        if (handle) {
            orx::sync::MutexLock lock(mutex_);
            auto found = clients_.find(client);
            if (found != clients_.end()) {
                found->second.methodTopics[call.entityId] = topics;
                if (status.ok()) {
                    found->second.target = offer->providerId;
                    found->second.targetOffer = offer;
                }
            }
        }
        if (!status.ok()) {
            DriverLog()->LogWarn(DefaultLimitConfig("DdsDriver_SendRequest"))
                << "[DdsDriver][Request not sent][entityId=" << call.entityId
                << ", reason=" << status.message() << "]";
        }
        return status.ok();
    }

    bool SendReply(vcc::ProviderId provider, vcc::MethodReply reply) {
        ReplyRoute route;
        Frame frame;
        {
            orx::sync::MutexLock lock(mutex_);
            auto offer = offers_.find(provider);
            if (offer == offers_.end()) {
                return false;
            }
            auto found =
                offer->second.replyRoutes.find({reply.clientId, reply.entityId, reply.sessionId});
            if (found == offer->second.replyRoutes.end()) {
                return false;
            }
            route = found->second;
            offer->second.replyRoutes.erase(found);
            frame.serviceId = offer->second.desc.serviceId;
            frame.instanceId = offer->second.desc.instanceId;
        }
        if (!WireBytes(reply.payload, &frame.payload)) {
            LogRefusedObject("reply", reply.entityId);
            return false;
        }
        frame.entityId = reply.entityId;
        frame.providerId = provider;
        frame.clientId = reply.clientId;
        frame.sessionId = reply.sessionId;
        frame.replyKind = static_cast<uint8_t>(reply.kind);
        frame.errorDomain = reply.errorDomainId;
        frame.errorCode = std::move(reply.errorCode);
        frame.errorMessage = std::move(reply.errorMessage);
        frame.tlsFailure = reply.tlsFailure;
        frame.e2eResult = reply.e2eResult;
        const DdsStatus status = transport_->SendReply(route.topic, std::move(frame), route.client);
        if (!status.ok()) {
            DriverLog()->LogWarn(DefaultLimitConfig("DdsDriver_SendReply"))
                << "[DdsDriver][Reply not sent][entityId=" << reply.entityId
                << ", reason=" << status.message() << "]";
        }
        return status.ok();
    }

    bool Publish(vcc::ProviderId provider, vcc::EventSample sample) {
        Frame frame;
        std::optional<EventTopic> topic;
        vcc::ServiceDescription desc;
        {
            orx::sync::MutexLock lock(mutex_);
            auto offer = offers_.find(provider);
            if (offer == offers_.end()) {
                return false;
            }
            desc = offer->second.desc;
            frame.sequenceNumber = ++offer->second.lastSequence[sample.entityId];
            auto found = offer->second.eventTopics.find(sample.entityId);
            if (found != offer->second.eventTopics.end()) {
                topic = found->second;
            }
        }
        if (!topic) {
            topic = resolver_.ResolveEvent(desc, sample.entityId);
            orx::sync::MutexLock lock(mutex_);
            auto offer = offers_.find(provider);
            if (offer != offers_.end()) {
                offer->second.eventTopics[sample.entityId] = *topic;
            }
        }
        if (!WireBytes(sample.payload, &frame.payload)) {
            LogRefusedObject("event sample", sample.entityId);
            return false;
        }
        frame.serviceId = desc.serviceId;
        frame.instanceId = desc.instanceId;
        frame.entityId = sample.entityId;
        frame.providerId = provider;
        const DdsStatus status = transport_->Publish(*topic, std::move(frame));
        if (!status.ok()) {
            DriverLog()->LogWarn(DefaultLimitConfig("DdsDriver_Publish"))
                << "[DdsDriver][Event sample not sent][entityId=" << sample.entityId
                << ", reason=" << status.message() << "]";
        }
        return status.ok();
    }

    bool Subscribe(vcc::ClientId client, uint32_t entityId) {
        vcc::HandleType handle;
        std::shared_ptr<ClientState> state;
        {
            orx::sync::MutexLock lock(mutex_);
            auto found = clients_.find(client);
            if (found == clients_.end()) {
                return false;
            }
            if (found->second.subscriptions.count(entityId) != 0) {
                return true;
            }
            handle = found->second.handle;
            state = found->second.state;
        }
        const EventTopic topic = resolver_.ResolveEvent(handle.GetDescription(), entityId);
        const std::optional<ServiceOffer> offer = TargetOffer(handle);
        DdsStatus status;
        const uint64_t subscription = transport_->Subscribe(
            topic, handle.GetServiceId(), handle.GetInstanceId(), entityId,
            [state](Frame frame) {
                state->gate.Run([&] {
                    if (state->callbacks.onEvent) {
                        state->callbacks.onEvent(SampleOf(std::move(frame)));
                    }
                });
            },
            offer ? &offer->providerGuid : nullptr, &status);
        if (subscription == 0) {
            DriverLog()->LogWarn() << "[DdsDriver][Subscribe failed][entityId=" << entityId
                                   << ", reason=" << status.message() << "]";
            return false;
        }
        bool keep = false;
        {
            orx::sync::MutexLock lock(mutex_);
            auto found = clients_.find(client);
            if (found != clients_.end()) {
                keep = found->second.subscriptions.emplace(entityId, subscription).second;
            }
        }
        if (!keep) {
            // Disconnected or subscribed twice meanwhile.
            transport_->Unsubscribe(subscription);
        }
        return true;
    }

    void Unsubscribe(vcc::ClientId client, uint32_t entityId) {
        uint64_t subscription = 0;
        {
            orx::sync::MutexLock lock(mutex_);
            auto found = clients_.find(client);
            if (found == clients_.end()) {
                return;
            }
            auto entry = found->second.subscriptions.find(entityId);
            if (entry == found->second.subscriptions.end()) {
                return;
            }
            subscription = entry->second;
            found->second.subscriptions.erase(entry);
        }
        transport_->Unsubscribe(subscription);
    }

    // The offer a request of `handle` goes to: the one it names while it exists,
    // else any current offer of the same service.
    // Offers whose process is known to have ended are passed over.
    std::optional<ServiceOffer> TargetOffer(const vcc::HandleType& handle) const {
        const vcc::ServiceDescription& desc = handle.GetDescription();
        if (auto named = transport_->KnownOffer(handle.GetProviderId())) {
            if (SameService(*named, desc) && !ProcessEnded(*named)) {
                return named;
            }
        }
        for (const auto& offer : transport_->CurrentOffers(FilterOf(desc))) {
            if (SameService(offer, desc) && !ProcessEnded(offer)) {
                return offer;
            }
        }
        return std::nullopt;
    }

    // True when the offer's process ran on this host and has ended although its offer is still
    // listed (a killed server, whose offer waits for the end of its participant's lease).
    // Processes of other hosts, and unknown ones, count as running: for them the lease decides.
    bool ProcessEnded(const ServiceOffer& offer) const {
        const auto process = transport_->FindPeer(offer.providerGuid);
        if (!process || process->pid <= 0 || process->hostId != vcc::LocalHostId()) {
            return false;
        }
        const auto ticks = vcc::ProcessStartTicks(process->pid);
        return !ticks || (process->startTicks != 0 && *ticks != process->startTicks);
    }

    void OnRequest(vcc::ProviderId provider,
                   const std::function<void(vcc::ProviderId, const vcc::MethodCall&)>& onRequest,
                   Frame frame) {
        {
            orx::sync::MutexLock lock(mutex_);
            auto offer = offers_.find(provider);
            if (offer == offers_.end()) {
                return;
            }
            auto& route =
                offer->second.replyRoutes[{frame.clientId, frame.entityId, frame.sessionId}];
            route.topic = frame.replyTopic;
            route.client = frame.senderGuid;
        }
        vcc::MethodCall call;
        call.clientId = frame.clientId;
        call.entityId = frame.entityId;
        call.sessionId = frame.sessionId;
        call.payload = PayloadOf(std::move(frame.payload));
        call.sender = frame.senderGuid;
        if (onRequest) {
            onRequest(provider, call);
        }
    }

    void OnOfferLost(const ServiceOffer& offer) {
        std::vector<std::shared_ptr<ClientState>> affected;
        {
            orx::sync::MutexLock lock(mutex_);
            for (auto& entry : clients_) {
                ClientEntry& client = entry.second;
                const vcc::ProviderId target =
                    client.target != 0 ? client.target : client.handle.GetProviderId();
                if (target == offer.providerId) {
                    client.target = 0;
                    client.targetOffer.reset();
                    affected.push_back(client.state);
                }
            }
        }
        // On the client thread, so that loss and replies of one client never
        // run at the same time.
        for (const auto& state : affected) {
            transport_->PostToClientThread([state] {
                state->gate.Run([&] {
                    if (state->callbacks.onServiceLost) {
                        state->callbacks.onServiceLost();
                    }
                });
            });
        }
    }

    static void LogRefusedObject(const char* what, uint32_t entityId) {
        DriverLog()->LogWarn(DefaultLimitConfig("DdsDriver_ObjectPayload"))
            << "[DdsDriver][A " << what
            << " without bytes cannot travel over DDS][entityId=" << entityId << "]";
    }

    const std::shared_ptr<DdsTransport> transport_;
    TopicResolver resolver_;
    mutable orx::sync::Mutex mutex_;
    std::map<vcc::ProviderId, OfferEntry> offers_ GUARDED_BY(mutex_);
    std::map<vcc::ClientId, ClientEntry> clients_ GUARDED_BY(mutex_);
};

std::shared_ptr<DdsDriver> DdsDriver::Create(const ParticipantSettings& settings,
                                             DdsStatus* status) {
    auto transport = DdsTransport::Create(settings, status);
    if (!transport) {
        return nullptr;
    }
    auto impl = std::make_unique<Impl>(std::move(transport));
    impl->Start();
    return std::shared_ptr<DdsDriver>(new DdsDriver(std::move(impl)));
}

std::shared_ptr<DdsDriver> DdsDriver::GetShared() {
    // Never destroyed: proxies and skeletons are used from destructors at process exit.
    static auto* const instance = [] {
        DdsStatus status;
        auto driver = Create(ProcessParticipantSettings(), &status);
        if (!driver) {
            DriverLog()->LogError()
                << "[DdsDriver][DDS could not be started][reason=" << status.message() << "]";
        }
        return new std::shared_ptr<DdsDriver>(std::move(driver));
    }();
    return *instance;
}

DdsDriver::DdsDriver(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

DdsDriver::~DdsDriver() = default;

std::string DdsDriver::Name() const {
    return kDriverName;
}

vcc::PayloadMode DdsDriver::GetPayloadMode() const {
    return vcc::PayloadMode::kBytes;
}

vcc::ProviderId DdsDriver::Offer(const vcc::ServiceDescription& offer,
                                 vcc::ServerCallbacks callbacks) {
    return impl_->Offer(offer, std::move(callbacks));
}

void DdsDriver::StopOffer(vcc::ProviderId provider) {
    impl_->StopOffer(provider);
}

vcc::FindId DdsDriver::StartFind(const vcc::ServiceDescription& search,
                                 vcc::FindCallback callback) {
    return impl_->StartFind(search, std::move(callback));
}

void DdsDriver::StopFind(vcc::FindId find) {
    impl_->StopFind(find);
}

vcc::ClientId DdsDriver::Connect(const vcc::HandleType& handle, vcc::ClientCallbacks callbacks) {
    return impl_->Connect(handle, std::move(callbacks));
}

void DdsDriver::Disconnect(vcc::ClientId client) {
    impl_->Disconnect(client);
}

bool DdsDriver::SendRequest(vcc::ClientId client, vcc::MethodCall call) {
    return impl_->SendRequest(client, std::move(call));
}

bool DdsDriver::SendReply(vcc::ProviderId provider, vcc::MethodReply reply) {
    return impl_->SendReply(provider, std::move(reply));
}

bool DdsDriver::Publish(vcc::ProviderId provider, vcc::EventSample sample) {
    return impl_->Publish(provider, std::move(sample));
}

bool DdsDriver::Subscribe(vcc::ClientId client, uint32_t entityId) {
    return impl_->Subscribe(client, entityId);
}

void DdsDriver::Unsubscribe(vcc::ClientId client, uint32_t entityId) {
    impl_->Unsubscribe(client, entityId);
}

vcc::PeerInfo DdsDriver::LocalPeer() const {
    vcc::PeerInfo self;
    self.key = impl_->transport_->Guid();
    self.process = vcc::CurrentProcessIdentity();
    return self;
}

std::optional<vcc::PeerInfo> DdsDriver::FindPeer(const vcc::PeerKey& key) const {
    if (key == impl_->transport_->Guid()) {
        return LocalPeer();
    }
    auto process = impl_->transport_->FindPeer(key);
    if (!process) {
        return std::nullopt;
    }
    return vcc::PeerInfo{key, std::move(*process)};
}

vcc::PeerWatchId DdsDriver::WatchPeers(vcc::PeerCallbacks callbacks) {
    auto onAlive = std::move(callbacks.onAlive);
    auto onLost = std::move(callbacks.onLost);
    return impl_->transport_->WatchPeers(
        [onAlive](const ParticipantGuid& guid, const vcc::ProcessIdentity& process) {
            if (onAlive) {
                onAlive(vcc::PeerInfo{guid, process});
            }
        },
        [onLost](const ParticipantGuid& guid) {
            if (onLost) {
                onLost(guid);
            }
        });
}

void DdsDriver::StopWatchPeers(vcc::PeerWatchId watch) {
    impl_->transport_->UnwatchPeers(watch);
}

void DdsDriver::SetMethodTopics(uint16_t serviceId, uint32_t entityId, const MethodTopics& topics) {
    impl_->resolver_.SetMethodTopics(serviceId, entityId, topics);
}

void DdsDriver::SetEventTopic(uint16_t serviceId, uint32_t entityId, const EventTopic& topic) {
    impl_->resolver_.SetEventTopic(serviceId, entityId, topic);
}

DdsTransport& DdsDriver::Transport() {
    return *impl_->transport_;
}

void RegisterDdsDriver() {
    vcc::DriverRegistry::GetInstance()->RegisterFactory(
        kDriverName, []() -> std::shared_ptr<vcc::Driver> { return DdsDriver::GetShared(); });
}

namespace {
// Loading the library makes the driver selectable by name.
[[maybe_unused]] const bool kRegisteredAtLoad = [] {
    RegisterDdsDriver();
    return true;
}();
}  // namespace

}  // namespace dds
}  // namespace driver
}  // namespace vorx
