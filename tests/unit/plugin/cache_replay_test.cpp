// The report jobs and the replay of the caches, timed by the test's clock.
#include "ara/com/com_error_domain.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

const ara::core::ErrorCode kNotAvailable =
    ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable);

class ReplayTest : public PluginTest {
  protected:
    static EventMap Event(uint32_t entity) {
        return {{DriverType::DDS, DdsEvent(0x10, entity, "Event" + std::to_string(entity))}};
    }
    static void Register(uint32_t entity) {
        Core()->RegisterEventInfoToMaintaind(Event(entity), true);
    }
    static void Withdraw(uint32_t entity) {
        Core()->UnregisterEventInfoToMaintaind({{entity, Event(entity)}}, true);
    }
    // Reports of event `entity` the daemon received, online or withdrawn.
    size_t Reports(uint32_t entity, bool online = true) const {
        size_t count = 0;
        for (const auto& report : Received()) {
            count += (report.eventRegisterInfo.eventName == "Event" + std::to_string(entity) &&
                      report.eventRegisterInfo.isOnline == online)
                         ? 1U
                         : 0U;
        }
        return count;
    }
    // Moves the clock to `ms` after the daemon was found (the periodic replay runs then and
    // every 2000 ms after).
    void AdvanceTo(long ms) { Advance(ms * kMs - clock_->Now()); }
};

TEST_F(ReplayTest, AReplyAt250MsIsDeliveredOneAt350MsIsATimeoutThatThe2sPassSendsAgain) {
    StartDaemon();
    StartClient();
    Core()->RegisterNodePid(uint16_t{0x10});
    Settle();
    // A reply of 1 ("maybe has some problem") counts as delivered as well.
    daemon_->Script(ScriptedReply::Code(1));
    auto release = HoldReplies();
    Register(1);
    ASSERT_TRUE(WaitForReceived(2));
    Step(250 * kMs);
    release();
    Settle();

    release = HoldReplies();
    Register(2);
    ASSERT_TRUE(WaitForReceived(3));
    Step(350 * kMs);
    Settle();  // the job gave up; the reply comes too late
    release();
    EXPECT_EQ(Log().Count(LogLevel::kWarn,
                          "OrxMaintaindClient register info timeout[entityType=registerEvent, "
                          "eventCacheSize=1, methodCacheSize=0, fieldCacheSize=0, "
                          "e2eCachesize=0, pidState=0]"),
              1U);

    AdvanceTo(1999);
    EXPECT_EQ(daemon_->ReceivedCount(), 3U);
    AdvanceTo(2000);
    EXPECT_EQ(Reports(1), 1U);
    EXPECT_EQ(Reports(2), 2U);
    // A pass is quiet while something waits and says at info level when it emptied the caches.
    EXPECT_TRUE(Log().Contains(LogLevel::kDebug,
                               "Registered cache information completed[reriodicCount=1]"));
    EXPECT_TRUE(
        Log().Contains(LogLevel::kInfo, "Registered cache information completed[reriodicCount=2]"));
    AdvanceTo(4000);
    EXPECT_EQ(daemon_->ReceivedCount(), 4U);
}

TEST_F(ReplayTest, ThreeTimeoutsInAPeriodicPassDropTheRestButFirstPassFailuresNeverStopIt) {
    StartDaemon(/*offer=*/false);
    StartClient(/*waitForFirstPass=*/false);
    for (uint32_t entity = 1; entity <= 5; ++entity) {
        Register(entity);
    }
    Settle();
    // The first pass fails on every report and still tries them all; the periodic pass right
    // after it times out three times in a row and drops the other two.
    daemon_->Script(ScriptedReply::Error(kNotAvailable), 5);
    daemon_->Script(ScriptedReply::NoReply(), 3);
    ASSERT_TRUE(daemon_->Offer());
    for (size_t count = 6; count <= 8; ++count) {
        ASSERT_TRUE(WaitForReceived(count));
        Step(300 * kMs);
    }
    Settle();
    EXPECT_EQ(daemon_->ReceivedCount(), 8U);

    AdvanceTo(2000);
    for (uint32_t entity = 1; entity <= 3; ++entity) {
        EXPECT_EQ(Reports(entity), 3U) << entity;
    }
    EXPECT_EQ(Reports(4), 1U);
    EXPECT_EQ(Reports(5), 1U);
    AdvanceTo(4000);
    EXPECT_EQ(daemon_->ReceivedCount(), 11U);
}

TEST_F(ReplayTest, WithdrawalsCancelUnsentReportsAndFailedOnesAreReplayedAsWithdrawals) {
    StartDaemon(/*offer=*/false);
    StartClient(/*waitForFirstPass=*/false);
    Register(1);
    Withdraw(1);  // takes the cached report back
    Withdraw(2);  // never reported: nothing to do
    Settle();
    ASSERT_TRUE(daemon_->Offer());
    WaitForFirstPass();
    EXPECT_EQ(daemon_->ReceivedCount(), 0U);

    // A report that failed waits in the cache; its withdrawal just removes it.
    daemon_->Script(ScriptedReply::Error(kNotAvailable));
    Register(3);
    Withdraw(3);
    // A delivered report is withdrawn; a withdrawal that fails is replayed as one.
    Register(4);
    Settle();
    daemon_->Script(ScriptedReply::Error(kNotAvailable));
    Withdraw(4);
    Settle();
    EXPECT_EQ(Log().Count(LogLevel::kWarn,
                          "OrxMaintaindClient register info cannot send out[entityType="
                          "unregisterEvent, eventCacheSize=1, methodCacheSize=0, "
                          "fieldCacheSize=0, e2eCachesize=0, pidState=1]"),
              1U);
    AdvanceTo(2000);
    EXPECT_EQ(Reports(3), 1U);
    EXPECT_EQ(Reports(3, false), 0U);
    EXPECT_EQ(Reports(4), 1U);
    EXPECT_EQ(Reports(4, false), 2U);
    EXPECT_EQ(daemon_->ReceivedCount(), 4U);
}

}  // namespace
}  // namespace orx::test::plugin
