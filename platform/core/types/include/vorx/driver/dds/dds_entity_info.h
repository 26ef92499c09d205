#ifndef VORX_DRIVER_DDS_DDS_ENTITY_INFO_H
#define VORX_DRIVER_DDS_DDS_ENTITY_INFO_H

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "vorx/vcc/api/types/entity_info.h"

namespace vorx {
namespace driver {
namespace dds {

// DDS QoS values as the deployment names them (same numbers as the
// maintenance records use).
enum class DurabilityKind : uint8_t {
    VOLATILE = 0,
    TRANSIENT_LOCAL = 1,
    TRANSIENT = 2,
    PERSISTENT = 3
};
enum class HistoryKind : uint8_t { KEEP_LAST = 0, KEEP_ALL = 1 };
enum class ReliabilityKind : uint8_t { BEST_EFFORT = 0, RELIABLE = 1 };

// Transport choices of an entity: 1 UDP, 2 TCP, 3 shared memory; 0 means "the
// driver's default".
using TransportQosSet = std::set<uint8_t>;

// Which peers an entity matches: a filter text such as "[1]" and its class.
struct DiscoveryFilter {
    std::string filterText{"UNDEFINED_DISCOVERY_FILTER"};
    uint8_t filterClass{0};
};

// Participant settings in milliseconds. `isSet` tells the driver to use these
// instead of its defaults.
struct ParticipantQos {
    bool isSet{false};
    uint32_t announceInitialMs{0};  // first announcements come this often
    uint32_t announcePeriodMs{0};   // steady announcement period
    uint32_t leaseDurationMs{0};    // a silent peer is dropped after this
    uint32_t responseDelayMs{0};    // upper bound on the answer to an announcement
};

// DDS binding of an event.
class VCC_EXPORT DDSEventInfo : public vcc::api::types::EventInfo {
  public:
    ~DDSEventInfo() override;

    VCC_PROPERTY(uint16_t, DomainId);
    VCC_PROPERTY(std::string, TopicName);
    VCC_PROPERTY(uint32_t, HistoryDepth);
    VCC_PROPERTY(uint32_t, QueueSize);
    VCC_PROPERTY(DurabilityKind, Durability);
    VCC_PROPERTY(HistoryKind, History);
    VCC_PROPERTY(ReliabilityKind, Reliability);
    VCC_PROPERTY(TransportQosSet, TransportQos);
    VCC_PROPERTY(uint32_t, FragSize);
    VCC_PROPERTY(uint32_t, ListenQueueSize);
    VCC_PROPERTY(uint8_t, DdsMode);  // 0 data-centric, 1 service-oriented
    VCC_PROPERTY(DiscoveryFilter, PubDiscoveryFilter);
    VCC_PROPERTY(DiscoveryFilter, SubDiscoveryFilter);
    VCC_PROPERTY(ParticipantQos, ParticipantQos);
};

// DDS binding of a method: a request topic and a reply topic.
class VCC_EXPORT DDSMethodInfo : public vcc::api::types::MethodInfo {
  public:
    ~DDSMethodInfo() override;

    VCC_PROPERTY(uint16_t, DomainId);
    VCC_PROPERTY(std::string, RequestTopicName);
    VCC_PROPERTY(std::string, ReplyTopicName);
    VCC_PROPERTY(std::string, RequestDataTypeName);
    VCC_PROPERTY(std::string, ReplyDataTypeName);
    VCC_PROPERTY(uint32_t, RequestQueueSize);
    VCC_PROPERTY(uint32_t, ReplyQueueSize);
    VCC_PROPERTY(uint32_t, RequestHistoryDepth);
    VCC_PROPERTY(uint32_t, ReplyHistoryDepth);
    // The four durability/history switches: 0 volatile / keep-last, 1
    // transient-local / keep-all.
    VCC_PROPERTY(uint8_t, RequestDurability);
    VCC_PROPERTY(uint8_t, ReplyDurability);
    VCC_PROPERTY(uint8_t, RequestHistory);
    VCC_PROPERTY(uint8_t, ReplyHistory);
    VCC_PROPERTY(ReliabilityKind, Reliability);
    VCC_PROPERTY(TransportQosSet, TransportQos);
    VCC_PROPERTY(uint32_t, FragSize);
    VCC_PROPERTY(uint32_t, ListenQueueSize);
    VCC_PROPERTY(DiscoveryFilter, DiscoveryFilter);
    VCC_PROPERTY(ParticipantQos, ParticipantQos);
};

// How a service is announced and found over DDS.
class VCC_EXPORT DDSServiceDiscoveryInfo : public vcc::api::types::EntityInfo {
  public:
    ~DDSServiceDiscoveryInfo() override;

    VCC_PROPERTY(uint16_t, DomainId);
    // Separates the discovery traffic of unrelated service groups (the
    // maintenance service uses 2 on the application side and 3 on the tools side).
    VCC_PROPERTY(uint16_t, DiscoveryGroup);
    VCC_PROPERTY(ParticipantQos, ParticipantQos);
    VCC_PROPERTY(DiscoveryFilter, DiscoveryFilter);
    // Filters of offers, finds and subscriptions; absent means "match all".
    VCC_PROPERTY(std::optional<std::string>, OfferFilter);
    VCC_PROPERTY(std::optional<std::string>, FindFilter);
    VCC_PROPERTY(std::optional<std::string>, SubscribeFilter);
    VCC_PROPERTY(TransportQosSet, TransportQos);
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
