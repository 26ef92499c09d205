#include "vorx/vcc/app/descriptions.h"

#include <gtest/gtest.h>

#include "test_deployments.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"

namespace {

using orx::test::Document;
using orx::test::FullService;
using vorx::vcc::api::types::DriverType;
using vorx::vcc::api::types::EntityRole;
using vorx::vcc::app::ServiceDeployment;
namespace app = vorx::vcc::app;
namespace dds = vorx::driver::dds;
namespace someip = vorx::driver::someip;

ServiceDeployment Deployed(const nlohmann::json& service) {
    auto result = app::ParseDeployments(Document({service}), "orx.json");
    EXPECT_TRUE(result.errors.empty());
    return result.services.at(0);
}

TEST(DescriptionsTest, EventIsDescribedOnEveryReportedBinding) {
    const ServiceDeployment service = Deployed(FullService());
    const auto infos = app::DescribeEvent(service, service.events[0]);

    ASSERT_EQ(infos.size(), 2U);
    const auto ddsInfo = std::dynamic_pointer_cast<dds::DDSEventInfo>(infos.at(DriverType::DDS));
    ASSERT_TRUE(ddsInfo);
    EXPECT_EQ(ddsInfo->GetServiceId(), 4660);
    EXPECT_EQ(ddsInfo->GetEntityId(), 11U);
    EXPECT_EQ(ddsInfo->GetServiceName(), "/test/SensorService");
    EXPECT_EQ(ddsInfo->GetInstanceName(), "Sensor/Front");
    EXPECT_EQ(ddsInfo->GetShortName(), "Objs");
    EXPECT_EQ(ddsInfo->GetInstanceShortName(), "Front");
    EXPECT_EQ(ddsInfo->GetRole(), EntityRole::SERVER);
    EXPECT_EQ(ddsInfo->GetDriver(), DriverType::DDS);
    EXPECT_EQ(ddsInfo->GetInstanceId(), "7");
    EXPECT_EQ(ddsInfo->GetNetwork(), std::make_pair(std::string("127.0.0.1"), true));
    EXPECT_EQ(ddsInfo->GetResourceAttr().at("zone"), "front");
    EXPECT_EQ(ddsInfo->GetEventName(), "Objects");
    EXPECT_EQ(ddsInfo->GetDataTypeName(), "/test/Objects");
    EXPECT_EQ(ddsInfo->GetSerializeConfig().serializeConfigText, "packed");
    EXPECT_FALSE(ddsInfo->GetIsField());
    EXPECT_TRUE(ddsInfo->GetIsLatencyEnabled());
    ASSERT_TRUE(ddsInfo->GetE2EConfig());
    EXPECT_EQ(ddsInfo->GetE2EConfig()->crcOffset, 16U);
    EXPECT_EQ(ddsInfo->GetDomainId(), 3);
    EXPECT_EQ(ddsInfo->GetTopicName(), "SensorObjects");
    EXPECT_EQ(ddsInfo->GetHistoryDepth(), 4U);
    EXPECT_EQ(ddsInfo->GetQueueSize(), 5U);
    EXPECT_EQ(ddsInfo->GetDurability(), dds::DurabilityKind::TRANSIENT_LOCAL);
    EXPECT_EQ(ddsInfo->GetReliability(), dds::ReliabilityKind::BEST_EFFORT);
    EXPECT_EQ(ddsInfo->GetTransportQos(), (dds::TransportQosSet{2})) << "the event's own set wins";
    EXPECT_EQ(ddsInfo->GetFragSize(), 1400U);
    EXPECT_EQ(ddsInfo->GetListenQueueSize(), 9U);
    EXPECT_EQ(ddsInfo->GetDdsMode(), 0);
    EXPECT_EQ(ddsInfo->GetPubDiscoveryFilter().filterText, "[2]");
    EXPECT_EQ(ddsInfo->GetParticipantQos().announcePeriodMs, 200U);

    const auto someipInfo =
        std::dynamic_pointer_cast<someip::SomeipEventInfo>(infos.at(DriverType::SOMEIP));
    ASSERT_TRUE(someipInfo);
    EXPECT_EQ(someipInfo->GetDriver(), DriverType::SOMEIP);
    EXPECT_EQ(someipInfo->GetNetwork(), std::make_pair(std::string("10.0.0.1"), false));
    EXPECT_TRUE(someipInfo->GetResourceAttr().empty());
    EXPECT_EQ(someipInfo->GetEventId(), 32769);
    EXPECT_EQ(someipInfo->GetEventGroupIds(), (std::vector<uint16_t>{1, 2}));
    EXPECT_EQ(someipInfo->GetMajorVersion(), 2U);
    EXPECT_EQ(someipInfo->GetMinorVersion(), 5);
    EXPECT_EQ(someipInfo->GetUdpTtl(), 5U);
    EXPECT_EQ(someipInfo->GetPort(), 30509);
    EXPECT_FALSE(someipInfo->GetIsReliable()) << "the event's own setting wins";
    EXPECT_EQ(someipInfo->GetTransportQos(), (std::set<uint8_t>{2})) << "the service's set";
    EXPECT_EQ(someipInfo->GetSerializationConfig().children.at(0).dataId, 3);
    EXPECT_EQ(someipInfo->GetPduConfig().pduName, "ObjectsPdu");
}

TEST(DescriptionsTest, MethodCarriesArgumentsErrorDomainsAndBindingSettings) {
    const ServiceDeployment service = Deployed(FullService("required"));
    const auto infos = app::DescribeMethod(service, service.methods[0]);

    const auto ddsInfo = std::dynamic_pointer_cast<dds::DDSMethodInfo>(infos.at(DriverType::DDS));
    ASSERT_TRUE(ddsInfo);
    EXPECT_EQ(ddsInfo->GetRole(), EntityRole::CLIENT);
    EXPECT_EQ(ddsInfo->GetInstanceId(), "7");
    EXPECT_EQ(ddsInfo->GetMethodName(), "Reset");
    EXPECT_EQ(ddsInfo->GetServiceLevelName(), "");
    EXPECT_EQ(ddsInfo->GetInputArgNames(), (std::vector<std::string>{"level", "reason"}));
    EXPECT_EQ(ddsInfo->GetOutputArgNames(), (std::vector<std::string>{"ok"}));
    ASSERT_EQ(ddsInfo->GetErrorDomains().size(), 1U);
    EXPECT_EQ(ddsInfo->GetErrorDomains()[0].name, "SensorErrors");
    EXPECT_EQ(ddsInfo->GetRequestSerializeType(), vorx::vcc::api::types::SerializeType::CDR);
    EXPECT_EQ(ddsInfo->GetReplySerializeConfig().serializeConfigText, "rep");
    EXPECT_EQ(ddsInfo->GetIsFieldMethod(), 0);
    EXPECT_FALSE(ddsInfo->GetIsFireAndForget());
    EXPECT_EQ(ddsInfo->GetRequestTopicName(), "ResetReq");
    EXPECT_EQ(ddsInfo->GetReplyDataTypeName(), "Out");
    EXPECT_EQ(ddsInfo->GetReplyQueueSize(), 3U);
    EXPECT_EQ(ddsInfo->GetReplyHistoryDepth(), 5U);
    EXPECT_EQ(ddsInfo->GetRequestDurability(), 1);
    EXPECT_EQ(ddsInfo->GetRequestHistory(), 1);
    EXPECT_EQ(ddsInfo->GetTransportQos(), (dds::TransportQosSet{1, 3}));
    EXPECT_EQ(ddsInfo->GetDiscoveryFilter().filterClass, 6);

    const auto someipInfo =
        std::dynamic_pointer_cast<someip::SomeipMethodInfo>(infos.at(DriverType::SOMEIP));
    ASSERT_TRUE(someipInfo);
    EXPECT_EQ(someipInfo->GetMethodId(), 3);
    EXPECT_EQ(someipInfo->GetMajorVersion(), 2U);
    EXPECT_TRUE(someipInfo->GetIsReliable());
    EXPECT_EQ(someipInfo->GetRequestSerializationConfig().name, "ResetIn");
}

TEST(DescriptionsTest, FieldPartsAreMarkedAsFieldEntities) {
    const ServiceDeployment service = Deployed(FullService());
    const auto infos = app::DescribeField(service, service.fields[0]);

    const auto& field = infos.at(DriverType::DDS);
    EXPECT_EQ(field->GetFieldName(), "Gain");
    EXPECT_EQ(field->GetEntityId(), 13U) << "named after its notifier";
    EXPECT_TRUE(field->GetHasNotify() && field->GetHasGet() && field->GetHasSet());
    const auto notifier = std::dynamic_pointer_cast<dds::DDSEventInfo>(field->GetNotifyInfo());
    ASSERT_TRUE(notifier);
    EXPECT_TRUE(notifier->GetIsField());
    EXPECT_EQ(notifier->GetTopicName(), "Sensor_Gain");
    EXPECT_EQ(field->GetGetInfo()->GetIsFieldMethod(), 1);
    EXPECT_EQ(field->GetGetInfo()->GetServiceLevelName(), "Gain");
    EXPECT_EQ(field->GetSetInfo()->GetMethodName(), "Set");
    const auto someipSetter = std::dynamic_pointer_cast<someip::SomeipMethodInfo>(
        infos.at(DriverType::SOMEIP)->GetSetInfo());
    ASSERT_TRUE(someipSetter);
    EXPECT_EQ(someipSetter->GetMethodId(), 5);
}

TEST(DescriptionsTest, E2EAndServiceDescriptions) {
    ServiceDeployment service = Deployed(FullService());
    const auto e2e = app::DescribeE2E(service, service.events[0]);
    ASSERT_EQ(e2e.size(), 2U);
    EXPECT_EQ(e2e[0].driverType, DriverType::DDS);
    EXPECT_EQ(e2e[1].driverType, DriverType::SOMEIP);
    EXPECT_EQ(e2e[0].serviceId, 4660);
    EXPECT_EQ(e2e[0].instanceId, "7");
    EXPECT_EQ(e2e[0].entityId, 11U);
    EXPECT_EQ(e2e[0].eventName, "Objects");
    EXPECT_TRUE(e2e[0].isPub);
    EXPECT_EQ(e2e[0].e2eConfig, service.events[0].e2e);
    EXPECT_TRUE(app::DescribeE2E(service, service.fields[0].notifier.value()).empty());

    const auto desc = app::DescribeService(service);
    EXPECT_EQ(desc.serviceId, 4660);
    EXPECT_EQ(desc.instanceId, "7");
    EXPECT_EQ(desc.serviceName, "/test/SensorService");
    EXPECT_EQ(desc.driverType, DriverType::DDS);
    EXPECT_EQ(desc.network, "127.0.0.1");

    // Process-local only: traffic, but nothing that maintenance reports.
    auto local = FullService();
    local["bindings"] = {{"proloc", nlohmann::json::object()}};
    service = Deployed(local);
    EXPECT_TRUE(app::DescribeEvent(service, service.events[0]).empty());
    EXPECT_TRUE(app::DescribeMethod(service, service.methods[0]).empty());
    EXPECT_TRUE(app::DescribeField(service, service.fields[0]).empty());
    EXPECT_EQ(app::DescribeService(service).driverType, DriverType::PROLOC);
    const auto traffic = app::TrafficMethodInfo(service, service.methods[0]);
    EXPECT_EQ(traffic->GetDriver(), DriverType::PROLOC);
    EXPECT_EQ(traffic->GetEntityId(), 12U);
}

}  // namespace
