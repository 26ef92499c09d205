// The real plug-in, driven through the core's interface, against the daemon double over the
// in-process driver. Each test case runs in its own process, so the client singleton is fresh.
#ifndef TESTS_UNIT_PLUGIN_CORE_PLUGIN_FIXTURE_H
#define TESTS_UNIT_PLUGIN_CORE_PLUGIN_FIXTURE_H

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "ara/kelda/common/log/log_level.h"
#include "orx/maintaind/types.h"
#include "orx/test/daemon_double.h"
#include "orx/test/log_capture.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace orx::test::plugin {

using ara::kelda::common::log::LogLevel;
using orx::maintaind::AppRegisterInfo;
using orx::maintaind::ReportKind;
using vorx::vcc::api::types::DriverType;

// Generous: sanitizer builds on a shared two-core machine are slow.
constexpr std::chrono::seconds kWait{10};
inline const std::string kAppName = "PluginApp";

template <typename Info>
using BindingMap = vorx::vcc::OrxMaintaindInterface::BindingMap<Info>;

// A DDS event of service `serviceId`, instance "1".
inline std::shared_ptr<vorx::driver::dds::DDSEventInfo> DdsEvent(uint16_t serviceId,
                                                                 uint32_t entityId,
                                                                 const std::string& name) {
    auto info = std::make_shared<vorx::driver::dds::DDSEventInfo>();
    info->SetServiceId(serviceId);
    info->SetInstanceId("1");
    info->SetEntityId(entityId);
    info->SetServiceName("/test/Service" + std::to_string(serviceId));
    info->SetEventName(name);
    info->SetTopicName(name + "Topic");
    info->SetDriver(DriverType::DDS);
    return info;
}

inline BindingMap<vorx::vcc::api::types::EventInfo> DdsEventMap(uint16_t serviceId,
                                                                uint32_t entityId,
                                                                const std::string& name) {
    return {{DriverType::DDS, DdsEvent(serviceId, entityId, name)}};
}

// The core's view of the plug-in's client: what the core registered at load.
inline std::shared_ptr<vorx::vcc::OrxMaintaindInterface> Core() {
    return vorx::vcc::RegisterDfxInterface::GetOrxMaintaindInterface();
}

class PluginFixture : public ::testing::Test {
  protected:
    void SetUp() override {
        configPath_ = ::testing::TempDir() + "plugin_test_" + std::to_string(getpid()) + ".json";
        WriteConfig(R"({"application": {"name": ")" + kAppName + R"("}})");
    }
    void TearDown() override { unlink(configPath_.c_str()); }

    // Replaces orx.json, and hands its application name to the core as a process's start-up does.
    // The shared configuration is read once, on first use, so call this before the daemon double
    // or the client starts.
    void WriteConfig(const std::string& json) {
        std::ofstream(configPath_, std::ios::trunc) << json;
        setenv("ORX_CONFIG", configPath_.c_str(), 1);
        vorx::vcc::ApplicationName::Configure(nlohmann::json::parse(json)
                                                  .value("application", nlohmann::json::object())
                                                  .value("name", ""));
    }

    void StartDaemon(bool offer = true) {
        DaemonDouble::Options options;
        options.offerAtStart = offer;
        daemon_ = std::make_unique<DaemonDouble>(options);
    }

    // InitializeAll through the core; with `waitForFirstPass`, also waits until the client found
    // the daemon and ran its first replay.
    void StartClient(bool waitForFirstPass = true) {
        Core()->InitializeAll();
        if (waitForFirstPass) {
            WaitForFirstPass();
        }
    }

    void WaitForFirstPass() {
        ASSERT_TRUE(Log().WaitForContaining(
            LogLevel::kDebug, "Registered cache information completed[reriodicCount=", 1, kWait));
    }

    // Registers the node and waits until the client has the daemon's answer (the double may
    // record a request before it picks the reply, so scripting must wait for the answer).
    void RegisterNode() {
        Core()->RegisterNodePid(uint16_t{0x1234});
        ASSERT_TRUE(
            Log().WaitForContaining(LogLevel::kVerbose, "Register app : " + kAppName, 1, kWait));
    }

    // Waits until `count` event reports have been answered and handled by the client.
    void WaitForEventsHandled(size_t count) {
        ASSERT_TRUE(Log().WaitForContaining(LogLevel::kVerbose, "Register event info successfully.",
                                            count, kWait));
    }

    std::vector<AppRegisterInfo> ReceivedOfKind(ReportKind kind) const {
        std::vector<AppRegisterInfo> out;
        for (const auto& request : daemon_->Received()) {
            if (request.kind == static_cast<uint8_t>(kind)) {
                out.push_back(request);
            }
        }
        return out;
    }

    bool WaitForKind(ReportKind kind, size_t count) const {
        return daemon_->WaitFor(
            [kind, count](const std::vector<AppRegisterInfo>& all) {
                size_t found = 0;
                for (const auto& request : all) {
                    found += (request.kind == static_cast<uint8_t>(kind)) ? 1U : 0U;
                }
                return found >= count;
            },
            kWait);
    }

    ara::kelda::common::log::CaptureSink& Log() const { return capture_.Sink(); }

    ScopedLogCapture capture_;
    std::string configPath_;
    std::unique_ptr<DaemonDouble> daemon_;
};

}  // namespace orx::test::plugin

#endif  // TESTS_UNIT_PLUGIN_CORE_PLUGIN_FIXTURE_H
