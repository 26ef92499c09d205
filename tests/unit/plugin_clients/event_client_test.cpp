// The event client: one record per event with an entry per DDS and SOME/IP binding.
#include "ara/com/com_error_domain.h"
#include "orxmaintaind/orx_maintaind_event_client.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

using orx::orxcm::orxmaintaind::OrxMaintaindEventClient;
using orx::orxcm::orxmaintaind::type::MaintaindClientErrorCode;
using EntityEvents =
    vorx::vcc::OrxMaintaindInterface::EntityBindingMap<vorx::vcc::api::types::EventInfo>;

std::shared_ptr<vorx::driver::someip::SomeipEventInfo> SomeipEvent() {
    auto info = std::make_shared<vorx::driver::someip::SomeipEventInfo>();
    info->SetServiceId(0x10);
    info->SetInstanceId("1");
    info->SetEntityId(1);
    info->SetEventName("Speed");
    info->SetEventId(0x8001);
    info->SetDriver(DriverType::SOMEIP);
    return info;
}

BindingMap<vorx::vcc::api::types::EventInfo> BothBindings() {
    return {{DriverType::DDS, DdsEvent(0x10, 1, "Speed")}, {DriverType::SOMEIP, SomeipEvent()}};
}

class EventClientTest : public PluginFixture {};

TEST_F(EventClientTest, AnEventOnDdsAndSomeipGivesOneRecordAndItsWithdrawalDiffersOnlyInIsOnline) {
    StartDaemon();
    StartClient();
    Core()->RegisterEventInfoToMaintaind(BothBindings(), true);
    WaitForEventsHandled(1);
    Core()->UnregisterEventInfoToMaintaind(EntityEvents{{1, BothBindings()}}, true);
    ASSERT_TRUE(WaitForKind(ReportKind::EVENT, 2));

    const auto events = ReceivedOfKind(ReportKind::EVENT);
    ASSERT_EQ(events.size(), 2U);
    const auto& online = events[0];
    EXPECT_TRUE(online.isPub);
    EXPECT_EQ(online.eventRegisterInfo.eventName, "Speed");
    EXPECT_EQ(online.eventRegisterInfo.appName, kAppName);
    EXPECT_TRUE(online.eventRegisterInfo.isOnline);
    ASSERT_EQ(online.eventRegisterInfo.eventInfos.size(), 2U);
    EXPECT_EQ(online.eventRegisterInfo.eventInfos.at(orx::maintaind::DriverType::DDS)
                  .ddsEventInfo.topicName,
              "SpeedTopic");
    EXPECT_EQ(online.eventRegisterInfo.eventInfos.at(orx::maintaind::DriverType::SOMEIP)
                  .someipEventInfo.eventId,
              0x8001);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose, "[ORXCM] Register Info : appName is " + kAppName),
              2U);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose, "Change DDS EventInfo to maintaind DDS Struct."), 2U);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose, "Change SOMEIP EventInfo to maintaind SOMEIP Struct"),
              2U);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "Begin to send event info to maintaind[eventName=Speed, isPub=1, "
                          "isOnline=0]"),
              1U);

    auto withdrawn = events[1];
    EXPECT_FALSE(withdrawn.eventRegisterInfo.isOnline);
    withdrawn.eventRegisterInfo.isOnline = true;
    EXPECT_EQ(withdrawn, online);
}

TEST_F(EventClientTest, AReplyOfOneStillCountsAsDelivered) {
    StartDaemon();
    StartClient();
    daemon_->Script(ScriptedReply::Code(1));
    Core()->RegisterEventInfoToMaintaind(DdsEventMap(0x10, 1, "Speed"), false);
    WaitForEventsHandled(1);
    const auto lines = Log().Lines();
    const auto problem = std::find(
        lines.begin(), lines.end(),
        std::make_pair(LogLevel::kDebug,
                       std::string{"Get maintaind reply, but maybe has some problem with register "
                                   "EventInfo"}));
    ASSERT_NE(problem, lines.end());
    EXPECT_EQ(*std::next(problem),
              std::make_pair(LogLevel::kVerbose, std::string{"Register event info successfully."}));
    EXPECT_EQ(Log().CountContaining(LogLevel::kWarn, "OrxMaintaindClient register info"), 0U);
    EXPECT_FALSE(ReceivedOfKind(ReportKind::EVENT).front().isPub);
}

TEST_F(EventClientTest, WithoutAProxyNothingIsSent) {
    OrxMaintaindEventClient client;
    client.SetApplicationName(kAppName);
    EXPECT_EQ(client.RegisterEvent(DdsEventMap(0x10, 1, "Speed"), true),
              MaintaindClientErrorCode::kNotInitialized);
    const auto lines = Log().Lines();
    const auto noProxy =
        std::find(lines.begin(), lines.end(),
                  std::make_pair(LogLevel::kDebug,
                                 std::string{"Proxy is not created, register event info fail."}));
    ASSERT_NE(noProxy, lines.end());
    EXPECT_EQ(
        *std::next(noProxy),
        std::make_pair(LogLevel::kVerbose,
                       std::string{"Send event info to mainatind failed[eventName=SpeedisPub=1, "
                                   "isOnline=1]"}));
}

TEST_F(EventClientTest, OnlyDdsAndSomeipBindingsAreConverted) {
    OrxMaintaindEventClient client;
    auto proloc = DdsEvent(0x10, 1, "Speed");
    const auto record = client.ChangeToEventRegisterInfo({{DriverType::PROLOC, proloc}}, true);
    EXPECT_TRUE(record->eventInfos.empty());
    EXPECT_EQ(Log().Count(LogLevel::kVerbose, "[ORXCM] Register Info : appName is "), 1U);
    EXPECT_EQ(Log().CountContaining(LogLevel::kVerbose, "EventInfo to maintaind"), 0U);
}

TEST_F(EventClientTest, AFieldsNotifierIsNotReportedAsAnEvent) {
    StartDaemon();
    StartClient();
    auto notifier = DdsEvent(0x10, 1, "Speed");
    notifier->SetIsField(true);
    Core()->RegisterEventInfoToMaintaind({{DriverType::DDS, notifier}}, true);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose, "Maybe is only use field, ignore..."), 1U);
    EXPECT_EQ(Log().CountContaining(LogLevel::kDebug, "Begin to insert register event info event["),
              0U);
}

}  // namespace
}  // namespace orx::test::plugin
