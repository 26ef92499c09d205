// orxmaint against the real chain: maintaind and the example applications on loopback DDS, each
// test on a DDS domain of its own.
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include <nlohmann/json.hpp>

#include "child_process.h"
#include "child_run.h"

namespace orx::orxmaint {
namespace {

using maintaind::daemon::itest::ChildProcess;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

const std::string kBin = ORX_BIN_DIR;

class OrxmaintSystemTest : public ::testing::Test {
  protected:
    void StartSystem(unsigned domain, bool withSubscriber) {
        domain_ = std::to_string(domain);
        char dirTemplate[] = "/tmp/orxmaint_it_XXXXXX";
        ASSERT_NE(::mkdtemp(dirTemplate), nullptr);
        dir_ = dirTemplate;
        // The applications take their orx.json from examples/; the daemon runs without one.
        env_ = {{"ORX_DDS_DOMAIN", domain_}};
        daemon_ = std::make_unique<ChildProcess>(
            std::vector<std::string>{kBin + "/maintaind", "--db", dir_ + "/maintaind.db",
                                     "--fresh"},
            std::map<std::string, std::string>{{"ORX_DDS_DOMAIN", domain_},
                                               {"ORX_CONFIG", dir_ + "/no-orx.json"}},
            dir_ + "/maintaind.log");
        ASSERT_GT(daemon_->Pid(), 0);
        radar_ = std::make_unique<ChildProcess>(
            std::vector<std::string>{kBin + "/orx-demo", "radar"}, env_, dir_ + "/radar.log");
        ASSERT_GT(radar_->Pid(), 0);
        if (withSubscriber) {
            fusion_ = std::make_unique<ChildProcess>(
                std::vector<std::string>{kBin + "/orx-demo", "fusion"}, env_, dir_ + "/fusion.log");
            ASSERT_GT(fusion_->Pid(), 0);
        }
    }

    void TearDown() override {
        // Asked to stop first, so the applications send their offline reports; killed if they
        // have not ended within 5 s.
        for (auto* process : {&fusion_, &radar_, &daemon_}) {
            if (*process) {
                (*process)->Signal(SIGTERM);
                (*process)->WaitForExit(milliseconds(5000));
                process->reset();
            }
        }
        if (dir_.empty()) {
            return;
        }
        if (HasFailure()) {
            std::cout << "logs kept in " << dir_ << "\n";
        } else {
            std::filesystem::remove_all(dir_);
        }
    }

    // orxmaint on the test's domain with `args`.
    test::ChildResult Orxmaint(std::vector<std::string> args) const {
        args.insert(args.begin(), {kBin + "/orxmaint", "--domain", domain_});
        return test::RunChild(args, {{"ORX_DDS_DRIVER", ""}, {"ORX_DDS_DOMAIN", ""}},
                              milliseconds(15000));
    }

    // Runs `orxmaint --json args` until `accept` takes its array, at most `limit`. Returns the
    // last array seen (empty when none could be read).
    nlohmann::json JsonUntil(const std::vector<std::string>& args,
                             const std::function<bool(const nlohmann::json&)>& accept,
                             milliseconds limit) const {
        std::vector<std::string> withJson = args;
        withJson.insert(withJson.begin(), "--json");
        const Clock::time_point deadline = Clock::now() + limit;
        nlohmann::json last;
        do {
            const test::ChildResult run = Orxmaint(withJson);
            if (run.exitCode == 0) {
                last = nlohmann::json::parse(run.out, nullptr, false);
                if (!last.is_discarded() && accept(last)) {
                    return last;
                }
            }
            std::this_thread::sleep_for(milliseconds(200));
        } while (Clock::now() < deadline);
        return last;
    }

    static bool HasApp(const nlohmann::json& array, const std::string& app) {
        for (const auto& entry : array) {
            if (entry.value("appName", "") == app && entry.value("online", false)) {
                return true;
            }
        }
        return false;
    }

    std::string domain_;
    std::string dir_;
    std::map<std::string, std::string> env_;
    std::unique_ptr<ChildProcess> daemon_;
    std::unique_ptr<ChildProcess> radar_;
    std::unique_ptr<ChildProcess> fusion_;
};

TEST_F(OrxmaintSystemTest, NodesAndEventsShowTheRunningApplication) {
    StartSystem(217, false);
    const nlohmann::json nodes = JsonUntil(
        {"nodes"}, [](const nlohmann::json& a) { return HasApp(a, "radar"); }, milliseconds(20000));
    ASSERT_TRUE(HasApp(nodes, "radar")) << nodes.dump();
    for (const auto& node : nodes) {
        if (node["appName"] == "radar") {
            EXPECT_GT(node["pid"].get<int>(), 0);
        }
    }

    const nlohmann::json events = JsonUntil(
        {"events", "--app", "radar"},
        [](const nlohmann::json& a) {
            for (const auto& e : a) {
                if (e.value("isPub", false) &&
                    e.value("eventName", "").find("ObjectList") != std::string::npos) {
                    return true;
                }
            }
            return false;
        },
        milliseconds(20000));
    bool found = false;
    for (const auto& event : events) {
        if (event.value("eventName", "").find("ObjectList") == std::string::npos) {
            continue;
        }
        found = true;
        EXPECT_EQ(event["appName"], "radar");
        EXPECT_EQ(event["serviceId"], 4660);
        EXPECT_EQ(event["instanceId"], 1);
        EXPECT_TRUE(event["isPub"].get<bool>());
        EXPECT_NE(event["bindings"].dump().find("DDS"), std::string::npos);
    }
    EXPECT_TRUE(found) << events.dump();

    // The table for people names the application too.
    const test::ChildResult table = Orxmaint({"nodes"});
    EXPECT_EQ(table.exitCode, 0) << table.err;
    EXPECT_NE(table.out.find("radar"), std::string::npos) << table.out;
    EXPECT_NE(table.out.find(" online"), std::string::npos) << table.out;
}

TEST_F(OrxmaintSystemTest, LatencyEnableReachesTheApplications) {
    StartSystem(218, true);
    // Both sides of the event must be registered before the switch can name it.
    const nlohmann::json subscribed = JsonUntil(
        {"events", "--app", "fusion", "--side", "sub"},
        [](const nlohmann::json& a) { return !a.empty(); }, milliseconds(20000));
    ASSERT_FALSE(subscribed.empty());

    const test::ChildResult enable = Orxmaint({"latency", "enable", "RadarObjectList"});
    ASSERT_EQ(enable.exitCode, 0) << enable.err;
    EXPECT_NE(enable.out.find("Latency analysis enabled"), std::string::npos) << enable.out;

    // The applications acknowledge the switch to maintaind.
    const nlohmann::json statuses = JsonUntil(
        {"latency", "status"},
        [](const nlohmann::json& a) {
            for (const auto& status : a) {
                for (const auto& ack : status.value("acks", nlohmann::json::array())) {
                    if (ack.value("mode", 1) == 0 &&
                        (ack.value("isPubMatched", false) || ack.value("isSubMatched", false))) {
                        return true;
                    }
                }
            }
            return false;
        },
        milliseconds(20000));
    ASSERT_FALSE(statuses.empty());
    EXPECT_NE(statuses.dump().find("\"acks\":[{"), std::string::npos) << statuses.dump();

    // An unknown name is refused with a hint, exit code 1.
    const test::ChildResult unknown = Orxmaint({"latency", "enable", "NoSuchEvent"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.err.find("NoSuchEvent"), std::string::npos) << unknown.err;
}

}  // namespace
}  // namespace orx::orxmaint
