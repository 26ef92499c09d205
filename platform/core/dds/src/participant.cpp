#include "participant.h"

#include <cstring>

#include "OrxDdsWire.h"
#include "ara/kelda/common/log/log.h"
#include "orx/sync/mutex.h"
#include "peer_participants.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

// Name of the topic on which every provider announces its offers.
constexpr const char* kOfferTopicName = "vorx_ServiceOffer";

// Domains this process created. Never freed: the driver must keep working while
// static destructors run at process exit.
struct DomainRegistry {
    orx::sync::Mutex mutex;
    std::map<uint32_t, std::string> configs GUARDED_BY(mutex);  // domain id -> configuration used
};

DomainRegistry& Domains() {
    static auto* registry = new DomainRegistry();
    return *registry;
}

DdsStatus EnsureDomain(const ParticipantSettings& settings) {
    auto& domains = Domains();
    orx::sync::MutexLock lock(domains.mutex);
    const std::string config = BuildCycloneConfig(settings);
    auto found = domains.configs.find(settings.domainId);
    if (found != domains.configs.end()) {
        if (found->second != config) {
            ara::kelda::common::log::Log::GetLog("CM")->LogWarn()
                << "[DdsDriver][Domain already configured, new settings ignored][domainId="
                << settings.domainId << "]";
        }
        return DdsStatus::Ok();
    }
    const dds_entity_t domain = dds_create_domain(settings.domainId, config.c_str());
    if (domain < 0 && domain != DDS_RETCODE_PRECONDITION_NOT_MET) {
        return TranslateReturnCode(domain,
                                   "create DDS domain " + std::to_string(settings.domainId));
    }
    // PRECONDITION_NOT_MET: someone else in this process made the domain
    // already; join it as it is.
    domains.configs.emplace(settings.domainId, config);
    return DdsStatus::Ok();
}

}  // namespace

std::shared_ptr<Participant> Participant::Create(const ParticipantSettings& settings,
                                                 DdsStatus* status) {
    if (settings.domainId > kMaxDomainId) {
        *status = DdsStatus(DdsErrc::kBadParameter, "create DDS participant: domain id " +
                                                        std::to_string(settings.domainId) +
                                                        " above " + std::to_string(kMaxDomainId));
        return nullptr;
    }
    *status = EnsureDomain(settings);
    if (!status->ok()) {
        return nullptr;
    }
    // The lease also goes into the participant's own QoS so that it holds when
    // CYCLONEDDS_URI supplies the rest of the configuration.
    dds_qos_t* qos = dds_create_qos();
    dds_qset_liveliness(qos, DDS_LIVELINESS_AUTOMATIC, DDS_MSECS(settings.leaseDurationMs));
    // Who this process is travels with the participant, so that peers can name the process
    // behind every frame (host, pid, start time) and notice when it is gone.
    const std::string userData = EncodePeerUserData(vcc::CurrentProcessIdentity());
    dds_qset_userdata(qos, userData.data(), userData.size());
    const dds_entity_t participant = dds_create_participant(settings.domainId, qos, nullptr);
    dds_delete_qos(qos);
    if (participant < 0) {
        *status = TranslateReturnCode(
            participant, "create DDS participant on domain " + std::to_string(settings.domainId));
        return nullptr;
    }
    std::shared_ptr<Participant> created(new Participant(participant, settings.domainId));
    dds_guid_t guid;
    const dds_return_t rc = dds_get_guid(participant, &guid);
    if (rc < 0) {
        *status = TranslateReturnCode(rc, "read the GUID of the DDS participant");
        return nullptr;
    }
    std::memcpy(created->guid_.data(), guid.v, created->guid_.size());
    *status = DdsStatus::Ok();
    return created;
}

Participant::Participant(dds_entity_t participant, uint32_t domainId)
    : participant_(participant), domainId_(domainId) {}

Participant::~Participant() {
    dds_delete(participant_);
}

dds_entity_t Participant::FrameTopic(const std::string& name, DdsStatus* status) {
    orx::sync::MutexLock lock(mutex_);
    auto found = topics_.find(name);
    if (found != topics_.end()) {
        *status = DdsStatus::Ok();
        return found->second;
    }
    const dds_entity_t topic = dds_create_topic(participant_, &vorx_driver_dds_wire_Frame_desc,
                                                name.c_str(), nullptr, nullptr);
    *status = TranslateReturnCode(topic, "create topic \"" + name + "\"");
    if (topic < 0) {
        return topic;
    }
    topics_.emplace(name, topic);
    return topic;
}

dds_entity_t Participant::OfferTopic(DdsStatus* status) {
    orx::sync::MutexLock lock(mutex_);
    if (offerTopic_ > 0) {
        *status = DdsStatus::Ok();
        return offerTopic_;
    }
    const dds_entity_t topic = dds_create_topic(
        participant_, &vorx_driver_dds_wire_ServiceOffer_desc, kOfferTopicName, nullptr, nullptr);
    *status = TranslateReturnCode(topic, std::string("create topic \"") + kOfferTopicName + "\"");
    if (topic > 0) {
        offerTopic_ = topic;
    }
    return topic;
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
