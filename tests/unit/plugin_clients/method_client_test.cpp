// The method client: shared members from the first binding, one sub-record per binding.
#include "orx/maintaind/service.h"
#include "orxmaintaind/orx_maintaind_method_client.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

using orx::orxcm::orxmaintaind::OrxMaintaindMethodClient;
using vorx::vcc::api::types::EntityRole;
using vorx::vcc::api::types::SerializeType;
namespace record = orx::maintaind;

void Describe(vorx::vcc::api::types::MethodInfo& info, uint16_t serviceId,
              const std::string& instance, const std::string& name) {
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
    info.SetRequestSerializeType(SerializeType::RAW);
    info.SetReplySerializeType(SerializeType::CDR);
    info.SetRole(EntityRole::CLIENT);
}

std::shared_ptr<vorx::driver::dds::DDSMethodInfo> DdsMethod() {
    auto info = std::make_shared<vorx::driver::dds::DDSMethodInfo>();
    Describe(*info, 0x20, "3", "Calibrate");
    info->SetRequestTopicName("CalibrateRequest");
    info->SetReplyTopicName("CalibrateReply");
    info->SetInstanceShortName("radar_front");
    info->SetTransportQos({0, 2, 7});
    info->SetRequestDurability(1);
    info->SetReplyHistory(5);  // not a valid switch value: left at its default
    info->SetDriver(DriverType::DDS);
    return info;
}

std::shared_ptr<vorx::driver::someip::SomeipMethodInfo> SomeipMethod() {
    auto info = std::make_shared<vorx::driver::someip::SomeipMethodInfo>();
    // Different shared values: the record must keep the DDS binding's.
    Describe(*info, 0x21, "4", "CalibrateSomeip");
    info->SetMethodId(0x0101);
    info->SetInstanceShortName("radar_front_someip");
    info->SetTransportQos({1, 3});
    vorx::serialize::SerializationNode node;
    node.name = "Calibrate";
    info->SetRequestSerializationConfig(node);
    info->SetDriver(DriverType::SOMEIP);
    return info;
}

class MethodClientTest : public PluginFixture {};

TEST_F(MethodClientTest, AMethodOnBothBindingsTakesItsSharedMembersFromDds) {
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
    EXPECT_EQ(info->errorDomains[0].domainName, "RadarErrors");
    EXPECT_EQ(info->errorDomains[0].domainId, 0x8000000000000001ULL);
    // Serialization kinds are copied only when they are 0 or 1.
    EXPECT_EQ(info->requestSerializeConfig.serializeType, 0U);
    EXPECT_EQ(info->replySerializeConfig.serializeType, 1U);
    EXPECT_EQ(info->replySerializeConfig.serializeConfigText, "reply-text");
    EXPECT_EQ(info->requestSerializeConfig.serializeConfigText, "request-text");
    EXPECT_EQ(info->role, 1);
    EXPECT_FALSE(info->isField);
    EXPECT_EQ(info->hostDomainName, "GEA");
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "[OrxMaintaindMethodClient][Get app host domain name][domainName=GEA]"),
              2U);

    ASSERT_EQ(info->methodInfos.size(), 2U);
    const auto& dds = info->methodInfos.at(record::DriverType::DDS).ddsMethodInfo;
    EXPECT_EQ(dds.methodName, "/Calibrate");
    EXPECT_EQ(dds.requestTopicName, "CalibrateRequest");
    EXPECT_EQ(dds.instanceShortName, "radar_front");
    EXPECT_EQ(dds.transportQos, (std::vector<record::TransportQos>{record::TransportQos::INVALID,
                                                                   record::TransportQos::TCP,
                                                                   record::TransportQos::INVALID}));
    EXPECT_EQ(dds.requestDurability, record::DurabilityQos::TRANSIENT_LOCAL);
    EXPECT_EQ(dds.replyHistory, record::HistoryQos::KEEP_LAST);
    const auto& someip = info->methodInfos.at(record::DriverType::SOMEIP).someipMethodInfo;
    EXPECT_EQ(someip.methodId, 0x0101);
    EXPECT_EQ(someip.instanceShortName, "radar_front_someip");
    EXPECT_FALSE(someip.requestSerializeTag.empty());
    EXPECT_EQ(someip.transportQos, (std::vector<record::TransportQos>{record::TransportQos::UDP,
                                                                      record::TransportQos::SHM}));

    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "Get method info with methodname: /Calibrate requestTopicName: "
                          "CalibrateRequest requestTopicName: CalibrateReply instanceShortName: "
                          "radar_front with DDS"),
              1U);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "Change method info with methodType: RadarService/Calibrate instanceId "
                          ": 3 serviceId 32 with Someip"),
              1U);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose, "Method input agrs: range mode "), 1U);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose, "Method output agrs: objects "), 1U);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "Get someip register method info[methodId=257, instanceShortName="
                          "radar_front_someip, requestSerializeSize=" +
                              std::to_string(someip.requestSerializeTag.size()) +
                              ", replySerializeSize=" +
                              std::to_string(someip.replySerializeTag.size()) + "]"),
              1U);
}

TEST_F(MethodClientTest, AFireAndForgetMethodHasNoReplySettingsText) {
    OrxMaintaindMethodClient client;
    auto method = DdsMethod();
    method->SetIsFireAndForget(true);
    method->SetServiceLevelName("");
    const auto info = client.ChangeToMethodRegisterInfo({{DriverType::DDS, method}}, false);
    EXPECT_TRUE(info->isFireAndForget);
    EXPECT_EQ(info->replySerializeConfig.serializeConfigText, "");
    EXPECT_EQ(info->methodName, "Calibrate");
    // Without a service-level name there is no "/" and so no DDS method name.
    EXPECT_EQ(info->methodInfos.at(record::DriverType::DDS).ddsMethodInfo.methodName, "");
}

TEST_F(MethodClientTest, MethodNameKeepsTheLastSlash) {
    const OrxMaintaindMethodClient client;
    EXPECT_EQ(client.GetMethodName("RadarService/Calibrate"), "/Calibrate");
    EXPECT_EQ(client.GetMethodName("a/b/c"), "/c");
    EXPECT_EQ(client.GetMethodName("Calibrate"), "");
    EXPECT_EQ(client.GetMethodName("Radar/"), "/");
}

TEST_F(MethodClientTest, ReportedThroughTheCoreUnlessItBelongsToAFieldOrTheDaemon) {
    StartDaemon();
    StartClient();
    auto getter = DdsMethod();
    getter->SetIsFieldMethod(1);
    Core()->RegisterMethodInfoToMaintaind({{DriverType::DDS, getter}}, true);
    auto daemonsOwn = DdsMethod();
    daemonsOwn->SetServiceId(orx::maintaind::service::kAppServiceId);
    Core()->RegisterMethodInfoToMaintaind({{DriverType::DDS, daemonsOwn}}, true);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "Maybe is orxmaintaind service, or it has field set/get, ignore..."),
              2U);

    Core()->RegisterMethodInfoToMaintaind(
        {{DriverType::DDS, DdsMethod()}, {DriverType::SOMEIP, SomeipMethod()}}, true);
    ASSERT_TRUE(WaitForKind(ReportKind::METHOD, 1));
    const auto reports = ReceivedOfKind(ReportKind::METHOD);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_TRUE(reports[0].isPub);
    EXPECT_TRUE(reports[0].methodRegisterInfo.isOnline);
    EXPECT_EQ(reports[0].methodRegisterInfo.methodName, "RadarService/Calibrate");
    EXPECT_EQ(reports[0].methodRegisterInfo.methodInfos.size(), 2U);
    ASSERT_TRUE(
        Log().WaitForContaining(LogLevel::kVerbose, "Register method info successfully", 1, kWait));
    EXPECT_EQ(Log().Count(LogLevel::kVerbose, "Get Maintaind reply with register MethodInfo"), 1U);
}

}  // namespace
}  // namespace orx::test::plugin
