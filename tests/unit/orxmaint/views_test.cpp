// The tables people read: headers, readable values, order and the summary line.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <sstream>
#include <string>

#include "canned_entries.h"
#include "orx/maintaind/tools/method_ids.h"
#include "output/daemon_views.h"
#include "output/entity_views.h"
#include "output/findings_view.h"
#include "output/graph_model.h"
#include "output/latency_views.h"

namespace orx::orxmaint {
namespace {

namespace tools = maintaind::tools;
using test::Event;
using test::Node;

class ViewsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }

    template <class Reply, class Printer>
    static std::string Print(const Reply& reply, Printer print) {
        std::ostringstream out;
        print(reply, out);
        return out.str();
    }

    // The line of `text` that contains `needle`, "" when none does.
    static std::string LineWith(const std::string& text, const std::string& needle) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (line.find(needle) != std::string::npos) {
                return line;
            }
        }
        return "";
    }

    static size_t Position(const std::string& text, const std::string& needle) {
        const size_t at = text.find(needle);
        EXPECT_NE(at, std::string::npos) << needle << " missing in:\n" << text;
        return at;
    }
};

TEST_F(ViewsTest, NodesAreSortedByApplicationAndPidWithReadableStateAndSummary) {
    tools::NodeListReply reply;
    reply.nodes = {Node("radar", 300, true), Node("fusion", 200, false), Node("radar", 100, true)};
    reply.total = 3;
    EXPECT_EQ(Print(reply, PrintNodes),
              "APP     PID  HOST  ONLINE  REASON        RESTARTS  EVENTS  METHODS  FIELDS"
              "  FIRST SEEN           LAST SEEN\n"
              "fusion  200  ecu1  no      process gone         0       2        0       0"
              "  2024-05-01T12:00:00  2024-05-01T12:01:01\n"
              "radar   100  ecu1  yes     -                    0       2        0       0"
              "  2024-05-01T12:00:00  2024-05-01T12:01:01\n"
              "radar   300  ecu1  yes     -                    0       2        0       0"
              "  2024-05-01T12:00:00  2024-05-01T12:01:01\n"
              "3 nodes, 2 online\n");
}

TEST_F(ViewsTest, EventsShowSideBindingsIdsAndTopicThenCountBySide) {
    tools::EventListReply reply;
    reply.events = {Event("radar", 42, "/demo/RadarService/Objects", false),
                    Event("radar", 42, "/demo/RadarService/Objects", true),
                    Event("fusion", 7, "/demo/RadarService/Objects", false)};
    reply.events[2].bindings = {"DDS"};
    reply.events[2].eventId = 0;
    const std::string text = Print(reply, PrintEvents);

    const std::string pub = LineWith(text, "pub");
    EXPECT_NE(pub.find("radar"), std::string::npos);
    EXPECT_NE(pub.find("0x1234"), std::string::npos);
    EXPECT_NE(pub.find("DDS,SOMEIP"), std::string::npos);
    EXPECT_NE(pub.find("RadarObjects / 0x8001"), std::string::npos);
    EXPECT_LT(Position(text, "fusion"), Position(text, "pub")) << "applications in order";
    EXPECT_LT(Position(text, "pub"), Position(text, "42  sub"))
        << "offering side before using side";
    EXPECT_NE(LineWith(text, "fusion").find("DDS  "), std::string::npos);
    EXPECT_NE(text.find("3 events (1 pub, 2 sub) in 2 applications\n"), std::string::npos);
}

TEST_F(ViewsTest, TruncatedListsSayHowManyWereLeftOut) {
    tools::EventListReply reply;
    reply.events = {Event("radar", 42, "/demo/RadarService/Objects", true)};
    reply.total = 100001;
    reply.truncated = true;
    EXPECT_NE(Print(reply, PrintEvents).find("Showing 1 of 100001 entries"), std::string::npos);
}

TEST_F(ViewsTest, MethodsAndFieldsShowTheirOwnColumns) {
    tools::MethodListReply methods;
    methods.methods = {test::Method("radar", "Calibrate", true)};
    const std::string methodText = Print(methods, PrintMethods);
    EXPECT_NE(methodText.find("METHOD"), std::string::npos);
    EXPECT_NE(LineWith(methodText, "Calibrate").find("CalibrateRequest"), std::string::npos);
    EXPECT_NE(methodText.find("1 method (1 pub, 0 sub) in 1 application\n"), std::string::npos);

    tools::FieldListReply fields;
    fields.fields = {test::Field("radar", "Mode", true)};
    const std::string fieldText = Print(fields, PrintFields);
    EXPECT_NE(LineWith(fieldText, "Mode").find("notify,get"), std::string::npos);
}

TEST_F(ViewsTest, LatencyResultsCarryUnitsAndNewestFirstPerEvent) {
    tools::LatencyResultListReply reply;
    reply.results = {test::Result("fusion", "Objects", 850, test::kNoonMs),
                     test::Result("fusion", "Objects", 1250, test::kNoonMs + 5000)};
    const std::string text = Print(reply, PrintLatencyResults);
    EXPECT_NE(text.find("MIN"), std::string::npos);
    EXPECT_NE(text.find("120 us"), std::string::npos);
    EXPECT_NE(text.find("2.50 s"), std::string::npos);
    EXPECT_LT(Position(text, "1.25 ms"), Position(text, "850 us")) << "newest first";
    EXPECT_NE(text.find("2 results from 1 application\n"), std::string::npos);
}

TEST_F(ViewsTest, LatencyStatusNamesTheLastOrderAndWhoAcknowledged) {
    tools::LatencyStatusListReply reply;
    tools::LatencyStatusEntry status;
    status.eventName = "/demo/RadarService/Objects";
    status.latencyIndex.driverTypes = {maintaind::DriverType::DDS};
    status.latencyIndex.serviceId = 0x1234;
    status.latencyIndex.instanceId = 1;
    status.latencyIndex.eventName = "RadarObjects";
    status.requested = true;
    status.requestedMode = maintaind::LatencyMode::ENABLE;
    status.requestedAt = test::kNoonMs;
    status.enabled = true;
    tools::LatencyAckEntry ack;
    ack.appName = "fusion";
    ack.mode = maintaind::LatencyMode::ENABLE;
    ack.isSubMatched = true;
    status.acks = {ack};
    status.unacknowledged = {"fusion/42@ecu2"};
    reply.statuses = {status};
    const std::string text = Print(reply, PrintLatencyStatuses);
    const std::string line = LineWith(text, "RadarObjects");
    EXPECT_NE(line.find("enable at 2024-05-01T12:00:00"), std::string::npos) << text;
    EXPECT_NE(line.find("fusion: enable (sub)  fusion/42@ecu2"), std::string::npos) << text;
    EXPECT_NE(text.find("1 event, 1 with latency analysis enabled\n"), std::string::npos);
}

TEST_F(ViewsTest, AmbiguousAndUnknownEventsTellWhatToDoNext) {
    tools::LatencySwitchReply ambiguous;
    ambiguous.code = static_cast<uint8_t>(tools::ToolsCode::AMBIGUOUS_EVENT);
    ambiguous.candidates = {"/a/Objects (service 0x1234, instance 1, topic A)",
                            "/b/Objects (service 0x5678, instance 1, topic B)"};
    std::ostringstream err;
    PrintLatencySwitchRefused(ambiguous, "Objects", "", err);
    EXPECT_NE(err.str().find("\"Objects\" fits 2 events:\n  /a/Objects (service 0x1234"),
              std::string::npos)
        << err.str();
    EXPECT_NE(err.str().find("  /b/Objects"), std::string::npos);
    EXPECT_NE(err.str().find("--app or --service"), std::string::npos);

    tools::LatencySwitchReply unknown;
    unknown.code = static_cast<uint8_t>(tools::ToolsCode::UNKNOWN_EVENT);
    std::ostringstream unknownErr;
    PrintLatencySwitchRefused(unknown, "Nope", "--app radar", unknownErr);
    EXPECT_NE(unknownErr.str().find("No registered event is named \"Nope\" (with --app radar)."),
              std::string::npos)
        << unknownErr.str();
    EXPECT_NE(unknownErr.str().find("orxmaint events"), std::string::npos);
}

TEST_F(ViewsTest, TimeoutsAndStatus) {
    tools::SampleTimeoutListReply timeouts;
    timeouts.timeouts = {test::Timeout("fusion", "ObjectsListener", 17),
                         test::Timeout("", "OrphanListener", 3)};
    const std::string text = Print(timeouts, PrintSampleTimeouts);
    EXPECT_NE(LineWith(text, "ObjectsListener").find("100 ms"), std::string::npos);
    EXPECT_NE(LineWith(text, "OrphanListener").rfind("-", 0), std::string::npos)
        << "unknown application shown as a dash";
    EXPECT_NE(text.find("2 listeners, 20 sample timeouts\n"), std::string::npos);

    tools::DaemonStatusReply status;
    status.version = "0.1.0";
    status.nodeCount = 3;
    status.onlineNodeCount = 2;
    status.counters.latencySwitches = 4;
    const std::string statusText = Print(status, PrintDaemonStatus);
    EXPECT_NE(LineWith(statusText, "nodes").find("3 (2 online)"), std::string::npos);
    EXPECT_NE(LineWith(statusText, "latency switches").find("4"), std::string::npos);
}

TEST_F(ViewsTest, CheckFindingsAndTheGraphOfWhoUsesWhat) {
    tools::CheckReply reply;
    tools::CheckFinding finding;
    finding.severity = tools::kSeverityError;
    finding.serviceId = 0x1234;
    finding.instanceId = 1;
    finding.entityName = "ObjectList";
    finding.check = "e2e.dataIds";
    finding.binding = "DDS";
    finding.member = "dataIdList";
    finding.provider = {"radar", 7, "ecu1", "[4097]"};
    finding.consumer = {"fusion", 8, "ecu2", "[4098]"};
    reply.findings = {finding};
    reply.total = reply.errors = 1;
    const std::string text = Print(reply, PrintFindings);
    EXPECT_NE(text.find("service 0x1234"), std::string::npos) << text;
    const std::string row = LineWith(text, "e2e.dataIds");
    EXPECT_NE(row.find("radar[7]@ecu1  [4097]  fusion[8]@ecu2  [4098]"), std::string::npos) << row;
    EXPECT_NE(text.find("1 error, 0 warnings, 0 infos"), std::string::npos) << text;

    // fusion's edge is red, the offline logger grey; each edge lists its entities once.
    const std::vector<tools::NodeEntry> nodes = {Node("radar", 7, true), Node("fusion", 8, true),
                                                 Node("logger", 9, false)};
    const std::vector<tools::EventEntry> events = {
        Event("radar", 7, "ObjectList", true), Event("fusion", 8, "ObjectList", false),
        Event("logger", 9, "ObjectList", false), Event("logger", 9, "ObjectList", false)};
    const Graph graph = BuildGraph({nodes, events, {}, {}, reply.findings});
    const std::string dot = ToDot(graph);
    EXPECT_NE(dot.find("s0 -> a1 [label=\"ObjectList\", color=red"), std::string::npos) << dot;
    EXPECT_NE(dot.find("s0 -> a2 [label=\"ObjectList\"];"), std::string::npos) << dot;
    EXPECT_NE(dot.find("logger\\npid 9\\necu1\\noffline\", fillcolor=\"#dddddd\""),
              std::string::npos)
        << dot;
    const std::string mermaid = ToMermaid(graph);
    EXPECT_NE(mermaid.find("s0 -->|\"ObjectList\"| a1\n  linkStyle 1 stroke:red"),
              std::string::npos)
        << mermaid;
    EXPECT_NE(mermaid.find("style a2 fill:#ddd"), std::string::npos) << mermaid;
}

}  // namespace
}  // namespace orx::orxmaint
