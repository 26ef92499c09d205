// maintaind's timeline end to end: `orxmaint watch` sees a crash as it happens and
// `orxmaint history` lists what happened in order. DDS domain 178 on loopback.
#include <gtest/gtest.h>
#include <signal.h>

#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "orx/test/child_process.h"
#include "orx/test/temp_dir.h"
#include "orx/test/wait.h"

namespace orx::test {
namespace {

using Json = nlohmann::json;
using namespace std::chrono_literals;

const std::string kBin = ORX_BIN_DIR;
const std::string kDomain = "178";

std::unique_ptr<ChildProcess> Start(std::vector<std::string> argv, const std::string& name,
                                    EnvChanges env = {}) {
    env["ORX_DDS_DOMAIN"] = kDomain;
    return std::make_unique<ChildProcess>(
        ChildProcess::Options{std::move(argv), std::move(env), "", name});
}

// The timeline entry printed on `line`, or null when it is not one.
Json EntryOf(const std::string& line) {
    const Json json = Json::parse(line, nullptr, false);
    return json.is_object() && json.contains("kind") ? json : Json();
}

bool IsEntry(const std::string& line, const std::string& kind, const std::string& app) {
    const Json entry = EntryOf(line);
    return !entry.is_null() && entry["kind"] == kind && entry["appName"] == app;
}

// Index of the first entry of `kind` and `app` in `entries`, -1 when there is none.
int IndexOf(const Json& entries, const std::string& kind, const std::string& app) {
    for (size_t i = 0; i < entries.size(); ++i) {
        if (entries[i]["kind"] == kind && entries[i]["appName"] == app) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

TEST(TimelineTest, WatchSeesACrashAsItHappensAndHistoryListsItInOrder) {
    TempDir dir("orx-timeline-test");
    auto daemon = Start({kBin + "/maintaind", "--db", dir.File("registry.db"), "--fresh",
                         "--liveness-period-ms", "500"},
                        "maintaind", {{"ORX_CONFIG", dir.File("none.json")}});
    ASSERT_TRUE(daemon->WaitForText("Maintaind started", 20s)) << daemon->Output();
    auto radar =
        Start({kBin + "/orx-demo", "radar"}, "radar", {{"ORX_DFX_PLUGIN", ORX_TEST_PLUGIN_PATH}});
    ASSERT_TRUE(daemon->WaitForText("Node online[appName=radar", 20s)) << daemon->Output();

    // The watch starts with the recent past (the radar coming online), then follows.
    auto watch = Start({kBin + "/orxmaint", "--json", "watch"}, "orxmaint watch");
    ASSERT_TRUE(watch->WaitForLine(
        [](const std::string& line) { return IsEntry(line, "online", "radar"); }, 20s))
        << watch->Output();

    const pid_t radarPid = radar->Pid();
    radar->Signal(SIGKILL);
    ASSERT_EQ(radar->WaitForExit(5s), std::optional<int>(128 + SIGKILL));
    const auto killed = std::chrono::steady_clock::now();
    const auto offline = watch->WaitForLine(
        [](const std::string& line) { return IsEntry(line, "offline", "radar"); }, 10s);
    ASSERT_TRUE(offline) << watch->Output() << daemon->Output();
    EXPECT_LT(std::chrono::steady_clock::now() - killed, 4s);
    EXPECT_EQ(EntryOf(*offline)["reason"], "process gone");
    watch->Signal(SIGINT);
    EXPECT_EQ(watch->WaitForExit(5s), std::optional<int>(0)) << watch->Output();
    size_t offlineLines = 0;
    for (const std::string& line : watch->Lines()) {
        offlineLines += IsEntry(line, "offline", "radar") ? 1 : 0;
    }
    EXPECT_EQ(offlineLines, 1U) << "each entry once: " << watch->Output();

    const RunResult history = RunToEnd(
        {kBin + "/orxmaint", "--domain", kDomain, "--json", "history", "--since", "1h"}, {}, 15s);
    ASSERT_EQ(history.exitCode, 0) << history.err;
    const Json entries = Json::parse(history.out, nullptr, false);
    ASSERT_TRUE(entries.is_array()) << history.out;
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries[0]["kind"], "daemon-start") << history.out;
    const int online = IndexOf(entries, "online", "radar");
    const int gone = IndexOf(entries, "offline", "radar");
    EXPECT_GE(online, 1) << history.out;
    EXPECT_GT(gone, online) << history.out;
    for (const Json& entry : entries) {
        for (const char* member : {"time", "kind", "appName", "pid", "host", "reason"}) {
            EXPECT_TRUE(entry.contains(member)) << member << " missing in " << entry.dump();
        }
    }
    EXPECT_EQ(entries[gone]["pid"], radarPid);

    daemon->Signal(SIGTERM);
    EXPECT_EQ(daemon->WaitForExit(10s), std::optional<int>(0));
    if (HasFailure()) {
        std::cout << daemon->Output();
        dir.Keep();
    }
}

}  // namespace
}  // namespace orx::test
