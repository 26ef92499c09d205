#ifndef VORX_DRIVER_DDS_FRAME_H
#define VORX_DRIVER_DDS_FRAME_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace vorx {
namespace driver {
namespace dds {

// Identity of a DDS participant (its GUID). Used to wait until a peer's reader
// has matched one of our writers before the first message goes to it.
using ParticipantGuid = std::array<uint8_t, 16>;

// What a frame carries. Requests and replies of one method may share a topic;
// receivers tell them apart by this.
enum class FrameKind : uint8_t {
    kRequest = 0,
    kReply = 1,
    kEvent = 2,
};

// One message on a method or event topic: a fixed header and the payload as
// encoded by the core's encoders. The transport never looks into the payload.
struct Frame {
    FrameKind kind{FrameKind::kRequest};
    uint16_t serviceId{0};
    std::string instanceId;
    uint32_t entityId{0};
    // Request: the offer it is meant for. Reply and event: the offer that sent it.
    uint64_t providerId{0};
    // The requesting method proxy; replies go only to it.
    uint64_t clientId{0};
    uint16_t sessionId{0};
    uint64_t sequenceNumber{0};
    // Send time on the sender: CLOCK_MONOTONIC (comparable only under the same
    // running kernel, see bootId) and CLOCK_REALTIME (comparable across hosts
    // as far as their clocks agree).
    int64_t sendTimeMonoNs{0};
    int64_t sendTimeRealNs{0};
    // Identifies the sender's running kernel: equal ids mean the monotonic
    // clocks are the same clock.
    uint64_t bootId{0};
    // Replies: 0 value, 1 error, 2 invalid (the core's ReplyKind numbers).
    uint8_t replyKind{0};
    uint64_t errorDomain{0};
    std::vector<uint8_t> errorCode;
    std::string errorMessage;
    bool tlsFailure{false};
    uint8_t e2eResult{0};
    // Participant of the sender; a server waits for it before replying.
    ParticipantGuid senderGuid{};
    // Requests: the topic the reply is to be sent on.
    std::string replyTopic;
    std::vector<uint8_t> payload;
};

// One offered service instance as its provider announces it.
struct ServiceOffer {
    // Unique per offer across the system in practice (random base, counting);
    // the key of the announcement.
    uint64_t providerId{0};
    uint16_t serviceId{0};
    std::string instanceId;
    std::string servicePath;
    uint8_t driverType{0};  // the core's binding number the offer was made for
    ParticipantGuid providerGuid{};
    int32_t processId{0};
    std::string hostName;

    bool operator==(const ServiceOffer& other) const {
        return providerId == other.providerId && serviceId == other.serviceId &&
               instanceId == other.instanceId && servicePath == other.servicePath &&
               driverType == other.driverType && providerGuid == other.providerGuid &&
               processId == other.processId && hostName == other.hostName;
    }
    bool operator!=(const ServiceOffer& other) const { return !(*this == other); }
    // Order for stable lists: by service, instance, then provider.
    bool operator<(const ServiceOffer& other) const {
        if (serviceId != other.serviceId) {
            return serviceId < other.serviceId;
        }
        if (instanceId != other.instanceId) {
            return instanceId < other.instanceId;
        }
        return providerId < other.providerId;
    }
};

// True for the instance texts that match every instance: "" and "65535" (not
// configured) and "65534" (any instance).
inline bool IsAnyInstance(const std::string& instanceId) {
    return instanceId.empty() || instanceId == "65534" || instanceId == "65535";
}

// Which offers a search wants: same binding and service id, the same instance
// unless the search's instance matches any, the same path unless the search's
// path is empty.
struct FindFilter {
    uint8_t driverType{0};
    uint16_t serviceId{0};
    std::string instanceId;
    std::string servicePath;

    bool Matches(const ServiceOffer& offer) const {
        return offer.driverType == driverType && offer.serviceId == serviceId &&
               (IsAnyInstance(instanceId) || offer.instanceId == instanceId) &&
               (servicePath.empty() || offer.servicePath == servicePath);
    }
};

// Topic settings of one method.
struct MethodTopics {
    std::string requestTopic;
    std::string replyTopic;  // may equal requestTopic: one topic both ways
};

// Topic settings of one event.
struct EventTopic {
    std::string topic;
    uint32_t historyDepth{16};
    bool reliable{true};  // subscriber side; writers are always reliable
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif  // VORX_DRIVER_DDS_FRAME_H
