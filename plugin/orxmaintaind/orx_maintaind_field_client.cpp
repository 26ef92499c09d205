#include "orxmaintaind/orx_maintaind_field_client.h"

#include <unistd.h>

#include "orx/maintaind/config/orx_maintaind_config.h"
#include "orx/maintaind/config/value_conversions.h"
#include "orxmaintaind/orx_maintaind_method_records.h"
#include "orxmaintaind/orx_maintaind_request.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

using ara::kelda::common::log::LogLevel;
using vorx::vcc::api::types::DriverType;
using ErrorCode = type::MaintaindClientErrorCode;

const RequestLogTexts kFieldRequestTexts{
    "Proxy is not created, register field info fail",
    "Get maintaind reply fail, timeout with register FieldInfo",
    "OrxMaintaindClient register field info msg cannot send out",
    "Get Maintaind reply, but maybe has some problem with register FieldInfo",
    "Get Maintaind reply with register FieldInfo",
    LogLevel::kVerbose,
};

// The notifier's binding entry, converted exactly as an event report converts it.
orx::maintaind::EventInfo MakeNotifierRecord(const vorx::driver::dds::DDSEventInfo& info,
                                             bool isPub, const std::string& appName) {
    orx::maintaind::EventRegisterInfo event;
    const orx::maintaind::config::OrxMaintaindConfig converter;
    converter.GetDDSEventRegisterInfo(info, event, isPub, appName);
    const auto found = event.eventInfos.find(orx::maintaind::DriverType::DDS);
    return (found != event.eventInfos.end()) ? found->second : orx::maintaind::EventInfo{};
}

orx::maintaind::EventInfo MakeNotifierRecord(const vorx::driver::someip::SomeipEventInfo& info,
                                             bool isPub, const std::string& appName) {
    orx::maintaind::EventRegisterInfo event;
    const orx::maintaind::config::OrxMaintaindConfig converter;
    converter.GetSOMEIPEventRegisterInfo(info, event, isPub, appName);
    const auto found = event.eventInfos.find(orx::maintaind::DriverType::SOMEIP);
    return (found != event.eventInfos.end()) ? found->second : orx::maintaind::EventInfo{};
}

void FillMethodRecord(const vorx::driver::dds::DDSMethodInfo& info,
                      orx::maintaind::MethodInfo& record) {
    record.ddsMethodInfo = MakeDDSMethodRecord(info);
}

void FillMethodRecord(const vorx::driver::someip::SomeipMethodInfo& info,
                      orx::maintaind::MethodInfo& record) {
    record.someipMethodInfo = MakeSomeipMethodRecord(info);
}

// Converts a getter or setter when the field has it and the core described it for this binding.
template <typename MethodT>
void FillAccessor(bool present,
                  const std::shared_ptr<vorx::vcc::api::types::MethodInfo>& description,
                  orx::maintaind::MethodInfo& record) {
    if (!present) {
        return;
    }
    const auto binding = std::dynamic_pointer_cast<MethodT>(description);
    if (binding) {
        FillMethodRecord(*binding, record);
    }
}

}  // namespace

OrxMaintaindFieldClient::OrxMaintaindFieldClient()
    : pid_(static_cast<int32_t>(getpid())), logger_(ara::kelda::common::log::Log::GetLog("CM")) {}

ErrorCode OrxMaintaindFieldClient::RegisterField(const FieldInfoMap& infos, const bool& isPub) {
    return SendFieldInfoToMaintaind(infos, isPub, true);
}

ErrorCode OrxMaintaindFieldClient::UnregisterField(const FieldInfoMap& infos, const bool& isPub) {
    return SendFieldInfoToMaintaind(infos, isPub, false);
}

ErrorCode OrxMaintaindFieldClient::SendFieldInfoToMaintaind(const FieldInfoMap& infos,
                                                            const bool& isPub,
                                                            const bool& isOnline) {
    const auto record = ChangeToFieldRegisterInfo(infos, isPub, isOnline);
    const ErrorCode result = RegisterFieldInfo(record, isPub);
    if (result != ErrorCode::kOk) {
        logger_->LogVerbose() << "Send field info to mainatind failed[isPub=" << isPub
                              << ", isOnline=" << isOnline << "]";
    } else {
        logger_->LogVerbose() << "Register field info successfully.";
    }
    return result;
}

std::shared_ptr<orx::maintaind::FieldRegisterInfo>
OrxMaintaindFieldClient::ChangeToFieldRegisterInfo(const FieldInfoMap& infos, const bool& isPub,
                                                   const bool& isOnline) {
    auto record = std::make_shared<orx::maintaind::FieldRegisterInfo>();
    record->appName = appName_;
    record->pid = pid_;
    record->isOnline = isOnline;
    for (const auto& entry : infos) {
        if (!entry.second) {
            continue;
        }
        if (entry.first == DriverType::DDS) {
            DDSRegisterFieldInfo(entry, *record, isPub);
        } else if (entry.first == DriverType::SOMEIP) {
            SomeipRegisterFieldInfo(entry, *record, isPub);
        }
    }
    return record;
}

void OrxMaintaindFieldClient::DDSRegisterFieldInfo(const FieldEntry& entry,
                                                   orx::maintaind::FieldRegisterInfo& record,
                                                   bool isPub) const {
    GetFieldInfo<vorx::driver::dds::DDSEventInfo, vorx::driver::dds::DDSMethodInfo>(
        entry, record, orx::maintaind::DriverType::DDS, isPub);
    LogFieldChange(entry, record, orx::maintaind::DriverType::DDS, " with DDS, is hasNotify ");
}

void OrxMaintaindFieldClient::SomeipRegisterFieldInfo(const FieldEntry& entry,
                                                      orx::maintaind::FieldRegisterInfo& record,
                                                      bool isPub) const {
    GetFieldInfo<vorx::driver::someip::SomeipEventInfo, vorx::driver::someip::SomeipMethodInfo>(
        entry, record, orx::maintaind::DriverType::SOMEIP, isPub);
    LogFieldChange(entry, record, orx::maintaind::DriverType::SOMEIP,
                   " with Someip, is hasNotify ");
}

void OrxMaintaindFieldClient::LogFieldChange(const FieldEntry& entry,
                                             const orx::maintaind::FieldRegisterInfo& record,
                                             orx::maintaind::DriverType driverType,
                                             const char* binding) const {
    const auto shortName = record.bindingNames.find(driverType);
    logger_->LogVerbose() << "Change field info with fieldType : " << record.fieldName
                          << " instanceId :" << record.instanceId << " instanceshortname : "
                          << (shortName != record.bindingNames.end() ? shortName->second
                                                                     : std::string{})
                          << binding << entry.second->GetHasNotify() << ", hasGet "
                          << entry.second->GetHasGet() << ", hasSet " << entry.second->GetHasSet();
}

template <typename EventT, typename MethodT>
void OrxMaintaindFieldClient::GetFieldInfo(const FieldEntry& entry,
                                           orx::maintaind::FieldRegisterInfo& record,
                                           orx::maintaind::DriverType driverType,
                                           bool isPub) const {
    const FieldInfoPtr& field = entry.second;
    // Every binding entry fills the members all bindings share from its own description.
    record.serviceName = field->GetServiceName();
    record.instanceName = field->GetInstanceName();
    record.serviceId = field->GetServiceId();
    record.instanceId = orx::maintaind::config::InstanceIdToNumber(field->GetInstanceId());
    record.role = static_cast<int32_t>(field->GetRole());
    record.hasNotifier = field->GetHasNotify();
    record.hasGetter = field->GetHasGet();
    record.hasSetter = field->GetHasSet();
    std::string name = field->GetFieldName();
    if (name.empty()) {
        uint16_t serviceId = record.serviceId;
        ParseToGetFieldInfo(name, serviceId, FieldInfoMap{{entry.first, field}});
    }
    record.fieldName = name;

    orx::maintaind::FieldInfo binding;
    if (field->GetHasNotify()) {
        const auto notifier = std::dynamic_pointer_cast<EventT>(field->GetNotifyInfo());
        if (notifier) {
            binding.notifierInfo = MakeNotifierRecord(*notifier, isPub, appName_);
        }
    }
    binding.hasGetter = field->GetHasGet();
    FillAccessor<MethodT>(binding.hasGetter, field->GetGetInfo(), binding.getterInfo);
    binding.hasSetter = field->GetHasSet();
    FillAccessor<MethodT>(binding.hasSetter, field->GetSetInfo(), binding.setterInfo);
    record.fieldInfos[driverType] = std::move(binding);
    record.bindingNames[driverType] = field->GetInstanceShortName();
}

template void OrxMaintaindFieldClient::GetFieldInfo<vorx::driver::dds::DDSEventInfo,
                                                    vorx::driver::dds::DDSMethodInfo>(
    const FieldEntry&, orx::maintaind::FieldRegisterInfo&, orx::maintaind::DriverType, bool) const;
template void OrxMaintaindFieldClient::GetFieldInfo<vorx::driver::someip::SomeipEventInfo,
                                                    vorx::driver::someip::SomeipMethodInfo>(
    const FieldEntry&, orx::maintaind::FieldRegisterInfo&, orx::maintaind::DriverType, bool) const;

void OrxMaintaindFieldClient::ParseToGetFieldInfo(std::string& name, uint16_t& id,
                                                  const FieldInfoMap& infos) const {
    if (infos.empty() || !infos.begin()->second) {
        return;
    }
    const FieldInfoPtr& field = infos.begin()->second;
    if (field->GetHasNotify() && field->GetNotifyInfo()) {
        name = field->GetNotifyInfo()->GetEventName();
        id = field->GetNotifyInfo()->GetServiceId();
    } else if (field->GetHasGet() && field->GetGetInfo()) {
        name = field->GetGetInfo()->GetMethodName();
        id = field->GetGetInfo()->GetServiceId();
    } else if (field->GetHasSet() && field->GetSetInfo()) {
        name = field->GetSetInfo()->GetMethodName();
        id = field->GetSetInfo()->GetServiceId();
    }
}

ErrorCode OrxMaintaindFieldClient::RegisterFieldInfo(
    const std::shared_ptr<orx::maintaind::FieldRegisterInfo>& record, const bool& isPub) {
    logger_->LogVerbose() << "Begin to send field info to maintaind[fieldName=" << record->fieldName
                          << ", isPub=" << isPub << ", isOnline=" << record->isOnline << "]";
    if (!link_.proxy) {
        logger_->LogDebug() << kFieldRequestTexts.noMethod;
        return ErrorCode::kNotInitialized;
    }
    orx::maintaind::AppRegisterInfo request;
    request.isPub = isPub;
    request.kind = static_cast<uint8_t>(orx::maintaind::ReportKind::FIELD);
    request.fieldRegisterInfo = *record;
    const RequestOutcome outcome = RequestRegisterApp(link_, request, ReplyWait::kRelative);
    return ReportRequestOutcome(*logger_, outcome, kFieldRequestTexts);
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
