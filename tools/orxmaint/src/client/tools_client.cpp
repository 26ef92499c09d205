#include "client/tools_client.h"

#include <utility>

#include "ara/kelda/common/log/log.h"

#include "orx/maintaind/tools/method_ids.h"
#include "orx/sync/mutex.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"

namespace orx::orxmaint {

namespace {

using vorx::vcc::api::types::EntityRole;

std::string ToolsServicePath() {
    return vorx::vcc::orxmaintaind::type::OrxMaintaindType::GetInstance()->GetToolsServicePath();
}

// Why a request failed, in the user's words, for the core's error codes.
std::string Explain(const ara::core::ErrorCode& error) {
    if (error.Domain() == ara::com::GetComErrorDomain()) {
        switch (static_cast<ara::com::ComErrc>(error.Value())) {
            case ara::com::ComErrc::kServiceNotAvailable:
                return "maintaind went away before it answered";
            case ara::com::ComErrc::kNetworkBindingFailure:
                return "the request could not be sent";
            case ara::com::ComErrc::kCommunicationStackError:
                return "its answer could not be read (are maintaind and orxmaint of the same "
                       "version?)";
            default:
                break;
        }
    }
    return error.Message();
}

std::shared_ptr<ara::kelda::common::log::Log> Log() {
    return ara::kelda::common::log::Log::GetLog("ORXMAINT");
}

double MillisecondsOf(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

}  // namespace

ToolsClient::ToolsClient(ClientSettings settings)
    : settings_(std::move(settings)), started_(Clock::now()) {
    vorx::vcc::ServiceDescription search;
    search.serviceId = maintaind::tools::kToolsServiceId;
    search.instanceId = settings_.instanceId;
    search.serviceName = ToolsServicePath();
    search.driverType = settings_.binding;
    search_ = vorx::vcc::Proxy::StartFindService(
        [this](vorx::vcc::ServiceHandleContainer handles) { OnOffers(handles); }, search);
}

ToolsClient::~ToolsClient() {
    vorx::vcc::Proxy::StopFindService(search_);
    std::shared_ptr<vorx::vcc::Proxy> proxy;
    {
        orx::sync::MutexLock lock(mutex_);
        proxy = std::move(proxy_);
    }
}

void ToolsClient::OnOffers(const vorx::vcc::ServiceHandleContainer& handles) {
    if (handles.empty()) {
        return;  // a proxy made already talks to the service again once it is back
    }
    {
        orx::sync::MutexLock lock(mutex_);
        offer_ = std::make_shared<vorx::vcc::HandleType>(handles.front());
    }
    offered_.NotifyAll();
}

std::shared_ptr<vorx::vcc::Proxy> ToolsClient::WaitForProxy(Clock::time_point deadline) {
    orx::sync::MutexLock lock(mutex_);
    if (proxy_) {
        return proxy_;
    }
    if (search_.id == 0) {
        return nullptr;
    }
    if (!offered_.WaitUntil(mutex_, deadline,
                            [this]() REQUIRES(mutex_) { return offer_ != nullptr; })) {
        return nullptr;
    }
    proxy_ = std::make_shared<vorx::vcc::Proxy>(*offer_);
    LogFound();
    return proxy_;
}

std::shared_ptr<vorx::vcc::api::types::MethodInfo> ToolsClient::MethodInfoOf(
    uint32_t entityId) const {
    // The DDS topics and QoS of the tools service come from the DFX configuration provider the
    // driver asks; only the identity is given here.
    auto info = std::make_shared<vorx::driver::dds::DDSMethodInfo>();
    info->SetEntityId(entityId);
    info->SetServiceId(maintaind::tools::kToolsServiceId);
    info->SetServiceName(ToolsServicePath());
    info->SetInstanceId(settings_.instanceId);
    info->SetDriver(settings_.binding);
    info->SetRole(EntityRole::CLIENT);
    return info;
}

std::shared_ptr<vorx::vcc::api::types::EventInfo> ToolsClient::EventInfoOf(
    uint32_t entityId) const {
    auto info = std::make_shared<vorx::driver::dds::DDSEventInfo>();
    info->SetEntityId(entityId);
    info->SetServiceId(maintaind::tools::kToolsServiceId);
    info->SetServiceName(ToolsServicePath());
    info->SetInstanceId(settings_.instanceId);
    info->SetDriver(settings_.binding);
    info->SetRole(EntityRole::CLIENT);
    return info;
}

void ToolsClient::LogFound() const {
    Log()->LogDebug() << "[orxmaint][maintaind found][instanceId=" << settings_.instanceId
                      << ", afterMs=" << MillisecondsOf(Clock::now() - started_) << "]";
}

void ToolsClient::LogAnswered(const char* methodName, Clock::duration took) const {
    Log()->LogDebug() << "[orxmaint][" << methodName << " answered][ms=" << MillisecondsOf(took)
                      << "]";
}

CallOutcome ToolsClient::NotReachable() const {
    return CallOutcome::NotReachable("maintaind is not reachable on " + settings_.where +
                                     " (instance " + settings_.instanceId + "): no answer within " +
                                     std::to_string(settings_.timeout.count()) +
                                     " ms. Is maintaind running?");
}

CallOutcome ToolsClient::NoReply(const char* methodName) const {
    return CallOutcome::NoReply("maintaind on " + settings_.where + " (instance " +
                                settings_.instanceId + ") was found but did not answer " +
                                methodName + " within " +
                                std::to_string(settings_.timeout.count()) +
                                " ms. It may be overloaded; try a larger --timeout-ms.");
}

CallOutcome ToolsClient::Failed(const char* methodName, const ara::core::ErrorCode& error) const {
    return CallOutcome::Failed(std::string(methodName) + " to maintaind on " + settings_.where +
                               " (instance " + settings_.instanceId +
                               ") failed: " + Explain(error));
}

}  // namespace orx::orxmaint
