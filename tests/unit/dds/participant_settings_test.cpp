// Where the DDS driver's participant gets its settings, and the Cyclone
// configuration text they become.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <string>

#include "ara/kelda/common/log/testing.h"
#include "vorx/driver/dds/participant_settings.h"

namespace {

namespace config = ara::kelda::common::orxConfigParser;
using ara::kelda::common::log::LogLevel;
using ara::kelda::common::log::ScopedCaptureSink;
using vorx::driver::dds::BuildCycloneConfig;
using vorx::driver::dds::LoadParticipantSettings;
using vorx::driver::dds::ParticipantSettings;

ParticipantSettings Load(const std::string& json,
                         std::pair<std::string, bool> network = {"", false},
                         std::map<std::string, std::string> env = {},
                         config::SettingsReport* report = nullptr) {
    const auto document = nlohmann::json::parse(json);
    config::ConfigReader file(document, "/etc/orx.json");
    return LoadParticipantSettings(&file, network, config::FixedEnvironment(std::move(env)),
                                   report);
}

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(ParticipantSettings, DefaultsKeepEverythingOnLoopback) {
    const std::string xml = BuildCycloneConfig(Load("{}"));
    for (const char* part :
         {"<NetworkInterface address=\"127.0.0.1\"/>", "<AllowMulticast>false</AllowMulticast>",
          "<Peers><Peer address=\"127.0.0.1\"/></Peers>",
          "<ParticipantIndex>auto</ParticipantIndex>",
          "<MaxAutoParticipantIndex>63</MaxAutoParticipantIndex>",
          "<LeaseDuration>3000 ms</LeaseDuration>"}) {
        EXPECT_TRUE(Has(xml, part)) << part << "\n" << xml;
    }
    EXPECT_FALSE(Has(xml, "Multicast>true")) << xml;
    // A receive buffer that large answers fit in, but never more than the kernel grants (Cyclone
    // would not start).
    uint64_t kernelLimit = 0;
    std::ifstream("/proc/sys/net/core/rmem_max") >> kernelLimit;
    if (kernelLimit != 0) {
        const uint64_t expected =
            std::min<uint64_t>(kernelLimit, vorx::driver::dds::kDefaultReceiveBufferBytes);
        EXPECT_TRUE(
            Has(xml, "<SocketReceiveBufferSize min=\"" + std::to_string(expected) + "B\"/>"))
            << xml;
    }
}

TEST(ParticipantSettings, OrxJsonAndEnvironmentOverrideInOrder) {
    // The maintenance network alone selects its interface; without peers of its
    // own a real network discovers by multicast.
    ParticipantSettings settings = Load("{}", {"192.168.10.5", true});
    EXPECT_EQ(settings.networkInterface, "192.168.10.5");
    EXPECT_TRUE(settings.peers.empty());
    EXPECT_TRUE(settings.allowMulticast);
    EXPECT_FALSE(Has(BuildCycloneConfig(settings), "<Peers>"));

    // The plug-in's placeholders mean "no network".
    EXPECT_EQ(Load("{}", {"BUILTIN_APP_SERVER_FLAG", false}).networkInterface, "127.0.0.1");
    EXPECT_EQ(Load("{}", {"UNDEFINED_NETWORK", false}).networkInterface, "127.0.0.1");

    // The "dds" object wins over the maintenance network; peers switch
    // multicast off unless it is asked for.
    settings = Load(R"({"dds": {"domainId": 17, "networkInterface": "eth1",
                                "peers": ["10.0.0.2", "10.0.0.3:7412"],
                                "maxAutoParticipantIndex": 80, "leaseDurationMs": 2500,
                                "receiveBufferBytes": 131072}})",
                    {"192.168.10.5", true});
    EXPECT_EQ(settings.domainId, 17u);
    EXPECT_EQ(settings.networkInterface, "eth1");
    EXPECT_EQ(settings.peers, (std::vector<std::string>{"10.0.0.2", "10.0.0.3:7412"}));
    EXPECT_FALSE(settings.allowMulticast);
    EXPECT_EQ(settings.maxAutoParticipantIndex, 80u);
    EXPECT_EQ(settings.leaseDurationMs, 2500u);
    EXPECT_EQ(settings.receiveBufferBytes, 131072u);
    const std::string xml = BuildCycloneConfig(settings);
    EXPECT_TRUE(Has(xml, "<NetworkInterface name=\"eth1\"/>")) << xml;
    EXPECT_TRUE(Has(xml, "<Peer address=\"10.0.0.3:7412\"/>")) << xml;
    EXPECT_TRUE(Has(xml, "<LeaseDuration>2500 ms</LeaseDuration>")) << xml;

    EXPECT_TRUE(Load(R"({"dds": {"networkInterface": "10.1.1.1", "allowMulticast": true,
                                  "peers": ["10.1.1.2"]}})")
                    .allowMulticast);
    // Back to loopback from a configured network.
    settings = Load(R"({"dds": {"networkInterface": "127.0.0.1"}})", {"192.168.10.5", true});
    EXPECT_EQ(settings.peers, std::vector<std::string>{"127.0.0.1"});
    EXPECT_FALSE(settings.allowMulticast);

    // The environment has the last word on the domain; CYCLONEDDS_URI hands
    // the whole configuration to Cyclone as it stands. Every value knows where it came from.
    config::SettingsReport report;
    settings =
        Load(R"({"dds": {"domainId": 17, "leaseDurationMs": 2500}})", {"10.0.0.9", false},
             {{"ORX_DDS_DOMAIN", "42"}, {"CYCLONEDDS_URI", "file:///etc/cyclone.xml"}}, &report);
    EXPECT_EQ(settings.domainId, 42u);
    EXPECT_EQ(BuildCycloneConfig(settings), "file:///etc/cyclone.xml");
    EXPECT_EQ(report.OriginOf("dds.domainId"),
              config::SettingOrigin::Environment("ORX_DDS_DOMAIN"));
    EXPECT_EQ(report.OriginOf("dds.leaseDurationMs"),
              config::SettingOrigin::File("/etc/orx.json", "dds.leaseDurationMs"));
    EXPECT_EQ(report.OriginOf("dds.networkInterface"),
              config::SettingOrigin::File("/etc/orx.json", "maintenance.network.address"));
    EXPECT_EQ(report.OriginOf("dds.peers"), config::SettingOrigin::Default());
    EXPECT_EQ(Load("{}", {"", false}, {{"CYCLONEDDS_URI", ""}}).cycloneUri, "");
}

TEST(ParticipantSettings, BadValuesAreReportedOnceAndIgnored) {
    ScopedCaptureSink capture;
    config::SettingsReport report;
    const ParticipantSettings settings =
        Load(R"({"dds": {"domainId": 500, "peers": "10.0.0.2", "networkInterface": 7,
                         "leaseDurationMs": 5, "maxAutoParticipantIndex": 0,
                         "allowMulticast": "yes"}})",
             {"", false}, {{"ORX_DDS_DOMAIN", "12x"}}, &report);
    EXPECT_EQ(settings, ParticipantSettings());
    for (const char* key :
         {"dds.domainId", "dds.peers", "dds.networkInterface", "dds.leaseDurationMs",
          "dds.maxAutoParticipantIndex", "dds.allowMulticast"}) {
        EXPECT_EQ(capture->CountContaining(LogLevel::kError,
                                           std::string("file=/etc/orx.json, key=") + key),
                  1u)
            << key << "\n"
            << capture->Dump();
    }
    EXPECT_EQ(capture->CountContaining(LogLevel::kError,
                                       "key=dds.domainId, value=500, reason=out of range, must be "
                                       "an integer from 0 to 232]"),
              1u);
    EXPECT_EQ(capture->CountContaining(LogLevel::kError,
                                       "[variable=ORX_DDS_DOMAIN, value=12x, reason=must be an "
                                       "integer from 0 to 232]"),
              1u)
        << capture->Dump();
    ASSERT_EQ(report.problems.size(), 1u) << "the file's problems stay with the file's reader";
    EXPECT_EQ(report.problems[0].origin, config::SettingOrigin::Environment("ORX_DDS_DOMAIN"));

    // A "dds" that is not an object, or no file at all: defaults.
    EXPECT_EQ(Load(R"({"dds": [1, 2]})"), ParticipantSettings());
    EXPECT_EQ(LoadParticipantSettings(nullptr, {"", false}, nullptr), ParticipantSettings());
}

TEST(ParticipantSettings, ConfigurationTextEscapesItsValues) {
    ParticipantSettings settings;
    settings.peers = {"a\"b<c>&'"};
    const std::string xml = BuildCycloneConfig(settings);
    EXPECT_TRUE(Has(xml, "<Peer address=\"a&quot;b&lt;c&gt;&amp;&apos;\"/>")) << xml;
}

}  // namespace
