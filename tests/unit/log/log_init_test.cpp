#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/log/testing.h"

namespace {

using namespace ara::kelda::common::log;

std::vector<std::string> ReadLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(in, line)) {
        lines.push_back(line);
    }
    return lines;
}

// Sets environment variables for one test and removes them afterwards.
class LogInitTest : public ::testing::Test {
  protected:
    void TearDown() override {
        unsetenv("ORX_LOG_LEVEL");
        unsetenv("ORX_LOG_FILE");
        if (!logFile_.empty()) {
            unlink(logFile_.c_str());
        }
    }
    std::string MakeLogFile() {
        char path[] = "/tmp/kelda_log_init_XXXXXX";
        const int fd = mkstemp(path);
        close(fd);
        logFile_ = path;
        return logFile_;
    }

  private:
    std::string logFile_;
};

TEST_F(LogInitTest, EnvironmentChoosesTheLevelAndAddsOneLogFile) {
    const std::string file = MakeLogFile();
    setenv("ORX_LOG_LEVEL", "error", 1);
    setenv("ORX_LOG_FILE", file.c_str(), 1);

    Log::InitLog("APP", "CTX", LogLevel::kVerbose, "test application");
    EXPECT_EQ(ConsoleThreshold(), LogLevel::kError);
    auto log = Log::GetDefaultLog();
    EXPECT_EQ(log->ContextId(), "CTX");
    EXPECT_EQ(log, Log::GetLog("CTX"));
    SetConsoleThreshold(LogLevel::kOff);  // keep the test output clean; the file stays at error
    log->LogWarn() << "below the file's threshold";
    log->LogError() << "into the file";

    auto lines = ReadLines(file);
    ASSERT_EQ(lines.size(), 1u);
    const std::regex format(
        R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z \[error\] \[\d+:\d+\] \[APP:CTX\] into the file)");
    EXPECT_TRUE(std::regex_match(lines[0], format)) << lines[0];

    // A second call only updates: new ids and level, the same single file sink.
    unsetenv("ORX_LOG_LEVEL");
    Log::InitLog("APP2", "CTX2", LogLevel::kInfo);
    EXPECT_EQ(ConsoleThreshold(), LogLevel::kInfo);
    SetConsoleThreshold(LogLevel::kOff);
    EXPECT_EQ(Log::GetDefaultLog()->ContextId(), "CTX2");
    log->LogInfo() << "second";
    lines = ReadLines(file);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NE(lines[1].find("[info]"), std::string::npos) << lines[1];
    EXPECT_NE(lines[1].find("[APP2:CTX] second"), std::string::npos) << lines[1];
}

TEST_F(LogInitTest, InvalidEnvironmentLevelFallsBackToTheArgumentWithAWarning) {
    ScopedCaptureSink capture;
    setenv("ORX_LOG_LEVEL", "chatty", 1);
    Log::InitLog("APP", "CTX", LogLevel::kWarn);
    EXPECT_EQ(ConsoleThreshold(), LogLevel::kWarn);
    EXPECT_TRUE(capture->Contains(
        LogLevel::kWarn, "[Log][Invalid ORX_LOG_LEVEL ignored][value=chatty, used=warning]"))
        << capture->Dump();

    // A log file that cannot be opened is reported, and logging goes on.
    unsetenv("ORX_LOG_LEVEL");
    setenv("ORX_LOG_FILE", "/nonexistent-dir/orx.log", 1);
    Log::InitLog("APP", "CTX", LogLevel::kWarn);
    EXPECT_EQ(capture->CountContaining(LogLevel::kWarn,
                                       "[Log][Cannot open log file][file=/nonexistent-dir/orx.log"),
              1u)
        << capture->Dump();
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
    SetConsoleThreshold(LogLevel::kInfo);
}

// Logs from a destructor that runs during static destruction, as process-wide singletons do.
struct Farewell {
    ~Farewell() { Log::GetLog("EXIT")->LogError() << "farewell from a static destructor"; }
};

TEST(LogExitTest, LoggerKeepsWorkingDuringStaticDestruction) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            static Farewell farewell;
            SetConsoleThreshold(LogLevel::kInfo);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0),
        R"(\[error\] .*\[-:EXIT\] farewell from a static destructor)");
}

}  // namespace
