#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "daemon_test_support.h"
#include "liveness/liveness_monitor.h"

namespace orx::maintaind::daemon::test {
namespace {

TEST(ProcProbeTest, TellsRunningKilledAndReapedProcessesApart) {
    const ProcProbe probe;
    const auto self = probe.StartTicks(::getpid());
    ASSERT_TRUE(self.has_value());
    EXPECT_EQ(probe.StartTicks(::getpid()), self) << "stable for one process";
    EXPECT_FALSE(probe.HostName().empty());
    EXPECT_FALSE(probe.StartTicks(-1).has_value());

    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::pause();
        ::_exit(0);
    }
    EXPECT_TRUE(probe.StartTicks(child).has_value());
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    // Killed but not reaped yet: a zombie counts as gone.
    EXPECT_TRUE(WaitFor([&] { return !probe.StartTicks(child).has_value(); }));
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_FALSE(probe.StartTicks(child).has_value());
}

TEST(LivenessMonitorTest, ReportsOnlineLocalNodesWhoseRunEnded) {
    auto probe = std::make_shared<FakeProbe>();
    ManualClock clock;
    Registry registry(RegistryUpdater(RegistryLimits{}, clock.Clock(), probe));
    probe->Run(1, 100);
    probe->Run(2, 200);
    probe->Run(3, 300);
    registry.Write([](RegistryState& state, const RegistryUpdater& updater) {
        ChangeSet changes;
        for (int32_t pid : {1, 2, 3}) {
            const ReportSender sender =
                Sender("p" + std::to_string(pid), "here", pid, pid * 100, true);
            updater.ApplyReport(NodeReport(std::string(1, char('a' + pid - 1)), pid, true), sender,
                                state, changes);
        }
        updater.ApplyReport(NodeReport("remote", 4, true), Sender("p4", "far", 4, 1, false), state,
                            changes);
        updater.ApplyReport(NodeReport("c", 3, false), Sender("p3", "here", 3, 300, true), state,
                            changes);
        return 0;
    });
    std::vector<NodeGone> gone;
    LivenessMonitor monitor(
        registry, probe, [&](const NodeGone& node) { gone.push_back(node); },
        std::chrono::hours(1));
    EXPECT_EQ(monitor.CheckOnce(), 0U);

    probe->End(1);       // crashed
    probe->Run(2, 999);  // crashed, and its pid went to another process
    probe->End(3);       // offline already
    EXPECT_EQ(monitor.CheckOnce(), 2U);
    ASSERT_EQ(gone.size(), 2U);
    EXPECT_EQ(gone[0].node, (Key("a", 1, "here")));
    EXPECT_EQ(gone[0].startTicks, 100U);
    EXPECT_EQ(gone[1].node, (Key("b", 2, "here")));
    EXPECT_EQ(gone[1].startTicks, 200U);
}

}  // namespace
}  // namespace orx::maintaind::daemon::test
