#include "orxmaintaind/orx_maintaind_method_client.h"

#include <gnu/libc-version.h>
#include <unistd.h>

#include "orx/maintaind/config/value_conversions.h"
#include "orxmaintaind/orx_maintaind_method_records.h"
#include "orxmaintaind/orx_maintaind_request.h"
#include "vorx/driver/someip/someip_entity_info.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

using ara::kelda::common::log::LogLevel;
using vorx::vcc::api::types::DriverType;
using ErrorCode = type::MaintaindClientErrorCode;

const RequestLogTexts kMethodRequestTexts{
    "Proxy is not created, register method info fail",
    "Get maintaind reply fail, timeout with register MethodInfo",
    "OrxMaintaindClient register method info msg cannot send out",
    "Get Maintaind reply, but maybe has some problem with register MethodInfo",
    "Get Maintaind reply with register MethodInfo",
    LogLevel::kVerbose,
};

// The host-domain name that this platform's C library carries in its version string on the SEA
// host domain. Any other C library belongs to the GEA domain.
constexpr const char* kSeaHostDomainPlatform = "velmar-sea";

// Copies a core enumeration into a record member when it holds 0 or 1.
template <typename Source, typename Target>
void CopyIfZeroOrOne(Source source, Target& target) {
    const auto value = static_cast<int64_t>(source);
    if (value == 0 || value == 1) {
        target = static_cast<Target>(value);
    }
}

}  // namespace

OrxMaintaindMethodClient::OrxMaintaindMethodClient()
    : logger_(ara::kelda::common::log::Log::GetLog("CM")),
      e2eClient_(std::make_shared<OrxMaintaindE2EClient>()) {}

void OrxMaintaindMethodClient::SetApplicationName(const std::string& appName) {
    appName_ = appName;
    e2eClient_->SetApplicationName(appName);
}

ErrorCode OrxMaintaindMethodClient::RegisterMethod(const MethodInfoMap& infos, const bool& isPub) {
    return SendMethodInfoToMaintaind(infos, isPub, true);
}

ErrorCode OrxMaintaindMethodClient::UnregisterMethod(const MethodInfoMap& infos,
                                                     const bool& isPub) {
    return SendMethodInfoToMaintaind(infos, isPub, false);
}

ErrorCode OrxMaintaindMethodClient::SendMethodInfoToMaintaind(const MethodInfoMap& infos,
                                                              const bool& isPub,
                                                              const bool& isOnline) {
    const auto record = ChangeToMethodRegisterInfo(infos, isPub);
    record->isOnline = isOnline;
    const ErrorCode result = RegisterMethodInfo(record, isPub);
    if (result != ErrorCode::kOk) {
        logger_->LogVerbose() << "Send method info to mainatind failed[methodName="
                              << record->methodName << "isPub=" << isPub
                              << ", isOnline=" << isOnline << "]";
    } else {
        logger_->LogVerbose() << "Register method info successfully";
    }
    return result;
}

std::shared_ptr<orx::maintaind::MethodRegisterInfo>
OrxMaintaindMethodClient::ChangeToMethodRegisterInfo(const MethodInfoMap& infos,
                                                     const bool& isPub) {
    auto record = std::make_shared<orx::maintaind::MethodRegisterInfo>();
    record->appName = appName_;
    record->pid = static_cast<int32_t>(getpid());
    for (const auto& entry : infos) {
        if (!entry.second) {
            continue;
        }
        const char* binding = nullptr;
        if (entry.first == DriverType::DDS) {
            GetMethodInfo<vorx::driver::dds::DDSMethodInfo>(entry, *record,
                                                            orx::maintaind::DriverType::DDS, isPub);
            binding = " with DDS";
        } else if (entry.first == DriverType::SOMEIP) {
            GetMethodInfo<vorx::driver::someip::SomeipMethodInfo>(
                entry, *record, orx::maintaind::DriverType::SOMEIP, isPub);
            binding = " with Someip";
        } else {
            continue;
        }
        logger_->LogVerbose() << "Change method info with methodType: " << record->methodName
                              << " instanceId : " << record->instanceId << " serviceId "
                              << record->serviceId << binding;
    }
    PrintMethodArgsList(*record);
    return record;
}

template <typename BindingInfo>
void OrxMaintaindMethodClient::GetMethodInfo(const MethodEntry& entry,
                                             orx::maintaind::MethodRegisterInfo& record,
                                             orx::maintaind::DriverType driverType, bool isPub) {
    const MethodInfoPtr& info = entry.second;
    if (record.methodName.empty()) {
        record.methodName = JoinMethodTypeName(*info);
        record.serviceName = info->GetServiceName();
        record.instanceName = info->GetInstanceName();
        record.shortName = info->GetShortName();
        record.instanceId = orx::maintaind::config::InstanceIdToNumber(info->GetInstanceId());
        record.serviceId = info->GetServiceId();
        record.isFireAndForget = info->GetIsFireAndForget();
        // A fire-and-forget method has no reply, so its reply settings mean nothing.
        record.replySerializeConfig.serializeConfigText =
            record.isFireAndForget ? std::string{}
                                   : info->GetReplySerializeConfig().serializeConfigText;
        record.requestSerializeConfig.serializeConfigText =
            info->GetRequestSerializeConfig().serializeConfigText;
        for (const auto& name : info->GetInputArgNames()) {
            record.inputParamNames.push_back(name);
        }
        for (const auto& name : info->GetOutputArgNames()) {
            record.outputParamNames.push_back(name);
        }
        GetMethodSerializationInfo(info, record);
        for (const auto& domain : info->GetErrorDomains()) {
            orx::maintaind::ErrorDomainInfo domainInfo;
            domainInfo.domainId = domain.id;
            domainInfo.domainName = domain.name;
            record.errorDomains.push_back(std::move(domainInfo));
        }
    }
    record.hostDomainName = GetHostDomainInfo();
    if (driverType == orx::maintaind::DriverType::DDS) {
        GetDDSMethodRegisterInfo(entry, record, isPub);
    } else {
        GetSomeipMethodRegisterInfo(entry, record, isPub);
    }
}

template void OrxMaintaindMethodClient::GetMethodInfo<vorx::driver::dds::DDSMethodInfo>(
    const MethodEntry&, orx::maintaind::MethodRegisterInfo&, orx::maintaind::DriverType, bool);
template void OrxMaintaindMethodClient::GetMethodInfo<vorx::driver::someip::SomeipMethodInfo>(
    const MethodEntry&, orx::maintaind::MethodRegisterInfo&, orx::maintaind::DriverType, bool);

void OrxMaintaindMethodClient::GetDDSMethodRegisterInfo(const MethodEntry& entry,
                                                        orx::maintaind::MethodRegisterInfo& record,
                                                        bool /*isPub*/) {
    const auto dds = std::dynamic_pointer_cast<vorx::driver::dds::DDSMethodInfo>(entry.second);
    if (!dds) {
        return;
    }
    orx::maintaind::DDSMethodInfo sub = MakeDDSMethodRecord(*dds);
    sub.methodName = GetMethodName(JoinMethodTypeName(*dds));
    ChangeDDSQosToMaintaindQos(dds, sub);
    // The second label reads "requestTopicName" although it carries the reply topic; log readers
    // match the line as it is.
    logger_->LogVerbose() << "Get method info with methodname: " << sub.methodName
                          << " requestTopicName: " << sub.requestTopicName
                          << " requestTopicName: " << sub.replyTopicName
                          << " instanceShortName: " << sub.instanceShortName << " with DDS";
    record.methodInfos[orx::maintaind::DriverType::DDS].ddsMethodInfo = std::move(sub);
}

void OrxMaintaindMethodClient::GetSomeipMethodRegisterInfo(
    const MethodEntry& entry, orx::maintaind::MethodRegisterInfo& record, bool /*isPub*/) {
    const auto someip =
        std::dynamic_pointer_cast<vorx::driver::someip::SomeipMethodInfo>(entry.second);
    if (!someip) {
        return;
    }
    orx::maintaind::SomeipMethodInfo sub = MakeSomeipMethodRecord(*someip);
    logger_->LogVerbose() << "Get someip register method info[methodId=" << sub.methodId
                          << ", instanceShortName=" << sub.instanceShortName
                          << ", requestSerializeSize=" << sub.requestSerializeTag.size()
                          << ", replySerializeSize=" << sub.replySerializeTag.size() << "]";
    record.methodInfos[orx::maintaind::DriverType::SOMEIP].someipMethodInfo = std::move(sub);
}

void OrxMaintaindMethodClient::ChangeDDSQosToMaintaindQos(
    const std::shared_ptr<vorx::driver::dds::DDSMethodInfo>& info,
    orx::maintaind::DDSMethodInfo& record) const {
    if (info) {
        FillDDSMethodQos(*info, record);
    }
}

void OrxMaintaindMethodClient::GetMethodSerializationInfo(
    const MethodInfoPtr& info, orx::maintaind::MethodRegisterInfo& record) const {
    CopyIfZeroOrOne(info->GetRequestSerializeType(), record.requestSerializeConfig.serializeType);
    CopyIfZeroOrOne(info->GetReplySerializeType(), record.replySerializeConfig.serializeType);
    CopyIfZeroOrOne(info->GetRole(), record.role);
    CopyIfZeroOrOne(info->GetIsFieldMethod(), record.isField);
}

void OrxMaintaindMethodClient::PrintMethodArgsList(
    const orx::maintaind::MethodRegisterInfo& record) {
    std::string inputs;
    for (const auto& name : record.inputParamNames) {
        inputs += name + " ";
    }
    std::string outputs;
    for (const auto& name : record.outputParamNames) {
        outputs += name + " ";
    }
    logger_->LogVerbose() << "Method input agrs: " << inputs;
    logger_->LogVerbose() << "Method output agrs: " << outputs;
}

std::string OrxMaintaindMethodClient::GetMethodName(const std::string& text) const {
    return MethodNameFromTypeName(text);
}

std::string OrxMaintaindMethodClient::GetHostDomainInfo() {
    const std::string version{gnu_get_libc_version()};
    const std::string domain =
        (version.find(kSeaHostDomainPlatform) != std::string::npos) ? "SEA" : "GEA";
    logger_->LogVerbose() << "[OrxMaintaindMethodClient][Get app host domain name][domainName="
                          << domain << "]";
    return domain;
}

ErrorCode OrxMaintaindMethodClient::RegisterMethodInfo(
    const std::shared_ptr<orx::maintaind::MethodRegisterInfo>& record, const bool& isPub) {
    logger_->LogVerbose() << "Begin to send method info to maintaind[methodName="
                          << record->methodName << ", isPub=" << isPub
                          << ", isOnline=" << record->isOnline << "]";
    if (!link_.proxy) {
        logger_->LogDebug() << kMethodRequestTexts.noMethod;
        return ErrorCode::kNotInitialized;
    }
    orx::maintaind::AppRegisterInfo request;
    request.isPub = isPub;
    request.kind = static_cast<uint8_t>(orx::maintaind::ReportKind::METHOD);
    request.methodRegisterInfo = *record;
    const RequestOutcome outcome = RequestRegisterApp(link_, request, ReplyWait::kRelative);
    return ReportRequestOutcome(*logger_, outcome, kMethodRequestTexts);
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
