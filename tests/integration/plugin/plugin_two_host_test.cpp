// Two "hosts", each a network namespace that this test creates and deletes itself, joined by a
// veth pair with addresses that exist only inside them. The radar runs on host A; the fusion and
// the maintenance daemon double run on host B. The machine's own interfaces are never touched.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "plugin_system.h"

namespace orx::test::plugin {
namespace {

constexpr uint32_t kDomain = 216;
constexpr const char* kAddressA = "10.217.3.1";
constexpr const char* kAddressB = "10.217.3.2";
constexpr auto kLong = 40s;

// Runs a shell command; its exit status, and its output in *output.
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

// The example's configuration placed on one host: DDS on that host's address, the other host
// (and this one, for its neighbours) as unicast peers, no multicast.
std::string HostConfig(const std::string& role, const std::string& address) {
    Json config = role == "daemon" ? Json::object() : ExampleConfig(role);
    config["dds"] = {{"networkInterface", address},
                     {"peers", {kAddressA, kAddressB}},
                     {"allowMulticast", false}};
    return WriteConfig(role + "_" + address, config);
}

class PluginTwoHostTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string suffix = std::to_string(getpid());
        nsA_ = "orxplg_a_" + suffix;
        nsB_ = "orxplg_b_" + suffix;
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
        createdA_ = true;
        if (Shell("ip netns add " + nsB_, &output) != 0) {
            GTEST_SKIP() << "cannot create a second network namespace: " << output;
        }
        createdB_ = true;
        const std::string veth = "oplg" + std::to_string(getpid() % 100000);
        const std::string steps[] = {
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
    }

    void TearDown() override {
        if (HasFailure()) {
            for (const auto* process : {daemon_.get(), radar_.get(), fusion_.get()}) {
                if (process != nullptr) {
                    std::cout << process->Output();
                }
            }
        }
        daemon_.reset();
        radar_.reset();
        fusion_.reset();
        if (createdA_) {
            Shell("ip netns del " + nsA_);
        }
        if (createdB_) {
            Shell("ip netns del " + nsB_);
        }
    }

    std::string nsA_;
    std::string nsB_;
    bool createdA_{false};
    bool createdB_{false};
    std::unique_ptr<AppProcess> daemon_;
    std::unique_ptr<AppProcess> radar_;
    std::unique_ptr<AppProcess> fusion_;
};

TEST_F(PluginTwoHostTest, ReportsAndLatencyResultsCrossHosts) {
    daemon_ = StartDaemon({kDomain, nsB_, HostConfig("daemon", kAddressB)});
    ASSERT_TRUE(daemon_->WaitForText("READY", kLong));
    radar_ = StartApp("radar", {kDomain, nsA_, HostConfig("radar", kAddressA)});
    fusion_ = StartApp("fusion", {kDomain, nsB_, HostConfig("fusion", kAddressB)});

    ASSERT_TRUE(WaitForReport(*daemon_, NodeReport("radar", true), kLong))
        << "the radar's report did not cross to the other host";
    ASSERT_TRUE(fusion_->WaitForText("[fusion] ObjectList frame", kLong))
        << "no samples crossed from the radar's host";
    ASSERT_TRUE(WaitForReport(*daemon_, EventReport("fusion", "ObjectList", false, true), kLong));

    std::optional<Json> result;
    for (int attempt = 0; attempt < 10 && !result; ++attempt) {
        daemon_->Send("latency 0 4660 1 RadarObjectList");
        result = WaitForReport(*daemon_, LatencyReport("fusion", 1), 4s);
    }
    ASSERT_TRUE(result) << "no latency result from the fusion";
    const Json& figures = (*result)["latencyInfo"]["resultInfo"]["result"];
    EXPECT_GE(figures["minLatency"].get<uint64_t>(), 1U);
    EXPECT_GE(figures["maxLatency"].get<uint64_t>(), figures["minLatency"].get<uint64_t>());
    EXPECT_TRUE(WaitForReport(*daemon_, LatencyReport("radar", 0), kLong))
        << "the radar on the other host did not acknowledge the switch";
}

}  // namespace
}  // namespace orx::test::plugin
