// Files that cannot be used as a whole: missing, unreadable, not JSON, not an object.
#include <string>

#include <gtest/gtest.h>

#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "config_test_fixture.h"

namespace {

using namespace ara::kelda::common::orxConfigParser;

void ExpectNothingConfigured(const ParseJsonToGetConfig& config) {
    EXPECT_EQ(config.GetInstanceId(), "");
    EXPECT_EQ(config.GetNetworkIp(), std::make_pair(std::string(), false));
    EXPECT_TRUE(config.GetResourceAttr().empty());
    EXPECT_EQ(config.Document(), nlohmann::json::object());
}

TEST_F(ConfigFileTest, MissingFileIsQuietAndASyntaxErrorNamesLineAndColumn) {
    const std::string absent = Dir() + "/absent.json";
    ParseJsonToGetConfig missing(absent);
    ExpectNothingConfigured(missing);
    EXPECT_EQ(missing.FilePath(), absent);
    EXPECT_TRUE(missing.Problems().empty());
    EXPECT_EQ(OrxConfigParser(absent).GetSnapshotConfig().timeoutThreshold, 0u);
    EXPECT_EQ(Errors(), 0u) << capture_->Dump();

    // The trailing comma is only noticed at the closing brace: line 4, column 3.
    const std::string path = WriteFile(
        "{\n"
        "  \"maintenance\": { \"instanceId\": \"1\" },\n"
        "  \"dfx\": { \"sampleTimeoutThresholdMs\": 10 },\n"
        "  }\n");
    ParseJsonToGetConfig broken(path);
    ExpectNothingConfigured(broken);
    EXPECT_EQ(ErrorsContaining("[OrxConfigParser][Config file is not valid JSON, treated as not "
                               "configured][file=" +
                               path + ", line=4, column=3, reason=syntax error"),
              1u)
        << capture_->Dump();
    ASSERT_EQ(broken.Problems().size(), 1u);
    EXPECT_EQ(broken.Problems()[0].origin, SettingOrigin::File(path, ""));
    EXPECT_EQ(broken.Problems()[0].reason.rfind("not valid JSON at line=4, column=3: ", 0), 0u);
    // A fresh parser reads, and reports, again.
    EXPECT_EQ(OrxConfigParser(path).GetSnapshotConfig().timeoutThreshold, 0u);
    EXPECT_EQ(ErrorsContaining("line=4, column=3"), 2u);

    // An empty file fails at its very start.
    ExpectNothingConfigured(ParseJsonToGetConfig(WriteFile("", "empty.json")));
    EXPECT_EQ(ErrorsContaining("line=1, column=1"), 1u) << capture_->Dump();
}

TEST_F(ConfigFileTest, FileThatIsNoObjectOrCannotBeReadIsOneError) {
    ExpectNothingConfigured(ParseJsonToGetConfig(WriteFile("[1, 2, 3]")));
    EXPECT_EQ(ErrorsContaining("does not hold a JSON object"), 1u) << capture_->Dump();

    capture_->Clear();
    ExpectNothingConfigured(ParseJsonToGetConfig(Dir()));  // a directory
    EXPECT_EQ(ErrorsContaining("[Cannot read config file, treated as not configured][file=" +
                               Dir() + ", reason=not a regular file]"),
              1u)
        << capture_->Dump();

    // Numbers too large for the parser make the file unusable, not the process.
    capture_->Clear();
    EXPECT_EQ(OrxConfigParser(WriteFile(R"({"dfx": {"sampleTimeoutThresholdMs": 1e999}})"))
                  .GetSnapshotConfig()
                  .timeoutThreshold,
              0u);
    EXPECT_EQ(Errors(), 1u) << capture_->Dump();
    for (const auto& record : capture_->Records()) {
        EXPECT_EQ(record.contextId, "CM");
    }
}

}  // namespace

namespace {

TEST_F(ConfigFileTest, UnknownAndDuplicatedKeysAreOneWarningEach) {
    const std::string path = WriteFile(R"({
        "dds": { "domainID": 3, "peers": [], "peers": ["127.0.0.1"] },
        "aplication": { "name": "x" },
        "services": [ { "anything": 1, "anything": 2 } ],
        "maintenance": { "resourceAttributes": { "free": "form" } },
        "frobnicate": true
    })");
    const ParseJsonToGetConfig config(path);
    EXPECT_EQ(config.Document()["dds"]["peers"].size(), 1u);  // the last one counts
    const std::string file = "[file=" + path + ", key=";
    for (const std::string& line : {
             "[Unknown key, ignored]" + file + "dds.domainID, didYouMean=dds.domainId]",
             "[Unknown key, ignored]" + file + "aplication, didYouMean=application]",
             "[Unknown key, ignored]" + file + "frobnicate]",
             "[Duplicated key, the last value is used]" + file + "dds.peers]",
             "[Duplicated key, the last value is used]" + file + "services[0].anything]",
         }) {
        EXPECT_EQ(capture_->CountContaining(LogLevel::kWarn, line), 1u) << line << capture_->Dump();
    }
    EXPECT_EQ(capture_->CountContaining(LogLevel::kWarn, ""), 5u) << capture_->Dump();
}

}  // namespace
