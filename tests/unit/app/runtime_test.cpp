#include "vorx/vcc/app/runtime.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "orx/test/log_capture.h"
#include "recording_maintaind.h"
#include "test_deployments.h"

namespace {

using ara::kelda::common::log::LogLevel;
using orx::test::RecordingMaintaind;
using vorx::vcc::app::Runtime;

// An orx.json of the test's own, removed at the end.
class ConfigFile {
  public:
    explicit ConfigFile(const std::string& content)
        : path_("/tmp/orx_app_runtime_test_" + std::to_string(::getpid()) + ".json") {
        std::ofstream(path_) << content;
    }
    ~ConfigFile() { std::remove(path_.c_str()); }
    const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

class RuntimeTest : public orx::test::LogCaptureTest {
  protected:
    void SetUp() override {
        ::unsetenv("ORX_CONFIG");
        ::unsetenv("ORX_DFX_PLUGIN");
    }
};

std::string SensorConfig() {
    nlohmann::json document = orx::test::Document({orx::test::FullService()});
    document["application"] = {{"name", "sensor-app"}};
    document["dfx"] = {{"sampleTimeoutThresholdMs", 250}};
    return document.dump();
}

TEST_F(RuntimeTest, ReadsItsFileAndInitialisesTheRegisteredMaintenanceInterface) {
    const ConfigFile file(SensorConfig());
    auto recorder = RecordingMaintaind::Install();
    Runtime::Options options;
    options.configPath = file.Path();

    const Runtime runtime(options);

    EXPECT_EQ(runtime.ConfigPath(), file.Path());
    EXPECT_EQ(std::string(std::getenv("ORX_CONFIG")), file.Path())
        << "every reader of the process reads the same file";
    EXPECT_EQ(runtime.AppName(), "sensor-app");
    EXPECT_EQ(runtime.SampleTimeoutThresholdMs(), 250U);
    EXPECT_EQ(runtime.Deployments().size(), 1U);
    EXPECT_TRUE(runtime.DeploymentErrors().empty());
    EXPECT_TRUE(runtime.MaintenanceEnabled());
    EXPECT_EQ(recorder->Ops(), (std::vector<std::string>{"InitializeAll"}));
    EXPECT_EQ(Log().CountContaining(LogLevel::kInfo, "DFX plug-in not configured"), 1U);

    EXPECT_NE(runtime.Provide("/test/SensorService"), nullptr);
    EXPECT_NE(runtime.Provide("Sensor"), nullptr) << "found by short name too";
    EXPECT_EQ(runtime.Require("Sensor"), nullptr) << "deployed as provided only";
    EXPECT_TRUE(Log().Contains(LogLevel::kError,
                               "[App][No required service of this name deployed][service=Sensor, "
                               "config=" +
                                   file.Path() + "]"));
}

TEST_F(RuntimeTest, APlugInThatCannotBeLoadedLeavesTheApplicationRunning) {
    const ConfigFile file(SensorConfig());
    Runtime::Options options;
    options.configPath = file.Path();
    options.pluginPath = "/nonexistent/liborxcm_dfx.so";

    const Runtime runtime(options);

    EXPECT_FALSE(runtime.MaintenanceEnabled());
    EXPECT_EQ(Log().CountContaining(LogLevel::kWarn,
                                    "Failed to load DFX plug-in[path=/nonexistent/liborxcm_dfx.so"),
              1U)
        << Log().Dump();
    auto provider = runtime.Provide("Sensor");
    ASSERT_NE(provider, nullptr);
    EXPECT_TRUE(provider->Offer());
}

TEST_F(RuntimeTest, ABrokenFileMeansNothingConfiguredAndOnlyOneRuntimeRuns) {
    const ConfigFile file("{ \"services\": [ {\"service\": ");
    Runtime::Options options;
    options.configPath = file.Path();
    options.loadPlugin = false;

    const Runtime runtime(options);
    EXPECT_TRUE(runtime.Deployments().empty());
    EXPECT_EQ(runtime.AppName(), "");
    EXPECT_EQ(Log().CountContaining(LogLevel::kError, "Config file is not valid JSON"), 1U);

    const Runtime second(options);
    EXPECT_TRUE(
        Log().Contains(LogLevel::kWarn, "[App][A second Runtime in one process is refused]"));
    EXPECT_TRUE(second.Deployments().empty());
    EXPECT_EQ(second.Provide("Sensor"), nullptr);
}

}  // namespace
