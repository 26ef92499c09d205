// Node registration: the process reports its application name, pid and online state once, and
// withdraws the report when the client is destroyed.

#include "orx/sync/mutex.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "orxmaintaind/orx_maintaind_constants.h"
#include "orxmaintaind/orx_maintaind_request.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/reserve_service.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

using ara::kelda::common::log::DefaultLimitConfig;

constexpr uint8_t kNodeDone = 0U;
constexpr uint8_t kNodePending = 1U;
constexpr uint8_t kNodeNotRequested = 2U;

}  // namespace

void OrxMaintaindClient::RegisterNodePid(const uint16_t& serviceId) {
    if (!initialised_.load()) {
        return;
    }
    if (vorx::vcc::CheckIsReserveServiceId(serviceId)) {
        logger_->LogDebug() << "The service is orxmaintaind, ingore to register pid info.";
        return;
    }
    StartToRegisterNodePid();
}

void OrxMaintaindClient::RegisterNodePid(const std::string& serviceName) {
    if (!initialised_.load()) {
        return;
    }
    if (vorx::vcc::CheckIsReserveServiceName(serviceName)) {
        logger_->LogDebug() << "The service is orxmaintaind, ingore to register pid info.";
        return;
    }
    StartToRegisterNodePid();
}

void OrxMaintaindClient::StartToRegisterNodePid() {
    const std::string name = applicationNameService_->GetAppName();
    SetApplicationName(name);
    if (name.empty()) {
        logger_->LogWarn(DefaultLimitConfig("OrxMaintaindClient_AppNameEmpty"))
            << "AppName is empty, please check config.";
        return;
    }
    const std::shared_ptr<OrxMaintaindClient> self = GetInstance();
    const vorx::vcc::EventHandle handle = eventController_->NewEvent(
        vorx::vcc::EventScheduleMode::kOneShot, [self] { self->RegisterNodePidInfo(); },
        eventController_->GetCurMonoTime(), -1);
    logger_->LogDebug() << "Begin to insert register node pid event[" << handle << "]";
    eventController_->InsertEvent(handle);
}

void OrxMaintaindClient::RegisterNodePidInfo() {
    orx::sync::MutexLock lock(mutex_);
    if (!GetMaintaindProxy() || !methodReady_) {
        nodeState_ = kNodePending;
        return;
    }
    // Repeated requests cost a job each but send at most one report.
    if (nodeState_ != kNodeNotRequested) {
        return;
    }
    logger_->LogDebug() << "Begin to register pid info";
    const std::string name = GetApplicationName();
    const int32_t pid = GetProcessPid();
    const ErrorCode result = RegisterNodePidAndState(name, pid, true);
    if (result != ErrorCode::kOk) {
        logger_->LogWarn(DefaultLimitConfig("OrxMaintaindClient_RegisterNodePidInfo"))
            << "Register node pid info failed[appname=" << name << ", pid=" << pid
            << ", state=" << result << "]";
        nodeState_ = kNodePending;
        return;
    }
    nodeState_ = kNodeDone;
    logger_->LogVerbose() << "Register app : " << name << " of pid :" << pid << ", successfully.";
}

OrxMaintaindClient::ErrorCode OrxMaintaindClient::RegisterNodePidAndState(
    const std::string& appName, const int32_t& pid, const bool& isOnline) {
    const auto proxy = GetMaintaindProxy();
    if (!proxy || !methodReady_) {
        logger_->LogDebug() << "Proxy is not created, register node pid and state fail";
        return ErrorCode::kNotInitialized;
    }
    orx::maintaind::AppRegisterInfo request;
    request.kind = static_cast<uint8_t>(orx::maintaind::ReportKind::E2E_AND_NODE);
    auto& node = request.nodeCommonRegisterInfo;
    node.pid = pid;
    node.appName = appName;
    node.nodePidInfo.nodePid = 0U;
    node.nodePidInfo.isOnline = isOnline;
    logger_->LogVerbose() << "Begin to register app : " << appName << " of pid :" << pid
                          << ", online status is : " << isOnline;
    const DaemonLink link{
        proxy, eventController_ ? eventController_->Clock() : vorx::vcc::MonoClock::Real()};
    switch (RequestRegisterApp(link, request, ReplyWait::kSystemDeadline)) {
        case RequestOutcome::kNoMethod:
            logger_->LogDebug() << "Proxy is not created, register node pid and state fail";
            return ErrorCode::kNotInitialized;
        case RequestOutcome::kTimeout:
            logger_->LogDebug()
                << "Get maintaind reply fail, register node pid info timeout[isOnLine=" << isOnline
                << "]";
            return ErrorCode::kTimeout;
        case RequestOutcome::kSendFailed:
            logger_->LogDebug()
                << "OrxMaintaindClient unregister nodepid and state info msg cannot send out";
            return ErrorCode::kSendFailed;
        case RequestOutcome::kReplyProblem:
            logger_->LogDebug()
                << "Get Maintaind reply, but maybe has some problem with register node pid info.";
            return ErrorCode::kOk;
        case RequestOutcome::kReply:
            logger_->LogVerbose() << "Get Maintaind reply to register node pid info";
            return ErrorCode::kOk;
    }
    return ErrorCode::kSendFailed;
}

void OrxMaintaindClient::UnregisterNodePidInfo() {
    orx::sync::MutexLock lock(mutex_);
    if (nodeState_ != kNodeDone) {
        // A node that never reached the daemon has nothing to withdraw.
        logger_->LogDebug() << "Maybe RegisterNodePid fail, UnregisterNodePid ingore...";
        return;
    }
    std::call_once(unregisterOnce_, [this]() REQUIRES(mutex_) {
        const std::string name = GetApplicationName();
        const int32_t pid = GetProcessPid();
        const ErrorCode result = RegisterNodePidAndState(name, pid, false);
        if (result != ErrorCode::kOk) {
            logger_->LogWarn(DefaultLimitConfig("OrxMaintaindClient_UnregisterNodePidInfo"))
                << "Unregister node info failed[appname= " << name << ", pid=" << pid << "]";
        } else {
            logger_->LogVerbose() << "Unregister app : " << name << " of pid :" << pid
                                  << ", successfully";
        }
    });
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
