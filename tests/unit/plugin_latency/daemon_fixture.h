// A running plug-in client bound to the daemon double, for the tests that go end to end.
#ifndef TESTS_UNIT_PLUGIN_LATENCY_DAEMON_FIXTURE_H
#define TESTS_UNIT_PLUGIN_LATENCY_DAEMON_FIXTURE_H

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "latency_test_support.h"
#include "orx/maintaind/types.h"
#include "orx/test/daemon_double.h"
#include "orx/test/log_capture.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "vorx/vcc/application_name.h"

namespace orx::test::latency {

constexpr std::chrono::seconds kWait{5};
inline const std::string kAppName = "LatencyApp";

// Each case runs in its own process: the client singleton is bound here for the first time.
class DaemonFixture : public ::testing::Test {
  protected:
    void SetUp() override {
        // The client singleton can be bound once per process.
        if (CountCaseInThisProcess() > 1) {
            GTEST_SKIP() << kNeedsOwnProcess;
        }
        configPath_ = ::testing::TempDir() + "plugin_latency_" + std::to_string(getpid()) + ".json";
        std::ofstream(configPath_) << R"({"application": {"name": ")" << kAppName << R"("}})";
        setenv("ORX_CONFIG", configPath_.c_str(), 1);
        vorx::vcc::ApplicationName::Configure(kAppName);  // as a process's start-up does
        daemon_ = std::make_unique<DaemonDouble>();
    }
    void TearDown() override {
        if (!configPath_.empty()) {
            unlink(configPath_.c_str());
        }
    }

    // Starts the client and waits until it has bound the daemon's method and latency event.
    void StartClient() {
        client_ = orx::orxcm::orxmaintaind::OrxMaintaindClient::GetInstance();
        client_->InitializeAll();
        ASSERT_TRUE(capture_->WaitForContaining(ara::kelda::common::log::LogLevel::kDebug,
                                                "Register cache information for the first time.", 1,
                                                kWait));
    }

    // The requests of one report kind, in arrival order.
    std::vector<orx::maintaind::AppRegisterInfo> ReceivedOfKind(
        orx::maintaind::ReportKind kind) const {
        std::vector<orx::maintaind::AppRegisterInfo> out;
        for (const auto& request : daemon_->Received()) {
            if (request.kind == static_cast<uint8_t>(kind)) {
                out.push_back(request);
            }
        }
        return out;
    }

    bool WaitForKind(orx::maintaind::ReportKind kind, size_t count) const {
        return daemon_->WaitFor(
            [kind, count](const std::vector<orx::maintaind::AppRegisterInfo>& all) {
                size_t found = 0;
                for (const auto& request : all) {
                    found += request.kind == static_cast<uint8_t>(kind) ? 1U : 0U;
                }
                return found >= count;
            },
            kWait);
    }

    ScopedLogCapture capture_;
    std::string configPath_;
    std::unique_ptr<DaemonDouble> daemon_;
    std::shared_ptr<orx::orxcm::orxmaintaind::OrxMaintaindClient> client_;
};

}  // namespace orx::test::latency

#endif  // TESTS_UNIT_PLUGIN_LATENCY_DAEMON_FIXTURE_H
