// The configuration parser's keys of orx.json: good values, mistyped and out-of-range values, and
// the choice of the file.
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "config_test_fixture.h"

namespace {

using namespace ara::kelda::common::orxConfigParser;
using OrxConfigParserTest = ConfigFileTest;
using Attributes = std::map<std::string, std::string>;

// Good network and resource attribute values are covered through the plug-in's reads by
// DDSDfxConfigTest.EventAndMethodRecordsCarryTopicsAndTheConfiguredNetwork.
TEST_F(OrxConfigParserTest, GoodFilesGiveTheirValuesAndLeaveTheRestNotConfigured) {
    // A numeric instance id is taken as its digits; an address alone has the flag false; null is
    // absent; the sections of other readers stay in the document.
    const std::string path = WriteFile(R"({
      "maintenance": {"instanceId": 7, "network": {"address": "10.0.0.2"},
                      "resourceAttributes": {"zone": "cockpit", "gone": null}},
      "dfx": {"sampleTimeoutThresholdMs": 100}, "services": []})");
    ParseJsonToGetConfig config(path);
    EXPECT_EQ(config.GetInstanceId(), "7");
    EXPECT_EQ(config.GetNetworkIp(), std::make_pair(std::string("10.0.0.2"), false));
    EXPECT_EQ(config.GetResourceAttr(), (Attributes{{"zone", "cockpit"}}));
    EXPECT_TRUE(config.Document().at("services").is_array());
    EXPECT_EQ(OrxConfigParser(path).GetSnapshotConfig().timeoutThreshold, 100u);
    // A flag alone configures no network.
    ParseJsonToGetConfig flagOnly(WriteFile(R"({"maintenance": {"network": {"flag": true}}})"));
    EXPECT_EQ(flagOnly.GetNetworkIp(), std::make_pair(std::string(), false));
    EXPECT_EQ(Errors(), 0u) << capture_->Dump();
}

TEST_F(OrxConfigParserTest, EachMistypedValueIsOneErrorAndOnlyThatValueIsDropped) {
    const std::string path = WriteFile(R"({
        "maintenance": {
            "instanceId": true,
            "network": { "address": "10.0.0.1", "flag": "yes" },
            "resourceAttributes": { "zone": "body", "count": 3 }
        }
    })");
    ParseJsonToGetConfig config(path);
    EXPECT_EQ(config.GetInstanceId(), "");
    EXPECT_EQ(config.GetNetworkIp(), std::make_pair(std::string("10.0.0.1"), false));
    EXPECT_EQ(config.GetResourceAttr(), (Attributes{{"zone", "body"}}));

    const std::string prefix =
        "[OrxConfigParser][Invalid config value, treated as not configured][file=" + path +
        ", key=";
    const std::vector<std::string> expected = {
        "[OrxConfigParser][Invalid config value, the process does not start][file=" + path +
            ", key=maintenance.instanceId, value=true, reason=must be a decimal number from 0 to "
            "65535]",
        prefix + "maintenance.network.flag, value=\"yes\", reason=must be true or false]",
        prefix + "maintenance.resourceAttributes.count, value=3, reason=must be a text]",
    };
    EXPECT_EQ(capture_->Lines().size(), expected.size()) << capture_->Dump();
    for (const auto& line : expected) {
        EXPECT_EQ(capture_->Count(LogLevel::kError, line), 1u) << line << "\n" << capture_->Dump();
    }
    ASSERT_EQ(config.Problems().size(), expected.size());
    EXPECT_EQ(config.Problems()[1].origin, SettingOrigin::File(path, "maintenance.network.flag"));
    EXPECT_EQ(config.Problems()[1].value, "\"yes\"");

    // A section of the wrong type is one error for all its keys.
    capture_->Clear();
    ParseJsonToGetConfig section(WriteFile(R"({"maintenance": [1]})", "section.json"));
    EXPECT_EQ(section.GetNetworkIp(), std::make_pair(std::string(), false));
    EXPECT_EQ(Errors(), 1u) << capture_->Dump();
    EXPECT_EQ(ErrorsContaining("key=maintenance, value=<array>, reason=must be an object]"), 1u);
}

// The conversion rules themselves are ConfigReaderTest's.
TEST_F(OrxConfigParserTest, ThresholdMustBeAnUnsigned32BitInteger) {
    const auto threshold = [this](const std::string& json) {
        return OrxConfigParser(WriteFile(R"({"dfx": {"sampleTimeoutThresholdMs": )" + json + "}}"))
            .GetSnapshotConfig()
            .timeoutThreshold;
    };
    EXPECT_EQ(threshold("4294967295"), 4294967295u);
    EXPECT_EQ(threshold("null"), 0u);
    EXPECT_EQ(Errors(), 0u) << capture_->Dump();
    EXPECT_EQ(threshold("4294967296"), 0u);
    EXPECT_EQ(threshold("\"100\""), 0u);
    EXPECT_EQ(ErrorsContaining("key=dfx.sampleTimeoutThresholdMs, value=4294967296, reason=out of "
                               "range, must be an integer from 0 to 4294967295]"),
              1u);
    EXPECT_EQ(ErrorsContaining("value=\"100\", reason=must be an integer from 0 to 4294967295]"),
              1u);
}

// The only test that touches the process-wide instance.
TEST_F(OrxConfigParserTest, ConfigVariableSelectsTheFileAndTheSharedInstanceReadsItOnce) {
    unsetenv("ORX_CONFIG");
    EXPECT_EQ(ConfigFilePath(), "./orx.json");
    setenv("ORX_CONFIG", "", 1);
    EXPECT_EQ(ConfigFilePath(), "./orx.json");

    const std::string path = WriteFile(
        R"({"maintenance": {"instanceId": "7"}, "dfx": {"sampleTimeoutThresholdMs": 20}})");
    setenv("ORX_CONFIG", path.c_str(), 1);
    EXPECT_EQ(ConfigFilePath(), path);
    const auto instance = ParseJsonToGetConfig::GetInstance();
    EXPECT_EQ(instance->FilePath(), path);
    EXPECT_EQ(instance->GetInstanceId(), "7");
    EXPECT_EQ(OrxConfigParser().GetSnapshotConfig().timeoutThreshold, 20u);

    // A fresh parser sees the file as it is now; the shared instance keeps what it read.
    WriteFile(R"({"maintenance": {"instanceId": "8"}, "dfx": {"sampleTimeoutThresholdMs": 30}})");
    EXPECT_EQ(OrxConfigParser().GetSnapshotConfig().timeoutThreshold, 30u);
    EXPECT_EQ(ParseJsonToGetConfig::GetInstance(), instance);
    EXPECT_EQ(instance->GetInstanceId(), "7");
}

}  // namespace
