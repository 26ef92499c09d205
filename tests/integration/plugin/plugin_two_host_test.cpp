// Two "hosts", each a network namespace that this test creates and deletes itself, joined by a
// veth pair with addresses that exist only inside them. The radar runs on host A; the fusion and
// the maintenance daemon double run on host B. The machine's own interfaces are never touched.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "plugin_system.h"
#include "two_hosts.h"

namespace orx::test::plugin {
namespace {

constexpr uint32_t kDomain = 216;
constexpr const char* kAddressA = "10.217.3.1";
constexpr const char* kAddressB = "10.217.3.2";
constexpr auto kLong = 40s;

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
        if (const std::string reason = hosts_.Create("orxplg", kAddressA, kAddressB);
            !reason.empty()) {
            GTEST_SKIP() << reason;
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
    }

    TwoHosts hosts_;
    std::unique_ptr<ChildProcess> daemon_;
    std::unique_ptr<ChildProcess> radar_;
    std::unique_ptr<ChildProcess> fusion_;
};

TEST_F(PluginTwoHostTest, ReportsAndLatencyResultsCrossHosts) {
    daemon_ = StartDaemon({kDomain, hosts_.B(), HostConfig("daemon", kAddressB)});
    ASSERT_TRUE(daemon_->WaitForText("READY", kLong));
    radar_ = StartApp("radar", {kDomain, hosts_.A(), HostConfig("radar", kAddressA)});
    fusion_ = StartApp("fusion", {kDomain, hosts_.B(), HostConfig("fusion", kAddressB)});

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
