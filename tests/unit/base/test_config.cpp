#include "test_config.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "orx/test/temp_dir.h"

namespace vorx::vcc::test {

namespace {

// The folder of this test process's files, removed at its exit. Death-test children find it in
// the environment and write there too.
const std::string& Folder() {
    static const std::string path = [] {
        if (const char* inherited = getenv("VCC_BASE_TEST_DIR")) {
            return std::string(inherited);
        }
        static const orx::test::TempDir folder("vcc-base-test");
        setenv("VCC_BASE_TEST_DIR", folder.Path().c_str(), 1);
        return folder.Path();
    }();
    return path;
}

}  // namespace

std::string WriteConfigFile(const std::string& name, const std::string& json) {
    const std::string path = Folder() + "/" + name + ".json";
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
