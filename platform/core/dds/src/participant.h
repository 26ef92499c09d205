// One DDS participant of the driver and the topics it made. Internal to the
// DDS driver: the only place besides the other driver sources that sees
// Cyclone's types.
#ifndef VORX_DRIVER_DDS_SRC_PARTICIPANT_H
#define VORX_DRIVER_DDS_SRC_PARTICIPANT_H

#include <dds/dds.h>

#include <map>
#include <memory>
#include <string>

#include "orx/sync/mutex.h"
#include "vorx/driver/dds/dds_status.h"
#include "vorx/driver/dds/frame.h"
#include "vorx/driver/dds/participant_settings.h"

namespace vorx {
namespace driver {
namespace dds {

class Participant {
  public:
    // Creates the participant on settings.domainId. The domain is created with
    // BuildCycloneConfig(settings) the first time this process uses that domain
    // id; later participants on the same id join the existing domain (its first
    // configuration stays). On failure returns nullptr and sets *status.
    static std::shared_ptr<Participant> Create(const ParticipantSettings& settings,
                                               DdsStatus* status);
    ~Participant();  // deletes the participant and every entity made under it

    Participant(const Participant&) = delete;
    Participant& operator=(const Participant&) = delete;

    dds_entity_t Handle() const { return participant_; }
    const ParticipantGuid& Guid() const { return guid_; }
    uint32_t DomainId() const { return domainId_; }

    // The frame topic of this name, made on first use. Thread-safe.
    dds_entity_t FrameTopic(const std::string& name, DdsStatus* status);
    // The announcement topic.
    dds_entity_t OfferTopic(DdsStatus* status);

  private:
    Participant(dds_entity_t participant, uint32_t domainId);

    dds_entity_t participant_;
    uint32_t domainId_;
    ParticipantGuid guid_{};
    orx::sync::Mutex mutex_;
    std::map<std::string, dds_entity_t> topics_ GUARDED_BY(mutex_);
    dds_entity_t offerTopic_ GUARDED_BY(mutex_){0};
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
