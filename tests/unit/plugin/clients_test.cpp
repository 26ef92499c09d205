// What the event, method, field and E2E reports carry, as the daemon receives them, and which
// entities are not reported at all.
#include "orx/maintaind/service.h"
#include "orxmaintaind/orx_maintaind_field_client.h"
#include "orxmaintaind/orx_maintaind_method_client.h"
#include "plugin_fixture.h"
#include "vorx/vcc/api/types/e2e_config.h"

namespace orx::test::plugin {
namespace {

namespace record = orx::maintaind;
using orx::orxcm::orxmaintaind::OrxMaintaindFieldClient;
using orx::orxcm::orxmaintaind::OrxMaintaindMethodClient;
using vorx::vcc::api::types::E2EXf_DataIDMode;
using vorx::vcc::api::types::E2EXf_Profile;
using vorx::vcc::api::types::EventE2EConfigInfo;
using vorx::vcc::api::types::FieldInfo;
using vorx::vcc::api::types::MethodInfo;

AppRegisterInfo RestOfKind(ReportKind kind) {
    AppRegisterInfo rest;
    rest.kind = static_cast<uint8_t>(kind);
    return rest;
}

void Describe(MethodInfo& info, uint16_t serviceId, const std::string& instance,
              const std::string& name) {
    info.SetServiceId(serviceId);
    info.SetInstanceId(instance);
    info.SetEntityId(20);
    info.SetServiceName("/test/Radar");
    info.SetServiceLevelName("RadarService");
    info.SetMethodName(name);
    info.SetInputArgNames({"range", "mode"});
    info.SetOutputArgNames({"objects"});
    info.SetErrorDomains({{"RadarErrors", 0x8000000000000001ULL}});
    info.SetRequestSerializeConfig({0, "request-text"});
    info.SetReplySerializeConfig({0, "reply-text"});
    info.SetRequestSerializeType(vorx::vcc::api::types::SerializeType::RAW);
    info.SetReplySerializeType(vorx::vcc::api::types::SerializeType::CDR);
    info.SetRole(vorx::vcc::api::types::EntityRole::CLIENT);
}

std::shared_ptr<vorx::driver::dds::DDSMethodInfo> DdsMethod() {
    auto info = std::make_shared<vorx::driver::dds::DDSMethodInfo>();
    Describe(*info, 0x20, "3", "Calibrate");
    info->SetRequestTopicName("CalibrateRequest");
    info->SetInstanceShortName("radar_front");
    info->SetTransportQos({0, 2, 7});
    info->SetDriver(DriverType::DDS);
    return info;
}

std::shared_ptr<vorx::driver::someip::SomeipMethodInfo> SomeipMethod() {
    auto info = std::make_shared<vorx::driver::someip::SomeipMethodInfo>();
    // Other shared values than the DDS binding's: the record keeps the DDS ones.
    Describe(*info, 0x21, "4", "CalibrateSomeip");
    info->SetMethodId(0x0101);
    info->SetInstanceShortName("radar_front_someip");
    info->SetDriver(DriverType::SOMEIP);
    return info;
}

std::shared_ptr<vorx::driver::dds::DDSMethodInfo> Accessor(const std::string& name) {
    auto info = std::make_shared<vorx::driver::dds::DDSMethodInfo>();
    info->SetServiceId(0x30);
    info->SetMethodName(name);
    info->SetRequestTopicName(name + "Request");
    return info;
}

std::shared_ptr<FieldInfo> Field(uint16_t serviceId, const std::string& instance,
                                 const std::string& shortName) {
    auto field = std::make_shared<FieldInfo>();
    field->SetServiceId(serviceId);
    field->SetInstanceId(instance);
    field->SetEntityId(40);
    field->SetServiceName("/test/Seat");
    field->SetInstanceShortName(shortName);
    return field;
}

TEST_F(PluginTest, AnEventOnBothBindingsIsOneReportAndItsWithdrawalDiffersOnlyInIsOnline) {
    StartDaemon();
    StartClient();
    // Only the DDS and SOME/IP bindings are reported.
    const EventMap both{{DriverType::PROLOC, DdsEvent(0x10, 1, "Speed")},
                        {DriverType::DDS, DdsEvent(0x10, 1, "Speed")},
                        {DriverType::SOMEIP, SomeipEvent(0x10, 1, "Speed", 0x8001)}};
    Core()->RegisterEventInfoToMaintaind(both, true);
    // A field's notifier is reported with its field, not as an event.
    auto notifier = DdsEvent(0x10, 2, "Notifier");
    notifier->SetIsField(true);
    Core()->RegisterEventInfoToMaintaind({{DriverType::DDS, notifier}}, true);
    Core()->UnregisterEventInfoToMaintaind({{1, both}}, true);
    Settle();

    const auto reports = Received();
    ASSERT_EQ(reports.size(), 2U);
    const AppRegisterInfo& online = reports[0];
    EXPECT_TRUE(online.isPub);
    EXPECT_EQ(Rest(online), RestOfKind(ReportKind::EVENT));
    const record::EventRegisterInfo& event = online.eventRegisterInfo;
    EXPECT_EQ(event.eventName, "Speed");
    EXPECT_EQ(event.appName, kAppName);
    EXPECT_EQ(event.pid, static_cast<int32_t>(getpid()));
    EXPECT_TRUE(event.isOnline);
    ASSERT_EQ(event.eventInfos.size(), 2U);
    EXPECT_EQ(event.eventInfos.at(record::DriverType::DDS).ddsEventInfo.topicName, "SpeedTopic");
    EXPECT_EQ(event.eventInfos.at(record::DriverType::SOMEIP).someipEventInfo.eventId, 0x8001);
    auto withdrawn = reports[1];
    EXPECT_FALSE(withdrawn.eventRegisterInfo.isOnline);
    withdrawn.eventRegisterInfo.isOnline = true;
    EXPECT_EQ(withdrawn, online);
}

TEST_F(PluginTest, AMethodOnBothBindingsTakesItsSharedMembersFromDds) {
    OrxMaintaindMethodClient client;
    client.SetApplicationName(kAppName);
    const auto info = client.ChangeToMethodRegisterInfo(
        {{DriverType::DDS, DdsMethod()}, {DriverType::SOMEIP, SomeipMethod()}}, true);
    EXPECT_EQ(info->methodName, "RadarService/Calibrate");
    EXPECT_EQ(info->serviceId, 0x20);
    EXPECT_EQ(info->instanceId, 3);
    EXPECT_EQ(info->appName, kAppName);
    EXPECT_EQ(info->pid, static_cast<int32_t>(getpid()));
    EXPECT_EQ(info->inputParamNames, (std::vector<std::string>{"range", "mode"}));
    EXPECT_EQ(info->outputParamNames, (std::vector<std::string>{"objects"}));
    ASSERT_EQ(info->errorDomains.size(), 1U);
    EXPECT_EQ(info->errorDomains[0].domainId, 0x8000000000000001ULL);
    // Serialization kinds are copied only when they are 0 or 1.
    EXPECT_EQ(info->requestSerializeConfig.serializeType, 0U);
    EXPECT_EQ(info->replySerializeConfig.serializeType, 1U);
    EXPECT_EQ(info->replySerializeConfig.serializeConfigText, "reply-text");
    EXPECT_EQ(info->role, 1);
    EXPECT_EQ(info->hostDomainName, "GEA");
    ASSERT_EQ(info->methodInfos.size(), 2U);
    const auto& dds = info->methodInfos.at(record::DriverType::DDS).ddsMethodInfo;
    EXPECT_EQ(dds.methodName, "/Calibrate");  // from the last "/" on
    EXPECT_EQ(dds.requestTopicName, "CalibrateRequest");
    EXPECT_EQ(dds.transportQos, (std::vector<record::TransportQos>{record::TransportQos::INVALID,
                                                                   record::TransportQos::TCP,
                                                                   record::TransportQos::INVALID}));
    const auto& someip = info->methodInfos.at(record::DriverType::SOMEIP).someipMethodInfo;
    EXPECT_EQ(someip.methodId, 0x0101);
    EXPECT_EQ(someip.instanceShortName, "radar_front_someip");

    // Without a service-level name there is no "/" and so no DDS method name; a fire-and-forget
    // method has no reply settings.
    auto method = DdsMethod();
    method->SetIsFireAndForget(true);
    method->SetServiceLevelName("");
    const auto oneWay = client.ChangeToMethodRegisterInfo({{DriverType::DDS, method}}, false);
    EXPECT_TRUE(oneWay->isFireAndForget);
    EXPECT_EQ(oneWay->replySerializeConfig.serializeConfigText, "");
    EXPECT_EQ(oneWay->methodName, "Calibrate");
    EXPECT_EQ(oneWay->methodInfos.at(record::DriverType::DDS).ddsMethodInfo.methodName, "");
}

TEST_F(PluginTest, MethodsAreReportedUnlessTheyBelongToAFieldOrTheDaemon) {
    StartDaemon();
    StartClient();
    auto getter = DdsMethod();
    getter->SetIsFieldMethod(1);
    Core()->RegisterMethodInfoToMaintaind({{DriverType::DDS, getter}}, true);
    auto daemonsOwn = DdsMethod();
    daemonsOwn->SetServiceId(orx::maintaind::service::kAppServiceId);
    Core()->RegisterMethodInfoToMaintaind({{DriverType::DDS, daemonsOwn}}, true);
    const BindingMap<MethodInfo> both{{DriverType::DDS, DdsMethod()},
                                      {DriverType::SOMEIP, SomeipMethod()}};
    Core()->RegisterMethodInfoToMaintaind(both, false);
    Core()->UnregisterMethodInfoToMaintaind({{20, both}}, false);
    Settle();

    const auto reports = Received();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_FALSE(reports[0].isPub);
    EXPECT_EQ(Rest(reports[0]), RestOfKind(ReportKind::METHOD));
    OrxMaintaindMethodClient converter;
    converter.SetApplicationName(kAppName);
    auto expected = *converter.ChangeToMethodRegisterInfo(both, false);
    expected.isOnline = true;
    EXPECT_EQ(reports[0].methodRegisterInfo, expected);
    expected.isOnline = false;
    EXPECT_EQ(reports[1].methodRegisterInfo, expected);
}

TEST_F(PluginTest, EachBindingOfAFieldSetsTheSharedMembersFromItsOwnDescription) {
    OrxMaintaindFieldClient client;
    client.SetApplicationName(kAppName);
    auto dds = Field(0x30, "2", "seat_dds");
    dds->SetHasSet(true);
    dds->SetSetInfo(Accessor("SetPosition"));
    auto someip = Field(0x31, "3", "seat_someip");
    someip->SetFieldName("SeatPosition");
    someip->SetHasNotify(true);
    someip->SetNotifyInfo(SomeipEvent(0x31, 41, "PositionChanged", 0x8002, "3"));
    const auto info = client.ChangeToFieldRegisterInfo(
        {{DriverType::DDS, dds}, {DriverType::SOMEIP, someip}}, true, true);

    // SOME/IP comes last and decides what all bindings share.
    EXPECT_EQ(info->fieldName, "SeatPosition");
    EXPECT_EQ(info->serviceId, 0x31);
    EXPECT_EQ(info->instanceId, 3);
    EXPECT_TRUE(info->hasNotifier);
    EXPECT_FALSE(info->hasSetter);
    EXPECT_EQ(info->appName, kAppName);
    EXPECT_TRUE(info->isOnline);
    EXPECT_EQ(info->bindingNames, (std::map<record::DriverType, std::string>{
                                      {record::DriverType::DDS, "seat_dds"},
                                      {record::DriverType::SOMEIP, "seat_someip"}}));
    const auto& ddsBinding = info->fieldInfos.at(record::DriverType::DDS);
    EXPECT_TRUE(ddsBinding.hasSetter);
    EXPECT_EQ(ddsBinding.setterInfo.ddsMethodInfo.requestTopicName, "SetPositionRequest");
    EXPECT_EQ(info->fieldInfos.at(record::DriverType::SOMEIP).notifierInfo.someipEventInfo.eventId,
              0x8002);

    // Alone, the DDS binding is named after its setter.
    EXPECT_EQ(client.ChangeToFieldRegisterInfo({{DriverType::DDS, dds}}, true, true)->fieldName,
              "SetPosition");
    // With nothing to be named after, the caller's name and id stay.
    std::string name = "untouched";
    uint16_t id = 7;
    client.ParseToGetFieldInfo(name, id, {{DriverType::DDS, Field(0x30, "2", "s")}});
    EXPECT_EQ(name, "untouched");
    EXPECT_EQ(id, 7);
}

TEST_F(PluginTest, FieldsAreReportedUnlessTheyBelongToTheDaemon) {
    StartDaemon();
    StartClient();
    Core()->RegisterFieldInfoToMaintaind(
        {{DriverType::DDS, Field(orx::maintaind::service::kToolsServiceId, "1", "own")}}, true);
    const BindingMap<FieldInfo> field{{DriverType::DDS, Field(0x30, "2", "seat")}};
    Core()->RegisterFieldInfoToMaintaind(field, true);
    Core()->UnregisterFieldInfoToMaintaind({{40, field}}, true);
    Settle();

    const auto reports = Received();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_TRUE(reports[0].isPub);
    EXPECT_EQ(Rest(reports[0]), RestOfKind(ReportKind::FIELD));
    OrxMaintaindFieldClient converter;
    converter.SetApplicationName(kAppName);
    EXPECT_EQ(reports[0].fieldRegisterInfo,
              *converter.ChangeToFieldRegisterInfo(field, true, true));
    EXPECT_EQ(reports[1].fieldRegisterInfo,
              *converter.ChangeToFieldRegisterInfo(field, true, false));
}

EventE2EConfigInfo E2EConfig(const std::string& instanceId, uint32_t entityId, bool isPub,
                             E2EXf_Profile profile, E2EXf_DataIDMode mode) {
    EventE2EConfigInfo config;
    config.serviceId = 0x50;
    config.instanceId = instanceId;
    config.entityId = entityId;
    config.eventName = "Event" + std::to_string(entityId);
    config.driverType = DriverType::SOMEIP;
    config.isPub = isPub;
    config.e2eConfig = std::make_shared<vorx::vcc::api::types::E2EXfConfig>();
    config.e2eConfig->profile = profile;
    config.e2eConfig->dataIdMode = mode;
    config.e2eConfig->dataLength = 64;
    return config;
}

TEST_F(PluginTest, E2ESettingsGoInOneReportSplitBySideWithoutBadInstanceIds) {
    StartDaemon();
    StartClient();
    // An empty list is not reported at all: the daemon could not tell it from an offline node.
    Core()->RegisterE2EInfoToMaintaind({});
    Core()->RegisterE2EInfoToMaintaind({
        E2EConfig("1", 0x10001, true, E2EXf_Profile::PROFILE_4M,
                  E2EXf_DataIDMode::E2E_DATAID_NIBBLE),
        E2EConfig("abc", 2, true, E2EXf_Profile::PROFILE_04, E2EXf_DataIDMode::E2E_DATAID_BOTH),
        E2EConfig("2", 4, false, E2EXf_Profile::PROFILE_01, E2EXf_DataIDMode::E2E_DATAID_ALT),
    });
    Settle();
    EXPECT_EQ(
        Log().Count(LogLevel::kWarn, "[OrxMaintaindE2EClient][Invalid instanceId][instanceId=abc]"),
        1U);

    const auto reports = Received();
    ASSERT_EQ(reports.size(), 1U);
    AppRegisterInfo rest = reports[0];
    rest.nodeCommonRegisterInfo.appE2EConfig = {};
    AppRegisterInfo expected = RestOfKind(ReportKind::E2E_AND_NODE);
    expected.nodeCommonRegisterInfo.pid = static_cast<int32_t>(getpid());
    expected.nodeCommonRegisterInfo.appName = kAppName;
    EXPECT_EQ(rest, expected);
    const auto& e2e = reports[0].nodeCommonRegisterInfo.appE2EConfig;
    ASSERT_EQ(e2e.pubE2EConfigs.size(), 1U);
    ASSERT_EQ(e2e.subE2EConfigs.size(), 1U);
    const auto& pub = e2e.pubE2EConfigs[0];
    EXPECT_EQ(pub.serviceId, 0x50);
    EXPECT_EQ(pub.instanceId, 1);
    EXPECT_EQ(pub.eventId, 0x0001);  // 16 bits of the entity id
    EXPECT_EQ(pub.nodePid, static_cast<uint16_t>(getpid()));
    EXPECT_EQ(pub.eventName, "Event65537");
    EXPECT_EQ(pub.driverType, record::DriverType::SOMEIP);
    EXPECT_EQ(pub.e2eConfig.profile, record::E2EProfile::PROFILE_4M);
    EXPECT_EQ(pub.e2eConfig.dataIdMode, record::E2EDataIDMode::NIBBLE);
    EXPECT_EQ(pub.e2eConfig.dataLength, 64U);
    const auto& sub = e2e.subE2EConfigs[0];
    EXPECT_EQ(sub.instanceId, 2);
    EXPECT_FALSE(sub.isPub);
    // Values the records do not carry stay at their defaults.
    EXPECT_EQ(sub.e2eConfig.profile, record::E2EProfile::NONE);
    EXPECT_EQ(sub.e2eConfig.dataIdMode, record::E2EDataIDMode::BOTH);
}

}  // namespace
}  // namespace orx::test::plugin
