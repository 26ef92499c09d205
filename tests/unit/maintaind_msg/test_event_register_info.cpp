#include <gtest/gtest.h>
#include <unistd.h>

#include "orx/maintaind/config/orx_maintaind_config.h"

namespace {

using orx::maintaind::EventRegisterInfo;
using orx::maintaind::config::OrxMaintaindConfig;
using orx::maintaind::config::OrxMaintaindSerializeHelper;
using RecordDriverType = orx::maintaind::DriverType;
using vorx::driver::dds::DDSEventInfo;
using vorx::driver::someip::SomeipEventInfo;
using vorx::vcc::api::types::E2EXf_Profile;
using vorx::vcc::api::types::E2EXfConfig;
using vorx::vcc::api::types::EntityRole;

const std::string kAppName = "radar_app";

// The shared members as the core describes them on the DDS binding of an event.
void DescribeSharedMembers(vorx::vcc::api::types::EventInfo& info) {
    info.SetServiceName("/demo/RadarService");
    info.SetInstanceName("Radar/Front");
    info.SetEventName("ObjectList");
    info.SetDataTypeName("/demo/ObjectListType");
    info.SetRole(EntityRole::CLIENT);
    info.SetSerializeConfig({1U, "cdr-settings"});
    info.SetShortName("objects");
    info.SetIsField(true);
}

std::shared_ptr<E2EXfConfig> MakeE2E(E2EXf_Profile profile, uint32_t dataId) {
    auto config = std::make_shared<E2EXfConfig>();
    config->profile = profile;
    config->dataIdList = {dataId};
    config->isE2EEnabled = true;
    return config;
}

DDSEventInfo MakeDdsEvent() {
    DDSEventInfo info;
    DescribeSharedMembers(info);
    info.SetServiceId(0x1234U);
    EXPECT_TRUE(info.SetInstanceId("17"));
    info.SetDomainId(42U);
    info.SetTopicName("rt/demo/ObjectList");
    info.SetHistoryDepth(5U);
    info.SetQueueSize(6U);
    info.SetDurability(vorx::driver::dds::DurabilityKind::TRANSIENT_LOCAL);
    info.SetHistory(vorx::driver::dds::HistoryKind::KEEP_ALL);
    info.SetTransportQos({2U, 3U, 9U});
    info.SetFragSize(8192U);
    info.SetListenQueueSize(7U);
    info.SetNetwork({"127.0.0.1", true});
    info.SetResourceAttr({{"b", "2"}, {"a", "1"}});
    info.SetDdsMode(1U);
    info.SetE2EConfig(MakeE2E(E2EXf_Profile::PROFILE_07, 0xD1U));
    info.SetReliability(vorx::driver::dds::ReliabilityKind::RELIABLE);
    info.SetIsLatencyEnabled(true);
    return info;
}

vorx::serialize::SerializationNode MakeSerializationTree() {
    vorx::serialize::SerializationNode root;
    root.name = "ObjectListType";
    root.byteOrder = 1U;
    vorx::serialize::SerializationNode member;
    member.name = "count";
    member.isTlv = true;
    member.dataId = 3U;
    root.children.push_back(member);
    return root;
}

// The SOME/IP binding of the same event. The core leaves a few shared members empty
// here, which must not blank what the DDS binding reported.
SomeipEventInfo MakeSomeipEvent() {
    SomeipEventInfo info;
    DescribeSharedMembers(info);
    info.SetDataTypeName("");
    info.SetShortName("");
    info.SetSerializeConfig({});
    info.SetIsField(false);
    info.SetServiceId(0x4321U);
    EXPECT_TRUE(info.SetInstanceId("65534"));
    info.SetMajorVersion(3U);
    info.SetEventId(0x8001U);
    info.SetEventGroupIds({1U, 2U});
    info.SetNetwork({"10.0.0.1", false});
    info.SetMinorVersion(9U);
    info.SetUdpTtl(30U);
    info.SetPort(30501U);
    info.SetIsReliable(true);
    info.SetE2EConfig(MakeE2E(E2EXf_Profile::PROFILE_4M, 0xE1U));
    info.SetSerializationConfig(MakeSerializationTree());
    vorx::driver::someip::PduConfig pdu;
    pdu.pduName = "ObjectPdu";
    pdu.pduLength = 64U;
    pdu.isDynamicLength = true;
    pdu.isignals.push_back({"speed", "uint16", true, 8U, 16U, "0"});
    info.SetPduConfig(pdu);
    return info;
}

void ExpectSharedMembersOfBothBindings(const EventRegisterInfo& record) {
    EXPECT_EQ(record.serviceName, "/demo/RadarService");
    EXPECT_EQ(record.instanceName, "Radar/Front");
    EXPECT_EQ(record.eventName, "ObjectList");
    EXPECT_EQ(record.dataTypeName, "/demo/ObjectListType");
    EXPECT_EQ(record.role, static_cast<int32_t>(EntityRole::CLIENT));
    EXPECT_EQ(record.serializeConfig.serializeType, 1U);
    EXPECT_EQ(record.serializeConfig.serializeConfigText, "cdr-settings");
    EXPECT_EQ(record.shortName, "objects");
    EXPECT_TRUE(record.isField);
    EXPECT_EQ(record.appName, kAppName);
    EXPECT_EQ(record.pid, static_cast<int32_t>(getpid()));
    ASSERT_EQ(record.eventInfos.size(), 2U);
    EXPECT_EQ(record.eventInfos.count(RecordDriverType::DDS), 1U);
    EXPECT_EQ(record.eventInfos.count(RecordDriverType::SOMEIP), 1U);
}

TEST(EventRegisterInfoTest, BothBindingsInEitherOrderGiveOneCompleteRecord) {
    const DDSEventInfo dds = MakeDdsEvent();
    const SomeipEventInfo someip = MakeSomeipEvent();

    EventRegisterInfo ddsFirst;
    ddsFirst.isOnline = true;
    EXPECT_TRUE(OrxMaintaindConfig().GetDDSEventRegisterInfo(dds, ddsFirst, true, kAppName));
    EXPECT_TRUE(OrxMaintaindConfig().GetSOMEIPEventRegisterInfo(someip, ddsFirst, true, ""));
    ExpectSharedMembersOfBothBindings(ddsFirst);
    EXPECT_TRUE(ddsFirst.isOnline);  // the caller's flag, not the converter's

    EventRegisterInfo someipFirst;
    someipFirst.isOnline = true;
    OrxMaintaindConfig().GetSOMEIPEventRegisterInfo(someip, someipFirst, false, kAppName);
    OrxMaintaindConfig().GetDDSEventRegisterInfo(dds, someipFirst, false, kAppName);
    ExpectSharedMembersOfBothBindings(someipFirst);
    EXPECT_EQ(someipFirst, ddsFirst);
}

TEST(EventRegisterInfoTest, DdsEntryCarriesEveryMemberOfTheBinding) {
    EventRegisterInfo record;
    OrxMaintaindConfig().GetDDSEventRegisterInfo(MakeDdsEvent(), record, true, kAppName);

    ASSERT_EQ(record.eventInfos.size(), 1U);
    const orx::maintaind::EventInfo& entry = record.eventInfos.at(RecordDriverType::DDS);
    EXPECT_EQ(entry.someipEventInfo, orx::maintaind::SomeipEventInfo{});
    const orx::maintaind::DDSEventInfo& dds = entry.ddsEventInfo;
    EXPECT_EQ(dds.serviceId, 0x1234U);
    EXPECT_EQ(dds.instanceId, 17U);
    EXPECT_EQ(dds.domainId, 42U);
    EXPECT_EQ(dds.topicName, "rt/demo/ObjectList");
    EXPECT_EQ(dds.dataTypeName, "/demo/ObjectListType");
    EXPECT_EQ(dds.historyDepth, 5U);
    EXPECT_EQ(dds.queueSize, 6U);
    EXPECT_EQ(dds.durability, orx::maintaind::DurabilityQos::TRANSIENT_LOCAL);
    EXPECT_EQ(dds.history, orx::maintaind::HistoryQos::KEEP_ALL);
    EXPECT_EQ(dds.transportQos,
              (std::vector<orx::maintaind::TransportQos>{orx::maintaind::TransportQos::TCP,
                                                         orx::maintaind::TransportQos::SHM,
                                                         orx::maintaind::TransportQos::INVALID}));
    EXPECT_EQ(dds.fragSize, 8192U);
    EXPECT_EQ(dds.listenQueueSize, 7U);
    EXPECT_EQ(dds.networkName, "127.0.0.1");
    EXPECT_EQ(dds.attributes, (std::map<std::string, std::string>{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(dds.ddsMode, 1U);
    EXPECT_EQ(dds.e2eConfig.profile, orx::maintaind::E2EProfile::PROFILE_07);
    EXPECT_EQ(dds.e2eConfig.dataIdList, std::vector<uint32_t>{0xD1U});
    EXPECT_EQ(dds.reliability, orx::maintaind::ReliabilityKind::RELIABLE);
    EXPECT_TRUE(dds.isLatencyEnabled);
}

TEST(EventRegisterInfoTest, SomeipEntryCarriesEveryMemberOfTheBinding) {
    const SomeipEventInfo info = MakeSomeipEvent();
    EventRegisterInfo record;
    OrxMaintaindConfig().GetSOMEIPEventRegisterInfo(info, record, false, kAppName);

    ASSERT_EQ(record.eventInfos.size(), 1U);
    const orx::maintaind::EventInfo& entry = record.eventInfos.at(RecordDriverType::SOMEIP);
    EXPECT_EQ(entry.ddsEventInfo, orx::maintaind::DDSEventInfo{});
    const orx::maintaind::SomeipEventInfo& someip = entry.someipEventInfo;
    EXPECT_EQ(someip.serviceId, 0x4321U);
    EXPECT_EQ(someip.instanceId, 65534U);
    EXPECT_EQ(someip.majorVersion, 3U);
    EXPECT_EQ(someip.eventId, 0x8001U);
    EXPECT_EQ(someip.eventGroupIds, (std::vector<uint16_t>{1U, 2U}));
    EXPECT_EQ(someip.networkName, "10.0.0.1");
    EXPECT_EQ(someip.minorVersion, 9U);
    EXPECT_EQ(someip.udpTtl, 30U);
    EXPECT_EQ(someip.port, 30501U);
    EXPECT_TRUE(someip.isReliable);
    EXPECT_EQ(someip.e2eConfig.profile, orx::maintaind::E2EProfile::PROFILE_4M);
    EXPECT_EQ(someip.e2eConfig.dataIdList, std::vector<uint32_t>{0xE1U});
    EXPECT_EQ(
        someip.serializeTag,
        OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(MakeSerializationTree()));
    EXPECT_EQ(someip.pduConfig.pduName, "ObjectPdu");
    EXPECT_EQ(someip.pduConfig.pduLength, 64U);
    EXPECT_TRUE(someip.pduConfig.isDynamicLength);
    ASSERT_EQ(someip.pduConfig.isignals.size(), 1U);
    const orx::maintaind::IsignalInfo& signal = someip.pduConfig.isignals.front();
    EXPECT_EQ(signal.signalName, "speed");
    EXPECT_EQ(signal.signalType, "uint16");
    EXPECT_TRUE(signal.isBigEndian);
    EXPECT_EQ(signal.startPosition, 8U);
    EXPECT_EQ(signal.signalLength, 16U);
    EXPECT_EQ(signal.initValue, "0");
}

TEST(EventRegisterInfoTest, UnsetDescriptionsKeepDefaultsAndUndefinedInstance) {
    // A description the core left at its defaults: no E2E, instance "65535".
    EventRegisterInfo record;
    OrxMaintaindConfig().GetDDSEventRegisterInfo(DDSEventInfo{}, record, true, "");
    const orx::maintaind::DDSEventInfo& dds =
        record.eventInfos.at(RecordDriverType::DDS).ddsEventInfo;
    EXPECT_EQ(dds.instanceId, 0xFFFFU);
    EXPECT_EQ(dds.networkName, "UNDEFINED_NETWORK");
    EXPECT_EQ(dds.e2eConfig, orx::maintaind::E2EConfigInfo{});
    EXPECT_TRUE(record.appName.empty());
    EXPECT_EQ(record.role, static_cast<int32_t>(EntityRole::SERVER));
}

}  // namespace
