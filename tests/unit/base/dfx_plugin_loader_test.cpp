#include "vorx/vcc/dfx_plugin_loader.h"

#include <gtest/gtest.h>

#include <string>

#include "ara/kelda/common/log/testing.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace vorx::vcc {
namespace {

using ara::kelda::common::log::LogLevel;
using ara::kelda::common::log::ScopedCaptureSink;

TEST(DfxPluginLoaderTest, MissingOrBadPluginIsOneWarningAndTheProcessRunsOn) {
    ScopedCaptureSink sink;
    RegisterDfxInterface::RegisterOrxMaintaindInterface(nullptr);  // no leftovers of other tests
    const uint32_t clientsBefore = RegisterDfxInterface::OrxMaintaindRegistrationCount();

    EXPECT_FALSE(DfxPluginLoader::Load(""));
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
    // A file that is not a library, and a library that registers nothing.
    EXPECT_FALSE(DfxPluginLoader::Load("/dev/null"));
    EXPECT_EQ(sink->CountContaining(LogLevel::kWarn, "[path=/dev/null"), 1U) << sink->Dump();
    EXPECT_FALSE(DfxPluginLoader::Load(VCC_EMPTY_PLUGIN_PATH));
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
    EXPECT_TRUE(DfxPluginLoader::Load(""));
    EXPECT_EQ(RegisterDfxInterface::OrxMaintaindRegistrationCount(), clientsBefore + 1);
}

}  // namespace
}  // namespace vorx::vcc
