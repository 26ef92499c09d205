#include "driver_frames.h"

#include <utility>

#include "vorx/driver/dds/dds_transport.h"

namespace vorx {
namespace driver {
namespace dds {

FindFilter FilterOf(const vcc::ServiceDescription& desc) {
    FindFilter filter;
    filter.driverType = static_cast<uint8_t>(desc.driverType);
    filter.serviceId = desc.serviceId;
    filter.instanceId = desc.instanceId;
    filter.servicePath = desc.serviceName;
    return filter;
}

bool SameService(const ServiceOffer& offer, const vcc::ServiceDescription& desc) {
    return offer.driverType == static_cast<uint8_t>(desc.driverType) &&
           offer.serviceId == desc.serviceId && offer.servicePath == desc.serviceName &&
           offer.instanceId == desc.instanceId;
}

vcc::HandleType HandleOf(const ServiceOffer& offer, const std::string& network) {
    vcc::ServiceDescription desc;
    desc.serviceId = offer.serviceId;
    desc.instanceId = offer.instanceId;
    desc.serviceName = offer.servicePath;
    desc.driverType = static_cast<vcc::api::types::DriverType>(offer.driverType);
    desc.network = network;
    return vcc::HandleType(desc, offer.providerId);
}

bool WireBytes(const vcc::Payload& payload, std::vector<uint8_t>* out) {
    if (payload.HasObject() && !payload.HasBytes()) {
        return false;
    }
    *out = payload.GetBytes();
    return true;
}

vcc::Payload PayloadOf(std::vector<uint8_t> bytes) {
    return vcc::Payload::FromBytes(std::move(bytes));
}

vcc::MethodReply ReplyOf(Frame frame) {
    vcc::MethodReply reply;
    reply.clientId = frame.clientId;
    reply.entityId = frame.entityId;
    reply.sessionId = frame.sessionId;
    reply.kind = frame.replyKind <= static_cast<uint8_t>(vcc::ReplyKind::kInvalid)
                     ? static_cast<vcc::ReplyKind>(frame.replyKind)
                     : vcc::ReplyKind::kInvalid;
    if (reply.kind == vcc::ReplyKind::kValue) {
        reply.payload = PayloadOf(std::move(frame.payload));
    }
    reply.errorDomainId = frame.errorDomain;
    reply.errorCode = std::move(frame.errorCode);
    reply.errorMessage = std::move(frame.errorMessage);
    reply.tlsFailure = frame.tlsFailure;
    reply.e2eResult = frame.e2eResult;
    return reply;
}

vcc::EventSample SampleOf(Frame frame) {
    vcc::EventSample sample;
    sample.entityId = frame.entityId;
    sample.sequence = frame.sequenceNumber;
    sample.sendTimeNs = static_cast<long>(LocalMonotonicSendTime(frame));
    sample.payload = PayloadOf(std::move(frame.payload));
    return sample;
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
