#include "vorx/driver/dds/dds_transport.h"

#include "orx/sync/mutex.h"
#include "transport_impl.h"

namespace vorx {
namespace driver {
namespace dds {

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

uint64_t DdsTransport::WatchPeers(PeerAliveHandler onAlive, PeerLostHandler onLost) {
    return impl_->participants_->Watch(std::move(onAlive), std::move(onLost));
}

void DdsTransport::UnwatchPeers(uint64_t watch) {
    impl_->participants_->Unwatch(watch);
}

std::optional<vcc::ProcessIdentity> DdsTransport::FindPeer(const ParticipantGuid& guid) const {
    return impl_->participants_->Find(guid);
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
        orx::sync::MutexLock lock(impl_->routesMutex_);
        previous = impl_->lostSlot_;
        impl_->lostSlot_ = handler ? std::make_shared<LostSlot>(std::move(handler)) : nullptr;
    }
    if (previous) {
        previous->Close();
    }
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
