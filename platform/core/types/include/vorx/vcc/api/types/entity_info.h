#ifndef VORX_VCC_API_TYPES_ENTITY_INFO_H
#define VORX_VCC_API_TYPES_ENTITY_INFO_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/api/types/e2e_config.h"
#include "vorx/vcc/api/types/property.h"
#include "vorx/vcc/export.h"

namespace vorx {
namespace vcc {
namespace api {
namespace types {

// Serialization settings of one data element.
struct SerializeSetting {
    uint8_t serializeType{0};         // see SerializeType
    std::string serializeConfigText;  // the settings as the deployment wrote them
};

// What serializes a payload. Values 0 and 1 are the ones the maintenance
// records carry.
enum class SerializeType : int32_t {
    SOMEIP = 0,  // SOME/IP serialization
    CDR = 1,     // DDS CDR
    RAW = 2,     // bytes as they are
};

// Further settings of an entity, key to value (DDS resource attributes).
using AttributeMap = std::map<std::string, std::string>;

// One application error domain of a method.
struct ErrorDomainDescription {
    std::string name;
    uint64_t id{0};
};

// What every entity of a service has in common: where it lives (service,
// instance, entity), how it is named, and the network it uses.
class VCC_EXPORT EntityInfo {
  public:
    EntityInfo() = default;
    EntityInfo(const EntityInfo&) = default;
    EntityInfo& operator=(const EntityInfo&) = default;
    virtual ~EntityInfo();

    // Sets the instance id from its text form. Accepts the decimal numbers 0 to
    // 65535 without sign, blanks or trailing characters (65534 is the wildcard
    // "any instance", 65535 "undefined"). Returns false and keeps the old value
    // for anything else.
    bool SetInstanceId(const std::string& instanceId);
    const std::string& GetInstanceId() const { return instanceId_; }

    // Network (interface address or name) and its flag; ("UNDEFINED_NETWORK",
    // false) when nothing is configured.
    void SetNetwork(const std::pair<std::string, bool>& network) { network_ = network; }
    const std::pair<std::string, bool>& GetNetwork() const { return network_; }

    VCC_PROPERTY(uint16_t, ServiceId);
    VCC_PROPERTY(uint32_t, EntityId);
    VCC_PROPERTY(std::string, ServiceName);   // service interface name, e.g. "/demo/RadarService"
    VCC_PROPERTY(std::string, InstanceName);  // instance specifier
    VCC_PROPERTY(std::string, ShortName);     // short name of the entity
    VCC_PROPERTY(std::string, InstanceShortName);
    VCC_PROPERTY(EntityRole, Role);
    VCC_PROPERTY(DriverType, Driver);
    VCC_PROPERTY(AttributeMap, ResourceAttr);  // further settings, key to value

  private:
    std::string instanceId_{"65535"};
    std::pair<std::string, bool> network_{"UNDEFINED_NETWORK", false};
};

// An event of a service. Binding-specific descriptions derive from it
// (vorx::driver::dds::DDSEventInfo, vorx::driver::someip::SomeipEventInfo).
class VCC_EXPORT EventInfo : public EntityInfo {
  public:
    ~EventInfo() override;

    VCC_PROPERTY(std::string, EventName);
    VCC_PROPERTY(std::string, DataTypeName);
    VCC_PROPERTY(SerializeSetting, SerializeConfig);
    VCC_PROPERTY(bool, IsField);           // the event is the notifier of a field
    VCC_PROPERTY(bool, IsLatencyEnabled);  // the deployment allows latency analysis
    VCC_PROPERTY(std::shared_ptr<E2EXfConfig>, E2EConfig);  // empty: no E2E protection
};

// A method of a service. Binding-specific descriptions derive from it.
class VCC_EXPORT MethodInfo : public EntityInfo {
  public:
    ~MethodInfo() override;

    VCC_PROPERTY(std::string, MethodName);
    // Name of the service interface the method is declared in when it differs
    // from the service's own (a method of a field or an inherited interface);
    // empty for a plain method.
    VCC_PROPERTY(std::string, ServiceLevelName);
    VCC_PROPERTY(std::vector<std::string>, InputArgNames);
    VCC_PROPERTY(std::vector<std::string>, OutputArgNames);
    VCC_PROPERTY(std::vector<ErrorDomainDescription>, ErrorDomains);
    VCC_PROPERTY(SerializeSetting, RequestSerializeConfig);
    VCC_PROPERTY(SerializeSetting, ReplySerializeConfig);
    // Serialization kinds of request and reply (SerializeType values).
    VCC_PROPERTY(SerializeType, RequestSerializeType);
    VCC_PROPERTY(SerializeType, ReplySerializeType);
    VCC_PROPERTY(uint8_t, IsFieldMethod);  // 1 when the method is a field's getter or setter
    VCC_PROPERTY(bool, IsFireAndForget);
    VCC_PROPERTY(std::shared_ptr<E2EXfConfig>, E2EConfig);
};

// A field: a value with an optional notifier event, getter and setter.
class VCC_EXPORT FieldInfo : public EntityInfo {
  public:
    ~FieldInfo() override;

    VCC_PROPERTY(std::string, FieldName);
    VCC_PROPERTY(bool, HasNotify);
    VCC_PROPERTY(bool, HasGet);
    VCC_PROPERTY(bool, HasSet);
    VCC_PROPERTY(std::shared_ptr<EventInfo>, NotifyInfo);
    VCC_PROPERTY(std::shared_ptr<MethodInfo>, GetInfo);
    VCC_PROPERTY(std::shared_ptr<MethodInfo>, SetInfo);
};

}  // namespace types
}  // namespace api
}  // namespace vcc
}  // namespace vorx

#endif
