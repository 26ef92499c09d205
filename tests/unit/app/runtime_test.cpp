#include "vorx/vcc/app/runtime.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "ara/kelda/common/log/log.h"
#include "orx/test/log_capture.h"
#include "recording_maintaind.h"
#include "test_deployments.h"
#include "vorx/vcc/application_name.h"

namespace {

namespace kelda = ara::kelda::common::log;
using kelda::LogLevel;
using orx::test::RecordingMaintaind;
using vorx::vcc::app::Runtime;

// An orx.json of the test's own, removed at the end; ORX_CONFIG and ORX_DFX_PLUGIN are unset so
// that the runtime's options count.
class RuntimeTest : public orx::test::LogCaptureTest {
  protected:
    void SetUp() override {
        ::unsetenv("ORX_CONFIG");
        ::unsetenv("ORX_DFX_PLUGIN");
    }
    void TearDown() override { std::remove(path_.c_str()); }
    Runtime::Options Write(const std::string& content) {
        std::ofstream(path_) << content;
        Runtime::Options options;
        options.configPath = path_;
        return options;
    }

    const std::string path_ = "/tmp/orx_app_runtime_test_" + std::to_string(::getpid()) + ".json";
};

TEST_F(RuntimeTest, StartsTheProcessFromItsFileAndInitialisesTheMaintenanceInterface) {
    nlohmann::json document = orx::test::Document({orx::test::FullService()});
    document["application"] = {{"name", "sensor-app"}};
    document["dfx"] = {{"sampleTimeoutThresholdMs", 250}};
    Runtime::Options options = Write(document.dump());
    options.pluginPath = "/nonexistent/liborxcm_dfx.so";
    auto recorder = RecordingMaintaind::Install();  // as if a plug-in were linked

    const Runtime runtime(options);

    EXPECT_EQ(runtime.ConfigPath(), path_);
    EXPECT_EQ(std::string(std::getenv("ORX_CONFIG")), path_) << "the plug-in reads the same file";
    EXPECT_EQ(runtime.AppName(), "sensor-app");
    EXPECT_EQ(runtime.SampleTimeoutThresholdMs(), 250U);
    EXPECT_EQ(vorx::vcc::ApplicationName::GetInstance()->GetAppName(), "sensor-app");
    EXPECT_EQ(Log().CountContaining(LogLevel::kWarn,
                                    "Failed to load DFX plug-in[path=/nonexistent/liborxcm_dfx.so"),
              1U)
        << Log().Dump();
    EXPECT_TRUE(runtime.MaintenanceEnabled());
    EXPECT_EQ(recorder->Ops(), (std::vector<std::string>{"InitializeAll"}));
    // Logging is the application's, also after the plug-in initialised it for itself.
    kelda::Log::InitLog("CM_LOG", "CM");
    EXPECT_EQ(kelda::Log::GetDefaultLog()->ContextId(), "APP");
    kelda::Log::GetLog("CM")->LogInfo() << "after the plug-in";
    EXPECT_EQ(Log().Records().back().appId, "sensor-app");

    ASSERT_EQ(runtime.Deployments().size(), 1U);
    EXPECT_TRUE(runtime.DeploymentErrors().empty());
    auto provider = runtime.Provide("/test/SensorService");
    ASSERT_NE(provider, nullptr);
    EXPECT_TRUE(provider->Offer());
    EXPECT_NE(runtime.Provide("Sensor"), nullptr) << "found by short name too";
    EXPECT_EQ(runtime.Require("Sensor"), nullptr) << "deployed as provided only";
    EXPECT_TRUE(Log().Contains(LogLevel::kError,
                               "[App][No required service of this name deployed][service=Sensor, "
                               "config=" +
                                   path_ + "]"));
}

TEST_F(RuntimeTest, ABrokenFileMeansNothingConfiguredAndOnlyOneRuntimeRuns) {
    Runtime::Options options = Write("{ \"services\": [ {\"service\": ");
    options.loadPlugin = false;

    const Runtime runtime(options);
    EXPECT_TRUE(runtime.Deployments().empty());
    EXPECT_EQ(runtime.AppName(), "");
    EXPECT_FALSE(runtime.MaintenanceEnabled());
    EXPECT_EQ(Log().CountContaining(LogLevel::kError, "Config file is not valid JSON"), 1U);
    EXPECT_EQ(runtime.Settings().report.problems.size(), 1U);

    const Runtime second(options);
    EXPECT_TRUE(
        Log().Contains(LogLevel::kWarn, "[App][A second Runtime in one process is refused]"));
    EXPECT_TRUE(second.Deployments().empty());
    EXPECT_EQ(second.Provide("Sensor"), nullptr);
}

}  // namespace
