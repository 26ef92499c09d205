#include "orxmaintaind/orx_maintaind_client.h"

#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "maintaind/maintaind_listener.h"
#include "orx/sync/mutex.h"
#include "orxmaintaind/orx_maintaind_constants.h"
#include "orxmaintaind/orx_maintaind_e2e_client.h"
#include "orxmaintaind/orx_maintaind_event_client.h"
#include "orxmaintaind/orx_maintaind_field_client.h"
#include "orxmaintaind/orx_maintaind_latency_client.h"
#include "orxmaintaind/orx_maintaind_method_client.h"
#include "orxmaintaind/orx_maintaind_request.h"
#include "orxmaintaind/orx_maintaind_type.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

using ara::kelda::common::log::LogLevel;
using ara::kelda::common::log::LogLimitConfig;

// Period of the replay of everything still cached.
constexpr long kPeriodicReplayNs = 2000000000L;
// Step of the destructor's wait for scheduled withdrawals.
constexpr long kWithdrawalWaitNs = 200000000L;
// Sample-timeout thresholds below this many milliseconds are not honoured.
constexpr uint32_t kMinimumTimeoutThresholdMs = 5U;

// Sleeps the whole duration, resuming after a signal.
void SleepFully(long nanoseconds) {
    struct timespec request {
        nanoseconds / 1000000000L, nanoseconds % 1000000000L
    };
    struct timespec remaining {};
    while (nanosleep(&request, &remaining) != 0 && errno == EINTR) {
        request = remaining;
    }
}

// Hands the client to the core while the library is being loaded: after this file's copy of the
// shared constants has been built, and after the DDS configuration provider, whose source file is
// linked (and so initialised) first.
struct ClientRegistration {
    ClientRegistration() {
        std::shared_ptr<OrxMaintaindClient> client = OrxMaintaindClient::GetInstance();
        vorx::vcc::RegisterDfxInterface::RegisterOrxMaintaindInterface(client);
    }
};
const ClientRegistration kClientRegistration;

}  // namespace

const std::shared_ptr<OrxMaintaindClient>& OrxMaintaindClient::GetInstance() {
    static const std::shared_ptr<OrxMaintaindClient> instance =
        std::make_shared<OrxMaintaindClient>(ConstructionKey{});
    return instance;
}

OrxMaintaindClient::OrxMaintaindClient(ConstructionKey /*key*/)
    : logger_(ara::kelda::common::log::Log::GetLog("CM")),
      withdrawals_(std::make_shared<WithdrawalGate>()),
      coreType_(vorx::vcc::orxmaintaind::type::OrxMaintaindType::GetInstance()),
      ownType_(type::OrxMaintaindType::GetInstance()),
      methodTopics_(ownType_->GetMethodTable()),
      eventNames_(ownType_->GetEventTable()) {
    orx::sync::MutexLock lock(withdrawals_->mutex);
    withdrawals_->client = this;
}

OrxMaintaindClient::~OrxMaintaindClient() {
    logger_->LogInfo() << "OrxMaintaindClient begin deconstructor";
    if (findServiceHandle_.id != 0U) {
        vorx::vcc::Proxy::StopFindService(findServiceHandle_);
    }
    // Every withdrawal already scheduled reaches the daemon (or its cache) before the node goes.
    // On the controller's own thread they could not run any more, so there is nothing to wait
    // for; closing the gate then makes them find no client.
    const bool onWorker = eventController_ && eventController_->OnWorkerThread();
    while (withdrawals_->pending.load() != 0 && !onWorker) {
        SleepFully(kWithdrawalWaitNs);
    }
    {
        orx::sync::MutexLock lock(withdrawals_->mutex);
        withdrawals_->client = nullptr;
    }
    if (eventController_) {
        vorx::vcc::EventHandle periodic = vorx::vcc::kInvalidEventHandle;
        {
            orx::sync::MutexLock lock(mutex_);
            periodic = periodicEventHandle_;
        }
        eventController_->DelEvent(periodic);
    }
    destructing_.store(true);
    UnregisterNodePidInfo();
    const auto proxy = GetMaintaindProxy();
    if (proxy) {
        proxy->Unsubscribe(type::kSwitchLatencyEventId);
    }
    logger_->LogInfo() << "OrxMaintaindClient deconstructor end";
}

void OrxMaintaindClient::InitializeAll() {
    std::call_once(initOnce_, [this] {
        // The "CM" logger was taken at construction already (the same shared object).
        ara::kelda::common::log::Log::InitLog("CM_LOG", "CM");
        eventClient_ = std::make_shared<OrxMaintaindEventClient>();
        methodClient_ = std::make_shared<OrxMaintaindMethodClient>();
        fieldClient_ = std::make_shared<OrxMaintaindFieldClient>();
        e2eClient_ = std::make_shared<OrxMaintaindE2EClient>();
        if (!eventController_) {
            eventController_ = vorx::vcc::EventController::GetInstance();
        }
        latencyClient_ = std::make_shared<OrxMaintaindLatencyClient>(eventController_);
        applicationNameService_ = vorx::vcc::ApplicationName::GetInstance();
        configReader_ = ara::kelda::common::orxConfigParser::ParseJsonToGetConfig::GetInstance();
        ParseOrxConfigNetwork();
        logger_->LogVerbose() << "OrxMaintaindClient constructor";
        SetProcessPid();
        InitializeProxy();
        initialised_.store(true);
    });
}

void OrxMaintaindClient::ParseOrxConfigNetwork() {
    network_ = configReader_->GetNetworkIp();
    if (network_.first.empty()) {
        network_ = kUndefinedNetwork;
    }
}

void OrxMaintaindClient::InitializeProxy() {
    auto info = std::make_shared<vorx::driver::dds::DDSServiceDiscoveryInfo>();
    info->SetServiceId(type::kMaintaindServiceId);
    info->SetServiceName(coreType_->GetAppServicePath());
    const std::string instanceId = configReader_->GetInstanceId();
    info->SetInstanceId(instanceId.empty() ? kWildcardId : instanceId);
    info->SetNetwork(network_);
    info->SetDriver(DriverType::DDS);
    logger_->LogVerbose() << "Maintaindclient start find service now";
    const std::weak_ptr<OrxMaintaindClient> self = GetInstance();
    findServiceHandle_ = vorx::vcc::Proxy::StartFindService(
        [self](vorx::vcc::ServiceHandleContainer handles) {
            MaintaindServiceAvailabilityCallback(handles, self);
        },
        info);
}

void OrxMaintaindClient::MaintaindServiceAvailabilityCallback(
    const std::vector<vorx::vcc::HandleType>& handles, std::weak_ptr<OrxMaintaindClient> self) {
    const std::shared_ptr<OrxMaintaindClient> client = self.lock();
    if (!client) {
        return;
    }
    orx::sync::MutexLock lock(client->mutex_);
    if (handles.empty()) {
        // The daemon went away; the proxy stays and talks to it again once it is back.
        client->logger_->LogWarn() << "Cannot find any maintaindServer service";
        return;
    }
    if (client->GetMaintaindProxy()) {
        client->logger_->LogInfo() << "Repeated discovery maintaindServer.";
        return;
    }
    {
        const auto proxy = std::make_shared<vorx::vcc::Proxy>(handles.front());
        orx::sync::MutexLock proxyLock(client->proxyMutex_);
        client->maintaindProxy_ = proxy;
    }
    client->logger_->LogInfo() << "Find maintaind service and create proxy successfully[instanceId="
                               << handles.front().GetInstanceId() << "]";
    client->ScheduleReplayJobs(self);
}

void OrxMaintaindClient::ScheduleReplayJobs(const std::weak_ptr<OrxMaintaindClient>& self) {
    const vorx::vcc::EventHandle firstTime = eventController_->NewEvent(
        vorx::vcc::EventScheduleMode::kOneShot,
        [self] {
            if (const auto client = self.lock()) {
                client->FirstTimeRegisterCacheInfo();
            }
        },
        eventController_->GetCurMonoTime(), -1);
    logger_->LogDebug() << "Begin to insert first time register cache info event[" << firstTime
                        << "]";
    eventController_->InsertEvent(firstTime);

    periodicEventHandle_ = eventController_->NewEvent(
        vorx::vcc::EventScheduleMode::kCyclic,
        [self] {
            if (const auto client = self.lock()) {
                client->PeriodicRegisterCacheInfo();
            }
        },
        eventController_->GetCurMonoTime(), kPeriodicReplayNs);
    logger_->LogDebug() << "Begin to insert periodic register cache info event["
                        << periodicEventHandle_ << "]";
    eventController_->InsertEvent(periodicEventHandle_);
}

vorx::vcc::api::types::ListenerDescriptor OrxMaintaindClient::GetMaintaindClientListener() {
    vorx::vcc::api::types::ListenerDescriptor descriptor;
    const uint32_t threshold =
        ara::kelda::common::orxConfigParser::OrxConfigParser().GetSnapshotConfig().timeoutThreshold;
    if (threshold == 0U) {
        logger_->LogDebug() << "[OrxMaintaindClient][Cannot read timeout threshold from orx.json]";
        return descriptor;
    }
    if (threshold < kMinimumTimeoutThresholdMs) {
        logger_->LogWarn(LogLimitConfig{500U, 2U, "OrxMaintaindClient_GetMaintaindClientListener"})
            << "[OrxMaintaindClient][Minimum timeout threshold exceeded][minimumThreshold=5ms, "
               "acutalThreshold="
            << threshold << "]";
        return descriptor;
    }
    descriptor.kind = static_cast<uint8_t>(vorx::vcc::api::types::ListenerKind::MAINTENANCE);
    orx::sync::MutexLock lock(listenerMutex_);
    if (!listener_) {
        listener_ = std::make_shared<maintaind::MaintaindListener>();
    }
    listener_->SetTimeoutThreshold(threshold);
    descriptor.listener = listener_;
    return descriptor;
}

void OrxMaintaindClient::RegisterLatencyMode(
    const std::function<void(const vorx::vcc::api::types::LatencyAnalysisMode&)>& handler,
    const EventInfoMap& infos, const bool& isPub) {
    if (!initialised_.load()) {
        return;
    }
    latencyClient_->RegisterLatencyMode(handler, infos, isPub);
}

void OrxMaintaindClient::RegisterLatencyQuery(
    const std::function<vorx::vcc::api::types::LatencyResult()>& handler,
    const std::shared_ptr<vorx::vcc::api::types::EventInfo>& info, const DriverType& driverType) {
    if (!initialised_.load()) {
        return;
    }
    latencyClient_->RegisterLatencyQuery(handler, info, driverType);
}

void OrxMaintaindClient::UseEventController(
    std::shared_ptr<vorx::vcc::EventController> controller) {
    if (!initialised_.load() && controller) {
        eventController_ = std::move(controller);
    }
}

std::shared_ptr<vorx::vcc::Proxy> OrxMaintaindClient::GetMaintaindProxy() const {
    orx::sync::MutexLock lock(proxyMutex_);
    return maintaindProxy_;
}

void OrxMaintaindClient::SetProcessPid() {
    processPid_.store(static_cast<int32_t>(getpid()));
    logger_->LogVerbose() << "Get process pid is :" << processPid_.load();
}

int32_t OrxMaintaindClient::GetProcessPid() const {
    return processPid_.load();
}

std::string OrxMaintaindClient::GetApplicationName() const {
    orx::sync::MutexLock lock(nameMutex_);
    return applicationName_;
}

void OrxMaintaindClient::SetApplicationName(const std::string& name) {
    orx::sync::MutexLock lock(nameMutex_);
    applicationName_ = name;
}

void OrxMaintaindClient::EnsureApplicationName() {
    orx::sync::MutexLock lock(nameMutex_);
    if (applicationName_.empty()) {
        applicationName_ = applicationNameService_->GetAppName();
    }
}

void OrxMaintaindClient::PrepareClients() {
    const std::string name = GetApplicationName();
    const DaemonLink link{GetMaintaindProxy(), eventController_->Clock()};
    eventClient_->SetApplicationName(name);
    eventClient_->SetDaemonLink(link);
    methodClient_->SetApplicationName(name);
    methodClient_->SetDaemonLink(link);
    fieldClient_->SetApplicationName(name);
    fieldClient_->SetDaemonLink(link);
    e2eClient_->SetApplicationName(name);
    e2eClient_->SetDaemonLink(link);
}

ara::kelda::common::log::LogStream OrxMaintaindClient::LogInfo(bool quiet) const {
    return quiet ? logger_->LogDebug() : logger_->LogInfo();
}

ara::kelda::common::log::LogStream OrxMaintaindClient::LogWarn(bool quiet) const {
    return quiet ? logger_->LogDebug() : logger_->LogWarn();
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
