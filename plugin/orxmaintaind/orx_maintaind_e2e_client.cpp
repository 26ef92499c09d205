#include "orxmaintaind/orx_maintaind_e2e_client.h"

#include <unistd.h>

#include <stdexcept>

#include "config/valid_uint16.h"
#include "orx/maintaind/config/orx_maintaind_config.h"
#include "orx/maintaind/config/value_conversions.h"
#include "orxmaintaind/orx_maintaind_constants.h"
#include "orxmaintaind/orx_maintaind_request.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

using ara::kelda::common::log::LogLevel;
using vorx::vcc::api::types::E2EXf_DataIDMode;
using vorx::vcc::api::types::E2EXf_Profile;
using ErrorCode = type::MaintaindClientErrorCode;
namespace record = orx::maintaind;

const RequestLogTexts kE2ERequestTexts{
    "Proxy is not created, register e2e info fail.",
    "Get maintaind reply fail, timeout with register E2E Info",
    "OrxMaintaindClient register e2e info msg cannot send out",
    "Get maintaind reply, but maybe has some problem with register E2E Info",
    "Get maintaind reply with register E2E Info",
    LogLevel::kVerbose,
};

// A deployment's instance id that is not a number at all makes the conversion throw; for the
// report that is just another invalid id.
bool ToInstanceNumber(const std::string& text, uint16_t& value) {
    try {
        return orx::orxcm::utils::ValidUint16(text, value);
    } catch (const std::logic_error&) {
        return false;
    }
}

}  // namespace

OrxMaintaindE2EClient::OrxMaintaindE2EClient()
    : pid_(static_cast<int32_t>(getpid())),
      logger_(ara::kelda::common::log::Log::GetLog("CM")),
      profileMap_{
          {E2EXf_Profile::PROFILE_04, record::E2EProfile::PROFILE_04},
          {E2EXf_Profile::PROFILE_05, record::E2EProfile::PROFILE_05},
          {E2EXf_Profile::PROFILE_06, record::E2EProfile::PROFILE_06},
          {E2EXf_Profile::PROFILE_07, record::E2EProfile::PROFILE_07},
          {E2EXf_Profile::PROFILE_11, record::E2EProfile::PROFILE_11},
          {E2EXf_Profile::PROFILE_22, record::E2EProfile::PROFILE_22},
          {E2EXf_Profile::PROFILE_4M, record::E2EProfile::PROFILE_4M},
          {E2EXf_Profile::PROFILE_44, record::E2EProfile::PROFILE_44},
      },
      dataIdModeMap_{
          {E2EXf_DataIDMode::E2E_DATAID_BOTH, record::E2EDataIDMode::BOTH},
          {E2EXf_DataIDMode::E2E_DATAID_NIBBLE, record::E2EDataIDMode::NIBBLE},
      } {}

ErrorCode OrxMaintaindE2EClient::RegisterE2EInfo(const E2EConfigList& configs) {
    logger_->LogVerbose() << "Begin to register E2E info to maintaind[appname=" << appName_
                          << ", nodePid=" << pid_ << ", e2eConfigLength=" << configs.size() << "]";
    const auto info = ChangeAppE2EConfigToRegisterInfo(configs);
    const ErrorCode result = RegisterNodeE2ESubInfo(*info);
    if (result == ErrorCode::kOk) {
        logger_->LogVerbose() << "Register E2E info successfully";
    } else {
        logger_->LogVerbose() << "Register E2E info failed";
    }
    return result;
}

std::shared_ptr<record::NodeCommonRegisterInfo>
OrxMaintaindE2EClient::ChangeAppE2EConfigToRegisterInfo(const E2EConfigList& configs) {
    auto info = std::make_shared<record::NodeCommonRegisterInfo>();
    info->pid = pid_;
    info->appName = appName_;
    for (auto& entry : ChangeEventE2EConfigToRegisterInfo(configs)) {
        auto& target =
            entry.isPub ? info->appE2EConfig.pubE2EConfigs : info->appE2EConfig.subE2EConfigs;
        target.push_back(std::move(entry));
    }
    return info;
}

std::vector<record::EventE2EConfigInfo> OrxMaintaindE2EClient::ChangeEventE2EConfigToRegisterInfo(
    const E2EConfigList& configs) {
    std::vector<record::EventE2EConfigInfo> result;
    result.reserve(configs.size());
    for (const auto& config : configs) {
        uint16_t instanceId = 0U;
        if (!ToInstanceNumber(config.instanceId, instanceId)) {
            logger_->LogWarn(ara::kelda::common::log::DefaultLimitConfig(
                "OrxMaintaindE2EClient_InvalidInstanceId"))
                << "[OrxMaintaindE2EClient][Invalid instanceId][instanceId=" << config.instanceId
                << "]";
            continue;
        }
        record::EventE2EConfigInfo entry;
        entry.serviceId = config.serviceId;
        entry.instanceId = instanceId;
        // The record's ids are 16 bits wide: entity ids and pids are reported truncated.
        entry.eventId = static_cast<uint16_t>(config.entityId);
        entry.nodePid = static_cast<uint16_t>(pid_);
        entry.eventName = config.eventName;
        const orx::maintaind::config::OrxMaintaindConfig converter;
        entry.e2eConfig = converter.ChangeE2EInfoToTransportStruct(config.e2eConfig);
        if (config.e2eConfig) {
            const auto profile = profileMap_.find(config.e2eConfig->profile);
            entry.e2eConfig.profile =
                (profile != profileMap_.end()) ? profile->second : record::E2EProfile{};
            const auto mode = dataIdModeMap_.find(config.e2eConfig->dataIdMode);
            entry.e2eConfig.dataIdMode =
                (mode != dataIdModeMap_.end()) ? mode->second : record::E2EDataIDMode{};
        }
        entry.driverType = orx::maintaind::config::ToMaintaindDriverType(config.driverType);
        entry.isPub = config.isPub;
        result.push_back(std::move(entry));
    }
    return result;
}

ErrorCode OrxMaintaindE2EClient::RegisterNodeE2ESubInfo(
    const record::NodeCommonRegisterInfo& info) {
    logger_->LogVerbose() << "Start to send request to register sub e2e info";
    if (!link_.proxy) {
        logger_->LogDebug() << kE2ERequestTexts.noMethod;
        return ErrorCode::kNotInitialized;
    }
    record::AppRegisterInfo request;
    request.kind = static_cast<uint8_t>(record::ReportKind::E2E_AND_NODE);
    request.nodeCommonRegisterInfo = info;
    const RequestOutcome outcome = RequestRegisterApp(link_, request, ReplyWait::kRelative);
    return ReportRequestOutcome(*logger_, outcome, kE2ERequestTexts);
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
