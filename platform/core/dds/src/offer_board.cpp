#include "offer_board.h"

#include <algorithm>
#include <cstring>

#include "orx/sync/mutex.h"
#include "wire_convert.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

constexpr uint32_t kTakeBatch = 32;

dds_qos_t* AnnouncementQos() {
    dds_qos_t* qos = dds_create_qos();
    dds_qset_reliability(qos, DDS_RELIABILITY_RELIABLE, DDS_MSECS(500));
    dds_qset_durability(qos, DDS_DURABILITY_TRANSIENT_LOCAL);
    dds_qset_history(qos, DDS_HISTORY_KEEP_LAST, 1);
    // Unregistering (StopOffer, writer deleted at exit) disposes the offer.
    dds_qset_writer_data_lifecycle(qos, true);
    return qos;
}

}  // namespace

OfferBoard::OfferBoard(std::shared_ptr<Participant> participant, DispatchThread* thread,
                       const ServiceOffer& identity, LostHandler onLost)
    : participant_(std::move(participant)),
      thread_(thread),
      identity_(identity),
      onLost_(std::move(onLost)) {}

OfferBoard::~OfferBoard() {
    Stop();
}

DdsStatus OfferBoard::Start() {
    DdsStatus status;
    const dds_entity_t topic = participant_->OfferTopic(&status);
    if (topic < 0) {
        return status;
    }
    dds_qos_t* qos = AnnouncementQos();
    const dds_entity_t reader = dds_create_reader(participant_->Handle(), topic, qos, nullptr);
    dds_delete_qos(qos);
    if (reader < 0) {
        return TranslateReturnCode(reader, "create the service announcement reader");
    }
    {
        orx::sync::MutexLock lock(mutex_);
        reader_ = reader;
    }
    const uint64_t token = thread_->Watch(
        reader, [this] { OnAnnouncements(); }, &status);
    if (token == 0) {
        return status;
    }
    orx::sync::MutexLock lock(mutex_);
    watchToken_ = token;
    return DdsStatus::Ok();
}

void OfferBoard::Stop() {
    uint64_t token = 0;
    std::map<uint64_t, std::shared_ptr<Find>> finds;
    {
        orx::sync::MutexLock lock(mutex_);
        token = watchToken_;
        watchToken_ = 0;
        finds.swap(finds_);
    }
    for (auto& entry : finds) {
        entry.second->slot->Close();
    }
    if (token != 0) {
        thread_->Unwatch(token);
    }
}

DdsStatus OfferBoard::EnsureWriter(dds_entity_t* writer) {
    if (writer_ > 0) {
        *writer = writer_;
        return DdsStatus::Ok();
    }
    DdsStatus status;
    const dds_entity_t topic = participant_->OfferTopic(&status);
    if (topic < 0) {
        return status;
    }
    dds_qos_t* qos = AnnouncementQos();
    const dds_entity_t created = dds_create_writer(participant_->Handle(), topic, qos, nullptr);
    dds_delete_qos(qos);
    if (created < 0) {
        return TranslateReturnCode(created, "create the service announcement writer");
    }
    writer_ = created;
    *writer = created;
    return DdsStatus::Ok();
}

DdsStatus OfferBoard::Offer(const ServiceOffer& offer) {
    ServiceOffer announced = offer;
    announced.providerGuid = identity_.providerGuid;
    announced.processId = identity_.processId;
    announced.hostName = identity_.hostName;

    orx::sync::MutexLock lock(mutex_);
    dds_entity_t writer = 0;
    DdsStatus status = EnsureWriter(&writer);
    if (!status.ok()) {
        return status;
    }
    vorx_driver_dds_wire_ServiceOffer wire;
    ViewAsWire(announced, &wire);
    const dds_return_t rc = dds_write(writer, &wire);
    if (rc < 0) {
        return TranslateReturnCode(rc, "announce service " + std::to_string(offer.serviceId) +
                                           " instance " + offer.instanceId);
    }
    ours_[offer.providerId] = announced;
    return DdsStatus::Ok();
}

DdsStatus OfferBoard::StopOffer(uint64_t providerId) {
    orx::sync::MutexLock lock(mutex_);
    auto found = ours_.find(providerId);
    if (found == ours_.end() || writer_ <= 0) {
        return DdsStatus::Ok();
    }
    vorx_driver_dds_wire_ServiceOffer wire;
    ViewAsWire(found->second, &wire);
    const dds_return_t rc = dds_unregister_instance(writer_, &wire);
    const std::string what = "withdraw service " + std::to_string(found->second.serviceId) +
                             " instance " + found->second.instanceId;
    ours_.erase(found);
    return TranslateReturnCode(rc, what);
}

uint64_t OfferBoard::StartFind(const FindFilter& filter, Handler handler) {
    auto find = std::make_shared<Find>();
    find->filter = filter;
    find->slot = std::make_shared<CallbackSlot<Handler>>(std::move(handler));
    uint64_t id = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        id = nextFindId_++;
        finds_.emplace(id, find);
    }
    thread_->Post([this, find] { Refresh(find); });
    return id;
}

void OfferBoard::StopFind(uint64_t findId) {
    std::shared_ptr<Find> find;
    {
        orx::sync::MutexLock lock(mutex_);
        auto found = finds_.find(findId);
        if (found == finds_.end()) {
            return;
        }
        find = found->second;
        finds_.erase(found);
    }
    find->slot->Close();
}

std::vector<ServiceOffer> OfferBoard::Current(const FindFilter& filter) const {
    std::vector<ServiceOffer> list;
    {
        orx::sync::MutexLock lock(mutex_);
        for (const auto& entry : known_) {
            if (filter.Matches(entry.second)) {
                list.push_back(entry.second);
            }
        }
    }
    std::sort(list.begin(), list.end());
    return list;
}

std::optional<ServiceOffer> OfferBoard::Known(uint64_t providerId) const {
    orx::sync::MutexLock lock(mutex_);
    for (const auto& entry : known_) {
        if (entry.second.providerId == providerId) {
            return entry.second;
        }
    }
    return std::nullopt;
}

void OfferBoard::Refresh(const std::shared_ptr<Find>& find) {
    std::vector<ServiceOffer> list = Current(find->filter);
    if (list == find->delivered) {
        return;
    }
    find->delivered = list;
    find->slot->Invoke(list);
}

void OfferBoard::OnAnnouncements() {
    dds_entity_t reader = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        reader = reader_;
    }
    void* samples[kTakeBatch];
    dds_sample_info_t infos[kTakeBatch];
    bool changed = false;
    std::vector<ServiceOffer> lost;
    for (;;) {
        std::memset(samples, 0, sizeof(samples));
        const dds_return_t count = dds_take(reader, samples, infos, kTakeBatch, kTakeBatch);
        if (count <= 0) {
            break;
        }
        {
            orx::sync::MutexLock lock(mutex_);
            for (dds_return_t i = 0; i < count; ++i) {
                const dds_sample_info_t& info = infos[i];
                if (info.instance_state != DDS_IST_ALIVE) {
                    auto gone = known_.find(info.instance_handle);
                    if (gone != known_.end()) {
                        lost.push_back(std::move(gone->second));
                        known_.erase(gone);
                        changed = true;
                    }
                } else if (info.valid_data) {
                    ServiceOffer offer = FromWire(
                        *static_cast<const vorx_driver_dds_wire_ServiceOffer*>(samples[i]));
                    auto& slot = known_[info.instance_handle];
                    if (slot != offer) {
                        slot = std::move(offer);
                        changed = true;
                    }
                }
            }
        }
        dds_return_loan(reader, samples, count);
        if (count < static_cast<dds_return_t>(kTakeBatch)) {
            break;
        }
    }
    if (onLost_) {
        for (const auto& offer : lost) {
            onLost_(offer);
        }
    }
    if (!changed) {
        return;
    }
    std::vector<std::shared_ptr<Find>> finds;
    {
        orx::sync::MutexLock lock(mutex_);
        for (const auto& entry : finds_) {
            finds.push_back(entry.second);
        }
    }
    for (const auto& find : finds) {
        Refresh(find);
    }
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
