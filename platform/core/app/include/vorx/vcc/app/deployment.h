#ifndef VORX_VCC_APP_DEPLOYMENT_H
#define VORX_VCC_APP_DEPLOYMENT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"
#include "vorx/serialize/serialization_node.h"
#include "vorx/vcc/api/types/e2e_config.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/export.h"

// The services an application offers or uses, as its orx.json deploys them (the "services"
// array; docs/app-api.md describes every key). The parser (deployment_parser.h) fills these plain
// values; the core builds its entity descriptions and its offers and searches from them.
namespace vorx::vcc::app {

enum class ServiceRole : uint8_t {
    kProvided = 0,  // this application offers the service
    kRequired = 1,  // this application uses it
};

// DDS binding of a whole service.
struct DdsServiceBinding {
    uint16_t domainId{0};
    std::pair<std::string, bool> network{"UNDEFINED_NETWORK", false};
    driver::dds::TransportQosSet transportQos;
    api::types::AttributeMap resourceAttributes;
    driver::dds::ParticipantQos participantQos;
    driver::dds::DiscoveryFilter discoveryFilter;
    uint8_t ddsMode{1};  // 0 data-centric, 1 service-oriented
};

// SOME/IP binding of a whole service. Described and reported only: this core carries no SOME/IP
// traffic.
struct SomeipServiceBinding {
    uint32_t majorVersion{1};
    uint16_t minorVersion{0};
    std::pair<std::string, bool> network{"UNDEFINED_NETWORK", false};
    uint16_t port{0};
    bool reliable{false};
    std::set<uint8_t> transportQos;
};

// Per-event DDS settings.
struct DdsEventBinding {
    std::string topic;  // empty in the file: "<service short name>_<event name>"
    uint32_t historyDepth{16};
    uint32_t queueSize{16};
    driver::dds::DurabilityKind durability{driver::dds::DurabilityKind::VOLATILE};
    driver::dds::HistoryKind history{driver::dds::HistoryKind::KEEP_LAST};
    driver::dds::ReliabilityKind reliability{driver::dds::ReliabilityKind::RELIABLE};
    std::optional<driver::dds::TransportQosSet> transportQos;  // absent: the service's
    uint32_t fragSize{0};
    uint32_t listenQueueSize{0};
    driver::dds::DiscoveryFilter pubDiscoveryFilter;
    driver::dds::DiscoveryFilter subDiscoveryFilter;
};

// Per-event SOME/IP settings.
struct SomeipEventBinding {
    uint16_t eventId{0};
    std::vector<uint16_t> eventGroupIds;
    uint32_t udpTtl{0};
    std::optional<bool> reliable;                   // absent: the service's
    std::optional<std::set<uint8_t>> transportQos;  // absent: the service's
    serialize::SerializationNode serialization;
    driver::someip::PduConfig pdu;
};

struct EventDeployment {
    std::string name;       // event name as the application uses it
    std::string shortName;  // defaults to name
    uint32_t entityId{0};
    std::string dataTypeName;
    api::types::SerializeSetting serialize;
    bool latencyAnalysis{true};  // the daemon may switch latency analysis on for this event
    std::shared_ptr<api::types::E2EXfConfig> e2e;  // empty: no E2E protection
    DdsEventBinding dds;                           // used when the service has a DDS binding
    SomeipEventBinding someip;                     // used when the service has a SOME/IP binding
};

// Per-method DDS settings.
struct DdsMethodBinding {
    std::string requestTopic;  // empty in the file: "<service short name>_<method name>_Request"
    std::string replyTopic;    // empty in the file: "<service short name>_<method name>_Reply"
    std::string requestDataTypeName;
    std::string replyDataTypeName;
    uint32_t requestQueueSize{16};
    uint32_t replyQueueSize{16};
    uint32_t requestHistoryDepth{16};
    uint32_t replyHistoryDepth{16};
    uint8_t requestDurability{0};  // 0 volatile, 1 transient-local
    uint8_t replyDurability{0};
    uint8_t requestHistory{0};  // 0 keep-last, 1 keep-all
    uint8_t replyHistory{0};
    driver::dds::ReliabilityKind reliability{driver::dds::ReliabilityKind::RELIABLE};
    std::optional<driver::dds::TransportQosSet> transportQos;  // absent: the service's
    uint32_t fragSize{0};
    uint32_t listenQueueSize{0};
    driver::dds::DiscoveryFilter discoveryFilter;
};

// Per-method SOME/IP settings.
struct SomeipMethodBinding {
    uint16_t methodId{0};
    std::optional<bool> reliable;
    std::optional<std::set<uint8_t>> transportQos;
    serialize::SerializationNode requestSerialization;
    serialize::SerializationNode replySerialization;
};

struct MethodDeployment {
    std::string name;
    std::string shortName;         // defaults to name
    std::string serviceLevelName;  // interface the method is declared in, when not the service's
    uint32_t entityId{0};
    std::vector<std::string> inputArgNames;
    std::vector<std::string> outputArgNames;
    std::vector<api::types::ErrorDomainDescription> errorDomains;
    api::types::SerializeSetting requestSerialize;
    api::types::SerializeSetting replySerialize;
    bool fireAndForget{false};
    std::shared_ptr<api::types::E2EXfConfig> e2e;
    DdsMethodBinding dds;
    SomeipMethodBinding someip;
};

// A field: a value with an optional notifier event, getter and setter. Each part is a full entity
// of its own (entity id, bindings); their names are derived from the field's.
struct FieldDeployment {
    std::string name;
    std::string dataTypeName;
    std::optional<EventDeployment> notifier;  // name = field name
    std::optional<MethodDeployment> getter;   // name "Get", declared in the field
    std::optional<MethodDeployment> setter;   // name "Set", declared in the field
};

struct VCC_EXPORT ServiceDeployment {
    std::string serviceName;  // service path, e.g. "/demo/RadarService"
    std::string shortName;    // defaults to the last part of the path
    uint16_t serviceId{0};
    std::string instanceId;  // decimal text; "65534" (any) for a required service by default
    std::string instanceName;
    std::string instanceShortName;
    ServiceRole role{ServiceRole::kProvided};
    std::optional<DdsServiceBinding> dds;
    std::optional<SomeipServiceBinding> someip;
    bool proloc{false};
    std::vector<EventDeployment> events;
    std::vector<MethodDeployment> methods;
    std::vector<FieldDeployment> fields;

    // The binding that carries this service's traffic: DDS when deployed, else the process-local
    // binding when deployed; none for a service deployed on SOME/IP only.
    std::optional<api::types::DriverType> TrafficBinding() const;
    // Lookups by name; nullptr when absent.
    const EventDeployment* FindEvent(const std::string& name) const;
    const MethodDeployment* FindMethod(const std::string& name) const;
    const FieldDeployment* FindField(const std::string& name) const;
};

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_DEPLOYMENT_H
