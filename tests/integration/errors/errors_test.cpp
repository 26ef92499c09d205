// Every mistake gets one clear answer: for each program, each wrong setting or command line ends
// it with its documented exit code and a line that names the setting (or the word).
#include <signal.h>

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "orx/test/child_process.h"
#include "orx/test/temp_dir.h"

namespace {

using std::chrono::milliseconds;

const std::string kBin = ORX_BIN_DIR;

struct Mistake {
    std::vector<std::string> args;
    orx::test::EnvChanges env;
    int exitCode;
    std::string named;  // a text the error output must hold
};

class ErrorsTest : public testing::Test {
  protected:
    // An orx.json holding `content`.
    std::string Config(const std::string& name, const std::string& content) {
        std::ofstream(dir_.File(name)) << content;
        return dir_.File(name);
    }
    // Runs each mistake with a clean environment under it and checks the answer.
    void Expect(const std::string& program, const std::vector<Mistake>& mistakes) {
        for (const Mistake& mistake : mistakes) {
            orx::test::EnvChanges env{{"ORX_CONFIG", dir_.File("absent.json")},
                                      {"ORX_DDS_DOMAIN", "179"},
                                      {"ORX_LOG_LEVEL", ""},
                                      {"CYCLONEDDS_URI", ""},
                                      {"HOME", dir_.Path()},
                                      {"XDG_STATE_HOME", ""}};
            for (const auto& [name, value] : mistake.env) {
                env[name] = value;
            }
            std::vector<std::string> argv{kBin + "/" + program};
            argv.insert(argv.end(), mistake.args.begin(), mistake.args.end());
            const auto run = orx::test::RunToEnd(argv, env, milliseconds(15000));
            EXPECT_EQ(run.exitCode, mistake.exitCode) << mistake.named << "\n" << run.err;
            EXPECT_NE(run.err.find(mistake.named), std::string::npos)
                << "expected \"" << mistake.named << "\" in:\n"
                << run.err;
        }
    }

    orx::test::TempDir dir_{"orx-errors"};
};

TEST_F(ErrorsTest, ApplicationRefusesToJoinAnotherSystem) {
    const std::string longName =
        Config("long.json", R"({"application": {"name": ")" + std::string(300, 'a') + "\"}}");
    Expect("orx-demo",
           {
               {{"radar"}, {{"ORX_DDS_DOMAIN", "abc"}}, 2, "variable=ORX_DDS_DOMAIN, value=abc"},
               {{"radar"},
                {{"ORX_CONFIG", Config("d.json", R"({"dds": {"domainId": "abc"}})")}},
                2,
                "key=dds.domainId, value=\"abc\", reason=must be an integer from 0 to 232"},
               {{"radar"},
                {{"ORX_CONFIG", Config("i.json", R"({"maintenance": {"instanceId": "abc"}})")}},
                2,
                "key=maintenance.instanceId"},
               {{"radar"},
                {{"ORX_CONFIG", Config("n.json", R"({"application": {"name": 7}})")}},
                2,
                "key=application.name, value=7"},
               {{"radar"}, {{"ORX_CONFIG", longName}}, 2, "at most 255 characters"},
               {{"radar"},
                {{"ORX_CONFIG", longName}, {"ORX_LOG_LEVEL", "bogus"}},
                2,
                "variable=ORX_LOG_LEVEL, value=bogus"},
               {{"radar"}, {}, 1, "[Config file does not exist, nothing configured]"},
           });
}

TEST_F(ErrorsTest, MaintaindUsageErrorsExitTwoAndSighupStopsIt) {
    Expect("maintaind", {
                            {{"--bogus"}, {}, 2, "--bogus"},
                            {{"--db", ""}, {}, 2, "--db"},
                            {{"--instance-id", "abc"}, {}, 2, "--instance-id"},
                            {{}, {{"ORX_DDS_DOMAIN", "999"}}, 2, "variable=ORX_DDS_DOMAIN"},
                        });
    orx::test::ChildProcess daemon({{kBin + "/maintaind", "--db", dir_.File("m.db")},
                                    {{"ORX_CONFIG", dir_.File("absent.json")},
                                     {"ORX_DDS_DOMAIN", "179"},
                                     {"CYCLONEDDS_URI", ""}},
                                    "",
                                    "maintaind"});
    ASSERT_TRUE(daemon.WaitForText("Maintaind started", milliseconds(15000))) << daemon.Output();
    daemon.Signal(SIGHUP);
    EXPECT_EQ(daemon.WaitForExit(milliseconds(15000)), 0) << daemon.Output();
    EXPECT_TRUE(daemon.WaitForText("Maintaind stopping[signal=1]", milliseconds(1000)))
        << daemon.Output();
}

TEST_F(ErrorsTest, OrxmaintNamesTheWrongWordAndItsOwnDdsFailure) {
    Expect("orxmaint",
           {
               {{"node"}, {}, 2, "unknown command \"node\"; did you mean \"nodes\"?"},
               {{"frobnicate"}, {}, 2, "unknown command \"frobnicate\""},
               {{"nodes", "--frob"}, {}, 2, "--frob"},
               {{"nodes"}, {{"ORX_DDS_DOMAIN", "abc"}}, 2, "variable=ORX_DDS_DOMAIN, value=abc"},
               {{"nodes"},
                {{"ORX_CONFIG", Config("i.json", R"({"maintenance": {"instanceId": 70000}})")}},
                2,
                "key=maintenance.instanceId, value=70000"},
               {{"nodes"},
                {{"CYCLONEDDS_URI", "<Bogus/>"}},
                1,
                "cannot start its own DDS participant"},
           });
}

}  // namespace
