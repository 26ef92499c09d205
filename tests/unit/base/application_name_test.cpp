#include "vorx/vcc/application_name.h"

#include <gtest/gtest.h>

namespace vorx::vcc {
namespace {

TEST(ApplicationNameTest, TheNameIsWhatTheProcessConfigured) {
    const auto name = ApplicationName::GetInstance();
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name, ApplicationName::GetInstance());
    EXPECT_EQ(name->GetAppName(), "") << "nothing read on its own";
    ApplicationName::Configure("radar");
    EXPECT_EQ(name->GetAppName(), "radar");
}

}  // namespace
}  // namespace vorx::vcc
