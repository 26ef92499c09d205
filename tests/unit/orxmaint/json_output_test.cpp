// The --json form scripts rely on: one array of objects keyed by the record member names, with
// the values orx::maintaind::ToJson gives.
#include "output/json_output.h"

#include <gtest/gtest.h>

#include <sstream>

#include <nlohmann/json.hpp>

#include "canned_entries.h"
#include "orx/maintaind/json.h"
#include "orx/maintaind/tools/replies.h"
#include "orx/test/record_filler.h"

namespace orx::orxmaint {
namespace {

namespace tools = maintaind::tools;

template <class T>
nlohmann::json Written(const T& value) {
    std::string text;
    JsonWriter json(text);
    json.Value(value);
    return nlohmann::json::parse(text);  // throws, failing the test, on invalid JSON
}

template <class Entry>
nlohmann::json Printed(const std::vector<Entry>& entries, bool full) {
    std::ostringstream out;
    PrintEntries(entries, full, out);
    const std::string text = out.str();
    EXPECT_EQ(text.find('\n'), text.size() - 1) << "one line";
    return nlohmann::json::parse(text);
}

TEST(JsonOutputTest, WritesEveryRecordAsToJsonDoes) {
    // Fully populated records reach every member type: nested records, enumerations, maps with
    // enumeration and text keys, vectors of numbers and of texts.
    orx::test::RecordFiller filler;
    tools::AllDataReply all;
    filler.Fill(all);
    all.message = "quote \" backslash \\ newline \n tab \t bell \a ünïcödé";
    EXPECT_EQ(Written(all), maintaind::ToJson(all));

    tools::DaemonStatusReply status;
    filler.Fill(status);
    EXPECT_EQ(Written(status), maintaind::ToJson(status));
}

TEST(JsonOutputTest, TheRegistrationRecordOnlyWithFull) {
    const auto event = test::Event("radar", 42, "/demo/RadarService/Objects", true);
    const nlohmann::json brief = Printed(std::vector<tools::EventEntry>{event}, false)[0];
    EXPECT_EQ(brief["pid"], 42);
    EXPECT_EQ(brief["serviceId"], 0x1234);
    EXPECT_EQ(brief["isPub"], true);
    EXPECT_EQ(brief["bindings"], nlohmann::json::array({"DDS", "SOMEIP"}));
    EXPECT_FALSE(brief.contains("record"));

    const nlohmann::json full = Printed(std::vector<tools::EventEntry>{event}, true)[0];
    ASSERT_TRUE(full.contains("record"));
    EXPECT_EQ(full["record"], maintaind::ToJson(event.record));
}

TEST(JsonOutputTest, TextThatIsNotUtf8StillGivesValidJson) {
    auto node = test::Node(
        "r\xff"
        "a\xc3"
        "d\xed\xa0\x80"
        "ar\xf4\x90\x80\x80",
        1, true);
    node.host = std::string("nul\0byte", 8);
    const nlohmann::json parsed = Printed(std::vector<tools::NodeEntry>{node}, false);
    EXPECT_EQ(parsed[0]["appName"].get<std::string>().find('\xff'), std::string::npos);
    EXPECT_NE(parsed[0]["appName"].get<std::string>().find("\xEF\xBF\xBD"), std::string::npos);
    EXPECT_EQ(parsed[0]["host"], std::string("nul\0byte", 8));

    std::ostringstream empty;
    PrintEntries(std::vector<tools::NodeEntry>{}, false, empty);
    EXPECT_EQ(empty.str(), "[]\n");
}

}  // namespace
}  // namespace orx::orxmaint
