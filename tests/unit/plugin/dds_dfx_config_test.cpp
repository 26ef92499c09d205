// The DDS settings the plug-in supplies for the maintenance service. Each case runs in its own
// process, so the provider and the configuration reader start fresh and read this case's orx.json.
#include <thread>

#include "config/dds_dfx_config.h"
#include "config/valid_uint16.h"
#include "orx/maintaind/service.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

using ara::com::internal::BindIndex;
using orx::orxcm::config::DDSDfxConfig;
using orx::orxcm::utils::ValidUint16;
using vorx::driver::dds::DDSEventInfo;
using vorx::driver::dds::DDSMethodInfo;
using vorx::driver::dds::DDSServiceDiscoveryInfo;

const std::string kAppService = std::string(orx::maintaind::service::kAppServicePath);
const std::string kToolsService = std::string(orx::maintaind::service::kToolsServicePath);

using DDSDfxConfigTest = PluginTest;

TEST_F(DDSDfxConfigTest, ForeignServiceIsRefusedWithoutTouchingTheRecord) {
    auto config = DDSDfxConfig::GetInstance();
    // Same length as the application-side path, one byte differs.
    std::string nearMiss = kAppService;
    nearMiss.back() = 'X';
    for (const std::string& name : {std::string("/demo/RadarService"), nearMiss, std::string()}) {
        const BindIndex index{name, "1", orx::maintaind::service::kSwitchLatencyEventId};
        DDSServiceDiscoveryInfo discovery;
        DDSEventInfo event;
        DDSMethodInfo method;
        EXPECT_FALSE(config->ReadServiceDiscoveryData(index, discovery)) << name;
        EXPECT_FALSE(config->ReadEventData(index, event)) << name;
        EXPECT_FALSE(config->ReadMethodData(
            {name, "1", orx::maintaind::service::kRegisterAppMethodId}, method))
            << name;
        EXPECT_EQ(discovery.GetServiceId(), 0U);
        EXPECT_EQ(discovery.GetInstanceId(), "65535");
        EXPECT_FALSE(discovery.GetOfferFilter().has_value());
        EXPECT_EQ(event.GetTopicName(), "");
        EXPECT_EQ(event.GetNetwork().first, "UNDEFINED_NETWORK");
        EXPECT_EQ(method.GetRequestTopicName(), "");
    }
    // Refusing is silent.
    for (const auto& line : Log().Lines()) {
        EXPECT_EQ(line.second.find("DDSDfxConfig"), std::string::npos) << line.second;
    }
}

TEST_F(DDSDfxConfigTest, FillsBothDiscoveryRecordsWithTheBuiltinNetworkWhenNoneIsConfigured) {
    auto config = DDSDfxConfig::GetInstance();

    DDSServiceDiscoveryInfo app;
    ASSERT_TRUE(config->ReadServiceDiscoveryData({kAppService, "1", 0U}, app));
    EXPECT_EQ(app.GetServiceId(), 57344U);
    EXPECT_EQ(app.GetDiscoveryGroup(), 2U);
    EXPECT_EQ(app.GetInstanceId(), "1");
    EXPECT_EQ(app.GetNetwork(), std::make_pair(std::string("BUILTIN_APP_SERVER_FLAG"), false));
    const auto& qos = app.GetParticipantQos();
    EXPECT_TRUE(qos.isSet);
    EXPECT_EQ(qos.announceInitialMs, 500U);
    EXPECT_EQ(qos.announcePeriodMs, 1000U);
    EXPECT_EQ(qos.leaseDurationMs, 60000U);
    EXPECT_EQ(qos.responseDelayMs, 24000U);
    EXPECT_EQ(app.GetOfferFilter(), std::optional<std::string>("[2]"));
    EXPECT_EQ(app.GetFindFilter(), std::optional<std::string>("[2]"));
    EXPECT_EQ(app.GetSubscribeFilter(), std::optional<std::string>("[2]"));
    EXPECT_EQ(app.GetTransportQos(), vorx::driver::dds::TransportQosSet{0U});

    DDSServiceDiscoveryInfo tools;
    ASSERT_TRUE(config->ReadServiceDiscoveryData({kToolsService, "65534", 0U}, tools));
    EXPECT_EQ(tools.GetServiceId(), 57345U);
    EXPECT_EQ(tools.GetDiscoveryGroup(), 3U);
    EXPECT_EQ(tools.GetInstanceId(), "65534");
    EXPECT_EQ(tools.GetNetwork().first, "BUILTIN_APP_SERVER_FLAG");

    DDSEventInfo event;
    ASSERT_TRUE(config->ReadEventData(
        {kAppService, "1", orx::maintaind::service::kSwitchLatencyEventId}, event));
    EXPECT_EQ(event.GetNetwork(), std::make_pair(std::string("BUILTIN_APP_SERVER_FLAG"), false));
    EXPECT_TRUE(event.GetResourceAttr().empty());
}

TEST_F(DDSDfxConfigTest, EventAndMethodRecordsCarryTopicsAndTheConfiguredNetwork) {
    WriteConfig(R"({"maintenance": {"network": {"address": "127.0.0.1", "flag": true},
                  "resourceAttributes": {"cpu": "2"}}})");
    auto config = DDSDfxConfig::GetInstance();

    DDSEventInfo event;
    ASSERT_TRUE(config->ReadEventData(
        {kAppService, "3", orx::maintaind::service::kSwitchLatencyEventId}, event));
    EXPECT_EQ(event.GetTopicName(), "SwitchApplicationLatency");
    EXPECT_EQ(event.GetInstanceId(), "3");
    EXPECT_EQ(event.GetNetwork(), std::make_pair(std::string("127.0.0.1"), true));
    EXPECT_EQ(event.GetResourceAttr(), (std::map<std::string, std::string>{{"cpu", "2"}}));
    EXPECT_EQ(event.GetTransportQos(), vorx::driver::dds::TransportQosSet{0U});

    DDSMethodInfo registerApp;
    ASSERT_TRUE(config->ReadMethodData(
        {kAppService, "3", orx::maintaind::service::kRegisterAppMethodId}, registerApp));
    EXPECT_EQ(registerApp.GetRequestTopicName(), "RegisterAppRequestTopic");
    EXPECT_EQ(registerApp.GetReplyTopicName(), "RegisterAppRequestTopic");
    EXPECT_EQ(registerApp.GetNetwork(), std::make_pair(std::string("127.0.0.1"), true));

    DDSMethodInfo query;
    ASSERT_TRUE(config->ReadMethodData({kToolsService, "3", 0xE3BCU}, query));
    EXPECT_EQ(query.GetRequestTopicName(), "QueryLatencyResultRequestTopic");
    EXPECT_EQ(query.GetReplyTopicName(), "QueryLatencyResultReplyTopic");

    // An id outside the tables (also one that only matches after cutting to 16 bits) names no
    // topic; the record is still the daemon's.
    DDSMethodInfo unknown;
    ASSERT_TRUE(config->ReadMethodData({kAppService, "3", 0x1ECCDU}, unknown));
    EXPECT_EQ(unknown.GetRequestTopicName(), "");
    EXPECT_EQ(unknown.GetReplyTopicName(), "");
}

TEST_F(DDSDfxConfigTest, InvalidInstanceIdIsRefusedWithAWarning) {
    auto config = DDSDfxConfig::GetInstance();
    DDSServiceDiscoveryInfo discovery;
    EXPECT_FALSE(config->ReadServiceDiscoveryData({kAppService, "12ab", 0U}, discovery));
    DDSEventInfo event;
    EXPECT_FALSE(config->ReadEventData(
        {kAppService, "65536", orx::maintaind::service::kSwitchLatencyEventId}, event));
    DDSMethodInfo method;
    EXPECT_FALSE(config->ReadMethodData(
        {kAppService, "", orx::maintaind::service::kRegisterAppMethodId}, method));
    EXPECT_EQ(method.GetRequestTopicName(), "");

    EXPECT_EQ(Log().Count(LogLevel::kWarn, "[DDSDfxConfig][Invalid instanceId][instanceId=12ab]"),
              1U);
    EXPECT_EQ(Log().Count(LogLevel::kWarn, "[DDSDfxConfig][Invalid instanceId][instanceId=65536]"),
              1U);
    EXPECT_EQ(Log().Count(LogLevel::kWarn, "[DDSDfxConfig][Invalid instanceId][instanceId=]"), 1U);
}

TEST_F(DDSDfxConfigTest, FirstReadsFromSeveralThreadsInitialiseOnce) {
    WriteConfig(R"({"maintenance": {"network": {"address": "127.0.0.1", "flag": false}}})");
    auto config = DDSDfxConfig::GetInstance();
    std::vector<std::thread> threads;
    std::vector<std::pair<std::string, bool>> networks(4);
    for (size_t i = 0; i < networks.size(); ++i) {
        threads.emplace_back([&config, &networks, i]() {
            DDSEventInfo event;
            if (config->ReadEventData(
                    {kAppService, "1", orx::maintaind::service::kSwitchLatencyEventId}, event)) {
                networks[i] = event.GetNetwork();
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const auto& network : networks) {
        EXPECT_EQ(network, std::make_pair(std::string("127.0.0.1"), false));
    }
}

TEST(ValidUint16Test, AcceptsTheSixteenBitRangeReadLikeStoiAndKeepsErrno) {
    uint16_t value = 7U;
    EXPECT_TRUE(ValidUint16("65535", value));
    EXPECT_EQ(value, 65535U);
    EXPECT_TRUE(ValidUint16(" 12ab", value));  // leading blanks skipped, stops at a non-digit
    EXPECT_EQ(value, 12U);
    for (const char* text : {"65536", "-1", "2147483647", "70000x"}) {
        EXPECT_FALSE(ValidUint16(text, value)) << text;
        EXPECT_EQ(value, 12U) << text;
    }
    errno = 1234;
    EXPECT_THROW(ValidUint16("ab"), std::invalid_argument);
    EXPECT_THROW(ValidUint16("99999999999"), std::out_of_range);
    EXPECT_TRUE(ValidUint16("0"));
    EXPECT_EQ(errno, 1234);
}

}  // namespace
}  // namespace orx::test::plugin
