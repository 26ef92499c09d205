#include "orxmaintaind/orx_maintaind_event_client.h"

#include "orx/maintaind/config/orx_maintaind_config.h"
#include "orxmaintaind/orx_maintaind_constants.h"
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

const RequestLogTexts kEventRequestTexts{
    "Proxy is not created, register event info fail.",
    "Get maintaind reply fail, timeout with register EventInfo",
    "OrxMaintaindClient register event info msg cannot send out",
    "Get maintaind reply, but maybe has some problem with register EventInfo",
    "Get maintaind reply with register EventInfo",
    LogLevel::kDebug,
};

}  // namespace

OrxMaintaindEventClient::OrxMaintaindEventClient()
    : logger_(ara::kelda::common::log::Log::GetLog("CM")),
      e2eClient_(std::make_shared<OrxMaintaindE2EClient>()) {}

void OrxMaintaindEventClient::SetApplicationName(const std::string& appName) {
    appName_ = appName;
    e2eClient_->SetApplicationName(appName);
}

ErrorCode OrxMaintaindEventClient::RegisterEvent(const EventInfoMap& infos, const bool& isPub) {
    return SendEventInfoToMaintaind(infos, isPub, true);
}

ErrorCode OrxMaintaindEventClient::UnRegisterEvent(const EventInfoMap& infos, const bool& isPub) {
    return SendEventInfoToMaintaind(infos, isPub, false);
}

ErrorCode OrxMaintaindEventClient::SendEventInfoToMaintaind(const EventInfoMap& infos,
                                                            const bool& isPub,
                                                            const bool& isOnline) {
    const auto record = ChangeToEventRegisterInfo(infos, isPub);
    record->isOnline = isOnline;
    const ErrorCode result = RegisterEventInfo(record, isPub);
    if (result != ErrorCode::kOk) {
        // No separator between the name and "isPub=": the daemon's tooling greps this line as is.
        logger_->LogVerbose() << "Send event info to mainatind failed[eventName="
                              << record->eventName << "isPub=" << isPub << ", isOnline=" << isOnline
                              << "]";
    } else {
        logger_->LogVerbose() << "Register event info successfully.";
    }
    return result;
}

std::shared_ptr<orx::maintaind::EventRegisterInfo>
OrxMaintaindEventClient::ChangeToEventRegisterInfo(const EventInfoMap& infos, const bool& isPub) {
    auto record = std::make_shared<orx::maintaind::EventRegisterInfo>();
    logger_->LogVerbose() << "[ORXCM] Register Info : appName is " << appName_;
    for (const auto& entry : infos) {
        // Held for the whole conversion of this entry.
        const std::shared_ptr<vorx::vcc::api::types::EventInfo> info = entry.second;
        if (entry.first == DriverType::DDS) {
            const auto dds = std::dynamic_pointer_cast<vorx::driver::dds::DDSEventInfo>(info);
            if (!dds) {
                continue;
            }
            const orx::maintaind::config::OrxMaintaindConfig converter;
            converter.GetDDSEventRegisterInfo(*dds, *record, isPub, appName_);
            logger_->LogVerbose() << "Change DDS EventInfo to maintaind DDS Struct.";
        } else if (entry.first == DriverType::SOMEIP) {
            const auto someip =
                std::dynamic_pointer_cast<vorx::driver::someip::SomeipEventInfo>(info);
            if (!someip) {
                continue;
            }
            const orx::maintaind::config::OrxMaintaindConfig converter;
            converter.GetSOMEIPEventRegisterInfo(*someip, *record, isPub, appName_);
            logger_->LogVerbose() << "Change SOMEIP EventInfo to maintaind SOMEIP Struct";
        }
    }
    return record;
}

ErrorCode OrxMaintaindEventClient::RegisterEventInfo(
    const std::shared_ptr<orx::maintaind::EventRegisterInfo>& record, bool isPub) {
    logger_->LogVerbose() << "Begin to send event info to maintaind[eventName=" << record->eventName
                          << ", isPub=" << isPub << ", isOnline=" << record->isOnline << "]";
    if (!link_.proxy) {
        logger_->LogDebug() << kEventRequestTexts.noMethod;
        return ErrorCode::kNotInitialized;
    }
    orx::maintaind::AppRegisterInfo request;
    request.isPub = isPub;
    request.kind = static_cast<uint8_t>(orx::maintaind::ReportKind::EVENT);
    request.eventRegisterInfo = *record;
    const RequestOutcome outcome = RequestRegisterApp(link_, request, ReplyWait::kRelative);
    return ReportRequestOutcome(*logger_, outcome, kEventRequestTexts);
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
