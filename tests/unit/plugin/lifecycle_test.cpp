// The client's end when the process exits. Each scenario runs in a child process (a gtest death
// test) that ends with exit(); when the client's destructor is done, the child writes what the
// daemon double received to stderr and ends there.
#include <unistd.h>

#include <atomic>
#include <cstdlib>

#include "ara/com/com_error_domain.h"
#include "ara/kelda/common/log/log_sink.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

namespace log = ara::kelda::common::log;

// Writes "received:" and one word per request ("node+", "event-", ...) once the destructor ends.
class ExitReport final : public log::LogSink {
  public:
    explicit ExitReport(const DaemonDouble& daemon) : daemon_(daemon) {}
    void Write(const log::LogRecord& record) override {
        if (record.text != "OrxMaintaindClient deconstructor end") {
            return;
        }
        std::string out = "received:";
        for (const AppRegisterInfo& report : daemon_.Received()) {
            const bool node = report.kind == static_cast<uint8_t>(ReportKind::E2E_AND_NODE);
            const bool online = node ? report.nodeCommonRegisterInfo.nodePidInfo.isOnline
                                     : report.eventRegisterInfo.isOnline;
            out += std::string(node ? " node" : " event") + (online ? "+" : "-");
        }
        out += "\n";
        (void)!write(STDERR_FILENO, out.data(), out.size());
        _exit(0);
    }
    log::LogLevel Threshold() const override { return log::LogLevel::kInfo; }

  private:
    const DaemonDouble& daemon_;
};

const EventMap kEvent{{DriverType::DDS, DdsEvent(0x10, 7, "Speed")}};

TEST_F(PluginTest, AtExitAScheduledWithdrawalGoesOutBeforeTheNodeIsWithdrawnOnce) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            StartDaemon();
            StartClient();
            Core()->RegisterNodePid(uint16_t{0x10});
            Core()->RegisterEventInfoToMaintaind(kEvent, true);
            Settle();
            // The controller is still busy when the process starts to exit, so the withdrawal
            // below has not run yet. The busy job ends once the daemon has heard that the node
            // went offline, or after half a second: a destructor that does not wait for the
            // withdrawal gets there first.
            auto* exiting = new std::atomic<bool>(false);
            const DaemonDouble* daemon = daemon_.get();
            controller_->InsertEvent(controller_->NewEvent(
                vorx::vcc::EventScheduleMode::kOneShot,
                [exiting, daemon] {
                    WaitFor([exiting] { return exiting->load(); }, kWait);
                    daemon->WaitFor(
                        [](const std::vector<AppRegisterInfo>& all) {
                            return !all.empty() &&
                                   !all.back().nodeCommonRegisterInfo.appName.empty() &&
                                   !all.back().nodeCommonRegisterInfo.nodePidInfo.isOnline;
                        },
                        std::chrono::milliseconds(500));
                },
                controller_->GetCurMonoTime(), -1));
            Core()->UnregisterEventInfoToMaintaind({{7, kEvent}}, true);
            log::AddSink(std::make_shared<ExitReport>(*daemon_));
            exiting->store(true);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "received: node\\+ event\\+ event- node-\n");
}

TEST_F(PluginTest, AtExitANodeTheDaemonNeverHadIsNotWithdrawn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            StartDaemon();
            StartClient();
            daemon_->Script(ScriptedReply::Error(
                ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable)));
            Core()->RegisterNodePid(uint16_t{0x10});
            Settle();
            log::AddSink(std::make_shared<ExitReport>(*daemon_));
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "received: node\\+\n");
}

}  // namespace
}  // namespace orx::test::plugin
