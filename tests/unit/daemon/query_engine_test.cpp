#include <gtest/gtest.h>

#include "daemon_test_support.h"
#include "registry/registry_updater.h"
#include "tools/query_engine.h"

namespace orx::maintaind::daemon::test {
namespace {

class QueryEngineTest : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const AppRegisterInfo& report :
             {EventReport("radar", 1, "/demo/Radar/Brake", true, "BrakeTopic", 0x10),
              EventReport("hud", 2, "/demo/Radar/Brake", false, "BrakeTopic", 0x10),
              EventReport("hud", 2, "/demo/Engine/Rpm", false, "RpmTopic", 0x20),
              EventReport("engine", 3, "/demo/Engine/Rpm", true, "RpmTopic", 0x20),
              MethodReport("radar", 1, "Calibrate", true, 0x10),
              MethodReport("hud", 2, "Calibrate", false, 0x10),
              MethodReport("hud", 2, "Reset", false, 0x20), NodeReport("engine", 3, false)}) {
            ASSERT_TRUE(updater_.ApplyReport(report, state_, changes_).accepted);
            clock_.Advance(1);
        }
        for (uint64_t latency : {10U, 20U, 30U}) {
            updater_.ApplyReport(
                LatencyReport("hud", "BrakeTopic", 1, LatencyMode::ENABLE, latency), state_,
                changes_);
        }
    }

    static std::vector<String> AppsOf(const std::vector<tools::EventEntry>& events) {
        std::vector<String> apps;
        for (const auto& event : events) {
            apps.push_back(event.appName + (event.isPub ? "+" : "-"));
        }
        return apps;
    }

    ManualClock clock_;
    RegistryUpdater updater_{RegistryLimits{}, clock_.Clock(), std::make_shared<FakeProbe>()};
    RegistryState state_;
    ChangeSet changes_;
    QueryEngine engine_{5};
};

TEST_F(QueryEngineTest, FiltersSelectByApplicationServiceNameSideAndState) {
    tools::QueryFilter filter;
    EXPECT_EQ(AppsOf(engine_.Events(state_, filter).events),
              (std::vector<String>{"engine+", "hud-", "hud-", "radar+"}));

    filter.appName = "hud";
    EXPECT_EQ(engine_.Events(state_, filter).events.size(), 2U);
    filter = {};
    filter.hasServiceId = true;
    filter.serviceId = 0x20;
    EXPECT_EQ(AppsOf(engine_.Events(state_, filter).events),
              (std::vector<String>{"engine+", "hud-"}));
    filter = {};
    filter.name = "Brake";  // last path component
    EXPECT_EQ(engine_.Events(state_, filter).events.size(), 2U);
    filter.name = "RpmTopic";  // topic
    EXPECT_EQ(engine_.Events(state_, filter).events.size(), 2U);
    filter.name = "/demo/Engine";  // a prefix is no name
    EXPECT_TRUE(engine_.Events(state_, filter).events.empty());
    filter = {};
    filter.side = tools::kPubSide;
    EXPECT_EQ(AppsOf(engine_.Events(state_, filter).events),
              (std::vector<String>{"engine+", "radar+"}));
    filter = {};
    filter.onlineOnly = true;  // engine went offline
    EXPECT_EQ(AppsOf(engine_.Events(state_, filter).events),
              (std::vector<String>{"hud-", "hud-", "radar+"}));
    EXPECT_FALSE(engine_.Events(state_, {}).events[0].online);

    // Subscribers only, whatever side the filter names besides.
    EXPECT_EQ(AppsOf(engine_.Events(state_, {}, true).events),
              (std::vector<String>{"hud-", "hud-"}));
    filter = {};
    filter.side = tools::kPubSide;
    EXPECT_TRUE(engine_.Events(state_, filter, true).events.empty());

    filter = {};
    filter.onlineOnly = true;
    const auto nodes = engine_.Nodes(state_, filter).nodes;
    ASSERT_EQ(nodes.size(), 2U);
    EXPECT_EQ(nodes[0].appName, "hud");
    EXPECT_EQ(nodes[0].methodCount, 2U);
}

TEST_F(QueryEngineTest, RecordsAreLeftOutOnRequest) {
    tools::QueryFilter filter;
    filter.withoutRecords = true;
    const auto lean = engine_.Events(state_, filter).events;
    const auto full = engine_.Events(state_, {}).events;
    ASSERT_EQ(lean.size(), full.size());
    for (size_t i = 0; i < lean.size(); ++i) {
        EXPECT_EQ(lean[i].record, EventRegisterInfo{});
        EXPECT_FALSE(full[i].record.eventName.empty());
        tools::EventEntry summary = full[i];
        summary.record = {};
        EXPECT_EQ(lean[i], summary) << "every other member is listed as usual";
    }
    EXPECT_EQ(engine_.Methods(state_, filter).methods.at(0).record, MethodRegisterInfo{});
}

TEST_F(QueryEngineTest, ListsAreCappedAndCounted) {
    for (int i = 0; i < 10; ++i) {
        updater_.ApplyReport(EventReport("many", 9, "E" + std::to_string(i), true, ""), state_,
                             changes_);
    }
    const auto capped = engine_.Events(state_, {});  // engine cap 5
    EXPECT_EQ(capped.events.size(), 5U);
    EXPECT_EQ(capped.total, 14U);
    EXPECT_TRUE(capped.truncated);
    tools::QueryFilter three;
    three.maxEntries = 3;
    EXPECT_EQ(engine_.Events(state_, three).events.size(), 3U);
    EXPECT_TRUE(engine_.All(state_, three).truncated);
}

TEST_F(QueryEngineTest, LatencyResultsNewestFirstOrLatestOnly) {
    const auto all = engine_.LatencyResults(state_, {}).results;
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0].maxLatency, 30U);
    EXPECT_EQ(all[0].eventName, "/demo/Radar/Brake");
    tools::QueryFilter latest;
    latest.latestOnly = true;
    latest.name = "Brake";
    const auto newest = engine_.LatencyResults(state_, latest).results;
    ASSERT_EQ(newest.size(), 1U);
    EXPECT_EQ(newest[0].maxLatency, 30U);
}

TEST_F(QueryEngineTest, DataTypesAndMethodTypesSumUpAcrossApplications) {
    const auto types = QueryEngine().DataTypes(state_, {}).dataTypes;
    std::vector<String> names;
    for (const auto& type : types) {
        names.push_back(type.dataTypeName);
    }
    EXPECT_EQ(names, (std::vector<String>{"/demo/Engine/RpmType", "/demo/Radar/BrakeType",
                                          "CalibrateIn", "CalibrateOut", "ResetIn", "ResetOut"}));
    EXPECT_EQ(types[0].eventCount, 2U);
    EXPECT_EQ(types[0].appNames, (std::vector<String>{"engine", "hud"}));

    tools::DataTypeRequest request;
    request.dataTypeName = "CalibrateIn";
    const auto calibrate = engine_.DataType(state_, request);
    EXPECT_EQ(calibrate.code, 0);
    EXPECT_EQ(calibrate.methods.size(), 2U);
    EXPECT_EQ(calibrate.dataType.methodCount, 2U);
    request.dataTypeName = "Nothing";
    EXPECT_EQ(engine_.DataType(state_, request).code,
              static_cast<uint8_t>(tools::ToolsCode::UNKNOWN_EVENT));

    const auto methods = engine_.MethodTypes(state_, {}).methodTypes;
    ASSERT_EQ(methods.size(), 2U);
    EXPECT_EQ(methods[0].methodName, "Calibrate");
    EXPECT_EQ(methods[0].serverCount, 1U);
    EXPECT_EQ(methods[0].clientCount, 1U);
    EXPECT_EQ(methods[0].requestDataTypeName, "CalibrateIn");
}

}  // namespace
}  // namespace orx::maintaind::daemon::test
