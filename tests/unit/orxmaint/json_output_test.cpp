// The --json form scripts rely on: one array of objects keyed by the record member names.
#include "output/json_output.h"

#include <gtest/gtest.h>

#include <sstream>

#include "canned_entries.h"

namespace orx::orxmaint {
namespace {

template <class Entry>
void ExpectKeys(const std::vector<Entry>& entries, std::initializer_list<const char*> keys) {
    const nlohmann::json array = EntriesJson(entries, false);
    ASSERT_TRUE(array.is_array());
    ASSERT_EQ(array.size(), entries.size());
    for (const char* key : keys) {
        EXPECT_TRUE(array[0].contains(key)) << key << " missing in " << array[0].dump();
    }
}

TEST(JsonOutputTest, EveryListCarriesTheMembersScriptsNeed) {
    ExpectKeys<maintaind::tools::NodeEntry>({test::Node("radar", 42, true)},
                                            {"appName", "pid", "online", "host", "lastSeen"});
    ExpectKeys<maintaind::tools::EventEntry>(
        {test::Event("radar", 42, "/demo/RadarService/Objects", true)},
        {"appName", "pid", "eventName", "serviceId", "instanceId", "isPub", "bindings",
         "topicName"});
    ExpectKeys<maintaind::tools::MethodEntry>(
        {test::Method("radar", "Calibrate", true)},
        {"appName", "methodName", "serviceId", "instanceId", "isPub"});
    ExpectKeys<maintaind::tools::FieldEntry>({test::Field("radar", "Mode", false)},
                                             {"appName", "fieldName", "isPub"});
    ExpectKeys<maintaind::tools::LatencyResultEntry>(
        {test::Result("fusion", "Objects", 850, test::kNoonMs)},
        {"appName", "eventName", "minLatency", "maxLatency", "averageLatency", "notifyTime"});
    ExpectKeys<maintaind::tools::SampleTimeoutEntry>(
        {test::Timeout("fusion", "ObjectsListener", 17)},
        {"appName", "listenerName", "sampleTimeout", "sampleTimeoutCount"});
}

TEST(JsonOutputTest, ValuesKeepTheirTypesAndTheRecordOnlyWithFull) {
    const auto event = test::Event("radar", 42, "/demo/RadarService/Objects", true);
    const nlohmann::json brief = EntryJson(event, false);
    EXPECT_EQ(brief["pid"], 42);
    EXPECT_EQ(brief["serviceId"], 0x1234);
    EXPECT_EQ(brief["isPub"], true);
    EXPECT_EQ(brief["bindings"], nlohmann::json::array({"DDS", "SOMEIP"}));
    EXPECT_FALSE(brief.contains("record"));

    const nlohmann::json full = EntryJson(event, true);
    ASSERT_TRUE(full.contains("record"));
    EXPECT_EQ(full["record"]["eventName"], "/demo/RadarService/Objects");
}

TEST(JsonOutputTest, PrintsOneLineOfValidJsonEvenForBadText) {
    auto node = test::Node(
        "r\xff"
        "adar",
        1, true);  // not UTF-8
    std::ostringstream out;
    PrintJson(EntriesJson(std::vector<maintaind::tools::NodeEntry>{node}, false), out);
    const std::string text = out.str();
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.find('\n'), text.size() - 1);
    const nlohmann::json parsed = nlohmann::json::parse(text);
    EXPECT_EQ(parsed.size(), 1U);
    EXPECT_EQ(parsed[0]["pid"], 1);

    std::ostringstream empty;
    PrintJson(nlohmann::json::array(), empty);
    EXPECT_EQ(empty.str(), "[]\n");
}

}  // namespace
}  // namespace orx::orxmaint
