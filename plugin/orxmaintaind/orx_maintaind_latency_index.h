#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_LATENCY_INDEX_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_LATENCY_INDEX_H

#include <cstdint>
#include <string>
#include <tuple>

namespace orx {
namespace orxcm {
namespace orxmaintaind {

// Names one DDS event for latency analysis: the key of the DDS mode and query handlers.
// Ordered by service id, then instance id (both numerically), then topic name (byte-wise; a
// prefix sorts before the longer text).
struct DDSLatencyIndex {
    DDSLatencyIndex(const uint16_t& serviceId, const uint16_t& instanceId,
                    const std::string& topicName)
        : serviceId(serviceId), instanceId(instanceId), topicName(topicName) {}

    bool operator<(const DDSLatencyIndex& other) const {
        return std::tie(serviceId, instanceId, topicName) <
               std::tie(other.serviceId, other.instanceId, other.topicName);
    }

    uint16_t serviceId;
    uint16_t instanceId;
    std::string topicName;
};

// Names one SOME/IP event for latency analysis: the key of the SOME/IP mode and query handlers.
// Ordered by service id, then instance id, then event id, each numerically.
struct SomeipLatencyIndex {
    SomeipLatencyIndex(const uint16_t& serviceId, const uint16_t& instanceId,
                       const uint16_t& eventId)
        : serviceId(serviceId), instanceId(instanceId), eventId(eventId) {}

    bool operator<(const SomeipLatencyIndex& other) const {
        return std::tie(serviceId, instanceId, eventId) <
               std::tie(other.serviceId, other.instanceId, other.eventId);
    }

    uint16_t serviceId;
    uint16_t instanceId;
    uint16_t eventId;
};

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif  // ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_LATENCY_INDEX_H
