// Binding to the daemon's service: its registration method RegisterApp and its latency switch
// event SwitchApplicationLatency, once the daemon has been found.

#include <unistd.h>

#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "orxmaintaind/orx_maintaind_constants.h"
#include "orxmaintaind/orx_maintaind_latency_client.h"
#include "orxmaintaind/orx_maintaind_type.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/proxy.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

// Participant timing of the daemon's service, in milliseconds: initial and steady announcement,
// lease duration, response delay.
const vorx::driver::dds::ParticipantQos kMaintaindParticipantQos{true, 500U, 1000U, 60000U, 24000U};
// The daemon's endpoints are matched through the discovery filter "[1]" of class 2.
const char* const kMaintaindFilterText = "[1]";
constexpr uint8_t kMaintaindFilterClass = 2U;
// Queue sizes of the registration method: requests waiting to be sent, replies waiting to be read.
constexpr uint32_t kRegisterAppRequestQueueSize = 30U;
constexpr uint32_t kRegisterAppReplyQueueSize = 50U;
// Pause after binding the method, so the daemon's side can match it before the first request.
constexpr useconds_t kMethodSettleUs = 10000U;

}  // namespace

bool OrxMaintaindClient::InitializeMethodInfo(const uint32_t& methodEntityId) {
    const auto proxy = GetMaintaindProxy();
    if (!proxy) {
        logger_->LogWarn() << "Proxy is not created, initialize maintaind method fail";
        return false;
    }
    auto info = std::make_shared<vorx::driver::dds::DDSMethodInfo>();
    const auto topics = methodTopics_.find(static_cast<uint16_t>(methodEntityId));
    if (topics != methodTopics_.end()) {
        const auto request = topics->second.find(type::kRequestTopicKey);
        const auto reply = topics->second.find(type::kReplyTopicKey);
        info->SetRequestTopicName(request != topics->second.end() ? request->second : "");
        info->SetReplyTopicName(reply != topics->second.end() ? reply->second : "");
    }
    info->SetEntityId(methodEntityId);
    info->SetServiceId(type::kMaintaindServiceId);
    info->SetServiceName(coreType_->GetAppServicePath());
    const std::string instanceId = configReader_->GetInstanceId();
    info->SetInstanceId(instanceId.empty() ? kWildcardId : instanceId);
    info->SetNetwork(network_);
    info->SetResourceAttr(configReader_->GetResourceAttr());
    info->SetDriver(DriverType::DDS);
    info->SetRole(vorx::vcc::api::types::EntityRole::CLIENT);
    info->SetDiscoveryFilter(
        vorx::driver::dds::DiscoveryFilter{kMaintaindFilterText, kMaintaindFilterClass});
    info->SetParticipantQos(kMaintaindParticipantQos);
    info->SetRequestQueueSize(kRegisterAppRequestQueueSize);
    info->SetReplyQueueSize(kRegisterAppReplyQueueSize);
    return proxy->InitializeMethodProxy<orx::maintaind::ReturnCode>(info) != nullptr;
}

bool OrxMaintaindClient::InitializeEventInfo(const uint32_t& eventEntityId) {
    const auto proxy = GetMaintaindProxy();
    if (!proxy) {
        logger_->LogWarn() << "Proxy is not created, initialize maintaind event fail";
        return false;
    }
    auto info = std::make_shared<vorx::driver::dds::DDSEventInfo>();
    const auto name = eventNames_.find(static_cast<uint16_t>(eventEntityId));
    if (name != eventNames_.end()) {
        info->SetEventName(name->second);
        info->SetTopicName(name->second);
    }
    info->SetEntityId(eventEntityId);
    info->SetServiceId(type::kMaintaindServiceId);
    info->SetServiceName(coreType_->GetAppServicePath());
    const std::string instanceId = configReader_->GetInstanceId();
    info->SetInstanceId(instanceId.empty() ? kWildcardId : instanceId);
    info->SetNetwork(network_);
    info->SetResourceAttr(configReader_->GetResourceAttr());
    info->SetDriver(DriverType::DDS);
    info->SetRole(vorx::vcc::api::types::EntityRole::CLIENT);
    // The daemon publishes, this process subscribes: only the subscriber side is filtered.
    info->SetPubDiscoveryFilter(vorx::driver::dds::DiscoveryFilter{});
    info->SetSubDiscoveryFilter(
        vorx::driver::dds::DiscoveryFilter{kMaintaindFilterText, kMaintaindFilterClass});
    info->SetParticipantQos(kMaintaindParticipantQos);
    return latencyClient_->LatencySubscribe(eventEntityId, info);
}

void OrxMaintaindClient::InitializeMaintaindMethod() {
    logger_->LogVerbose() << "Begin maintaind initialize method info.";
    methodReady_ = InitializeMethodInfo(type::kRegisterAppMethodId);
    usleep(kMethodSettleUs);
    logger_->LogVerbose() << "Initialize maintaind method info end.";
}

void OrxMaintaindClient::InitializeMaintaindEvent() {
    InitializeEventInfo(type::kSwitchLatencyEventId);
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
