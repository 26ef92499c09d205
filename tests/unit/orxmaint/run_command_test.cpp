// Commands end to end against a tools service in this process: what is asked, what is printed,
// and the exit code.
#include "commands/run_command.h"

#include <gtest/gtest.h>

#include <chrono>
#include <sstream>

#include <nlohmann/json.hpp>

#include "canned_entries.h"
#include "fake_tools_service.h"
#include "vorx/vcc/driver/driver_registry.h"

namespace orx::orxmaint {
namespace {

namespace tools = maintaind::tools;
using std::chrono::milliseconds;

class RunCommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        // The DDS binding of this process is served by the in-process driver.
        auto registry = vorx::vcc::DriverRegistry::GetInstance();
        registry->SetDriver(vorx::vcc::api::types::DriverType::DDS, registry->GetInProcessDriver());
        settings_.where = "the test transport";
        settings_.timeout = milliseconds(2000);
        environment_.waitUnlessStopped = [](milliseconds) { return true; };
    }

    int Run(const Options& options) {
        out_.str("");
        err_.str("");
        return RunCommand(options, settings_, environment_, out_, err_);
    }

    static Options Command(orx::orxmaint::Command command) {
        Options options;
        options.command = command;
        return options;
    }

    ClientSettings settings_;
    RunEnvironment environment_;
    std::ostringstream out_;
    std::ostringstream err_;
};

TEST_F(RunCommandTest, ListsWhatTheServiceAnswersWithTheFilterOfTheCommandLine) {
    test::FakeToolsService service;
    service.events.events = {test::Event("radar", 42, "/demo/RadarService/Objects", true)};
    service.events.total = 1;
    ASSERT_TRUE(service.Offer());

    Options options = Command(Command::kEvents);
    options.json = true;
    options.app = "radar";
    options.service = "0x1234";
    options.side = "pub";
    options.onlineOnly = true;
    ASSERT_EQ(Run(options), 0) << err_.str();

    const nlohmann::json printed = nlohmann::json::parse(out_.str());
    ASSERT_EQ(printed.size(), 1U);
    EXPECT_EQ(printed[0]["appName"], "radar");
    EXPECT_EQ(printed[0]["eventName"], "/demo/RadarService/Objects");
    EXPECT_EQ(err_.str(), "");

    EXPECT_EQ(service.LastMethod(), tools::kQueryEventInfoId);
    const tools::QueryFilter filter = service.LastFilter();
    EXPECT_EQ(filter.appName, "radar");
    EXPECT_TRUE(filter.hasServiceId);
    EXPECT_EQ(filter.serviceId, 0x1234);
    EXPECT_EQ(filter.side, tools::kPubSide);
    EXPECT_TRUE(filter.onlineOnly);
    EXPECT_TRUE(filter.withoutRecords) << "records are only asked for with --full";

    options.full = true;
    options.service = "/demo/RadarService";
    ASSERT_EQ(Run(options), 0) << err_.str();
    EXPECT_FALSE(service.LastFilter().withoutRecords);
    EXPECT_FALSE(service.LastFilter().hasServiceId);
    EXPECT_EQ(service.LastFilter().serviceName, "/demo/RadarService");
}

TEST_F(RunCommandTest, EachCommandCallsItsMethod) {
    test::FakeToolsService service;
    ASSERT_TRUE(service.Offer());
    const std::pair<orx::orxmaint::Command, uint32_t> cases[] = {
        {Command::kNodes, tools::kQueryNodeInfoId},
        {Command::kMethods, tools::kQueryMethodInfoId},
        {Command::kFields, tools::kQueryFieldInfoId},
        {Command::kE2E, tools::kQueryE2EInfoId},
        {Command::kTypes, tools::kQueryDataTypeListId},
        {Command::kLatencyStatus, tools::kQueryLatencyStatusId},
        {Command::kLatencyResults, tools::kQueryLatencyResultId},
        {Command::kTimeouts, tools::kQuerySampleTimeoutId},
        {Command::kStatus, tools::kQueryDaemonStatusId},
    };
    for (const auto& [command, method] : cases) {
        for (const bool json : {false, true}) {
            Options options = Command(command);
            options.json = json;
            EXPECT_EQ(Run(options), 0) << method << ": " << err_.str();
            EXPECT_EQ(service.LastMethod(), method);
            if (json) {
                const nlohmann::json printed = nlohmann::json::parse(out_.str());
                EXPECT_TRUE(printed.is_array()) << method;
            } else {
                EXPECT_NE(out_.str(), "") << method;
            }
        }
    }
    // Latency results are the newest per event unless the history is asked for.
    Options history = Command(Command::kLatencyResults);
    EXPECT_EQ(Run(history), 0);
    EXPECT_TRUE(service.LastFilter().latestOnly);
    history.history = true;
    EXPECT_EQ(Run(history), 0);
    EXPECT_FALSE(service.LastFilter().latestOnly);
}

TEST_F(RunCommandTest, LatencySwitchSendsTheEventAndExplainsARefusal) {
    test::FakeToolsService service;
    service.latencySwitch.eventName = "/demo/RadarService/Objects";
    service.latencySwitch.latencyIndex.serviceId = 0x1234;
    service.latencySwitch.latencyIndex.eventName = "RadarObjects";
    ASSERT_TRUE(service.Offer());

    Options options = Command(Command::kLatencyDisable);
    options.name = "Objects";
    options.app = "fusion";
    ASSERT_EQ(Run(options), 0) << err_.str();
    EXPECT_EQ(service.LastSwitch().event, "Objects");
    EXPECT_EQ(service.LastSwitch().mode, maintaind::LatencyMode::DISABLE);
    EXPECT_EQ(service.LastSwitch().filter.appName, "fusion");
    EXPECT_NE(out_.str().find("Latency analysis disabled for /demo/RadarService/Objects"),
              std::string::npos)
        << out_.str();

    options.command = Command::kLatencyEnable;
    options.json = true;
    ASSERT_EQ(Run(options), 0) << err_.str();
    EXPECT_EQ(service.LastSwitch().mode, maintaind::LatencyMode::ENABLE);
    const nlohmann::json printed = nlohmann::json::parse(out_.str());
    EXPECT_EQ(printed[0]["mode"], "enable");
    EXPECT_EQ(printed[0]["latencyIndex"]["eventName"], "RadarObjects");
}

TEST_F(RunCommandTest, RefusedAnswersEndWithCodeOneAndTheDaemonsReason) {
    test::FakeToolsService service;
    service.latencySwitch.code = static_cast<uint8_t>(tools::ToolsCode::AMBIGUOUS_EVENT);
    service.latencySwitch.candidates = {"/a/Objects", "/b/Objects"};
    service.nodes.code = static_cast<uint8_t>(tools::ToolsCode::INTERNAL_ERROR);
    service.nodes.message = "store failed";
    service.dataType.code = static_cast<uint8_t>(tools::ToolsCode::UNKNOWN_EVENT);
    ASSERT_TRUE(service.Offer());

    Options latency = Command(Command::kLatencyEnable);
    latency.name = "Objects";
    EXPECT_EQ(Run(latency), 1);
    EXPECT_EQ(out_.str(), "");
    EXPECT_NE(err_.str().find("fits 2 events"), std::string::npos) << err_.str();

    EXPECT_EQ(Run(Command(Command::kNodes)), 1);
    EXPECT_EQ(err_.str(),
              "maintaind could not answer QueryNodeInfo (INTERNAL_ERROR: store failed)\n");

    Options type = Command(Command::kTypes);
    type.name = "demo::Nothing";
    EXPECT_EQ(Run(type), 1);
    EXPECT_EQ(service.LastDataTypeRequest().dataTypeName, "demo::Nothing");
    EXPECT_NE(err_.str().find("No event or method uses the data type \"demo::Nothing\""),
              std::string::npos);
}

TEST_F(RunCommandTest, NoServiceOrNoAnswerEndsWithCodeOneAfterTheTimeout) {
    settings_.timeout = milliseconds(200);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Run(Command(Command::kNodes)), 1);
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(err_.str(),
              "maintaind is not reachable on the test transport (instance 1): no answer within "
              "200 ms. Is maintaind running?\n");
    EXPECT_EQ(out_.str(), "");
    EXPECT_GE(took, milliseconds(200));
    EXPECT_LT(took, milliseconds(1500));

    test::FakeToolsService silent;
    silent.answer = false;
    ASSERT_TRUE(silent.Offer());
    EXPECT_EQ(Run(Command(Command::kNodes)), 1);
    EXPECT_NE(err_.str().find("was found but did not answer QueryNodeInfo within 200 ms"),
              std::string::npos)
        << err_.str();
}

TEST_F(RunCommandTest, OnlyTheRequestedInstanceIsAsked) {
    test::FakeToolsService other("2");
    ASSERT_TRUE(other.Offer());
    settings_.timeout = milliseconds(200);
    EXPECT_EQ(Run(Command(Command::kStatus)), 1);
    EXPECT_EQ(other.RequestCount(), 0U);

    settings_.instanceId = "2";
    EXPECT_EQ(Run(Command(Command::kStatus)), 0) << err_.str();
    EXPECT_EQ(other.RequestCount(), 1U);
}

TEST_F(RunCommandTest, WatchRefreshesUntilStopped) {
    test::FakeToolsService service;
    service.latencyResults.results = {test::Result("fusion", "Objects", 850, test::kNoonMs)};
    ASSERT_TRUE(service.Offer());
    int waits = 0;
    environment_.waitUnlessStopped = [&waits](milliseconds period) {
        EXPECT_EQ(period, milliseconds(1000));
        return ++waits == 3;
    };
    Options options = Command(Command::kLatencyResults);
    options.watch = true;
    EXPECT_EQ(Run(options), 0) << err_.str();
    EXPECT_EQ(service.RequestCount(), 3U);
    size_t headers = 0;
    for (size_t at = out_.str().find("Latency results at "); at != std::string::npos;
         at = out_.str().find("Latency results at ", at + 1)) {
        ++headers;
    }
    EXPECT_EQ(headers, 3U);
    EXPECT_EQ(out_.str().find("\x1b["), std::string::npos) << "no screen control off a terminal";
}

}  // namespace
}  // namespace orx::orxmaint
