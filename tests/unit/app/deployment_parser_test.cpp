#include "vorx/vcc/app/deployment_parser.h"

#include <gtest/gtest.h>

#include "orx/test/log_capture.h"
#include "test_deployments.h"

namespace {

using ara::kelda::common::log::LogLevel;
using orx::test::Document;
using orx::test::FullService;
using vorx::vcc::app::ParseDeployments;
using vorx::vcc::app::ServiceRole;
namespace dds = vorx::driver::dds;
namespace types = vorx::vcc::api::types;

class DeploymentParserTest : public orx::test::LogCaptureTest {};

// What the descriptions test (descriptions_test.cpp) cannot see: the rest is checked there,
// through the entity descriptions the core builds from the parsed deployment.
TEST_F(DeploymentParserTest, FullDeploymentIsReadCompletely) {
    const auto result = ParseDeployments(Document({FullService()}), "orx.json");

    ASSERT_TRUE(result.errors.empty()) << Log().Dump();
    ASSERT_EQ(result.services.size(), 1U);
    const auto& service = result.services[0];
    EXPECT_EQ(service.role, ServiceRole::kProvided);
    ASSERT_TRUE(service.dds && service.someip);
    EXPECT_FALSE(service.proloc);
    EXPECT_EQ(service.TrafficBinding(), types::DriverType::DDS);
    EXPECT_EQ(service.dds->participantQos.leaseDurationMs, 3000U);

    const auto& event = service.events[0];
    ASSERT_TRUE(event.e2e);
    EXPECT_EQ(event.e2e->profile, types::E2EXf_Profile::PROFILE_4M);
    EXPECT_EQ(event.e2e->dataIdList, (std::vector<uint32_t>{1, 2}));
    EXPECT_EQ(event.e2e->dataIdMode, types::E2EXf_DataIDMode::E2E_DATAID_NIBBLE);
    EXPECT_TRUE(event.e2e->isE2EEnabled);
    EXPECT_TRUE(event.e2e->isDisableE2ECheck);
    EXPECT_EQ(event.e2e->windowSizeInvalid, 9U);
    EXPECT_EQ(event.dds.history, dds::HistoryKind::KEEP_ALL);
    EXPECT_EQ(event.dds.subDiscoveryFilter.filterClass, 4);
    EXPECT_EQ(event.someip.serialization.byteOrder, 1);
    EXPECT_EQ(event.someip.serialization.lengthFieldSize, 2);
    EXPECT_TRUE(event.someip.pdu.isignals.at(0).isBigEndian);

    const auto& method = service.methods[0];
    EXPECT_EQ(method.errorDomains.at(0).id, 77U);
    EXPECT_EQ(method.requestSerialize.serializeConfigText, "req");
    EXPECT_EQ(method.dds.replyTopic, "ResetRep");
    EXPECT_EQ(method.someip.replySerialization.name, "ResetOut");
    EXPECT_EQ(service.fields.at(0).notifier->someip.eventId, 32770);
}

TEST_F(DeploymentParserTest, DefaultsFillWhatTheFileLeavesOut) {
    const auto result =
        ParseDeployments(Document({{{"service", "/test/Plain"},
                                    {"serviceId", 5},
                                    {"role", "required"},
                                    {"bindings", {{"dds", nlohmann::json::object()}}},
                                    {"events", {{{"name", "Tick"}, {"entityId", 1}}}},
                                    {"methods", {{{"name", "Ping"}, {"entityId", 2}}}}}}),
                         "orx.json");

    ASSERT_TRUE(result.errors.empty()) << Log().Dump();
    ASSERT_EQ(result.services.size(), 1U);
    const auto& service = result.services[0];
    EXPECT_EQ(service.shortName, "Plain");
    EXPECT_EQ(service.instanceId, "65534") << "a required service finds any instance";
    EXPECT_EQ(service.dds->network, std::make_pair(std::string("UNDEFINED_NETWORK"), false));
    EXPECT_EQ(service.events[0].dds.topic, "Plain_Tick");
    EXPECT_EQ(service.events[0].serialize.serializeType, 1) << "CDR on a carried binding";
    EXPECT_TRUE(service.events[0].latencyAnalysis);
    EXPECT_FALSE(service.events[0].e2e);
    EXPECT_EQ(service.methods[0].dds.requestTopic, "Plain_Ping_Request");
    EXPECT_EQ(service.methods[0].dds.replyTopic, "Plain_Ping_Reply");
}

TEST_F(DeploymentParserTest, BadOptionalValuesAreIgnoredOneErrorEach) {
    auto service = FullService();
    service["events"][0]["dds"]["durability"] = "sticky";
    service["events"][0]["dds"]["historyDepth"] = -4;
    service["bindings"]["dds"]["transportQos"] = {"udp", "pigeon"};
    service["instanceName"] = 12;

    const auto result = ParseDeployments(Document({service}), "/etc/orx.json");

    ASSERT_EQ(result.services.size(), 1U) << "bad optional values keep the service";
    const auto& event = result.services[0].events[0];
    EXPECT_EQ(event.dds.durability, dds::DurabilityKind::VOLATILE);
    EXPECT_EQ(event.dds.historyDepth, 16U);
    EXPECT_TRUE(result.services[0].dds->transportQos.empty());
    EXPECT_EQ(result.services[0].instanceName, "");
    ASSERT_EQ(result.errors.size(), 4U);
    EXPECT_EQ(result.errors[0],
              "[App][Invalid deployment value, ignored][file=/etc/orx.json, "
              "key=services[0].instanceName, value=12, reason=must be a text]");
    for (const char* key :
         {"bindings.dds.transportQos", "events[0].dds.durability", "events[0].dds.historyDepth"}) {
        EXPECT_EQ(Log().CountContaining(LogLevel::kError, std::string("key=services[0].") + key),
                  1U)
            << key << "\n"
            << Log().Dump();
    }
}

TEST_F(DeploymentParserTest, BadMandatoryValuesSkipTheEntityOrTheService) {
    auto noServiceId = FullService();
    noServiceId.erase("serviceId");
    auto reserved = FullService();
    reserved["serviceId"] = 0xE000;
    auto anyInstanceOffered = FullService();
    anyInstanceOffered["instanceId"] = "65534";
    auto noBindings = FullService();
    noBindings["bindings"] = nlohmann::json::object();
    auto badEvents = FullService();
    badEvents["service"] = "/test/Other";
    badEvents["events"].push_back({{"name", "NoId"}});
    badEvents["events"].push_back(
        {{"name", "Twin"}, {"entityId", 11}, {"someip", {{"eventId", 9}}}});
    badEvents["events"].push_back({{"name", "NoSomeipId"}, {"entityId", 40}});
    badEvents["events"].push_back(7);

    const auto result = ParseDeployments(
        Document({noServiceId, reserved, anyInstanceOffered, noBindings, badEvents, "text"}),
        "orx.json");

    ASSERT_EQ(result.services.size(), 1U) << Log().Dump();
    EXPECT_EQ(result.services[0].serviceName, "/test/Other");
    ASSERT_EQ(result.services[0].events.size(), 1U) << "only the good event stays";
    EXPECT_EQ(result.services[0].events[0].name, "Objects");
    EXPECT_EQ(result.errors[0],
              "[App][Invalid deployment value, service not deployed][file="
              "orx.json, key=services[0].serviceId, reason=missing]");
    for (const char* part :
         {"service not deployed][file=orx.json, key=services[1].serviceId, value=57344, "
          "reason=reserved for the maintenance daemon]",
          "key=services[2].instanceId", "key=services[3].bindings, reason=must hold",
          "event not deployed][file=orx.json, key=services[4].events[1].entityId, reason=missing]",
          "key=services[4].events[2].entityId, value=11, reason=duplicate entity id in the service",
          "key=services[4].events[3].someip, reason=missing", "key=services[4].events[4], value=7",
          "key=services[5], value=\"text\""}) {
        EXPECT_EQ(Log().CountContaining(LogLevel::kError, part), 1U) << part << "\n"
                                                                     << Log().Dump();
    }
    EXPECT_EQ(result.errors.size(), 10U);
}

TEST_F(DeploymentParserTest, HostileShapesNeverCrash) {
    // A serialization tree nested far deeper than allowed, and values of every wrong kind.
    nlohmann::json tree = {{"name", "leaf"}};
    for (int i = 0; i < 200; ++i) {
        tree = {{"name", "level"}, {"children", {tree}}};
    }
    auto service = FullService();
    service["events"][0]["someip"]["serialization"] = tree;
    service["methods"][0]["inputArgs"] = {1, 2};
    service["methods"][0]["errorDomains"] = {{{"name", 5}}};
    service["fields"][0]["getter"] = "yes";

    const auto result = ParseDeployments(Document({service}), "orx.json");
    ASSERT_EQ(result.services.size(), 1U) << Log().Dump();
    EXPECT_EQ(Log().CountContaining(LogLevel::kError, "nested deeper than 16 levels"), 1U);
    EXPECT_TRUE(result.services[0].methods[0].inputArgNames.empty());
    EXPECT_TRUE(result.services[0].methods[0].errorDomains.empty());
    EXPECT_FALSE(result.services[0].fields[0].getter);

    for (const auto& document :
         {nlohmann::json(nullptr), nlohmann::json::array(), nlohmann::json{{"services", 3}},
          nlohmann::json{{"services", nullptr}}, nlohmann::json::object()}) {
        EXPECT_TRUE(ParseDeployments(document, "orx.json").services.empty());
    }
}

}  // namespace
