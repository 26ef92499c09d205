// The typed reader every reader of orx.json goes through, and the vocabulary of settings.
#include "ara/kelda/common/orxConfigParser/config_reader.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "config_test_fixture.h"

namespace {

using namespace ara::kelda::common::orxConfigParser;
using ConfigReaderTest = ConfigFileTest;

TEST_F(ConfigReaderTest, ReadsNameTheFullKeyAndEachBadKeyIsReportedOnce) {
    const auto document = nlohmann::json::parse(R"({"a": {
        "small": 300, "half": 1.5, "word": "loud", "bad": [1, "x"], "good": [1, 2], "sub": 5,
        "attrs": {"zone": "front", "size": 2}}})");
    auto problems = std::make_shared<ConfigProblems>("/etc/orx.json");
    ConfigReader root(document, "", problems, "[Test][Bad]");
    auto a = root.Child("a");
    ASSERT_TRUE(a);

    EXPECT_EQ(a->Get<uint8_t>("small"), std::nullopt);
    EXPECT_EQ(a->Get<uint16_t>("small"), 300);
    EXPECT_EQ(a->GetUint32("half"), std::nullopt);
    EXPECT_EQ(a->GetChoice<int>("word", {{"quiet", 1}, {"soft", 2}}), std::nullopt);
    EXPECT_EQ(a->Get<std::vector<uint16_t>>("bad"), std::nullopt);
    EXPECT_EQ(a->Get<std::vector<uint16_t>>("good"), (std::vector<uint16_t>{1, 2}));
    EXPECT_EQ(a->GetStringMap("attrs"), (std::map<std::string, std::string>{{"zone", "front"}}));
    EXPECT_FALSE(a->Child("sub"));
    EXPECT_EQ(a->GetString("sub.name"), std::nullopt) << "a.sub is reported once";
    EXPECT_EQ(a->GetString("absent"), std::nullopt) << "absent is silent";
    root.Nested(document, "services[0]").ReportInvalid("name", nullptr, "missing");

    const std::string head = "[Test][Bad][file=/etc/orx.json, key=";
    EXPECT_EQ(
        problems->Lines(),
        (std::vector<std::string>{
            head + "a.small, value=300, reason=out of range, must be an integer from 0 to 255]",
            head +
                "a.half, value=1.5, reason=out of range, must be an integer from 0 to 4294967295]",
            head + "a.word, value=\"loud\", reason=must be one of quiet, soft]",
            head + "a.bad, value=<array>, reason=element 1 must be an integer from 0 to 65535]",
            head + "a.attrs.size, value=2, reason=must be a text]",
            head + "a.sub, value=5, reason=must be an object]",
            head + "services[0].name, reason=missing]"}));
    EXPECT_EQ(Errors(), problems->Lines().size()) << capture_->Dump();
    EXPECT_EQ(problems->Problems()[0].origin, SettingOrigin::File("/etc/orx.json", "a.small"));
    EXPECT_EQ(a->OriginOf("word"), SettingOrigin::File("/etc/orx.json", "a.word"));

    // A whole-file reader reports with the configuration parser's headline.
    ConfigReader file(document, "/etc/orx.json");
    EXPECT_EQ(file.GetBool("a.word"), std::nullopt);
    EXPECT_EQ(file.Problems().Lines().at(0),
              "[OrxConfigParser][Invalid config value, treated as not configured][file=/etc/"
              "orx.json, key=a.word, value=\"loud\", reason=must be true or false]");
}

TEST_F(ConfigReaderTest, OriginsDescribeWhereToFixAValueAndTheEnvironmentIsALookup) {
    EXPECT_EQ(SettingOrigin::Default().Describe(), "default");
    EXPECT_EQ(SettingOrigin::Environment("ORX_DDS_DOMAIN").Describe(),
              "environment variable ORX_DDS_DOMAIN");
    EXPECT_EQ(SettingOrigin::File("/etc/orx.json", "dds.domainId").Describe(),
              "key dds.domainId in /etc/orx.json");
    EXPECT_EQ(SettingOrigin::File("/etc/orx.json", "").Describe(), "file /etc/orx.json");
    EXPECT_EQ(SettingOrigin::Option("--domain").Describe(), "option --domain");
    EXPECT_EQ(SettingsReport().OriginOf("dds.domainId"), SettingOrigin::Default());

    const EnvLookup env = FixedEnvironment({{"SET", "x"}, {"EMPTY", ""}});
    EXPECT_EQ(env("SET"), "x");
    EXPECT_EQ(env("EMPTY"), "");
    EXPECT_EQ(NonEmpty(env, "EMPTY"), std::nullopt) << "an empty variable counts as unset";
    EXPECT_EQ(NonEmpty(env, "UNSET"), std::nullopt);
    EXPECT_EQ(NonEmpty(nullptr, "SET"), std::nullopt);

    SettingsReport report;
    RefuseEnvironmentValue("ORX_X", std::string(100, 'a'), "must be short", &report);
    ASSERT_EQ(report.problems.size(), 1u);
    EXPECT_EQ(report.problems[0].origin, SettingOrigin::Environment("ORX_X"));
    EXPECT_EQ(report.problems[0].value, std::string(80, 'a') + "...");
    EXPECT_EQ(ErrorsContaining("[OrxConfigParser][Invalid environment variable, ignored]"
                               "[variable=ORX_X, value=aaaa"),
              1u)
        << capture_->Dump();
}

}  // namespace
