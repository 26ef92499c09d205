// The orxmaint program itself: exit codes and the message when maintaind is not there.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "child_run.h"

namespace orx::orxmaint {
namespace {

using std::chrono::milliseconds;

const std::string kOrxmaint = ORXMAINT_PATH;

// The tool's own environment: no configuration file, no driver or domain chosen from outside.
std::vector<std::pair<std::string, std::string>> CleanEnvironment() {
    return {{"ORX_CONFIG", "/nonexistent/orx.json"},
            {"ORX_DDS_DRIVER", ""},
            {"ORX_DDS_DOMAIN", ""},
            {"ORX_LOG_LEVEL", ""},
            {"CYCLONEDDS_URI", ""}};
}

TEST(BinaryTest, UsageErrorsExitWithTwoAndHelpWithZero) {
    for (const std::vector<std::string>& args : {std::vector<std::string>{kOrxmaint},
                                                 {kOrxmaint, "bogus"},
                                                 {kOrxmaint, "events", "--service", "0x1FFFF"},
                                                 {kOrxmaint, "latency", "enable"}}) {
        const test::ChildResult run = test::RunChild(args, CleanEnvironment(), milliseconds(10000));
        EXPECT_EQ(run.exitCode, 2) << args.back() << "\n" << run.err;
        EXPECT_NE(run.err, "") << args.back();
        EXPECT_EQ(run.out, "") << args.back();
    }
    const test::ChildResult help =
        test::RunChild({kOrxmaint, "--help"}, CleanEnvironment(), milliseconds(10000));
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("Usage"), std::string::npos) << help.out;
}

TEST(BinaryTest, NoDaemonGivesAClearMessageAndExitCodeOneSoon) {
    // The in-process driver: nothing can be offered there, and nothing leaves the process.
    auto env = CleanEnvironment();
    env.emplace_back("ORX_DDS_DRIVER", "inprocess");
    const test::ChildResult run =
        test::RunChild({kOrxmaint, "--timeout-ms", "300", "nodes"}, env, milliseconds(10000));
    EXPECT_EQ(run.exitCode, 1) << run.err;
    EXPECT_EQ(run.err,
              "maintaind is not reachable on the \"inprocess\" driver (instance 1): no answer "
              "within 300 ms. Is maintaind running?\n");
    EXPECT_EQ(run.out, "");
    EXPECT_LT(run.took, milliseconds(3000));
}

TEST(BinaryTest, NoDaemonOnTheDdsDomainIsNamedWithTheDomain) {
    // Loopback only (the DDS driver's default), on a domain no other test uses.
    const test::ChildResult run = test::RunChild({kOrxmaint, "--domain", "97", "--instance-id", "5",
                                                  "--timeout-ms", "500", "--json", "events"},
                                                 CleanEnvironment(), milliseconds(10000));
    EXPECT_EQ(run.exitCode, 1) << run.err;
    EXPECT_NE(run.err.find("maintaind is not reachable on DDS domain 97 (instance 5): no answer "
                           "within 500 ms. Is maintaind running?\n"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_LT(run.took, milliseconds(3000));
}

}  // namespace
}  // namespace orx::orxmaint
