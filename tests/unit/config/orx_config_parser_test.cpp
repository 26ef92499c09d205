// Reading the individual keys of orx.json: good values, mistyped and out-of-range values, and
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

// The full example of the schema documentation.
const char* const kFullExample = R"({
  "application": {
    "name": "orx-demo",
    "logLevel": "info",
    "logFile": "/var/log/orx-demo.log"
  },
  "dfx": {
    "pluginPath": "/opt/orx/lib/liborxcm_dfx.so",
    "sampleTimeoutThresholdMs": 100
  },
  "maintenance": {
    "instanceId": "1",
    "network": { "address": "127.0.0.1", "flag": true },
    "resourceAttributes": { "zone": "cockpit", "asil": "QM" }
  },
  "services": [],
  "dds": {}
})";

using OrxConfigParserTest = ConfigFileTest;

TEST_F(OrxConfigParserTest, GoodFileGivesEveryValue) {
    const std::string path = WriteFile(kFullExample);
    ParseJsonToGetConfig config(path);

    EXPECT_EQ(config.GetAppName(), "orx-demo");
    EXPECT_EQ(config.GetLogLevel(), "info");
    EXPECT_EQ(config.GetLogFile(), "/var/log/orx-demo.log");
    EXPECT_EQ(config.GetPluginPath(), "/opt/orx/lib/liborxcm_dfx.so");
    EXPECT_EQ(config.GetInstanceId(), "1");
    EXPECT_EQ(config.GetNetworkIp(), std::make_pair(std::string("127.0.0.1"), true));
    EXPECT_EQ(config.GetResourceAttr(),
              (std::map<std::string, std::string>{{"zone", "cockpit"}, {"asil", "QM"}}));
    EXPECT_TRUE(config.Document().at("services").is_array());
    EXPECT_TRUE(config.Document().at("dds").is_object());
    EXPECT_EQ(OrxConfigParser(path).GetSnapshotConfig().timeoutThreshold, 100u);
    EXPECT_EQ(Errors(), 0u) << capture_->Dump();
}

TEST_F(OrxConfigParserTest, PartialFileLeavesTheRestNotConfigured) {
    // Only an address: the flag defaults to false. Null counts as absent. A numeric instance id
    // is taken as its digits; the level is given in its canonical name.
    ParseJsonToGetConfig config(WriteFile(R"({
        "application": { "logLevel": "WARN", "name": null },
        "maintenance": { "instanceId": 7, "network": { "address": "10.0.0.2" } }
    })"));
    EXPECT_EQ(config.GetAppName(), "");
    EXPECT_EQ(config.GetLogLevel(), "warning");
    EXPECT_EQ(config.GetInstanceId(), "7");
    EXPECT_EQ(config.GetNetworkIp(), std::make_pair(std::string("10.0.0.2"), false));
    EXPECT_TRUE(config.GetResourceAttr().empty());
    EXPECT_EQ(config.GetPluginPath(), "");

    // A flag without an address configures no network.
    ParseJsonToGetConfig flagOnly(WriteFile(R"({"maintenance": {"network": {"flag": true}}})"));
    EXPECT_EQ(flagOnly.GetNetworkIp(), std::make_pair(std::string(), false));
    EXPECT_EQ(Errors(), 0u) << capture_->Dump();
}

TEST_F(OrxConfigParserTest, EachMistypedValueIsOneErrorAndOnlyThatValueIsDropped) {
    const std::string path = WriteFile(R"({
        "application": { "name": 5, "logLevel": "loud", "logFile": "/tmp/x.log" },
        "dfx": { "pluginPath": ["a"] },
        "maintenance": {
            "instanceId": true,
            "network": { "address": "10.0.0.1", "flag": "yes" },
            "resourceAttributes": { "zone": "body", "count": 3 }
        }
    })");
    ParseJsonToGetConfig config(path);

    EXPECT_EQ(config.GetAppName(), "");
    EXPECT_EQ(config.GetLogLevel(), "");
    EXPECT_EQ(config.GetLogFile(), "/tmp/x.log");
    EXPECT_EQ(config.GetPluginPath(), "");
    EXPECT_EQ(config.GetInstanceId(), "");
    EXPECT_EQ(config.GetNetworkIp(), std::make_pair(std::string("10.0.0.1"), false));
    EXPECT_EQ(config.GetResourceAttr(), (std::map<std::string, std::string>{{"zone", "body"}}));

    const std::string prefix =
        "[OrxConfigParser][Invalid config value, treated as not configured][file=" + path +
        ", key=";
    const std::vector<std::string> expected = {
        prefix + "application.name, value=5, reason=must be a text]",
        prefix +
            "application.logLevel, value=\"loud\", reason=must be one of verbose, debug, "
            "info, warning, error, fatal, off]",
        prefix + "dfx.pluginPath, value=<array>, reason=must be a text]",
        prefix + "maintenance.instanceId, value=true, reason=must be a text]",
        prefix + "maintenance.network.flag, value=\"yes\", reason=must be true or false]",
        prefix + "maintenance.resourceAttributes.count, value=3, reason=must be a text]",
    };
    for (const auto& line : expected) {
        EXPECT_EQ(capture_->Count(LogLevel::kError, line), 1u) << line << "\n" << capture_->Dump();
    }
    EXPECT_EQ(Errors(), expected.size()) << capture_->Dump();
}

TEST_F(OrxConfigParserTest, SectionOfTheWrongTypeIsOneErrorForAllItsKeys) {
    ParseJsonToGetConfig config(WriteFile(R"({"maintenance": [1], "application": {"name": "a"}})"));
    EXPECT_EQ(config.GetInstanceId(), "");
    EXPECT_EQ(config.GetNetworkIp(), std::make_pair(std::string(), false));
    EXPECT_TRUE(config.GetResourceAttr().empty());
    EXPECT_EQ(config.GetAppName(), "a");
    EXPECT_EQ(Errors(), 1u) << capture_->Dump();
    EXPECT_EQ(ErrorsContaining("key=maintenance, value=<array>, reason=must be an object]"), 1u)
        << capture_->Dump();
}

TEST_F(OrxConfigParserTest, ThresholdMustBeAnUnsigned32BitInteger) {
    struct Case {
        const char* json;
        uint32_t expected;
        bool error;
    };
    // The text "100" comes last: its error line is checked in full below.
    const Case cases[] = {
        {"0", 0, false},      {"5", 5, false},         {"4294967295", 4294967295u, false},
        {"null", 0, false},   {"4294967296", 0, true}, {"-1", 0, true},
        {"1.5", 0, true},     {"100.0", 0, true},      {"18446744073709551616", 0, true},
        {"\"100\"", 0, true},
    };
    for (const auto& c : cases) {
        capture_->Clear();
        const std::string path =
            WriteFile(std::string(R"({"dfx": {"sampleTimeoutThresholdMs": )") + c.json + "}}");
        EXPECT_EQ(OrxConfigParser(path).GetSnapshotConfig().timeoutThreshold, c.expected) << c.json;
        EXPECT_EQ(Errors(), c.error ? 1u : 0u) << c.json << "\n" << capture_->Dump();
        if (c.error) {
            EXPECT_EQ(ErrorsContaining("file=" + path + ", key=dfx.sampleTimeoutThresholdMs"), 1u)
                << capture_->Dump();
        }
    }
    EXPECT_TRUE(
        capture_->Contains(LogLevel::kError,
                           "[OrxConfigParser][Invalid config value, treated as not configured]"
                           "[file=" +
                               Dir() +
                               "/orx.json, key=dfx.sampleTimeoutThresholdMs, "
                               "value=\"100\", reason=must be an integer from 0 to 4294967295]"));
}

TEST_F(OrxConfigParserTest, ConfigVariableSelectsTheFile) {
    unsetenv("ORX_CONFIG");
    EXPECT_EQ(ConfigFilePath(), "./orx.json");
    setenv("ORX_CONFIG", "", 1);
    EXPECT_EQ(ConfigFilePath(), "./orx.json");

    const std::string path = WriteFile(R"({"dfx": {"sampleTimeoutThresholdMs": 20}})", "a.json");
    setenv("ORX_CONFIG", path.c_str(), 1);
    EXPECT_EQ(ConfigFilePath(), path);
    EXPECT_EQ(OrxConfigParser().GetSnapshotConfig().timeoutThreshold, 20u);

    // A fresh parser sees the file as it is now.
    WriteFile(R"({"dfx": {"sampleTimeoutThresholdMs": 30}})", "a.json");
    EXPECT_EQ(OrxConfigParser().GetSnapshotConfig().timeoutThreshold, 30u);
}

// The only test that touches the process-wide instance.
TEST_F(OrxConfigParserTest, SharedInstanceReadsTheSelectedFileOnce) {
    const std::string path =
        WriteFile(R"({"application": {"name": "first"}, "dds": {"domain": 3}})", "shared.json");
    setenv("ORX_CONFIG", path.c_str(), 1);

    const auto instance = ParseJsonToGetConfig::GetInstance();
    ASSERT_TRUE(instance);
    EXPECT_EQ(instance->FilePath(), path);
    EXPECT_EQ(instance->GetAppName(), "first");
    EXPECT_EQ(instance->Document().at("dds").at("domain"), 3);

    WriteFile(R"({"application": {"name": "second"}})", "shared.json");
    EXPECT_EQ(ParseJsonToGetConfig::GetInstance(), instance);
    EXPECT_EQ(ParseJsonToGetConfig::GetInstance()->GetAppName(), "first");
}

}  // namespace
