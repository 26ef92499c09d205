// The field client: its name, its shared members and a sub-record per binding.
#include "orx/maintaind/service.h"
#include "orxmaintaind/orx_maintaind_field_client.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

using orx::orxcm::orxmaintaind::OrxMaintaindFieldClient;
using vorx::vcc::api::types::FieldInfo;
namespace record = orx::maintaind;

std::shared_ptr<vorx::driver::dds::DDSMethodInfo> Accessor(const std::string& name) {
    auto info = std::make_shared<vorx::driver::dds::DDSMethodInfo>();
    info->SetServiceId(0x30);
    info->SetInstanceId("2");
    info->SetMethodName(name);
    info->SetRequestTopicName(name + "Request");
    return info;
}

std::shared_ptr<FieldInfo> Field() {
    auto field = std::make_shared<FieldInfo>();
    field->SetServiceId(0x30);
    field->SetInstanceId("2");
    field->SetEntityId(40);
    field->SetServiceName("/test/Seat");
    field->SetInstanceShortName("seat_driver");
    return field;
}

class FieldClientTest : public PluginFixture {};

TEST_F(FieldClientTest, AFieldWithOnlyASetterIsNamedAfterItsSetter) {
    OrxMaintaindFieldClient client;
    client.SetApplicationName(kAppName);
    auto field = Field();
    field->SetHasSet(true);
    field->SetSetInfo(Accessor("SetPosition"));
    const auto info = client.ChangeToFieldRegisterInfo({{DriverType::DDS, field}}, true, true);

    EXPECT_EQ(info->fieldName, "SetPosition");
    EXPECT_EQ(info->serviceId, 0x30);
    EXPECT_EQ(info->instanceId, 2);
    EXPECT_EQ(info->appName, kAppName);
    EXPECT_TRUE(info->isOnline);
    EXPECT_FALSE(info->hasNotifier);
    EXPECT_FALSE(info->hasGetter);
    EXPECT_TRUE(info->hasSetter);
    EXPECT_EQ(info->bindingNames.at(record::DriverType::DDS), "seat_driver");
    const auto& binding = info->fieldInfos.at(record::DriverType::DDS);
    EXPECT_TRUE(binding.hasSetter);
    EXPECT_FALSE(binding.hasGetter);
    EXPECT_EQ(binding.setterInfo.ddsMethodInfo.requestTopicName, "SetPositionRequest");
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "Change field info with fieldType : SetPosition instanceId :2 "
                          "instanceshortname : seat_driver with DDS, is hasNotify 0, hasGet 0, "
                          "hasSet 1"),
              1U);
}

TEST_F(FieldClientTest, TheFieldsOwnNameAndNotifierComeFirst) {
    OrxMaintaindFieldClient client;
    auto field = Field();
    field->SetFieldName("SeatPosition");
    field->SetHasNotify(true);
    field->SetNotifyInfo(DdsEvent(0x30, 41, "PositionChanged"));
    field->SetHasGet(true);
    field->SetGetInfo(Accessor("GetPosition"));
    const auto info = client.ChangeToFieldRegisterInfo({{DriverType::DDS, field}}, false, false);
    EXPECT_EQ(info->fieldName, "SeatPosition");
    EXPECT_FALSE(info->isOnline);
    const auto& binding = info->fieldInfos.at(record::DriverType::DDS);
    EXPECT_EQ(binding.notifierInfo.ddsEventInfo.topicName, "PositionChangedTopic");
    EXPECT_EQ(binding.getterInfo.ddsMethodInfo.requestTopicName, "GetPositionRequest");

    // Without its own name the notifier names it, before the getter.
    std::string name = "untouched";
    uint16_t id = 7;
    field->SetFieldName("");
    client.ParseToGetFieldInfo(name, id, {{DriverType::DDS, field}});
    EXPECT_EQ(name, "PositionChanged");
    EXPECT_EQ(id, 0x30);

    // A field with nothing to name it after leaves the caller's values alone.
    name = "untouched";
    id = 7;
    client.ParseToGetFieldInfo(name, id, {{DriverType::DDS, Field()}});
    EXPECT_EQ(name, "untouched");
    EXPECT_EQ(id, 7);
}

TEST_F(FieldClientTest, AFailedSendNamesNoFieldAndTheDaemonsOwnFieldsAreNotReported) {
    OrxMaintaindFieldClient client;
    EXPECT_EQ(client.RegisterField({{DriverType::DDS, Field()}}, true),
              orx::orxcm::orxmaintaind::type::MaintaindClientErrorCode::kNotInitialized);
    EXPECT_EQ(Log().Count(LogLevel::kDebug, "Proxy is not created, register field info fail"), 1U);
    EXPECT_EQ(
        Log().Count(LogLevel::kVerbose, "Send field info to mainatind failed[isPub=1, isOnline=1]"),
        1U);

    StartDaemon();
    StartClient();
    auto daemonsOwn = Field();
    daemonsOwn->SetServiceId(orx::maintaind::service::kToolsServiceId);
    Core()->RegisterFieldInfoToMaintaind({{DriverType::DDS, daemonsOwn}}, true);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "Maybe is orxmaintaind service, or it has field set/get, ignore..."),
              1U);

    Core()->RegisterFieldInfoToMaintaind({{DriverType::DDS, Field()}}, true);
    ASSERT_TRUE(WaitForKind(ReportKind::FIELD, 1));
    EXPECT_EQ(ReceivedOfKind(ReportKind::FIELD).front().fieldRegisterInfo.serviceId, 0x30);
}

}  // namespace
}  // namespace orx::test::plugin
