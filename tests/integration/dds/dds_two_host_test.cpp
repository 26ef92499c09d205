// Two "hosts" joined by a veth pair, each a network namespace that this test
// creates and deletes itself, with addresses of a private range that exist only
// inside them. The machine's own interfaces are never touched.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "child_process.h"

namespace {

using namespace std::chrono_literals;
using orx::test::ChildProcess;

constexpr uint32_t kDomain = 205;
constexpr const char* kAddressA = "10.213.7.1";
constexpr const char* kAddressB = "10.213.7.2";

// Runs a shell command; returns its exit status and puts its output in *output.
int Shell(const std::string& command, std::string* output = nullptr) {
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) {
        return -1;
    }
    std::string text;
    char chunk[256];
    while (fgets(chunk, sizeof(chunk), pipe) != nullptr) {
        text += chunk;
    }
    if (output != nullptr) {
        *output = text;
    }
    return pclose(pipe);
}

class DdsTwoHost : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string suffix = std::to_string(getpid());
        nsA_ = "orxdds_a_" + suffix;
        nsB_ = "orxdds_b_" + suffix;
        std::string output;
        if (geteuid() != 0) {
            GTEST_SKIP() << "needs root to create network namespaces";
        }
        if (Shell("ip -V", &output) != 0) {
            GTEST_SKIP() << "the ip command is not available: " << output;
        }
        if (Shell("ip netns add " + nsA_, &output) != 0) {
            GTEST_SKIP() << "cannot create a network namespace: " << output;
        }
        created_ = true;
        const std::string veth = "odds" + std::to_string(getpid() % 100000);
        const std::string steps[] = {
            "ip netns add " + nsB_,
            // Both ends are made inside the namespaces, never in the host's.
            "ip -n " + nsA_ + " link add " + veth + "a type veth peer name " + veth + "b netns " +
                nsB_,
            "ip -n " + nsA_ + " addr add " + kAddressA + "/24 dev " + veth + "a",
            "ip -n " + nsB_ + " addr add " + kAddressB + "/24 dev " + veth + "b",
            "ip -n " + nsA_ + " link set lo up",
            "ip -n " + nsB_ + " link set lo up",
            "ip -n " + nsA_ + " link set " + veth + "a up",
            "ip -n " + nsB_ + " link set " + veth + "b up",
        };
        for (const auto& step : steps) {
            if (Shell(step, &output) != 0) {
                GTEST_SKIP() << "cannot set up the namespaces (" << step << "): " << output;
            }
        }
        configA_ = WriteConfig("a", kAddressA, kAddressB);
        configB_ = WriteConfig("b", kAddressB, kAddressA);
    }

    void TearDown() override {
        if (created_) {
            Shell("ip netns del " + nsA_);
            Shell("ip netns del " + nsB_);
        }
        std::remove(configA_.c_str());
        std::remove(configB_.c_str());
    }

    static std::string WriteConfig(const std::string& name, const char* self, const char* peer) {
        const std::string path =
            "/tmp/orx_dds_two_host_" + std::to_string(getpid()) + "_" + name + ".json";
        std::ofstream file(path);
        file << "{\"dds\": {\"domainId\": " << kDomain << ", \"networkInterface\": \"" << self
             << "\", \"peers\": [\"" << peer << "\"]}}\n";
        return path;
    }

    std::string nsA_;
    std::string nsB_;
    std::string configA_;
    std::string configB_;
    bool created_{false};
};

TEST_F(DdsTwoHost, RequestsReachAServerOnTheOtherHost) {
    ChildProcess server({"/usr/bin/env", "ip", "netns", "exec", nsA_, DDS_PEER_PATH, "server",
                         "4660", "1", "/test/RemoteEcho"},
                        {"ORX_CONFIG=" + configA_});
    ASSERT_TRUE(server.Started());
    ASSERT_TRUE(server.WaitForLine("READY", 20s));

    ChildProcess client({"/usr/bin/env", "ip", "netns", "exec", nsB_, DDS_PEER_PATH, "client",
                         "4660", "1", "/test/RemoteEcho", "5"},
                        {"ORX_CONFIG=" + configB_});
    ASSERT_TRUE(client.Started());
    const auto replies = client.WaitForLine("REPLIES", 40s);
    ASSERT_TRUE(replies.has_value());
    EXPECT_EQ(*replies, "REPLIES 5");
}

}  // namespace
