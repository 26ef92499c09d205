// The orxmaint program itself: exit codes and the message when maintaind is not there.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "orx/test/child_process.h"

namespace orx::orxmaint {
namespace {

using std::chrono::milliseconds;

const std::string kOrxmaint = ORXMAINT_PATH;

// The tool's own environment: no configuration file, no driver or domain chosen from outside.
orx::test::EnvChanges CleanEnvironment() {
    return {{"ORX_CONFIG", "/nonexistent/orx.json"},
            {"ORX_DDS_DRIVER", ""},
            {"ORX_DDS_DOMAIN", ""},
            {"ORX_LOG_LEVEL", ""},
            {"CYCLONEDDS_URI", ""}};
}

TEST(BinaryTest, UsageErrorsExitWithTwoAndHelpWithZero) {
    // What each usage error says is the command line's test (options_test.cpp).
    const orx::test::RunResult bogus =
        orx::test::RunToEnd({kOrxmaint, "bogus"}, CleanEnvironment(), milliseconds(10000));
    EXPECT_EQ(bogus.exitCode, 2) << bogus.err;
    EXPECT_NE(bogus.err, "");
    EXPECT_EQ(bogus.out, "");
    const orx::test::RunResult help =
        orx::test::RunToEnd({kOrxmaint, "--help"}, CleanEnvironment(), milliseconds(10000));
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("Usage"), std::string::npos) << help.out;
}

TEST(BinaryTest, NoDaemonOnTheDdsDomainIsNamedWithTheDomain) {
    // Loopback only (the DDS driver's default), on a domain no other test uses.
    const orx::test::RunResult run =
        orx::test::RunToEnd({kOrxmaint, "--domain", "97", "--instance-id", "5", "--timeout-ms",
                             "500", "--json", "events"},
                            CleanEnvironment(), milliseconds(10000));
    EXPECT_EQ(run.exitCode, 1) << run.err;
    EXPECT_NE(run.err.find("maintaind is not reachable on DDS domain 97 (instance 5): no answer "
                           "within 500 ms. Is maintaind running?\n"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_LT(run.wall, milliseconds(3000));
}

}  // namespace
}  // namespace orx::orxmaint
