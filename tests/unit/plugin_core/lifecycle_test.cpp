// The client's destruction at process exit. Each scenario runs in a child process that loads the
// plug-in the way the core does (DfxPluginLoader); a handler registered before the load runs after
// the plug-in's objects are gone, reports what the daemon double received to the parent through a
// pipe and ends the child.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "ara/kelda/common/log/capture_sink.h"
#include "ara/kelda/common/log/log.h"
#include "orx/maintaind/types.h"
#include "orx/test/daemon_double.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace {

using ara::kelda::common::log::CaptureSink;
using ara::kelda::common::log::LogLevel;
using orx::maintaind::AppRegisterInfo;
using orx::maintaind::ReportKind;
using orx::test::DaemonDouble;
using orx::test::ScriptedReply;
using vorx::vcc::api::types::DriverType;

constexpr std::chrono::milliseconds kWait{10000};

// What the exit handler of the child reads; set once by the child before the plug-in is loaded.
struct ChildReport {
    int fd = -1;
    DaemonDouble* daemon = nullptr;
    std::shared_ptr<CaptureSink> sink;
};
ChildReport& Report() {
    static ChildReport* report = new ChildReport();  // outlives every static of the child
    return *report;
}

void Write(const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(Report().fd, text.data() + done, text.size() - done);
        if (written <= 0) {
            return;
        }
        done += static_cast<size_t>(written);
    }
}

// One line per request the daemon received: "<kind> <online>", then the destructor's traces.
void ReportAndExit() {
    ChildReport& report = Report();
    const bool destroyed = report.sink->WaitForContaining(
        LogLevel::kInfo, "OrxMaintaindClient deconstructor end", 1, kWait);
    std::ostringstream out;
    for (const AppRegisterInfo& request : report.daemon->Received()) {
        const bool online = (request.kind == static_cast<uint8_t>(ReportKind::EVENT))
                                ? request.eventRegisterInfo.isOnline
                                : request.nodeCommonRegisterInfo.nodePidInfo.isOnline;
        out << static_cast<int>(request.kind) << ' ' << (online ? 1 : 0) << '\n';
    }
    out << "destroyed " << (destroyed ? 1 : 0) << '\n';
    out << "ignored "
        << report.sink->Count(LogLevel::kDebug,
                              "Maybe RegisterNodePid fail, UnregisterNodePid ingore...")
        << '\n';
    Write(out.str());
    _exit(0);
}

void Fail(const std::string& why) {
    Write("fail " + why + "\n");
    _exit(1);
}

std::shared_ptr<vorx::vcc::api::types::EventInfo> Event() {
    auto info = std::make_shared<vorx::driver::dds::DDSEventInfo>();
    info->SetServiceId(0x10);
    info->SetInstanceId("1");
    info->SetEntityId(7);
    info->SetEventName("Speed");
    return info;
}

bool WaitForRequests(size_t count) {
    return Report().daemon->WaitForCount(count, kWait);
}

// Sets up the child, loads the plug-in, runs `scenario` and exits the way a process does.
template <typename Scenario>
[[noreturn]] void RunChild(int fd, bool offer, Scenario scenario) {
    ChildReport& report = Report();
    report.fd = fd;
    const std::string config =
        ::testing::TempDir() + "plugin_lifecycle_" + std::to_string(getpid()) + ".json";
    std::ofstream(config) << R"({"application": {"name": "LifecycleApp"}})";
    setenv("ORX_CONFIG", config.c_str(), 1);
    vorx::vcc::ApplicationName::Configure("LifecycleApp");  // as a process's start-up does
    report.sink = std::make_shared<CaptureSink>();
    ara::kelda::common::log::AddSink(report.sink);
    DaemonDouble::Options options;
    options.offerAtStart = offer;
    report.daemon = new DaemonDouble(options);  // lives until the child ends
    atexit(ReportAndExit);                      // runs after the plug-in's own exit handlers

    if (!vorx::vcc::DfxPluginLoader::Load(ORXCM_DFX_PATH)) {
        Fail("plug-in not loaded");
    }
    auto core = vorx::vcc::RegisterDfxInterface::GetOrxMaintaindInterface();
    if (!core) {
        Fail("no client registered");
    }
    core->InitializeAll();
    scenario(*core);
    core.reset();
    unlink(config.c_str());
    exit(0);
}

template <typename Scenario>
std::string RunInChild(bool offer, Scenario scenario) {
    int fds[2];
    if (pipe(fds) != 0) {
        return "fail pipe";
    }
    const pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        RunChild(fds[1], offer, scenario);
    }
    close(fds[1]);
    std::string output;
    char buffer[256];
    ssize_t got = 0;
    while ((got = read(fds[0], buffer, sizeof buffer)) > 0) {
        output.append(buffer, static_cast<size_t>(got));
    }
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return output;
}

TEST(LifecycleTest, ExitWaitsForAScheduledWithdrawalThenWithdrawsTheNodeOnce) {
    const std::string output = RunInChild(true, [](vorx::vcc::OrxMaintaindInterface& core) {
        if (!Report().sink->WaitForContaining(
                LogLevel::kDebug, "Register cache information for the first time.", 1, kWait)) {
            Fail("daemon not found");
        }
        core.RegisterNodePid(uint16_t{0x10});
        core.RegisterEventInfoToMaintaind({{DriverType::DDS, Event()}}, true);
        if (!Report().sink->WaitForContaining(LogLevel::kVerbose,
                                              "Register event info successfully.", 1, kWait) ||
            !WaitForRequests(2)) {
            Fail("reports not delivered");
        }
        // The withdrawal is still being answered when the process starts to exit.
        Report().daemon->Script(ScriptedReply::Code(0, std::chrono::milliseconds(200)));
        core.UnregisterEventInfoToMaintaind({{7, {{DriverType::DDS, Event()}}}}, true);
    });
    EXPECT_EQ(output,
              "3 1\n"  // node online
              "0 1\n"  // event online
              "0 0\n"  // event withdrawn, before ...
              "3 0\n"  // ... the node, withdrawn exactly once
              "destroyed 1\n"
              "ignored 0\n");
}

TEST(LifecycleTest, ANodeThatNeverReachedTheDaemonIsNotWithdrawn) {
    const std::string output = RunInChild(false, [](vorx::vcc::OrxMaintaindInterface& core) {
        core.RegisterNodePid(uint16_t{0x10});
        if (!Report().sink->WaitForContaining(
                LogLevel::kDebug, "Begin to insert register node pid event[", 1, kWait)) {
            Fail("node registration not scheduled");
        }
    });
    EXPECT_EQ(output, "destroyed 1\nignored 1\n");
}

}  // namespace
