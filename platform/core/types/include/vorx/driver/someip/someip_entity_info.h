#ifndef VORX_DRIVER_SOMEIP_SOMEIP_ENTITY_INFO_H
#define VORX_DRIVER_SOMEIP_SOMEIP_ENTITY_INFO_H

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "vorx/serialize/serialization_node.h"
#include "vorx/vcc/api/types/entity_info.h"

namespace vorx {
namespace driver {
namespace someip {

// One signal of a signal-based PDU.
struct IsignalConfig {
    std::string signalName;
    std::string signalType;
    bool isBigEndian{false};
    uint64_t startPosition{0};
    uint64_t signalLength{0};
    std::string initValue;
};

// Payload description of a signal-based event.
struct PduConfig {
    std::string pduName;
    uint64_t pduLength{0};
    bool isDynamicLength{false};
    std::vector<IsignalConfig> isignals;
};

// SOME/IP binding of an event. This reference core describes and reports
// SOME/IP entities but does not carry SOME/IP traffic.
class VCC_EXPORT SomeipEventInfo : public vcc::api::types::EventInfo {
  public:
    ~SomeipEventInfo() override;

    VCC_PROPERTY(uint16_t, EventId);
    VCC_PROPERTY(std::vector<uint16_t>, EventGroupIds);
    VCC_PROPERTY(uint32_t, MajorVersion);
    VCC_PROPERTY(uint16_t, MinorVersion);
    VCC_PROPERTY(uint32_t, UdpTtl);
    VCC_PROPERTY(uint16_t, Port);
    VCC_PROPERTY(bool, IsReliable);
    VCC_PROPERTY(std::set<uint8_t>, TransportQos);
    VCC_PROPERTY(serialize::SerializationNode, SerializationConfig);
    VCC_PROPERTY(PduConfig, PduConfig);
};

// SOME/IP binding of a method.
class VCC_EXPORT SomeipMethodInfo : public vcc::api::types::MethodInfo {
  public:
    ~SomeipMethodInfo() override;

    VCC_PROPERTY(uint16_t, MethodId);
    VCC_PROPERTY(uint32_t, MajorVersion);
    VCC_PROPERTY(uint16_t, MinorVersion);
    VCC_PROPERTY(bool, IsReliable);
    VCC_PROPERTY(std::set<uint8_t>, TransportQos);
    VCC_PROPERTY(serialize::SerializationNode, RequestSerializationConfig);
    VCC_PROPERTY(serialize::SerializationNode, ReplySerializationConfig);
};

}  // namespace someip
}  // namespace driver
}  // namespace vorx

#endif
