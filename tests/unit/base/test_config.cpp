#include "test_config.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace vorx::vcc::test {

std::string WriteConfigFile(const std::string& name, const std::string& json) {
    const std::string path =
        testing::TempDir() + "vcc_base_" + std::to_string(getpid()) + "_" + name + ".json";
    std::ofstream(path) << json;
    return path;
}

void UseConfig(const std::string& name, const std::string& json) {
    setenv("ORX_CONFIG", WriteConfigFile(name, json).c_str(), 1);
}

namespace {

// Every test of this binary sees the same orx.json: it names the application and no plug-in.
// The configuration is read once per process, so tests that need another one run it in a
// child process.
class ConfigEnvironment : public testing::Environment {
  public:
    void SetUp() override {
        UseConfig("orx", std::string(R"({"application": {"name": ")") + kTestAppName + "\"}}");
        unsetenv("ORX_DFX_PLUGIN");
    }
};

testing::Environment* const g_configEnvironment =
    testing::AddGlobalTestEnvironment(new ConfigEnvironment);

}  // namespace
}  // namespace vorx::vcc::test
