// Setting logging up: once per process, by whoever comes first. Each case runs its set-up in a
// child process of its own, where logging has not been set up yet.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/log/testing.h"

namespace {

using namespace ara::kelda::common::log;

// One console line as the console sink writes it, up to the text.
const std::string kHead = R"([0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\.[0-9]{3}Z \[)";

std::string LastLine(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    for (std::string next; std::getline(in, next);) {
        line = next;
    }
    return line;
}

std::string TempPath(const char* name) {
    return "/tmp/kelda_log_init_" + std::to_string(getpid()) + "_" + name;
}

class LogInitTest : public ::testing::Test {
  protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// What the DFX plug-in does in InitializeAll must not change what the application set up: not
// its level (debug stays on, info stays off), its log file or its line prefix.
TEST_F(LogInitTest, ThePluginsInitLogKeepsTheApplicationsLogging) {
    EXPECT_EXIT(
        {
            const std::string file = TempPath("app.log");
            const std::string other = TempPath("other.log");
            Log::SetUp({"radar", "APP", LogLevel::kDebug, file, "application"});
            setenv("ORX_LOG_LEVEL", "error", 1);
            setenv("ORX_LOG_FILE", other.c_str(), 1);
            Log::InitLog("CM_LOG", "CM");
            const bool secondSetUp = Log::SetUp({"x", "X", LogLevel::kOff, other, ""});
            Log::GetLog("CM")->LogDebug() << "debug after the plug-in";
            const bool kept =
                !secondSetUp && ConsoleThreshold() == LogLevel::kDebug &&
                Log::GetDefaultLog()->ContextId() == "APP" && access(other.c_str(), F_OK) != 0 &&
                std::regex_match(LastLine(file),
                                 std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z \[debug\] )"
                                            R"(\[\d+:\d+\] \[radar:CM\] debug after the plug-in)"));
            unlink(file.c_str());
            std::exit(kept ? 0 : 1);
        },
        testing::ExitedWithCode(0),
        kHead + R"(debug\] \[[0-9]+:[0-9]+\] \[radar:CM\] debug after)");

    EXPECT_EXIT(
        {
            Log::SetUp({"radar", "APP", LogLevel::kError, "", "application"});
            Log::InitLog("CM_LOG", "CM", LogLevel::kVerbose);
            Log::GetLog("CM")->LogInfo() << "info after the plug-in";
            Log::GetLog("CM")->LogError() << "error after the plug-in";
            std::exit(!Log::GetLog("CM")->IsEnabled(LogLevel::kInfo) ? 0 : 1);
        },
        testing::ExitedWithCode(0), R"(\[error\] \[[0-9]+:[0-9]+\] \[radar:CM\] error after)");
}

TEST_F(LogInitTest, InitLogTakesLevelAndFileFromTheEnvironmentAndReportsBadOnesOnce) {
    EXPECT_EXIT(
        {
            const std::string file = TempPath("env.log");
            setenv("ORX_LOG_LEVEL", "error", 1);
            setenv("ORX_LOG_FILE", file.c_str(), 1);
            Log::InitLog("APP", "CTX", LogLevel::kVerbose, "test application");
            SetConsoleThreshold(LogLevel::kOff);  // the file keeps its own threshold
            Log::GetDefaultLog()->LogWarn() << "below the threshold";
            Log::GetDefaultLog()->LogError() << "into the file";
            const std::string line = LastLine(file);
            unlink(file.c_str());
            std::exit(line.find("[error]") != std::string::npos &&
                              line.find("[APP:CTX] into the file") != std::string::npos &&
                              Log::GetDefaultLog() == Log::GetLog("CTX")
                          ? 0
                          : 1);
        },
        testing::ExitedWithCode(0), "");

    EXPECT_EXIT(
        {
            ScopedCaptureSink capture;
            setenv("ORX_LOG_LEVEL", "chatty", 1);
            setenv("ORX_LOG_FILE", "/nonexistent-dir/orx.log", 1);
            Log::InitLog("APP", "CTX", LogLevel::kWarn);
            Log::InitLog("CM_LOG", "CM");
            std::exit(ConsoleThreshold() == LogLevel::kWarn &&
                              capture->Count(LogLevel::kWarn,
                                             "[Log][Invalid ORX_LOG_LEVEL ignored][value=chatty, "
                                             "used=warning]") == 1 &&
                              capture->CountContaining(LogLevel::kWarn, "[Log][") == 2
                          ? 0
                          : 1);
        },
        testing::ExitedWithCode(0), R"(\[Log\]\[Cannot open log file\]\[file=/nonexistent-dir/)");
}

TEST(LogForkTest, ForkedChildReportsItsOwnPidAndThreadId) {
    ScopedCaptureSink capture;
    SetConsoleThreshold(LogLevel::kOff);
    Log::GetLog("FORK")->LogInfo() << "parent";  // fills the per-thread caches
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        capture->Clear();
        Log::GetLog("FORK")->LogInfo() << "child";
        const auto records = capture->Records();
        const bool ok = records.size() == 1 && records[0].pid == getpid() &&
                        records[0].threadId == static_cast<uint64_t>(gettid());
        _exit(ok ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

// Logs from a destructor that runs during static destruction, as process-wide singletons do.
struct Farewell {
    ~Farewell() { Log::GetLog("EXIT")->LogError() << "farewell from a static destructor"; }
};

TEST_F(LogInitTest, LoggerKeepsWorkingDuringStaticDestruction) {
    EXPECT_EXIT(
        {
            static Farewell farewell;
            std::exit(0);
        },
        ::testing::ExitedWithCode(0),
        R"(\[error\] .*\[-:EXIT\] farewell from a static destructor)");
}

}  // namespace
