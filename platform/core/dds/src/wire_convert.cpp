#include "wire_convert.h"

#include <cstring>

namespace vorx {
namespace driver {
namespace dds {

namespace {

std::string TextOf(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

void ViewBytes(const std::vector<uint8_t>& bytes, dds_sequence_octet* sequence) {
    sequence->_maximum = static_cast<uint32_t>(bytes.size());
    sequence->_length = static_cast<uint32_t>(bytes.size());
    sequence->_buffer = const_cast<uint8_t*>(bytes.data());
    sequence->_release = false;
}

std::vector<uint8_t> BytesOf(const dds_sequence_octet& sequence) {
    if (sequence._length == 0 || sequence._buffer == nullptr) {
        return {};
    }
    return std::vector<uint8_t>(sequence._buffer, sequence._buffer + sequence._length);
}

}  // namespace

void ViewAsWire(const Frame& frame, vorx_driver_dds_wire_Frame* wire) {
    wire->kind = static_cast<uint8_t>(frame.kind);
    wire->serviceId = frame.serviceId;
    wire->instanceId = const_cast<char*>(frame.instanceId.c_str());
    wire->entityId = frame.entityId;
    wire->providerId = frame.providerId;
    wire->clientId = frame.clientId;
    wire->sessionId = frame.sessionId;
    wire->sequenceNumber = frame.sequenceNumber;
    wire->sendTimeMonoNs = frame.sendTimeMonoNs;
    wire->sendTimeRealNs = frame.sendTimeRealNs;
    wire->bootId = frame.bootId;
    wire->replyKind = frame.replyKind;
    wire->errorDomain = frame.errorDomain;
    ViewBytes(frame.errorCode, &wire->errorCode);
    wire->errorMessage = const_cast<char*>(frame.errorMessage.c_str());
    wire->tlsFailure = frame.tlsFailure;
    wire->e2eResult = frame.e2eResult;
    std::memcpy(wire->senderGuid, frame.senderGuid.data(), frame.senderGuid.size());
    wire->replyTopic = const_cast<char*>(frame.replyTopic.c_str());
    ViewBytes(frame.payload, &wire->payload);
}

Frame FromWire(const vorx_driver_dds_wire_Frame& wire) {
    Frame frame;
    frame.kind = static_cast<FrameKind>(wire.kind);
    frame.serviceId = wire.serviceId;
    frame.instanceId = TextOf(wire.instanceId);
    frame.entityId = wire.entityId;
    frame.providerId = wire.providerId;
    frame.clientId = wire.clientId;
    frame.sessionId = wire.sessionId;
    frame.sequenceNumber = wire.sequenceNumber;
    frame.sendTimeMonoNs = wire.sendTimeMonoNs;
    frame.sendTimeRealNs = wire.sendTimeRealNs;
    frame.bootId = wire.bootId;
    frame.replyKind = wire.replyKind;
    frame.errorDomain = wire.errorDomain;
    frame.errorCode = BytesOf(wire.errorCode);
    frame.errorMessage = TextOf(wire.errorMessage);
    frame.tlsFailure = wire.tlsFailure;
    frame.e2eResult = wire.e2eResult;
    std::memcpy(frame.senderGuid.data(), wire.senderGuid, frame.senderGuid.size());
    frame.replyTopic = TextOf(wire.replyTopic);
    frame.payload = BytesOf(wire.payload);
    return frame;
}

void ViewAsWire(const ServiceOffer& offer, vorx_driver_dds_wire_ServiceOffer* wire) {
    wire->providerId = offer.providerId;
    wire->serviceId = offer.serviceId;
    wire->instanceId = const_cast<char*>(offer.instanceId.c_str());
    wire->servicePath = const_cast<char*>(offer.servicePath.c_str());
    wire->driverType = offer.driverType;
    std::memcpy(wire->providerGuid, offer.providerGuid.data(), offer.providerGuid.size());
    wire->processId = offer.processId;
    wire->hostName = const_cast<char*>(offer.hostName.c_str());
}

ServiceOffer FromWire(const vorx_driver_dds_wire_ServiceOffer& wire) {
    ServiceOffer offer;
    offer.providerId = wire.providerId;
    offer.serviceId = wire.serviceId;
    offer.instanceId = TextOf(wire.instanceId);
    offer.servicePath = TextOf(wire.servicePath);
    offer.driverType = wire.driverType;
    std::memcpy(offer.providerGuid.data(), wire.providerGuid, offer.providerGuid.size());
    offer.processId = wire.processId;
    offer.hostName = TextOf(wire.hostName);
    return offer;
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
