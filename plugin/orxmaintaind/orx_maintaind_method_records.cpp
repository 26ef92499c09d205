#include "orxmaintaind/orx_maintaind_method_records.h"

#include "orx/maintaind/config/orx_maintaind_config.h"
#include "orx/maintaind/config/orx_maintaind_serialize_helper.h"
#include "orx/maintaind/config/value_conversions.h"
#include "orxmaintaind/orx_maintaind_constants.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

// A boolean QoS switch of the core: 0 and 1 are meaningful, anything else is left at the
// record's default.
template <typename Target>
void CopySwitch(uint8_t value, Target& target) {
    if (value == 0U || value == 1U) {
        target = static_cast<Target>(value);
    }
}

}  // namespace

std::string JoinMethodTypeName(const vorx::vcc::api::types::MethodInfo& info) {
    if (info.GetServiceLevelName().empty()) {
        return info.GetMethodName();
    }
    return info.GetServiceLevelName() + "/" + info.GetMethodName();
}

std::string MethodNameFromTypeName(const std::string& text) {
    const auto slash = text.rfind('/');
    if (slash == std::string::npos) {
        return std::string{};
    }
    return text.substr(slash);
}

void FillDDSMethodQos(const vorx::driver::dds::DDSMethodInfo& info,
                      orx::maintaind::DDSMethodInfo& record) {
    CopySwitch(info.GetRequestDurability(), record.requestDurability);
    CopySwitch(info.GetReplyDurability(), record.replyDurability);
    CopySwitch(info.GetRequestHistory(), record.requestHistory);
    CopySwitch(info.GetReplyHistory(), record.replyHistory);
    record.transportQos = orx::maintaind::config::ToTransportQosList(info.GetTransportQos());
}

orx::maintaind::DDSMethodInfo MakeDDSMethodRecord(const vorx::driver::dds::DDSMethodInfo& info) {
    orx::maintaind::DDSMethodInfo record;
    record.requestTopicName = info.GetRequestTopicName();
    record.replyTopicName = info.GetReplyTopicName();
    record.requestDataTypeName = info.GetRequestDataTypeName();
    record.replyDataTypeName = info.GetReplyDataTypeName();
    record.domainId = info.GetDomainId();
    record.requestQueueSize = info.GetRequestQueueSize();
    record.replyQueueSize = info.GetReplyQueueSize();
    FillDDSMethodQos(info, record);
    record.requestHistoryDepth = info.GetRequestHistoryDepth();
    record.replyHistoryDepth = info.GetReplyHistoryDepth();
    record.fragSize = info.GetFragSize();
    record.listenQueueSize = info.GetListenQueueSize();
    const orx::maintaind::config::OrxMaintaindConfig converter;
    record.e2eConfig = converter.ChangeE2EInfoToTransportStruct(info.GetE2EConfig());
    record.reliability = static_cast<orx::maintaind::ReliabilityKind>(info.GetReliability());
    record.methodName = MethodNameFromTypeName(JoinMethodTypeName(info));
    record.instanceShortName = info.GetInstanceShortName();
    return record;
}

orx::maintaind::SomeipMethodInfo MakeSomeipMethodRecord(
    const vorx::driver::someip::SomeipMethodInfo& info) {
    using orx::maintaind::config::OrxMaintaindSerializeHelper;
    orx::maintaind::SomeipMethodInfo record;
    record.methodId = info.GetMethodId();
    record.networkName = info.GetNetwork().first;
    record.majorVersion = info.GetMajorVersion();
    record.minorVersion = info.GetMinorVersion();
    record.isReliable = info.GetIsReliable();
    const orx::maintaind::config::OrxMaintaindConfig converter;
    record.e2eConfig = converter.ChangeE2EInfoToTransportStruct(info.GetE2EConfig());
    record.requestSerializeTag = OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(
        info.GetRequestSerializationConfig());
    record.replySerializeTag = OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(
        info.GetReplySerializationConfig());
    record.instanceShortName = info.GetInstanceShortName();
    record.transportQos = orx::maintaind::config::ToTransportQosList(info.GetTransportQos());
    return record;
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
