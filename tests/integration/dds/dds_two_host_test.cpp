// The DDS driver between two "hosts" (network namespaces made by the test, see
// two_hosts.h).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "child_process.h"
#include "two_hosts.h"

namespace {

using namespace std::chrono_literals;
using orx::test::ChildProcess;

constexpr uint32_t kDomain = 205;
constexpr const char* kAddressA = "10.213.7.1";
constexpr const char* kAddressB = "10.213.7.2";

class DdsTwoHost : public ::testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = hosts_.Create("orxdds", kAddressA, kAddressB);
            !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        configA_ = WriteConfig("a", kAddressA, kAddressB);
        configB_ = WriteConfig("b", kAddressB, kAddressA);
    }

    void TearDown() override {
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

    orx::test::TwoHosts hosts_;
    std::string configA_;
    std::string configB_;
};

TEST_F(DdsTwoHost, RequestsReachAServerOnTheOtherHost) {
    ChildProcess server({"/usr/bin/env", "ip", "netns", "exec", hosts_.A(), DDS_PEER_PATH, "server",
                         "4660", "1", "/test/RemoteEcho"},
                        {"ORX_CONFIG=" + configA_});
    ASSERT_TRUE(server.Started());
    ASSERT_TRUE(server.WaitForLine("READY", 20s));

    ChildProcess client({"/usr/bin/env", "ip", "netns", "exec", hosts_.B(), DDS_PEER_PATH, "client",
                         "4660", "1", "/test/RemoteEcho", "5"},
                        {"ORX_CONFIG=" + configB_});
    ASSERT_TRUE(client.Started());
    const auto replies = client.WaitForLine("REPLIES", 40s);
    ASSERT_TRUE(replies.has_value());
    EXPECT_EQ(*replies, "REPLIES 5");
}

}  // namespace
