// The entity descriptions the core builds from a deployment: what the maintenance plug-in reports
// and the drivers use. FullService sets every key, so a value mapped to the wrong member shows.
#include "vorx/vcc/app/descriptions.h"

#include <gtest/gtest.h>

#include <tuple>

#include "test_deployments.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"

namespace {

using orx::test::FullService;
using vorx::vcc::api::types::DriverType;
using vorx::vcc::api::types::EntityRole;
using vorx::vcc::app::ServiceDeployment;
namespace app = vorx::vcc::app;
namespace dds = vorx::driver::dds;
namespace someip = vorx::driver::someip;
using Names = std::tuple<std::string, std::string, std::string, std::string>;

ServiceDeployment Deployed(const nlohmann::json& service) {
    auto result = app::ParseDeployments(orx::test::Document({service}), "orx.json");
    EXPECT_TRUE(result.errors.empty());
    return result.services.at(0);
}

template <class Info, class Map>
std::shared_ptr<Info> On(const Map& infos, DriverType binding) {
    auto info = std::dynamic_pointer_cast<Info>(infos.at(binding));
    EXPECT_TRUE(info) << static_cast<int>(binding);
    return info;
}

TEST(DescriptionsTest, EventIsDescribedOnEveryReportedBinding) {
    const ServiceDeployment service = Deployed(FullService());
    const auto infos = app::DescribeEvent(service, service.events[0]);
    ASSERT_EQ(infos.size(), 2U);
    const auto d = On<dds::DDSEventInfo>(infos, DriverType::DDS);
    ASSERT_TRUE(d);
    EXPECT_EQ(std::make_tuple(d->GetServiceId(), d->GetEntityId(), d->GetInstanceId()),
              std::make_tuple(uint16_t{4660}, 11U, std::string("7")));
    EXPECT_EQ(Names(d->GetServiceName(), d->GetInstanceName(), d->GetShortName(),
                    d->GetInstanceShortName()),
              Names("/test/SensorService", "Sensor/Front", "Objs", "Front"));
    EXPECT_EQ(Names(d->GetEventName(), d->GetDataTypeName(), d->GetTopicName(),
                    d->GetSerializeConfig().serializeConfigText),
              Names("Objects", "/test/Objects", "SensorObjects", "packed"));
    EXPECT_EQ(d->GetRole(), EntityRole::SERVER);
    EXPECT_EQ(d->GetDriver(), DriverType::DDS);
    EXPECT_EQ(d->GetNetwork(), std::make_pair(std::string("127.0.0.1"), true));
    EXPECT_EQ(d->GetResourceAttr().at("zone"), "front");
    EXPECT_FALSE(d->GetIsField());
    EXPECT_TRUE(d->GetIsLatencyEnabled());
    ASSERT_TRUE(d->GetE2EConfig());
    EXPECT_EQ(d->GetE2EConfig()->crcOffset, 16U);
    EXPECT_EQ(std::make_tuple(d->GetDomainId(), d->GetHistoryDepth(), d->GetQueueSize(),
                              d->GetFragSize(), d->GetListenQueueSize(), d->GetDdsMode()),
              std::make_tuple(uint32_t{3}, 4U, 5U, 1400U, 9U, uint8_t{0}));
    EXPECT_EQ(d->GetDurability(), dds::DurabilityKind::TRANSIENT_LOCAL);
    EXPECT_EQ(d->GetReliability(), dds::ReliabilityKind::BEST_EFFORT);
    EXPECT_EQ(d->GetTransportQos(), (dds::TransportQosSet{2})) << "the event's own set wins";
    EXPECT_EQ(d->GetPubDiscoveryFilter().filterText, "[2]");
    EXPECT_EQ(d->GetParticipantQos().announcePeriodMs, 200U);

    const auto s = On<someip::SomeipEventInfo>(infos, DriverType::SOMEIP);
    ASSERT_TRUE(s);
    EXPECT_EQ(s->GetDriver(), DriverType::SOMEIP);
    EXPECT_EQ(s->GetNetwork(), std::make_pair(std::string("10.0.0.1"), false));
    EXPECT_TRUE(s->GetResourceAttr().empty());
    EXPECT_EQ(std::make_tuple(s->GetEventId(), s->GetMajorVersion(), s->GetMinorVersion(),
                              s->GetUdpTtl(), s->GetPort()),
              std::make_tuple(uint16_t{32769}, 2U, uint32_t{5}, 5U, uint16_t{30509}));
    EXPECT_EQ(s->GetEventGroupIds(), (std::vector<uint16_t>{1, 2}));
    EXPECT_FALSE(s->GetIsReliable()) << "the event's own setting wins";
    EXPECT_EQ(s->GetTransportQos(), (std::set<uint8_t>{2})) << "the service's set";
    EXPECT_EQ(s->GetSerializationConfig().children.at(0).dataId, 3);
    EXPECT_EQ(s->GetPduConfig().pduName, "ObjectsPdu");
}

TEST(DescriptionsTest, MethodCarriesArgumentsErrorDomainsAndBindingSettings) {
    const ServiceDeployment service = Deployed(FullService("required"));
    const auto infos = app::DescribeMethod(service, service.methods[0]);
    const auto d = On<dds::DDSMethodInfo>(infos, DriverType::DDS);
    ASSERT_TRUE(d);
    EXPECT_EQ(d->GetRole(), EntityRole::CLIENT);
    EXPECT_EQ(Names(d->GetInstanceId(), d->GetMethodName(), d->GetServiceLevelName(),
                    d->GetReplySerializeConfig().serializeConfigText),
              Names("7", "Reset", "", "rep"));
    EXPECT_EQ(d->GetInputArgNames(), (std::vector<std::string>{"level", "reason"}));
    EXPECT_EQ(d->GetOutputArgNames(), (std::vector<std::string>{"ok"}));
    ASSERT_EQ(d->GetErrorDomains().size(), 1U);
    EXPECT_EQ(d->GetErrorDomains()[0].name, "SensorErrors");
    EXPECT_EQ(d->GetRequestSerializeType(), vorx::vcc::api::types::SerializeType::CDR);
    EXPECT_EQ(d->GetIsFieldMethod(), 0);
    EXPECT_FALSE(d->GetIsFireAndForget());
    EXPECT_EQ(std::make_pair(d->GetRequestTopicName(), d->GetReplyDataTypeName()),
              std::make_pair(std::string("ResetReq"), std::string("Out")));
    EXPECT_EQ(std::make_tuple(d->GetReplyQueueSize(), d->GetReplyHistoryDepth(),
                              d->GetRequestDurability(), d->GetRequestHistory()),
              std::make_tuple(3U, 5U, uint8_t{1}, uint8_t{1}));
    EXPECT_EQ(d->GetTransportQos(), (dds::TransportQosSet{1, 3}));
    EXPECT_EQ(d->GetDiscoveryFilter().filterClass, 6);

    const auto s = On<someip::SomeipMethodInfo>(infos, DriverType::SOMEIP);
    ASSERT_TRUE(s);
    EXPECT_EQ(std::make_pair(s->GetMethodId(), s->GetMajorVersion()),
              std::make_pair(uint16_t{3}, 2U));
    EXPECT_TRUE(s->GetIsReliable());
    EXPECT_EQ(s->GetRequestSerializationConfig().name, "ResetIn");
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
    const auto setter = std::dynamic_pointer_cast<someip::SomeipMethodInfo>(
        infos.at(DriverType::SOMEIP)->GetSetInfo());
    ASSERT_TRUE(setter);
    EXPECT_EQ(setter->GetMethodId(), 5);
}

// The E2E report's service, instance and profile are covered end to end by
// PluginFlowTest.AppStartedBeforeTheMaintenanceServiceIsDeliveredCompletely; a wrong service
// description fails every provider and consumer test.
TEST(DescriptionsTest, E2EDescriptionsAndProcessLocalServices) {
    ServiceDeployment service = Deployed(FullService());
    const auto e2e = app::DescribeE2E(service, service.events[0]);
    ASSERT_EQ(e2e.size(), 2U);
    EXPECT_EQ(std::make_pair(e2e[0].driverType, e2e[1].driverType),
              std::make_pair(DriverType::DDS, DriverType::SOMEIP));
    EXPECT_EQ(std::make_pair(e2e[0].entityId, e2e[0].eventName),
              std::make_pair(11U, std::string("Objects")));
    EXPECT_TRUE(e2e[0].isPub);
    EXPECT_EQ(e2e[0].e2eConfig, service.events[0].e2e);
    EXPECT_TRUE(app::DescribeE2E(service, service.fields[0].notifier.value()).empty());

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
