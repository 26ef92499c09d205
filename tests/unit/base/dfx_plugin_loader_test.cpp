#include "vorx/vcc/dfx_plugin_loader.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "ara/kelda/common/log/testing.h"
#include "test_config.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace vorx::vcc {
namespace {

using ara::kelda::common::log::LogLevel;
using ara::kelda::common::log::ScopedCaptureSink;

TEST(DfxPluginLoaderTest, MissingOrBadPluginIsOneWarningAndTheProcessRunsOn) {
    ScopedCaptureSink sink;
    RegisterDfxInterface::RegisterOrxMaintaindInterface(nullptr);  // no leftovers of other tests
    const uint32_t clientsBefore = RegisterDfxInterface::OrxMaintaindRegistrationCount();

    // Nothing configured (no argument, no environment, no path in orx.json).
    EXPECT_FALSE(DfxPluginLoader::Load());
    EXPECT_EQ(
        sink->Count(LogLevel::kInfo, "DFX plug-in not configured, maintenance reporting is off"),
        1U)
        << sink->Dump();
    EXPECT_EQ(sink->CountContaining(LogLevel::kWarn, ""), 0U);

    // A file that is not there: the warning names the path and carries dlerror()'s text.
    const std::string missing = "/nonexistent/liborxcm_dfx.so";
    EXPECT_FALSE(DfxPluginLoader::Load(missing));
    EXPECT_EQ(sink->CountContaining(LogLevel::kWarn, missing), 1U) << sink->Dump();
    EXPECT_EQ(sink->CountContaining(LogLevel::kWarn, "No such file or directory"), 1U);

    // A file that is not a library.
    const std::string notALibrary = test::WriteConfigFile("not_a_library", "{}");
    EXPECT_FALSE(DfxPluginLoader::Load(notALibrary));
    EXPECT_EQ(sink->CountContaining(LogLevel::kWarn, notALibrary), 1U) << sink->Dump();

    // A library that registers nothing, named by the environment.
    setenv("ORX_DFX_PLUGIN", VCC_EMPTY_PLUGIN_PATH, 1);
    EXPECT_FALSE(DfxPluginLoader::Load());
    unsetenv("ORX_DFX_PLUGIN");
    EXPECT_EQ(sink->CountContaining(LogLevel::kWarn, "registered no maintenance interface"), 1U)
        << sink->Dump();

    EXPECT_EQ(sink->CountContaining(LogLevel::kWarn, ""), 3U) << "one warning per failure";
    EXPECT_FALSE(DfxPluginLoader::Loaded());
    EXPECT_EQ(RegisterDfxInterface::OrxMaintaindRegistrationCount(), clientsBefore);
}

TEST(DfxPluginLoaderTest, PluginRegistersItsInterfacesOnceWhenLoaded) {
    const uint32_t configsBefore = RegisterDfxInterface::DfxConfigRegistrationCount();
    const uint32_t clientsBefore = RegisterDfxInterface::OrxMaintaindRegistrationCount();
    ASSERT_TRUE(DfxPluginLoader::Load(VCC_TEST_PLUGIN_PATH));
    EXPECT_TRUE(DfxPluginLoader::Loaded());
    EXPECT_EQ(RegisterDfxInterface::DfxConfigRegistrationCount(), configsBefore + 1);
    EXPECT_EQ(RegisterDfxInterface::OrxMaintaindRegistrationCount(), clientsBefore + 1);
    EXPECT_NE(RegisterDfxInterface::GetOrxMaintaindInterface(), nullptr);
    EXPECT_NE(RegisterDfxInterface::GetDfxConfigInterface(), nullptr);

    // Loaded at most once: later calls, whatever their path, change nothing.
    EXPECT_TRUE(DfxPluginLoader::Load(VCC_EMPTY_PLUGIN_PATH));
    EXPECT_TRUE(DfxPluginLoader::Load());
    EXPECT_EQ(RegisterDfxInterface::OrxMaintaindRegistrationCount(), clientsBefore + 1);
}

TEST(DfxPluginLoaderTest, PluginPathComesFromOrxJsonWhenNotGiven) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            test::UseConfig("plugin", std::string(R"({"dfx": {"pluginPath": ")") +
                                          VCC_TEST_PLUGIN_PATH + "\"}}");
            std::exit(DfxPluginLoader::Load() && DfxPluginLoader::Loaded() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace vorx::vcc
