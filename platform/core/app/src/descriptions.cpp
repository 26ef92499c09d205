#include "vorx/vcc/app/descriptions.h"

#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"

namespace vorx::vcc::app {
namespace {

using api::types::DriverType;
using api::types::EntityRole;

EntityRole RoleOf(const ServiceDeployment& service) {
    return service.role == ServiceRole::kProvided ? EntityRole::SERVER : EntityRole::CLIENT;
}

// What every entity description shares, for the binding `driver`.
void FillEntity(const ServiceDeployment& service, DriverType driver, uint32_t entityId,
                const std::string& shortName, api::types::EntityInfo& info) {
    info.SetServiceId(service.serviceId);
    info.SetEntityId(entityId);
    info.SetServiceName(service.serviceName);
    info.SetInstanceName(service.instanceName);
    info.SetShortName(shortName);
    info.SetInstanceShortName(service.instanceShortName);
    info.SetRole(RoleOf(service));
    info.SetDriver(driver);
    info.SetInstanceId(service.instanceId);  // validated by the parser
    if (driver == DriverType::DDS && service.dds) {
        info.SetNetwork(service.dds->network);
        info.SetResourceAttr(service.dds->resourceAttributes);
    } else if (driver == DriverType::SOMEIP && service.someip) {
        info.SetNetwork(service.someip->network);
    }
}

void FillEvent(const EventDeployment& event, bool isFieldNotifier, api::types::EventInfo& info) {
    info.SetEventName(event.name);
    info.SetDataTypeName(event.dataTypeName);
    info.SetSerializeConfig(event.serialize);
    info.SetIsField(isFieldNotifier);
    info.SetIsLatencyEnabled(event.latencyAnalysis);
    info.SetE2EConfig(event.e2e);
}

void FillMethod(const MethodDeployment& method, bool isFieldMethod, api::types::MethodInfo& info) {
    info.SetMethodName(method.name);
    info.SetServiceLevelName(method.serviceLevelName);
    info.SetInputArgNames(method.inputArgNames);
    info.SetOutputArgNames(method.outputArgNames);
    info.SetErrorDomains(method.errorDomains);
    info.SetRequestSerializeConfig(method.requestSerialize);
    info.SetReplySerializeConfig(method.replySerialize);
    info.SetRequestSerializeType(
        static_cast<api::types::SerializeType>(method.requestSerialize.serializeType));
    info.SetReplySerializeType(
        static_cast<api::types::SerializeType>(method.replySerialize.serializeType));
    info.SetIsFieldMethod(isFieldMethod ? 1 : 0);
    info.SetIsFireAndForget(method.fireAndForget);
    info.SetE2EConfig(method.e2e);
}

std::shared_ptr<driver::dds::DDSEventInfo> DdsEvent(const ServiceDeployment& service,
                                                    const EventDeployment& event,
                                                    bool isFieldNotifier) {
    const DdsServiceBinding& binding = *service.dds;
    const DdsEventBinding& dds = event.dds;
    auto info = std::make_shared<driver::dds::DDSEventInfo>();
    FillEntity(service, DriverType::DDS, event.entityId, event.shortName, *info);
    FillEvent(event, isFieldNotifier, *info);
    info->SetDomainId(binding.domainId);
    info->SetTopicName(dds.topic);
    info->SetHistoryDepth(dds.historyDepth);
    info->SetQueueSize(dds.queueSize);
    info->SetDurability(dds.durability);
    info->SetHistory(dds.history);
    info->SetReliability(dds.reliability);
    info->SetTransportQos(dds.transportQos.value_or(binding.transportQos));
    info->SetFragSize(dds.fragSize);
    info->SetListenQueueSize(dds.listenQueueSize);
    info->SetDdsMode(binding.ddsMode);
    info->SetPubDiscoveryFilter(dds.pubDiscoveryFilter);
    info->SetSubDiscoveryFilter(dds.subDiscoveryFilter);
    info->SetParticipantQos(binding.participantQos);
    return info;
}

std::shared_ptr<driver::someip::SomeipEventInfo> SomeipEvent(const ServiceDeployment& service,
                                                             const EventDeployment& event,
                                                             bool isFieldNotifier) {
    const SomeipServiceBinding& binding = *service.someip;
    const SomeipEventBinding& someip = event.someip;
    auto info = std::make_shared<driver::someip::SomeipEventInfo>();
    FillEntity(service, DriverType::SOMEIP, event.entityId, event.shortName, *info);
    FillEvent(event, isFieldNotifier, *info);
    info->SetEventId(someip.eventId);
    info->SetEventGroupIds(someip.eventGroupIds);
    info->SetMajorVersion(binding.majorVersion);
    info->SetMinorVersion(binding.minorVersion);
    info->SetUdpTtl(someip.udpTtl);
    info->SetPort(binding.port);
    info->SetIsReliable(someip.reliable.value_or(binding.reliable));
    info->SetTransportQos(someip.transportQos.value_or(binding.transportQos));
    info->SetSerializationConfig(someip.serialization);
    info->SetPduConfig(someip.pdu);
    return info;
}

std::shared_ptr<driver::dds::DDSMethodInfo> DdsMethod(const ServiceDeployment& service,
                                                      const MethodDeployment& method,
                                                      bool isFieldMethod) {
    const DdsServiceBinding& binding = *service.dds;
    const DdsMethodBinding& dds = method.dds;
    auto info = std::make_shared<driver::dds::DDSMethodInfo>();
    FillEntity(service, DriverType::DDS, method.entityId, method.shortName, *info);
    FillMethod(method, isFieldMethod, *info);
    info->SetDomainId(binding.domainId);
    info->SetRequestTopicName(dds.requestTopic);
    info->SetReplyTopicName(dds.replyTopic);
    info->SetRequestDataTypeName(dds.requestDataTypeName);
    info->SetReplyDataTypeName(dds.replyDataTypeName);
    info->SetRequestQueueSize(dds.requestQueueSize);
    info->SetReplyQueueSize(dds.replyQueueSize);
    info->SetRequestHistoryDepth(dds.requestHistoryDepth);
    info->SetReplyHistoryDepth(dds.replyHistoryDepth);
    info->SetRequestDurability(dds.requestDurability);
    info->SetReplyDurability(dds.replyDurability);
    info->SetRequestHistory(dds.requestHistory);
    info->SetReplyHistory(dds.replyHistory);
    info->SetReliability(dds.reliability);
    info->SetTransportQos(dds.transportQos.value_or(binding.transportQos));
    info->SetFragSize(dds.fragSize);
    info->SetListenQueueSize(dds.listenQueueSize);
    info->SetDiscoveryFilter(dds.discoveryFilter);
    info->SetParticipantQos(binding.participantQos);
    return info;
}

std::shared_ptr<driver::someip::SomeipMethodInfo> SomeipMethod(const ServiceDeployment& service,
                                                               const MethodDeployment& method,
                                                               bool isFieldMethod) {
    const SomeipServiceBinding& binding = *service.someip;
    const SomeipMethodBinding& someip = method.someip;
    auto info = std::make_shared<driver::someip::SomeipMethodInfo>();
    FillEntity(service, DriverType::SOMEIP, method.entityId, method.shortName, *info);
    FillMethod(method, isFieldMethod, *info);
    info->SetMethodId(someip.methodId);
    info->SetMajorVersion(binding.majorVersion);
    info->SetMinorVersion(binding.minorVersion);
    info->SetIsReliable(someip.reliable.value_or(binding.reliable));
    info->SetTransportQos(someip.transportQos.value_or(binding.transportQos));
    info->SetRequestSerializationConfig(someip.requestSerialization);
    info->SetReplySerializationConfig(someip.replySerialization);
    return info;
}

// The field's own entity id: that of its first part (notifier, getter, setter).
uint32_t FieldEntityId(const FieldDeployment& field) {
    if (field.notifier) {
        return field.notifier->entityId;
    }
    if (field.getter) {
        return field.getter->entityId;
    }
    return field.setter ? field.setter->entityId : 0;
}

std::shared_ptr<api::types::FieldInfo> FieldOn(const ServiceDeployment& service,
                                               const FieldDeployment& field, DriverType driver) {
    auto info = std::make_shared<api::types::FieldInfo>();
    FillEntity(service, driver, FieldEntityId(field), field.name, *info);
    info->SetFieldName(field.name);
    info->SetHasNotify(field.notifier.has_value());
    info->SetHasGet(field.getter.has_value());
    info->SetHasSet(field.setter.has_value());
    if (field.notifier) {
        info->SetNotifyInfo(DescribeEvent(service, *field.notifier, true).at(driver));
    }
    if (field.getter) {
        info->SetGetInfo(DescribeMethod(service, *field.getter, true).at(driver));
    }
    if (field.setter) {
        info->SetSetInfo(DescribeMethod(service, *field.setter, true).at(driver));
    }
    return info;
}

}  // namespace

EventInfoMap DescribeEvent(const ServiceDeployment& service, const EventDeployment& event,
                           bool isFieldNotifier) {
    EventInfoMap infos;
    if (service.dds) {
        infos[DriverType::DDS] = DdsEvent(service, event, isFieldNotifier);
    }
    if (service.someip) {
        infos[DriverType::SOMEIP] = SomeipEvent(service, event, isFieldNotifier);
    }
    return infos;
}

MethodInfoMap DescribeMethod(const ServiceDeployment& service, const MethodDeployment& method,
                             bool isFieldMethod) {
    MethodInfoMap infos;
    if (service.dds) {
        infos[DriverType::DDS] = DdsMethod(service, method, isFieldMethod);
    }
    if (service.someip) {
        infos[DriverType::SOMEIP] = SomeipMethod(service, method, isFieldMethod);
    }
    return infos;
}

FieldInfoMap DescribeField(const ServiceDeployment& service, const FieldDeployment& field) {
    FieldInfoMap infos;
    if (service.dds) {
        infos[DriverType::DDS] = FieldOn(service, field, DriverType::DDS);
    }
    if (service.someip) {
        infos[DriverType::SOMEIP] = FieldOn(service, field, DriverType::SOMEIP);
    }
    return infos;
}

std::vector<api::types::EventE2EConfigInfo> DescribeE2E(const ServiceDeployment& service,
                                                        const EventDeployment& event) {
    std::vector<api::types::EventE2EConfigInfo> configs;
    if (!event.e2e) {
        return configs;
    }
    for (const DriverType driver : {DriverType::DDS, DriverType::SOMEIP}) {
        if ((driver == DriverType::DDS && !service.dds) ||
            (driver == DriverType::SOMEIP && !service.someip)) {
            continue;
        }
        api::types::EventE2EConfigInfo config;
        config.serviceId = service.serviceId;
        config.instanceId = service.instanceId;
        config.entityId = event.entityId;
        config.eventName = event.name;
        config.driverType = driver;
        config.isPub = service.role == ServiceRole::kProvided;
        config.e2eConfig = event.e2e;
        configs.push_back(std::move(config));
    }
    return configs;
}

std::shared_ptr<api::types::MethodInfo> TrafficMethodInfo(const ServiceDeployment& service,
                                                          const MethodDeployment& method,
                                                          bool isFieldMethod) {
    if (service.dds) {
        return DdsMethod(service, method, isFieldMethod);
    }
    auto info = std::make_shared<api::types::MethodInfo>();
    FillEntity(service, DriverType::PROLOC, method.entityId, method.shortName, *info);
    FillMethod(method, isFieldMethod, *info);
    return info;
}

ServiceDescription DescribeService(const ServiceDeployment& service) {
    ServiceDescription desc;
    desc.serviceId = service.serviceId;
    desc.instanceId = service.instanceId;
    desc.serviceName = service.serviceName;
    desc.driverType = service.TrafficBinding().value_or(DriverType::PROLOC);
    if (desc.driverType == DriverType::DDS) {
        desc.network = service.dds->network.first;
    }
    return desc;
}

}  // namespace vorx::vcc::app
