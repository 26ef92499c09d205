// The real plug-in, driven through the core's interface, against the daemon double over the
// in-process driver. The client runs on an EventController whose clock only the test moves, so
// replay passes, query periods and reply timeouts happen when the test says, and the test learns
// what they did from what the daemon double received.
//
// The client is a process-wide singleton that is initialised once: every test case runs in a
// process of its own (ctest runs each case alone); a hand run of the whole binary skips the cases
// after the first.
#ifndef TESTS_UNIT_PLUGIN_PLUGIN_FIXTURE_H
#define TESTS_UNIT_PLUGIN_PLUGIN_FIXTURE_H

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "ara/kelda/common/log/log_level.h"
#include "orx/maintaind/types.h"
#include "orx/test/daemon_double.h"
#include "orx/test/log_capture.h"
#include "orx/test/wait.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/event_controller.h"
#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace orx::test::plugin {

using ara::kelda::common::log::LogLevel;
using orx::maintaind::AppRegisterInfo;
using orx::maintaind::ReportKind;
using orx::orxcm::orxmaintaind::OrxMaintaindClient;
using vorx::vcc::api::types::DriverType;

constexpr std::chrono::milliseconds kWait{10000};
constexpr long kMs = 1000000L;
inline const std::string kAppName = "PluginApp";

template <typename Info>
using BindingMap = vorx::vcc::OrxMaintaindInterface::BindingMap<Info>;
template <typename Info>
using EntityMap = vorx::vcc::OrxMaintaindInterface::EntityBindingMap<Info>;
using EventMap = BindingMap<vorx::vcc::api::types::EventInfo>;

// A DDS event of service `serviceId`, instance `instance`, topic `name` + "Topic".
inline std::shared_ptr<vorx::driver::dds::DDSEventInfo> DdsEvent(
    uint16_t serviceId, uint32_t entityId, const std::string& name,
    const std::string& instance = "1") {
    auto info = std::make_shared<vorx::driver::dds::DDSEventInfo>();
    info->SetServiceId(serviceId);
    info->SetInstanceId(instance);
    info->SetEntityId(entityId);
    info->SetServiceName("/test/Service" + std::to_string(serviceId));
    info->SetEventName(name);
    info->SetTopicName(name + "Topic");
    info->SetDriver(DriverType::DDS);
    return info;
}

inline std::shared_ptr<vorx::driver::someip::SomeipEventInfo> SomeipEvent(
    uint16_t serviceId, uint32_t entityId, const std::string& name, uint16_t eventId,
    const std::string& instance = "1") {
    auto info = std::make_shared<vorx::driver::someip::SomeipEventInfo>();
    info->SetServiceId(serviceId);
    info->SetInstanceId(instance);
    info->SetEntityId(entityId);
    info->SetServiceName("/test/Service" + std::to_string(serviceId));
    info->SetEventName(name);
    info->SetEventId(eventId);
    info->SetDriver(DriverType::SOMEIP);
    return info;
}

// The core's view of the plug-in's client: what the core registered at load.
inline std::shared_ptr<vorx::vcc::OrxMaintaindInterface> Core() {
    return vorx::vcc::RegisterDfxInterface::GetOrxMaintaindInterface();
}

// `report` with the nested records this test looked at reset: what is left must be default.
inline AppRegisterInfo Rest(AppRegisterInfo report) {
    report.isPub = false;
    report.eventRegisterInfo = {};
    report.methodRegisterInfo = {};
    report.fieldRegisterInfo = {};
    report.nodeCommonRegisterInfo = {};
    report.latencyInfo = {};
    report.listenerParams.clear();
    return report;
}

class PluginTest : public ::testing::Test {
  protected:
    void SetUp() override {
        static int casesInThisProcess = 0;
        if (++casesInThisProcess > 1) {
            GTEST_SKIP() << "needs a process of its own: run it through ctest or alone with "
                            "--gtest_filter";
        }
        configPath_ = ::testing::TempDir() + "plugin_test_" + std::to_string(getpid()) + ".json";
        WriteConfig(R"({"application": {"name": ")" + kAppName + R"("}})");
    }
    void TearDown() override {
        // What still runs after the test (replies nobody gives any more, the reports at exit)
        // must not wait for a clock that nobody moves.
        clock_->Release();
        if (!configPath_.empty()) {
            unlink(configPath_.c_str());
        }
    }

    // Replaces orx.json. The configuration is read once, on first use: call this before the
    // daemon double or the client starts.
    void WriteConfig(const std::string& json) {
        std::ofstream(configPath_, std::ios::trunc) << json;
        setenv("ORX_CONFIG", configPath_.c_str(), 1);
        // The application's start-up names the process; here the test does.
        vorx::vcc::ApplicationName::Configure(nlohmann::json::parse(json)
                                                  .value("application", nlohmann::json::object())
                                                  .value("name", ""));
    }

    void StartDaemon(bool offer = true) {
        DaemonDouble::Options options;
        options.offerAtStart = offer;
        daemon_ = std::make_unique<DaemonDouble>(options);
    }

    // InitializeAll through the core, on this test's controller; with `waitForFirstPass`, also
    // waits until the client found the daemon and ran its first replay.
    void StartClient(bool waitForFirstPass = true) {
        OrxMaintaindClient::GetInstance()->UseEventController(controller_);
        Core()->InitializeAll();
        if (waitForFirstPass) {
            WaitForFirstPass();
        }
    }

    // The discovery callback creates the proxy and inserts the first-time and the periodic
    // replay (under the client's mutex, which the first-time replay needs too): once a job is
    // queued after the proxy exists, settling runs both.
    void WaitForFirstPass() {
        ASSERT_TRUE(WaitFor(
            [this] {
                return OrxMaintaindClient::GetInstance()->GetMaintaindProxy() != nullptr &&
                       controller_->PendingCount() > 0U;
            },
            kWait));
        Settle();
    }

    // Waits until every job that is due has run.
    void Settle() { ASSERT_TRUE(controller_->WaitForDueJobs(kWait)); }

    // Moves the clock and lets what became due run.
    void Advance(long ns) {
        clock_->Advance(std::chrono::nanoseconds(ns));
        Settle();
    }

    // Moves the clock without waiting: for a job that waits for a reply right now.
    void Step(long ns) { clock_->Advance(std::chrono::nanoseconds(ns)); }

    bool WaitForReceived(size_t count) const { return daemon_->WaitForCount(count, kWait); }
    std::vector<AppRegisterInfo> Received() const { return daemon_->Received(); }

    // Holds every reply of the daemon double until the returned function is called.
    std::function<void()> HoldReplies() {
        struct Gate {
            std::mutex mutex;
            std::condition_variable cv;
            bool open = false;
        };
        auto gate = std::make_shared<Gate>();
        daemon_->Faults()->SetReplyRewriter([gate](vorx::vcc::MethodReply&) {
            std::unique_lock<std::mutex> lock(gate->mutex);
            gate->cv.wait(lock, [&] { return gate->open; });
        });
        return [gate] {
            std::lock_guard<std::mutex> lock(gate->mutex);
            gate->open = true;
            gate->cv.notify_all();
        };
    }

    ara::kelda::common::log::CaptureSink& Log() const { return capture_.Sink(); }

    ScopedLogCapture capture_;
    std::string configPath_;
    std::shared_ptr<vorx::vcc::ManualMonoClock> clock_ =
        std::make_shared<vorx::vcc::ManualMonoClock>();
    std::shared_ptr<vorx::vcc::EventController> controller_ =
        std::make_shared<vorx::vcc::EventController>(clock_);
    std::unique_ptr<DaemonDouble> daemon_;
};

}  // namespace orx::test::plugin

#endif  // TESTS_UNIT_PLUGIN_PLUGIN_FIXTURE_H
