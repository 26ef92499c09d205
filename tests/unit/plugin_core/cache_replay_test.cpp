// The report jobs and the replay of the caches.
#include <map>

#include "ara/com/com_error_domain.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

using EntityEvents =
    vorx::vcc::OrxMaintaindInterface::EntityBindingMap<vorx::vcc::api::types::EventInfo>;

class CacheReplayTest : public PluginFixture {
  protected:
    // Requests that reported the event of `entityId` (service 0x10), in arrival order.
    size_t RequestsFor(uint32_t entityId) const {
        size_t count = 0;
        for (const auto& request : ReceivedOfKind(ReportKind::EVENT)) {
            count += (request.eventRegisterInfo.eventName == "Event" + std::to_string(entityId))
                         ? 1U
                         : 0U;
        }
        return count;
    }

    void RegisterEvents(uint32_t count) {
        for (uint32_t entity = 1; entity <= count; ++entity) {
            Core()->RegisterEventInfoToMaintaind(
                DdsEventMap(0x10, entity, "Event" + std::to_string(entity)), true);
        }
    }
};

TEST_F(CacheReplayTest, RegisterThenWithdrawWhileTheDaemonIsAbsentSendsNothing) {
    StartDaemon(/*offer=*/false);
    StartClient(/*waitForFirstPass=*/false);
    Core()->RegisterEventInfoToMaintaind(DdsEventMap(0x10, 1, "Event1"), true);
    Core()->UnregisterEventInfoToMaintaind(EntityEvents{{1, DdsEventMap(0x10, 1, "Event1")}}, true);
    // A withdrawal of something never reported only says so.
    Core()->UnregisterEventInfoToMaintaind(EntityEvents{{2, DdsEventMap(0x10, 2, "Event2")}}, true);
    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kVerbose, "Maintaind Proxy is not created, pop eventinfo from cache.", 2, kWait));
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "Can't find EventInfo with serviceid16instanceid1entityId2in the cache."),
              1U);
    EXPECT_EQ(Log().CountContaining(LogLevel::kVerbose, "Can't find EventInfo"), 1U);

    ASSERT_TRUE(daemon_->Offer());
    WaitForFirstPass();
    EXPECT_EQ(daemon_->ReceivedCount(), 0U);
}

TEST_F(CacheReplayTest, AWithdrawalOfADeliveredEventIsSentAndAFailedOneWaitsInTheCache) {
    StartDaemon();
    StartClient();
    RegisterNode();
    Core()->RegisterEventInfoToMaintaind(DdsEventMap(0x10, 1, "Event1"), true);
    WaitForEventsHandled(1);

    daemon_->Script(
        ScriptedReply::Error(ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable)));
    Core()->UnregisterEventInfoToMaintaind(EntityEvents{{1, DdsEventMap(0x10, 1, "Event1")}}, true);
    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kWarn,
        "OrxMaintaindClient register info cannot send out[entityType=unregisterEvent, "
        "eventCacheSize=1, methodCacheSize=0, fieldCacheSize=0, e2eCachesize=0, pidState=0]",
        1, kWait));
    EXPECT_EQ(
        Log().Count(LogLevel::kDebug, "OrxMaintaindClient register event info msg cannot send out"),
        1U);

    // The periodic pass sends the cached withdrawal as a withdrawal.
    ASSERT_TRUE(WaitForKind(ReportKind::EVENT, 3));
    const auto events = ReceivedOfKind(ReportKind::EVENT);
    EXPECT_TRUE(events[0].eventRegisterInfo.isOnline);
    EXPECT_FALSE(events[1].eventRegisterInfo.isOnline);
    EXPECT_FALSE(events[2].eventRegisterInfo.isOnline);
    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kInfo, "Registered cache information completed[reriodicCount=", 1, kWait));
}

TEST_F(CacheReplayTest, FailuresNeverStopTheFirstPass) {
    StartDaemon(/*offer=*/false);
    StartClient(/*waitForFirstPass=*/false);
    RegisterEvents(4);
    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kVerbose, "Maintaind Proxy is not create, push EventInfo to cache.", 4, kWait));
    daemon_->Script(ScriptedReply::NoReply(), 4);

    ASSERT_TRUE(daemon_->Offer());
    WaitForFirstPass();
    EXPECT_EQ(Log().Count(LogLevel::kDebug,
                          "RegisterEventInfo to maintaind failed, register failure count is 0"),
              4U);
    EXPECT_EQ(
        Log().Count(LogLevel::kDebug, "Get maintaind reply fail, timeout with register EventInfo"),
        4U);
    // Every one of them was tried, and the periodic pass delivers them all.
    ASSERT_TRUE(daemon_->WaitForCount(8, kWait));
    for (uint32_t entity = 1; entity <= 4; ++entity) {
        EXPECT_EQ(RequestsFor(entity), 2U) << entity;
    }
}

TEST_F(CacheReplayTest, ThreeTimeoutsInAPeriodicPassDropTheRestOfThatPass) {
    StartDaemon();
    StartClient();
    RegisterNode();
    // Five direct sends time out and leave their reports cached; then the periodic pass times
    // out three times in a row.
    daemon_->Script(ScriptedReply::NoReply(), 8);
    RegisterEvents(5);
    ASSERT_TRUE(Log().WaitForContaining(LogLevel::kWarn,
                                        "OrxMaintaindClient register info timeout[entityType="
                                        "registerEvent, eventCacheSize=",
                                        5, kWait));
    EXPECT_EQ(Log().Count(LogLevel::kWarn,
                          "OrxMaintaindClient register info timeout[entityType=registerEvent, "
                          "eventCacheSize=1, methodCacheSize=0, fieldCacheSize=0, "
                          "e2eCachesize=0, pidState=0]"),
              1U);

    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kDebug, "RegisterEventInfo to maintaind failed, register failure count is 3", 1,
        kWait));
    // While reports wait, the pass ends quietly; the pass that empties the caches says so.
    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kInfo, "Registered cache information completed[reriodicCount=", 1, kWait));
    EXPECT_GE(Log().CountContaining(LogLevel::kDebug,
                                    "Registered cache information completed[reriodicCount="),
              2U);

    // The first three in key order were tried again and delivered; the other two were dropped.
    for (uint32_t entity = 1; entity <= 3; ++entity) {
        EXPECT_EQ(RequestsFor(entity), 3U) << entity;
    }
    EXPECT_EQ(RequestsFor(4), 1U);
    EXPECT_EQ(RequestsFor(5), 1U);
    EXPECT_EQ(Log().CountContaining(LogLevel::kDebug, "register failure count is 4"), 0U);
}

}  // namespace
}  // namespace orx::test::plugin
