// The process's settings: read once from orx.json and the environment, then handed to the
// modules.
#include "vorx/vcc/app/process_settings.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>

#include <gtest/gtest.h>

#include "orx/test/log_capture.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/driver/driver_registry.h"

namespace {

namespace config = ara::kelda::common::orxConfigParser;
using ara::kelda::common::log::LogLevel;
using config::FixedEnvironment;
using config::ParseJsonToGetConfig;
using config::SettingOrigin;
using vorx::vcc::api::types::DriverType;
using vorx::vcc::app::LoadProcessSettings;
using vorx::vcc::app::ProcessSettings;

class ProcessSettingsTest : public orx::test::LogCaptureTest {
  protected:
    std::string Write(const std::string& json) {
        std::ofstream(path_) << json;
        return path_;
    }
    void TearDown() override { std::remove(path_.c_str()); }

    const std::string path_ = "/tmp/orx_process_settings_" + std::to_string(getpid()) + ".json";
};

TEST_F(ProcessSettingsTest, EachValueComesFromTheEnvironmentElseTheFileElseItsDefault) {
    const ParseJsonToGetConfig file(Write(R"({
      "application": {"name": "radar", "logLevel": "debug", "logFile": "/var/log/radar.log"},
      "dfx": {"pluginPath": "/opt/dfx.so", "sampleTimeoutThresholdMs": 250},
      "maintenance": {"instanceId": "3", "network": {"address": "10.0.0.5"}},
      "drivers": {"dds": "dds"},
      "dds": {"domainId": 7}
    })"));
    ProcessSettings settings = LoadProcessSettings(file, FixedEnvironment({}));
    EXPECT_EQ(settings.configPath, path_);
    EXPECT_EQ(settings.appName, "radar");
    EXPECT_EQ(settings.logLevel, LogLevel::kDebug);
    EXPECT_EQ(settings.logFile, "/var/log/radar.log");
    EXPECT_EQ(settings.pluginPath, "/opt/dfx.so");
    EXPECT_EQ(settings.sampleTimeoutThresholdMs, 250U);
    EXPECT_EQ(settings.maintenanceInstanceId, "3");
    EXPECT_EQ(settings.drivers.NameOf(DriverType::DDS), "dds");
    EXPECT_EQ(settings.dds.domainId, 7U);
    EXPECT_EQ(settings.dds.networkInterface, "10.0.0.5");
    for (const char* key : {"application.name", "application.logLevel", "application.logFile",
                            "dfx.pluginPath", "dfx.sampleTimeoutThresholdMs",
                            "maintenance.instanceId", "drivers.dds", "dds.domainId"}) {
        EXPECT_EQ(settings.report.OriginOf(key), SettingOrigin::File(path_, key)) << key;
    }
    EXPECT_TRUE(settings.report.problems.empty());

    settings = LoadProcessSettings(file, FixedEnvironment({{"ORX_LOG_LEVEL", "error"},
                                                           {"ORX_LOG_FILE", "/tmp/x.log"},
                                                           {"ORX_DFX_PLUGIN", "/env/dfx.so"},
                                                           {"ORX_DDS_DRIVER", "inprocess"},
                                                           {"ORX_DDS_DOMAIN", "9"},
                                                           {"ORX_INPROCESS_PAYLOAD", "objects"}}));
    EXPECT_EQ(settings.logLevel, LogLevel::kError);
    EXPECT_EQ(settings.logFile, "/tmp/x.log");
    EXPECT_EQ(settings.pluginPath, "/env/dfx.so");
    EXPECT_EQ(settings.drivers.NameOf(DriverType::DDS), "inprocess");
    EXPECT_EQ(settings.drivers.inProcessPayload, vorx::vcc::PayloadMode::kObjects);
    EXPECT_EQ(settings.dds.domainId, 9U);
    EXPECT_EQ(settings.report.OriginOf("application.logLevel"),
              SettingOrigin::Environment("ORX_LOG_LEVEL"));
    EXPECT_EQ(settings.report.OriginOf("dfx.pluginPath"),
              SettingOrigin::Environment("ORX_DFX_PLUGIN"));

    // Nothing configured: the defaults of the kind of process (here the daemon's).
    vorx::vcc::app::ProcessDefaults daemon;
    daemon.ddsDriver = "dds";
    daemon.pluginPath = "/beside/dfx.so";
    settings = LoadProcessSettings(ParseJsonToGetConfig("/nonexistent/orx.json"),
                                   FixedEnvironment({}), daemon);
    EXPECT_EQ(settings.appName, "");
    EXPECT_EQ(settings.logLevel, LogLevel::kInfo);
    EXPECT_EQ(settings.pluginPath, "/beside/dfx.so");
    EXPECT_EQ(settings.maintenanceInstanceId, "1");
    EXPECT_EQ(settings.drivers.names,
              (std::array<std::string, 3>{"inprocess", "dds", "inprocess"}));
    EXPECT_EQ(settings.dds, vorx::driver::dds::ParticipantSettings());
    EXPECT_EQ(settings.report.OriginOf("drivers.dds"), SettingOrigin::Default());
    EXPECT_TRUE(settings.report.problems.empty());
}

TEST_F(ProcessSettingsTest, EveryRefusedValueIsLoggedOnceAndRecordedWithItsOrigin) {
    const ParseJsonToGetConfig file(Write(R"({
      "application": {"name": 5, "logLevel": "loud"},
      "dfx": {"sampleTimeoutThresholdMs": -1},
      "maintenance": {"instanceId": true},
      "drivers": {"dds": 1},
      "dds": {"domainId": 999}
    })"));
    const ProcessSettings settings =
        LoadProcessSettings(file, FixedEnvironment({{"ORX_LOG_LEVEL", "bogus"},
                                                    {"ORX_DDS_DOMAIN", "abc"},
                                                    {"ORX_INPROCESS_PAYLOAD", "x"}}));
    std::vector<std::string> where;
    for (const auto& problem : settings.report.problems) {
        where.push_back(problem.origin.Describe());
    }
    const std::string in = " in " + path_;
    EXPECT_EQ(where, (std::vector<std::string>{
                         "key maintenance.instanceId" + in, "environment variable ORX_LOG_LEVEL",
                         "environment variable ORX_INPROCESS_PAYLOAD",
                         "environment variable ORX_DDS_DOMAIN", "key application.name" + in,
                         "key application.logLevel" + in, "key dfx.sampleTimeoutThresholdMs" + in,
                         "key drivers.dds" + in, "key dds.domainId" + in}));
    EXPECT_EQ(Log().CountContaining(LogLevel::kError, ""), where.size()) << Log().Dump();
    EXPECT_EQ(settings.appName, "");
    EXPECT_EQ(settings.logLevel, LogLevel::kInfo);
    EXPECT_EQ(settings.sampleTimeoutThresholdMs, 0U);
    EXPECT_EQ(settings.maintenanceInstanceId, "1");
    EXPECT_EQ(settings.dds.domainId, 0U);
}

TEST_F(ProcessSettingsTest, ApplyingHandsEachModuleItsPart) {
    ProcessSettings settings;
    settings.appName = "radar";
    settings.drivers.NameOf(DriverType::SOMEIP) = "special";
    settings.drivers.inProcessPayload = vorx::vcc::PayloadMode::kObjects;
    settings.dds.domainId = 12;
    vorx::vcc::app::ApplyProcessSettings(settings);

    EXPECT_EQ(vorx::vcc::ApplicationName::GetInstance()->GetAppName(), "radar");
    const auto registry = vorx::vcc::DriverRegistry::GetInstance();
    EXPECT_EQ(registry->Settings(), settings.drivers);
    EXPECT_EQ(registry->GetInProcessDriver()->GetPayloadMode(), vorx::vcc::PayloadMode::kObjects);
    EXPECT_EQ(vorx::driver::dds::ProcessParticipantSettings().domainId, 12U);
}

}  // namespace
