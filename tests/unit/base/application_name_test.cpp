#include "vorx/vcc/application_name.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "test_config.h"

namespace vorx::vcc {
namespace {

TEST(ApplicationNameTest, NameComesFromOrxJson) {
    const auto name = ApplicationName::GetInstance();
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name, ApplicationName::GetInstance());
    EXPECT_EQ(name->GetAppName(), test::kTestAppName);
}

TEST(ApplicationNameTest, NameIsEmptyWithoutOrxJson) {
    // The name is read once per process: ask in a fresh one.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            setenv("ORX_CONFIG", "/nonexistent/orx.json", 1);
            std::exit(ApplicationName::GetInstance()->GetAppName().empty() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace vorx::vcc
