#include <unistd.h>

#include "orx/maintaind/config/orx_maintaind_config.h"

namespace orx {
namespace maintaind {
namespace config {

namespace {

// The two bindings of one event describe it twice; whichever call comes second must
// not wipe what the first one knew, so an empty value never replaces a filled one.
void KeepOrReplace(std::string& member, const std::string& known) {
    if (!known.empty()) {
        member = known;
    }
}

void KeepOrReplace(orx::maintaind::SerializeConfig& member,
                   const vorx::vcc::api::types::SerializeSetting& known) {
    if (known.serializeType != 0U || !known.serializeConfigText.empty()) {
        member.serializeType = known.serializeType;
        member.serializeConfigText = known.serializeConfigText;
    }
}

void FillSharedMembers(const vorx::vcc::api::types::EventInfo& info,
                       orx::maintaind::EventRegisterInfo& record, const std::string& appName) {
    KeepOrReplace(record.serviceName, info.GetServiceName());
    KeepOrReplace(record.instanceName, info.GetInstanceName());
    KeepOrReplace(record.eventName, info.GetEventName());
    KeepOrReplace(record.dataTypeName, info.GetDataTypeName());
    record.role = static_cast<int32_t>(info.GetRole());
    KeepOrReplace(record.serializeConfig, info.GetSerializeConfig());
    KeepOrReplace(record.shortName, info.GetShortName());
    record.isField = record.isField || info.GetIsField();
    KeepOrReplace(record.appName, appName);
    record.pid = static_cast<int32_t>(getpid());
}

orx::maintaind::PduConfigInfo ToPduConfigInfo(const vorx::driver::someip::PduConfig& in) {
    orx::maintaind::PduConfigInfo out;
    out.pduName = in.pduName;
    out.pduLength = in.pduLength;
    out.isDynamicLength = in.isDynamicLength;
    out.isignals.reserve(in.isignals.size());
    for (const vorx::driver::someip::IsignalConfig& signal : in.isignals) {
        orx::maintaind::IsignalInfo info;
        info.signalName = signal.signalName;
        info.signalType = signal.signalType;
        info.isBigEndian = signal.isBigEndian;
        info.startPosition = signal.startPosition;
        info.signalLength = signal.signalLength;
        info.initValue = signal.initValue;
        out.isignals.push_back(std::move(info));
    }
    return out;
}

}  // namespace

bool OrxMaintaindConfig::GetDDSEventRegisterInfo(const vorx::driver::dds::DDSEventInfo& info,
                                                 orx::maintaind::EventRegisterInfo& record,
                                                 bool /*isPub*/, const std::string& appName) const {
    FillSharedMembers(info, record, appName);

    orx::maintaind::EventInfo entry;
    orx::maintaind::DDSEventInfo& dds = entry.ddsEventInfo;
    dds.serviceId = info.GetServiceId();
    dds.instanceId = InstanceIdToNumber(info.GetInstanceId());
    dds.domainId = info.GetDomainId();
    dds.topicName = info.GetTopicName();
    dds.dataTypeName = info.GetDataTypeName();
    dds.historyDepth = info.GetHistoryDepth();
    dds.queueSize = info.GetQueueSize();
    // The core's QoS kinds and the record's share their numbers.
    dds.durability = static_cast<orx::maintaind::DurabilityQos>(info.GetDurability());
    dds.history = static_cast<orx::maintaind::HistoryQos>(info.GetHistory());
    dds.transportQos = ToTransportQosList(info.GetTransportQos());
    dds.fragSize = info.GetFragSize();
    dds.listenQueueSize = info.GetListenQueueSize();
    dds.networkName = info.GetNetwork().first;
    dds.attributes = info.GetResourceAttr();
    dds.ddsMode = info.GetDdsMode();
    dds.e2eConfig = ChangeE2EInfoToTransportStruct(info.GetE2EConfig());
    dds.reliability = static_cast<orx::maintaind::ReliabilityKind>(info.GetReliability());
    dds.isLatencyEnabled = info.GetIsLatencyEnabled();
    record.eventInfos[orx::maintaind::DriverType::DDS] = std::move(entry);
    return true;
}

bool OrxMaintaindConfig::GetSOMEIPEventRegisterInfo(
    const vorx::driver::someip::SomeipEventInfo& info, orx::maintaind::EventRegisterInfo& record,
    bool /*isPub*/, const std::string& appName) const {
    FillSharedMembers(info, record, appName);

    orx::maintaind::EventInfo entry;
    orx::maintaind::SomeipEventInfo& someip = entry.someipEventInfo;
    someip.serviceId = info.GetServiceId();
    someip.instanceId = InstanceIdToNumber(info.GetInstanceId());
    someip.majorVersion = info.GetMajorVersion();
    someip.eventId = info.GetEventId();
    someip.eventGroupIds = info.GetEventGroupIds();
    someip.networkName = info.GetNetwork().first;
    someip.minorVersion = info.GetMinorVersion();
    someip.udpTtl = info.GetUdpTtl();
    someip.port = info.GetPort();
    someip.isReliable = info.GetIsReliable();
    someip.e2eConfig = ChangeE2EInfoToTransportStruct(info.GetE2EConfig());
    someip.serializeTag = OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(
        info.GetSerializationConfig());
    someip.pduConfig = ToPduConfigInfo(info.GetPduConfig());
    record.eventInfos[orx::maintaind::DriverType::SOMEIP] = std::move(entry);
    return true;
}

}  // namespace config
}  // namespace maintaind
}  // namespace orx
