// The contract check over a registry filled through the updater with real reports: for each rule
// family, the two sides equal (nothing found) and each member made to differ (the rule's finding).
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "check/check_engine.h"
#include "daemon_test_support.h"
#include "registry/registry_updater.h"

namespace orx::maintaind::daemon::test {
namespace {

using Findings = std::vector<std::string>;

// "severity check binding member" of every finding, in the engine's order.
Findings Check(const std::vector<AppRegisterInfo>& reports, const tools::QueryFilter& filter = {}) {
    ManualClock clock;
    RegistryUpdater updater{RegistryLimits{}, clock.Clock(), std::make_shared<FakeProbe>()};
    RegistryState state;
    ChangeSet changes;
    for (const AppRegisterInfo& report : reports) {
        EXPECT_TRUE(updater.ApplyReport(report, state, changes).accepted);
    }
    const tools::CheckReply reply = check::CheckEngine().Check(state, {filter});
    Findings found;
    for (const tools::CheckFinding& f : reply.findings) {
        found.push_back(f.severity + " " + f.check + " " + f.binding + " " + f.member);
    }
    return found;
}

template <class Record>
struct Case {
    const char* name;
    std::function<void(Record&)> changeConsumer;
    Findings expected;
};

// radar offers, hud uses the same event on DDS and SOME/IP; the case changes hud's side.
void RunEventCases(const std::vector<Case<EventRegisterInfo>>& cases) {
    for (const auto& c : cases) {
        AppRegisterInfo provider =
            EventReport("radar", 1, "Obj", true, "ObjTopic", 0x10, 1, true, 9);
        AppRegisterInfo consumer =
            EventReport("hud", 2, "Obj", false, "ObjTopic", 0x10, 1, true, 9);
        c.changeConsumer(consumer.eventRegisterInfo);
        EXPECT_EQ(Check({provider, consumer}), c.expected) << c.name;
    }
}

DDSEventInfo& Dds(EventRegisterInfo& e) {
    return e.eventInfos[DriverType::DDS].ddsEventInfo;
}
SomeipEventInfo& Someip(EventRegisterInfo& e) {
    return e.eventInfos[DriverType::SOMEIP].someipEventInfo;
}
DDSMethodInfo& Dds(MethodRegisterInfo& m) {
    return m.methodInfos[DriverType::DDS].ddsMethodInfo;
}

TEST(CheckEngineTest, DdsTopicsTypesDomainAndQosFollowTheRequestOfferRules) {
    RunEventCases({
        {"equal", [](EventRegisterInfo&) {}, {}},
        {"topic",
         [](EventRegisterInfo& e) { Dds(e).topicName = "Other"; },
         {"error dds.topic DDS topicName"}},
        {"type",
         [](EventRegisterInfo& e) { Dds(e).dataTypeName = "T2"; },
         {"error dds.dataType DDS dataTypeName"}},
        {"domain",
         [](EventRegisterInfo& e) { Dds(e).domainId = 3; },
         {"error dds.domain DDS domainId"}},
        // Reliable reader, best-effort writer: no match. The other way round only weakens.
        {"reliable reader",
         [](EventRegisterInfo& e) { Dds(e).reliability = ReliabilityKind::RELIABLE; },
         {"error dds.reliability DDS reliability"}},
        {"transient-local reader",
         [](EventRegisterInfo& e) { Dds(e).durability = DurabilityQos::TRANSIENT_LOCAL; },
         {"error dds.durability DDS durability"}},
        {"deeper reader",
         [](EventRegisterInfo& e) { Dds(e).historyDepth = 5; },
         {"info dds.history DDS historyDepth/queueSize"}},
    });

    // A best-effort reader of a reliable writer matches, with a warning.
    AppRegisterInfo provider = EventReport("radar", 1, "Obj", true, "ObjTopic");
    Dds(provider.eventRegisterInfo).reliability = ReliabilityKind::RELIABLE;
    const AppRegisterInfo consumer = EventReport("hud", 2, "Obj", false, "ObjTopic");
    EXPECT_EQ(Check({provider, consumer}), Findings{"warning dds.reliability DDS reliability"});

    // Methods: each topic and the reliability, which both sides read and write.
    AppRegisterInfo server = MethodReport("radar", 1, "Calibrate", true);
    AppRegisterInfo client = MethodReport("hud", 2, "Calibrate", false);
    EXPECT_EQ(Check({server, client}), Findings{});
    Dds(client.methodRegisterInfo).replyTopicName = "Other";
    Dds(client.methodRegisterInfo).reliability = ReliabilityKind::RELIABLE;
    Dds(client.methodRegisterInfo).replyDurability = DurabilityQos::TRANSIENT_LOCAL;
    EXPECT_EQ(Check({server, client}), (Findings{"error dds.durability DDS replyDurability",
                                                 "error dds.reliability DDS reliability",
                                                 "error dds.topic DDS replyTopicName"}));
}

TEST(CheckEngineTest, SomeipIdsVersionsAndTransport) {
    RunEventCases({
        {"event id",
         [](EventRegisterInfo& e) { Someip(e).eventId = 10; },
         {"error someip.eventId SOMEIP eventId"}},
        {"major",
         [](EventRegisterInfo& e) { Someip(e).majorVersion = 2; },
         {"error someip.majorVersion SOMEIP majorVersion"}},
        {"minor above",
         [](EventRegisterInfo& e) { Someip(e).minorVersion = 1; },
         {"error someip.minorVersion SOMEIP minorVersion"}},
        {"transport",
         [](EventRegisterInfo& e) { Someip(e).isReliable = true; },
         {"error someip.reliability SOMEIP isReliable"}},
    });
    // A user of an older minor version is served.
    AppRegisterInfo provider = EventReport("radar", 1, "Obj", true, "", 0x10, 1, true, 9);
    Someip(provider.eventRegisterInfo).minorVersion = 3;
    AppRegisterInfo consumer = EventReport("hud", 2, "Obj", false, "", 0x10, 1, true, 9);
    Someip(consumer.eventRegisterInfo).minorVersion = 2;
    EXPECT_EQ(Check({provider, consumer}), Findings{});

    AppRegisterInfo server = MethodReport("radar", 1, "Calibrate", true);
    AppRegisterInfo client = MethodReport("hud", 2, "Calibrate", false);
    server.methodRegisterInfo.methodInfos[DriverType::SOMEIP].someipMethodInfo.methodId = 1;
    client.methodRegisterInfo.methodInfos[DriverType::SOMEIP].someipMethodInfo.methodId = 2;
    EXPECT_EQ(Check({server, client}), Findings{"error someip.methodId SOMEIP methodId"});
}

TEST(CheckEngineTest, SerializationAndE2E) {
    const auto protect = [](E2EConfigInfo& e2e) {
        e2e.isE2EEnabled = true;
        e2e.profile = E2EProfile::PROFILE_04;
        e2e.dataIdList = {7};
    };
    RunEventCases({
        {"serialization",
         [](EventRegisterInfo& e) { e.serializeConfig.serializeType = 1; },
         {"error serialization  serializeConfig"}},
        {"serialization tag",
         [](EventRegisterInfo& e) {
             Someip(e).serializeTag = {1, 2};
         },
         {"error serialization SOMEIP serializeTag"}},
        {"one side protected",
         [&](EventRegisterInfo& e) { protect(Dds(e).e2eConfig); },
         {"error e2e.protected DDS isE2EEnabled"}},
    });
    const std::vector<std::pair<std::function<void(E2EConfigInfo&)>, std::string>> members = {
        {[](E2EConfigInfo& e) { e.profile = E2EProfile::PROFILE_05; }, "e2e.profile DDS profile"},
        {[](E2EConfigInfo& e) { e.dataIdList = {8}; }, "e2e.dataIds DDS dataIdList"},
        {[](E2EConfigInfo& e) { e.dataIdMode = E2EDataIDMode::NIBBLE; },
         "e2e.dataIdMode DDS dataIdMode"},
        {[](E2EConfigInfo& e) { e.dataLength = 64; }, "e2e.dataLength DDS dataLength"},
        {[](E2EConfigInfo& e) { e.crcOffset = 8; }, "e2e.offsets DDS crcOffset"},
        {[](E2EConfigInfo& e) { e.counterOffset = 8; }, "e2e.offsets DDS counterOffset"},
    };
    for (const auto& [change, expected] : members) {
        AppRegisterInfo provider = EventReport("radar", 1, "Obj", true, "ObjTopic");
        AppRegisterInfo consumer = EventReport("hud", 2, "Obj", false, "ObjTopic");
        protect(Dds(provider.eventRegisterInfo).e2eConfig);
        protect(Dds(consumer.eventRegisterInfo).e2eConfig);
        EXPECT_EQ(Check({provider, consumer}), Findings{}) << expected;
        change(Dds(consumer.eventRegisterInfo).e2eConfig);
        EXPECT_EQ(Check({provider, consumer}), Findings{"error " + expected});
    }

    // The E2E configurations a process reported stand for what its event records carry.
    AppRegisterInfo provider = EventReport("radar", 1, "Obj", true, "ObjTopic");
    AppRegisterInfo consumer = EventReport("hud", 2, "Obj", false, "ObjTopic");
    AppRegisterInfo providerE2E = E2EReport("radar", 1, "Obj", 0, true);
    AppRegisterInfo consumerE2E = E2EReport("hud", 2, "Obj", 0, false);
    providerE2E.nodeCommonRegisterInfo.nodePidInfo.isOnline = true;
    consumerE2E.nodeCommonRegisterInfo.nodePidInfo.isOnline = true;
    providerE2E.nodeCommonRegisterInfo.appE2EConfig.pubE2EConfigs[0].e2eConfig.isE2EEnabled = true;
    auto& sub = consumerE2E.nodeCommonRegisterInfo.appE2EConfig.subE2EConfigs[0].e2eConfig;
    sub.isE2EEnabled = true;
    EXPECT_EQ(Check({provider, consumer, providerE2E, consumerE2E}), Findings{});
    sub.dataIdList = {9};
    EXPECT_EQ(Check({provider, consumer, providerE2E, consumerE2E}),
              Findings{"error e2e.dataIds DDS dataIdList"});
}

TEST(CheckEngineTest, OrphansBindingsFieldsAndFilter) {
    const AppRegisterInfo provider = EventReport("radar", 1, "Obj", true, "ObjTopic");
    const AppRegisterInfo consumer = EventReport("hud", 2, "Obj", false, "ObjTopic");
    EXPECT_EQ(Check({consumer}), Findings{"error orphan.consumer  provider"});
    EXPECT_EQ(Check({provider}), Findings{"info orphan.provider  consumer"});
    // A consumer that went offline uses nothing.
    EXPECT_EQ(Check({provider, consumer, NodeReport("hud", 2, false)}),
              Findings{"info orphan.provider  consumer"});
    // Another instance does not serve the consumer (findings sort by instance).
    EXPECT_EQ(Check({provider, EventReport("hud", 2, "Obj", false, "ObjTopic", 0x10, 2)}),
              (Findings{"info orphan.provider  consumer", "error orphan.consumer  provider"}));

    // DDS on one side, SOME/IP only on the other.
    const AppRegisterInfo someipOnly = EventReport("hud", 2, "Obj", false, "", 0x10, 1, true, 9);
    EXPECT_EQ(Check({provider, someipOnly}), Findings{"warning binding.mismatch  bindings"});

    // Fields: the getter compared as a method, under its part's name.
    AppRegisterInfo owner = FieldReport("radar", 1, "Mode", true);
    AppRegisterInfo user = FieldReport("hud", 2, "Mode", false);
    owner.fieldRegisterInfo.fieldInfos[DriverType::DDS].hasGetter = true;
    user.fieldRegisterInfo.fieldInfos[DriverType::DDS].getterInfo.ddsMethodInfo.requestTopicName =
        "Other";
    EXPECT_EQ(Check({owner, user}), Findings{"error dds.topic DDS getter.requestTopicName"});

    // The filter selects findings by either side's application and by service.
    const std::vector<AppRegisterInfo> both = {provider, consumer,
                                               EventReport("cam", 3, "Img", true, "I", 0x20)};
    tools::QueryFilter filter;
    filter.appName = "hud";
    EXPECT_EQ(Check(both, filter), Findings{});
    filter.appName = "cam";
    EXPECT_EQ(Check(both, filter), Findings{"info orphan.provider  consumer"});
    filter = {};
    filter.hasServiceId = true;
    filter.serviceId = 0x10;
    EXPECT_EQ(Check(both, filter), Findings{});
}

}  // namespace
}  // namespace orx::maintaind::daemon::test
