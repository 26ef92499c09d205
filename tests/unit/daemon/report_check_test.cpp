#include <gtest/gtest.h>

#include "daemon_test_support.h"
#include "ingest/report_check.h"

namespace orx::maintaind::daemon::test {
namespace {

TEST(ReportCheckTest, ReportsAsThePlugInSendsThemPass) {
    for (const AppRegisterInfo& report :
         {NodeReport("radar", 1, true), NodeReport("radar", 1, false),
          EventReport("radar", 1, "Brake", true, "T"), MethodReport("radar", 1, "M", false),
          FieldReport("radar", 1, "F", true), E2EReport("radar", 1, "Brake", 3, true),
          LatencyReport("radar", "T", 0), LatencyReport("radar", "T", 1),
          TimeoutReport("listener", 1)}) {
        EXPECT_EQ(CheckReport(report), "") << "kind " << static_cast<int>(report.kind);
    }
}

TEST(ReportCheckTest, InconsistentReportsSayWhy) {
    auto problem = [](AppRegisterInfo report, auto&& spoil) {
        spoil(report);
        return CheckReport(report);
    };
    EXPECT_EQ(problem(NodeReport("a", 1, true), [](AppRegisterInfo& r) { r.kind = 9; }),
              "unknown report kind 9");
    EXPECT_EQ(problem(NodeReport("", 1, true), [](AppRegisterInfo&) {}), "empty application name");
    EXPECT_EQ(problem(NodeReport("a", 0, true), [](AppRegisterInfo&) {}),
              "pid 0 is not a process id");
    EXPECT_EQ(problem(EventReport("a", 1, "", true, ""), [](AppRegisterInfo&) {}),
              "event without name and bindings");
    EXPECT_EQ(problem(EventReport("a", 1, "E", true, "T"),
                      [](AppRegisterInfo& r) {
                          r.eventRegisterInfo.eventInfos[static_cast<DriverType>(7)] = {};
                      }),
              "event binding other than DDS or SOMEIP");
    EXPECT_EQ(problem(MethodReport("a", 1, "M", true),
                      [](AppRegisterInfo& r) { r.eventRegisterInfo.eventName = "stray"; }),
              "event record filled in a report of another kind");
    EXPECT_EQ(problem(EventReport("a", 1, "E", true, "T"),
                      [](AppRegisterInfo& r) { r.latencyInfo.appName = "stray"; }),
              "latency record filled in a report of another kind");
    EXPECT_EQ(
        problem(LatencyReport("a", "T", 1), [](AppRegisterInfo& r) { r.latencyInfo.type = 2; }),
        "latency report of unknown type 2");
    EXPECT_EQ(problem(LatencyReport("a", "", 1), [](AppRegisterInfo&) {}),
              "latency report without topic name and event id");
    EXPECT_EQ(problem(LatencyReport("a", "T", 0),
                      [](AppRegisterInfo& r) {
                          r.latencyInfo.ackInfo.mode = static_cast<LatencyMode>(5);
                      }),
              "latency acknowledgement of unknown mode");
    EXPECT_EQ(problem(TimeoutReport("", 1), [](AppRegisterInfo&) {}),
              "listener report without listener name");
    EXPECT_EQ(
        problem(TimeoutReport("l", 1),
                [](AppRegisterInfo& r) { r.listenerParams[static_cast<ListenerType>(1)] = {}; }),
        "listener report without exactly one sample-timeout entry");
}

}  // namespace
}  // namespace orx::maintaind::daemon::test
