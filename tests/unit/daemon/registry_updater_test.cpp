#include <gtest/gtest.h>

#include "daemon_test_support.h"
#include "registry/registry_updater.h"

namespace orx::maintaind::daemon::test {
namespace {

class RegistryUpdaterTest : public ::testing::Test {
  protected:
    ApplyOutcome Apply(const AppRegisterInfo& report, const ReportSender& sender = {}) {
        ChangeSet changes;
        ApplyOutcome outcome = updater_.ApplyReport(report, sender, state_, changes);
        last_ = changes;
        return outcome;
    }
    const tools::NodeEntry& Node(const std::string& app, int32_t pid,
                                 const std::string& host = "") {
        return state_.nodes.at(Key(app, pid, host)).entry;
    }
    // Runs one of the updater's findings and keeps what it changed.
    template <class F>
    void Find(F&& finding) {
        ChangeSet changes;
        finding(changes);
        last_ = changes;
    }
    // The notices of the last step as "app/pid on|off reason" lines.
    std::vector<std::string> Notices() const {
        std::vector<std::string> lines;
        for (const NodeNotice& notice : last_.notices) {
            lines.push_back(notice.node.appName + "/" + std::to_string(notice.node.pid) +
                            (notice.online ? " on " : " off ") + notice.reason);
        }
        return lines;
    }

    std::shared_ptr<FakeProbe> probe_ = std::make_shared<FakeProbe>();
    ManualClock clock_;
    RegistryLimits limits_;
    RegistryUpdater updater_{limits_, clock_.Clock(), probe_};
    RegistryState state_;
    ChangeSet last_;
};

TEST_F(RegistryUpdaterTest, NodeComesOnlineGoesOfflineAndComesBack) {
    const ReportSender here = Sender("p1", "here", 100, 5555, true);
    ASSERT_TRUE(Apply(NodeReport("radar", 100, true), here).accepted);
    EXPECT_TRUE(Node("radar", 100, "here").online);
    const NodeState& state = state_.nodes.at(Key("radar", 100, "here"));
    EXPECT_TRUE(state.local);
    EXPECT_EQ(state.startTicks, 5555U);
    EXPECT_EQ(state.peer, "p1");
    EXPECT_EQ(Notices(), std::vector<std::string>{"radar/100 on "});

    clock_.Advance(10);
    Apply(NodeReport("radar", 100, false), here);
    EXPECT_EQ(Node("radar", 100, "here").offlineReason, "offline report");
    EXPECT_EQ(Node("radar", 100, "here").firstSeen, 1000U);
    EXPECT_EQ(Node("radar", 100, "here").lastSeen, 1010U);

    // A second offline report changes nothing worth a line.
    Apply(NodeReport("radar", 100, false), here);
    EXPECT_TRUE(last_.notices.empty());

    // An online entity report brings the node back; a withdrawal would not; no restart.
    Apply(EventReport("radar", 100, "Brake", true, "BrakeTopic", 0x10, 1, false), here);
    EXPECT_FALSE(Node("radar", 100, "here").online);
    Apply(EventReport("radar", 100, "Brake", true, "BrakeTopic"), here);
    EXPECT_TRUE(Node("radar", 100, "here").online);
    EXPECT_TRUE(Node("radar", 100, "here").offlineReason.empty());
    EXPECT_EQ(Node("radar", 100, "here").restarts, 0U);
}

TEST_F(RegistryUpdaterTest, HostComesFromTheSenderAndOnlyLocalProcessesAreProbed) {
    probe_->Run(200, 1);  // the same pid runs on the daemon's host: no matter
    Apply(NodeReport("radar", 200, true), Sender("pa", "hostA", 200, 9, false));
    Apply(NodeReport("radar", 200, true), Sender("pb", "hostB", 200, 9, false));
    Apply(NodeReport("radar", 300, true));  // the transport named no sender
    // A report relayed by another process of this host is not probed by its pid either.
    Apply(NodeReport("hud", 400, true), Sender("pc", "here", 401, 3, true));
    ASSERT_EQ(state_.nodes.size(), 4U);
    for (const auto& [key, node] : state_.nodes) {
        EXPECT_FALSE(node.local) << key.appName << "/" << key.pid;
        EXPECT_TRUE(node.entry.online) << key.appName << "/" << key.pid;
        EXPECT_EQ(node.entry.host, key.host);
    }
    EXPECT_EQ(state_.nodes.count(Key("radar", 300)), 1U);

    // Only the local process is a candidate for the probe's findings.
    Apply(NodeReport("fusion", 500, true), Sender("pd", "here", 500, 77, true));
    ChangeSet changes;
    updater_.ApplyNodeGone(Key("fusion", 500, "here"), 76, state_, changes);  // another run
    EXPECT_TRUE(Node("fusion", 500, "here").online);
    updater_.ApplyNodeGone(Key("fusion", 500, "here"), 77, state_, changes);
    EXPECT_EQ(Node("fusion", 500, "here").offlineReason, "process gone");
}

TEST_F(RegistryUpdaterTest, ReasonsRestartsAndReconnects) {
    // A process of another host vanishes with its participant, then the cut heals.
    Apply(NodeReport("radar", 10, true), Sender("pa", "hostA", 10, 100, false));
    Apply(EventReport("radar", 10, "Brake", true, "BrakeTopic"),
          Sender("pa", "hostA", 10, 100, false));
    clock_.Advance(100);
    Find([&](ChangeSet& c) { updater_.ApplyPeerLost("pa", state_, c); });
    EXPECT_EQ(Notices(), std::vector<std::string>{"radar/10 off lease expired"});
    Find([&](ChangeSet& c) { updater_.ApplyPeerAlive("pa", state_, c); });
    EXPECT_EQ(Notices(), std::vector<std::string>{"radar/10 on reconnected"});
    EXPECT_EQ(Node("radar", 10, "hostA").restarts, 0U);

    // Crashed for good; a new run on that host (new pid) is one restart. The same name on
    // another host is not.
    Find([&](ChangeSet& c) { updater_.ApplyPeerLost("pa", state_, c); });
    clock_.Advance(60000);
    Apply(NodeReport("radar", 11, true), Sender("pb", "hostA", 11, 200, false));
    Apply(NodeReport("radar", 10, true), Sender("pc", "hostB", 10, 300, false));
    EXPECT_EQ(Node("radar", 11, "hostA").restarts, 1U);
    EXPECT_EQ(Node("radar", 10, "hostB").restarts, 0U);

    // Killed and started again before its lease ran out: counted when the lease runs out.
    clock_.Advance(1000);
    Apply(NodeReport("radar", 12, true), Sender("pd", "hostA", 12, 400, false));
    EXPECT_EQ(Node("radar", 12, "hostA").restarts, 0U) << "radar/11 may still run";
    Find([&](ChangeSet& c) { updater_.ApplyPeerLost("pb", state_, c); });
    EXPECT_EQ(Notices(), std::vector<std::string>{"radar/11 off restarted"});
    EXPECT_EQ(Node("radar", 12, "hostA").restarts, 2U);

    // The same pid with a new start time: the earlier run is listed offline as restarted.
    Apply(NodeReport("radar", 12, true), Sender("pe", "hostA", 12, 500, false));
    EXPECT_EQ(Notices(), (std::vector<std::string>{"radar/12 off restarted", "radar/12 on "}));
    EXPECT_EQ(Node("radar", 12, "hostA").restarts, 3U);

    // Two instances side by side on this host are not restarts of each other, even when one
    // of them crashes long after the other started; a local run whose process is gone pairs.
    probe_->Run(20, 1);
    probe_->Run(21, 2);
    Apply(NodeReport("hud", 20, true), Sender("pf", "here", 20, 1, true));
    Apply(NodeReport("hud", 21, true), Sender("pg", "here", 21, 2, true));
    EXPECT_EQ(Node("hud", 21, "here").restarts, 0U);
    clock_.Advance(60000);
    Find([&](ChangeSet& c) { updater_.ApplyNodeGone(Key("hud", 21, "here"), 2, state_, c); });
    EXPECT_EQ(Notices(), std::vector<std::string>{"hud/21 off process gone"});
    probe_->End(20);
    probe_->Run(22, 3);
    Apply(NodeReport("hud", 22, true), Sender("ph", "here", 22, 3, true));
    EXPECT_EQ(Notices(), (std::vector<std::string>{"hud/22 on ", "hud/20 off restarted"}));
    EXPECT_EQ(Node("hud", 22, "here").restarts, 1U);
    Apply(NodeReport("hud", 23, true), Sender("pi", "here", 23, 4, true));
    EXPECT_EQ(Node("hud", 23, "here").restarts, 1U) << "paired with hud/21";
}

TEST_F(RegistryUpdaterTest, EntitiesAreUpsertedWithdrawnAndCounted) {
    Apply(EventReport("radar", 100, "/demo/Brake", true, "BrakeTopic"));
    clock_.Advance(5);
    AppRegisterInfo again = EventReport("radar", 100, "/demo/Brake", true, "BrakeTopic");
    again.eventRegisterInfo.dataTypeName = "NewType";
    Apply(again);
    ASSERT_EQ(state_.events.size(), 1U);
    const tools::EventEntry& event = state_.events.begin()->second;
    EXPECT_EQ(event.dataTypeName, "NewType");
    EXPECT_EQ(event.firstSeen, 1000U);
    EXPECT_EQ(event.lastSeen, 1005U);
    EXPECT_EQ(event.topicName, "BrakeTopic");
    EXPECT_EQ(event.serviceId, 0x10);
    EXPECT_EQ(event.bindings, std::vector<String>{"DDS"});
    EXPECT_EQ(event.record, again.eventRegisterInfo);

    // The subscribing side is its own entry; a withdrawal keeps the entry, offline.
    Apply(EventReport("radar", 100, "/demo/Brake", false, "BrakeTopic"));
    Apply(EventReport("radar", 100, "/demo/Brake", true, "BrakeTopic", 0x10, 1, false));
    EXPECT_EQ(state_.events.size(), 2U);
    Apply(MethodReport("radar", 100, "Calibrate", true));
    Apply(FieldReport("radar", 100, "Mode", true));
    const tools::NodeEntry& node = Node("radar", 100);
    EXPECT_EQ(node.eventCount, 2U);
    EXPECT_EQ(node.methodCount, 1U);
    EXPECT_EQ(node.fieldCount, 1U);
    int offline = 0;
    for (const auto& [key, entry] : state_.events) {
        offline += entry.online ? 0 : 1;
    }
    EXPECT_EQ(offline, 1);
}

TEST_F(RegistryUpdaterTest, LimitsRefuseWithoutChangingAnything) {
    limits_.maxEntitiesPerNode = 2;
    limits_.maxNodes = 2;
    limits_.maxOfflineNodes = 1;
    RegistryUpdater updater(limits_, clock_.Clock(), probe_);
    ChangeSet changes;
    auto apply = [&](const AppRegisterInfo& report) {
        return updater.ApplyReport(report, state_, changes);
    };
    EXPECT_TRUE(apply(EventReport("a", 1, "E1", true, "T1")).accepted);
    EXPECT_TRUE(apply(EventReport("a", 1, "E2", true, "T2")).accepted);
    const ApplyOutcome refused = apply(MethodReport("a", 1, "M", true));
    EXPECT_FALSE(refused.accepted);
    EXPECT_NE(refused.reason.find("too many entities for one process"), std::string::npos);
    EXPECT_TRUE(state_.methods.empty());
    // An update of a known entity is no new entity.
    EXPECT_TRUE(apply(EventReport("a", 1, "E2", true, "T2")).accepted);

    // Two nodes online fill the table; a third is refused until one goes offline, then the
    // offline one seen longest ago makes room.
    EXPECT_TRUE(apply(NodeReport("b", 2, true)).accepted);
    EXPECT_FALSE(apply(NodeReport("c", 3, true)).accepted);
    EXPECT_EQ(state_.nodes.count(Key("c", 3)), 0U);
    apply(NodeReport("a", 1, false));
    EXPECT_TRUE(apply(NodeReport("c", 3, true)).accepted);
    EXPECT_EQ(state_.nodes.count(Key("a", 1)), 0U);
    EXPECT_TRUE(state_.events.empty()) << "the pushed-out node's entities go with it";
    EXPECT_EQ(changes.events.size(), 2U);
}

TEST_F(RegistryUpdaterTest, OfflineNodesBeyondTheLimitArePruned) {
    limits_.maxOfflineNodes = 2;
    RegistryUpdater updater(limits_, clock_.Clock(), probe_);
    ChangeSet changes;
    for (int32_t pid = 1; pid <= 4; ++pid) {
        updater.ApplyReport(EventReport("app", pid, "E", true, "T"), state_, changes);
        clock_.Advance(1);
        updater.ApplyReport(NodeReport("app", pid, false), state_, changes);
    }
    ASSERT_EQ(state_.nodes.size(), 2U);
    EXPECT_EQ(state_.nodes.begin()->first.pid, 3);
    EXPECT_EQ(state_.events.size(), 2U);
}

TEST_F(RegistryUpdaterTest, E2EReportsMergeAndAnEmptyOneCountsAsOffline) {
    Apply(E2EReport("radar", 100, "Brake", 1, true));
    Apply(E2EReport("radar", 100, "Speed", 2, false));
    AppRegisterInfo changed = E2EReport("radar", 100, "Brake", 1, true);
    changed.nodeCommonRegisterInfo.appE2EConfig.pubE2EConfigs[0].e2eConfig.dataLength = 64;
    Apply(changed);
    const auto& configs = state_.e2e.at(Key("radar", 100)).configs;
    ASSERT_EQ(configs.size(), 2U);
    EXPECT_EQ(configs[0].config.e2eConfig.dataLength, 64U);
    EXPECT_TRUE(configs[0].isPub);
    EXPECT_EQ(configs[1].binding, "DDS");
    EXPECT_TRUE(Node("radar", 100).online);

    // Without configurations the report reads as the node's offline report.
    Apply(NodeReport("radar", 100, false));
    EXPECT_FALSE(Node("radar", 100).online);
    EXPECT_EQ(state_.e2e.at(Key("radar", 100)).configs.size(), 2U);
}

TEST_F(RegistryUpdaterTest, LatencyAcksResultsAndSwitchesPerEvent) {
    Apply(EventReport("radar", 100, "/demo/Brake", true, "BrakeTopic", 0x10, 1, true, 0x8001));
    Apply(LatencyReport("hud", "BrakeTopic", 0, LatencyMode::ENABLE));
    Apply(LatencyReport("dash", "BrakeTopic", 0, LatencyMode::DISABLE));
    ASSERT_EQ(state_.latencyStatuses.size(), 1U);
    const tools::LatencyStatusEntry& status = state_.latencyStatuses.begin()->second;
    EXPECT_EQ(status.eventName, "/demo/Brake");
    EXPECT_TRUE(status.enabled);
    EXPECT_EQ(status.acks.size(), 2U);
    Apply(LatencyReport("hud", "BrakeTopic", 0, LatencyMode::DISABLE));
    EXPECT_FALSE(state_.latencyStatuses.begin()->second.enabled);

    // A SOME/IP-addressed report of the same event lands on the same key.
    AppRegisterInfo someip = LatencyReport("hud", "", 1, LatencyMode::ENABLE, 90);
    someip.latencyInfo.latencyIndex.driverTypes = {DriverType::SOMEIP};
    someip.latencyInfo.latencyIndex.eventId = 0x8001;
    Apply(someip);
    ASSERT_EQ(state_.latencyResults.size(), 1U);
    EXPECT_EQ(state_.latencyResults.begin()->first.event.topicName, "BrakeTopic");

    // Results keep the newest, bounded.
    for (uint64_t i = 1; i <= limits_.latencyHistoryDepth + 5; ++i) {
        clock_.Advance(1);
        Apply(LatencyReport("hud", "BrakeTopic", 1, LatencyMode::ENABLE, 100 + i));
    }
    const auto& results = state_.latencyResults.begin()->second.results;
    ASSERT_EQ(results.size(), limits_.latencyHistoryDepth);
    EXPECT_EQ(results.front().maxLatency, 100 + limits_.latencyHistoryDepth + 5);
    EXPECT_EQ(results.front().eventName, "/demo/Brake");

    ChangeSet changes;
    LatencyRequest request;
    request.key = state_.latencyStatuses.begin()->first;
    request.eventName = "/demo/Brake";
    request.mode = LatencyMode::ENABLE;
    updater_.ApplyLatencyRequest(request, state_, changes);
    EXPECT_TRUE(state_.latencyStatuses.begin()->second.requested);
    EXPECT_EQ(state_.latencyStatuses.begin()->second.requestedAt, clock_.now->load());
}

TEST_F(RegistryUpdaterTest, SampleTimeoutsAreAttributedCountedAndBounded) {
    Apply(EventReport("hud", 7, "/demo/Brake", false, "BrakeTopic"));
    Apply(EventReport("dash", 8, "/demo/Speed", false, "SpeedTopic"));
    Apply(EventReport("cluster", 9, "/demo/Speed", false, "SpeedTopic"));
    Apply(TimeoutReport("/demo/Service16/1/BrakeTopic", 1));
    Apply(TimeoutReport("/demo/Service16/1/BrakeTopic", 2));
    Apply(TimeoutReport("/demo/Service16/1/SpeedTopic", 1));
    const auto& brake = state_.sampleTimeouts.at(ListenerKey{"/demo/Service16/1/BrakeTopic"});
    EXPECT_EQ(brake.appName, "hud");
    EXPECT_EQ(brake.reportCount, 2U);
    EXPECT_EQ(brake.sampleTimeoutCount, 2U);
    EXPECT_EQ(state_.sampleTimeouts.at(ListenerKey{"/demo/Service16/1/SpeedTopic"}).appName, "")
        << "two subscribers: not attributable";

    limits_.maxSampleTimeoutListeners = 2;
    RegistryUpdater updater(limits_, clock_.Clock(), probe_);
    ChangeSet changes;
    clock_.Advance(1);
    updater.ApplyReport(TimeoutReport("/demo/Service16/1/BrakeTopic", 3), state_, changes);
    clock_.Advance(1);
    updater.ApplyReport(TimeoutReport("another", 1), state_, changes);
    EXPECT_EQ(state_.sampleTimeouts.size(), 2U);
    EXPECT_EQ(state_.sampleTimeouts.count(ListenerKey{"/demo/Service16/1/SpeedTopic"}), 0U)
        << "the listener idle longest makes room";
}

}  // namespace
}  // namespace orx::maintaind::daemon::test
