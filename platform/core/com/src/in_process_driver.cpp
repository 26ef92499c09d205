#include "vorx/vcc/driver/in_process_driver.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "callback_gate.h"
#include "orx/sync/mutex.h"
#include "task_thread.h"
#include "vorx/vcc/event_controller.h"

namespace vorx::vcc {
namespace {

struct ServerSlot {
    ServerCallbacks callbacks;
    CallbackGate gate;
};

struct FindSlot {
    FindCallback callback;
    CallbackGate gate;
};

struct ClientSlot {
    ClientCallbacks callbacks;
    CallbackGate gate;
};

struct OfferEntry {
    ServiceDescription desc;
    std::shared_ptr<ServerSlot> slot;
    std::map<uint32_t, uint64_t> lastSequence;  // per event
};

struct FindEntry {
    ServiceDescription search;
    std::shared_ptr<FindSlot> slot;
};

struct ClientEntry {
    HandleType handle;
    std::shared_ptr<ClientSlot> slot;
    std::set<uint32_t> subscriptions;
    ProviderId target{0};  // the offer requests went to last; 0 before the first request
};

// Same binding, service and instance: offers of one service that a client may talk to.
bool SameService(const ServiceDescription& a, const ServiceDescription& b) {
    return a.driverType == b.driverType && a.serviceId == b.serviceId &&
           a.serviceName == b.serviceName && a.instanceId == b.instanceId;
}

}  // namespace

class InProcessDriver::Impl {
  public:
    ProviderId Offer(const ServiceDescription& offer, ServerCallbacks callbacks) {
        orx::sync::MutexLock lock(mutex_);
        const ProviderId id = nextId_++;
        auto slot = std::make_shared<ServerSlot>();
        slot->callbacks = std::move(callbacks);
        offers_[id] = OfferEntry{offer, std::move(slot), {}};
        AnnounceLocked(offer);
        return id;
    }

    void StopOffer(ProviderId provider) {
        std::shared_ptr<ServerSlot> slot;
        {
            orx::sync::MutexLock lock(mutex_);
            auto it = offers_.find(provider);
            if (it == offers_.end()) {
                return;
            }
            const ServiceDescription desc = it->second.desc;
            slot = std::move(it->second.slot);
            offers_.erase(it);
            AnnounceLocked(desc);
            for (auto& [id, client] : clients_) {
                const ProviderId target =
                    client.target != 0 ? client.target : client.handle.GetProviderId();
                if (target == provider) {
                    client.target = 0;
                    PostToClient(client.slot, [](ClientSlot& c) {
                        if (c.callbacks.onServiceLost) {
                            c.callbacks.onServiceLost();
                        }
                    });
                }
            }
        }
        slot->gate.Close();
    }

    FindId StartFind(const ServiceDescription& search, FindCallback callback) {
        orx::sync::MutexLock lock(mutex_);
        const FindId id = nextId_++;
        auto slot = std::make_shared<FindSlot>();
        slot->callback = std::move(callback);
        ServiceHandleContainer current = MatchesLocked(search);
        if (!current.empty()) {
            PostToFind(slot, std::move(current));
        }
        finds_[id] = FindEntry{search, std::move(slot)};
        return id;
    }

    void StopFind(FindId find) {
        std::shared_ptr<FindSlot> slot;
        {
            orx::sync::MutexLock lock(mutex_);
            auto it = finds_.find(find);
            if (it == finds_.end()) {
                return;
            }
            slot = std::move(it->second.slot);
            finds_.erase(it);
        }
        slot->gate.Close();
    }

    ClientId Connect(const HandleType& handle, ClientCallbacks callbacks) {
        orx::sync::MutexLock lock(mutex_);
        const ClientId id = nextId_++;
        auto slot = std::make_shared<ClientSlot>();
        slot->callbacks = std::move(callbacks);
        clients_[id] = ClientEntry{handle, std::move(slot), {}, 0};
        return id;
    }

    void Disconnect(ClientId client) {
        std::shared_ptr<ClientSlot> slot;
        {
            orx::sync::MutexLock lock(mutex_);
            auto it = clients_.find(client);
            if (it == clients_.end()) {
                return;
            }
            slot = std::move(it->second.slot);
            clients_.erase(it);
        }
        slot->gate.Close();
    }

    bool SendRequest(ClientId client, MethodCall call) {
        orx::sync::MutexLock lock(mutex_);
        auto it = clients_.find(client);
        if (it == clients_.end()) {
            return false;
        }
        ClientEntry& entry = it->second;
        auto offer = offers_.find(entry.handle.GetProviderId());
        if (offer == offers_.end() ||
            !SameService(offer->second.desc, entry.handle.GetDescription())) {
            offer = offers_.begin();
            while (offer != offers_.end() &&
                   !SameService(offer->second.desc, entry.handle.GetDescription())) {
                ++offer;
            }
        }
        if (offer == offers_.end()) {
            return false;
        }
        entry.target = offer->first;
        call.clientId = client;
        const ProviderId provider = offer->first;
        std::shared_ptr<ServerSlot> slot = offer->second.slot;
        serverRx_.Post([slot, provider, call = std::move(call)] {
            slot->gate.Run([&] {
                if (slot->callbacks.onRequest) {
                    slot->callbacks.onRequest(provider, call);
                }
            });
        });
        return true;
    }

    bool SendReply(ProviderId provider, MethodReply reply) {
        orx::sync::MutexLock lock(mutex_);
        if (offers_.count(provider) == 0) {
            return false;
        }
        auto it = clients_.find(reply.clientId);
        if (it == clients_.end()) {
            return false;
        }
        PostToClient(it->second.slot, [reply = std::move(reply)](ClientSlot& c) {
            if (c.callbacks.onReply) {
                c.callbacks.onReply(reply);
            }
        });
        return true;
    }

    bool Publish(ProviderId provider, EventSample sample) {
        orx::sync::MutexLock lock(mutex_);
        auto offer = offers_.find(provider);
        if (offer == offers_.end()) {
            return false;
        }
        sample.sequence = ++offer->second.lastSequence[sample.entityId];
        sample.sendTimeNs = GetCurMonoTime();
        for (auto& [id, client] : clients_) {
            if (client.subscriptions.count(sample.entityId) != 0 &&
                SameService(client.handle.GetDescription(), offer->second.desc)) {
                PostToClient(client.slot, [sample](ClientSlot& c) {
                    if (c.callbacks.onEvent) {
                        c.callbacks.onEvent(sample);
                    }
                });
            }
        }
        return true;
    }

    bool Subscribe(ClientId client, uint32_t entityId) {
        orx::sync::MutexLock lock(mutex_);
        auto it = clients_.find(client);
        if (it == clients_.end()) {
            return false;
        }
        it->second.subscriptions.insert(entityId);
        return true;
    }

    void Unsubscribe(ClientId client, uint32_t entityId) {
        orx::sync::MutexLock lock(mutex_);
        auto it = clients_.find(client);
        if (it != clients_.end()) {
            it->second.subscriptions.erase(entityId);
        }
    }

  private:
    ServiceHandleContainer MatchesLocked(const ServiceDescription& search) const REQUIRES(mutex_) {
        ServiceHandleContainer handles;
        for (const auto& [id, offer] : offers_) {
            if (search.Matches(offer.desc)) {
                handles.emplace_back(offer.desc, id);
            }
        }
        return handles;
    }

    // Tells every search that `changed` concerns its new list.
    void AnnounceLocked(const ServiceDescription& changed) REQUIRES(mutex_) {
        for (auto& [id, find] : finds_) {
            if (find.search.Matches(changed)) {
                PostToFind(find.slot, MatchesLocked(find.search));
            }
        }
    }

    void PostToFind(const std::shared_ptr<FindSlot>& slot, ServiceHandleContainer handles) {
        discovery_.Post([slot, handles = std::move(handles)] {
            slot->gate.Run([&] {
                if (slot->callback) {
                    slot->callback(handles);
                }
            });
        });
    }

    template <class F>
    void PostToClient(const std::shared_ptr<ClientSlot>& slot, F&& fn) {
        clientRx_.Post([slot, fn = std::forward<F>(fn)] { slot->gate.Run([&] { fn(*slot); }); });
    }

    orx::sync::Mutex mutex_;
    uint64_t nextId_ GUARDED_BY(mutex_){1};  // shared by every kind of id
    std::map<ProviderId, OfferEntry> offers_ GUARDED_BY(mutex_);
    std::map<FindId, FindEntry> finds_ GUARDED_BY(mutex_);
    std::map<ClientId, ClientEntry> clients_ GUARDED_BY(mutex_);
    // Declared last so they stop first, before the tables they read go away.
    TaskThread discovery_{"vcc-inproc-sd"};
    TaskThread serverRx_{"vcc-inproc-srv"};
    TaskThread clientRx_{"vcc-inproc-cli"};
};

InProcessDriver::InProcessDriver(PayloadMode mode)
    : impl_(std::make_unique<Impl>()), mode_(mode), localKey_(Driver::LocalPeer().key) {}

InProcessDriver::~InProcessDriver() = default;

std::string InProcessDriver::Name() const {
    return "inprocess";
}

PayloadMode InProcessDriver::GetPayloadMode() const {
    return mode_.load(std::memory_order_relaxed);
}

void InProcessDriver::SetPayloadMode(PayloadMode mode) {
    mode_.store(mode, std::memory_order_relaxed);
}

ProviderId InProcessDriver::Offer(const ServiceDescription& offer, ServerCallbacks callbacks) {
    return impl_->Offer(offer, std::move(callbacks));
}

void InProcessDriver::StopOffer(ProviderId provider) {
    impl_->StopOffer(provider);
}

FindId InProcessDriver::StartFind(const ServiceDescription& search, FindCallback callback) {
    return impl_->StartFind(search, std::move(callback));
}

void InProcessDriver::StopFind(FindId find) {
    impl_->StopFind(find);
}

ClientId InProcessDriver::Connect(const HandleType& handle, ClientCallbacks callbacks) {
    return impl_->Connect(handle, std::move(callbacks));
}

void InProcessDriver::Disconnect(ClientId client) {
    impl_->Disconnect(client);
}

bool InProcessDriver::SendRequest(ClientId client, MethodCall call) {
    if (call.sender == PeerKey{}) {
        call.sender = localKey_;
    }
    return impl_->SendRequest(client, std::move(call));
}

bool InProcessDriver::SendReply(ProviderId provider, MethodReply reply) {
    return impl_->SendReply(provider, std::move(reply));
}

bool InProcessDriver::Publish(ProviderId provider, EventSample sample) {
    return impl_->Publish(provider, std::move(sample));
}

bool InProcessDriver::Subscribe(ClientId client, uint32_t entityId) {
    return impl_->Subscribe(client, entityId);
}

void InProcessDriver::Unsubscribe(ClientId client, uint32_t entityId) {
    impl_->Unsubscribe(client, entityId);
}

}  // namespace vorx::vcc
