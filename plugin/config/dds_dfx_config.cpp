#include "config/dds_dfx_config.h"

#include <optional>

#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "orxmaintaind/orx_maintaind_constants.h"
#include "orxmaintaind/orx_maintaind_type.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace orx {
namespace orxcm {
namespace config {

namespace {

namespace log = ara::kelda::common::log;
using vorx::driver::dds::ParticipantQos;
using vorx::driver::dds::TransportQosSet;

// Which of the daemon's services an index names.
constexpr int kForeignService = 0;
constexpr int kAppService = 1;
constexpr int kToolsService = 2;

// Discovery settings of the daemon's services. The application side and the tools side are
// told apart by service id (DDSServiceDiscoveryInfo::SetServiceId) and discovery group
// (DDSServiceDiscoveryInfo::SetDiscoveryGroup).
constexpr uint16_t kAppServiceId = orx::maintaind::service::kAppServiceId;
constexpr uint16_t kToolsServiceId = orx::maintaind::service::kToolsServiceId;
constexpr uint16_t kAppDiscoveryGroup = 2U;
constexpr uint16_t kToolsDiscoveryGroup = 3U;
// Offer, find and subscribe filter (DDSServiceDiscoveryInfo::SetOfferFilter, SetFindFilter,
// SetSubscribeFilter): only peers of discovery group 2 match.
constexpr const char* kDiscoveryMatchFilter = "[2]";
// Participant timing in ms (DDSServiceDiscoveryInfo::SetParticipantQos): first announcements,
// steady announcements, lease duration, response delay.
constexpr ParticipantQos kParticipantQos{true, 500U, 1000U, 60000U, 24000U};
// Transport QoS (SetTransportQos of every record): 0 lets the driver choose.
const TransportQosSet kDefaultTransportQos{0U};
using orxmaintaind::type::kReplyTopicKey;
using orxmaintaind::type::kRequestTopicKey;

// The daemon's topics are keyed by 16-bit entity ids; a larger id names nothing.
template <typename Table>
const typename Table::mapped_type* FindTopics(const Table& table, uint32_t entityId) {
    if (entityId > 0xFFFFU) {
        return nullptr;
    }
    const auto found = table.find(static_cast<uint16_t>(entityId));
    return found != table.end() ? &found->second : nullptr;
}

std::string TopicOf(const std::map<std::string, std::string>& topics, const char* key) {
    const auto found = topics.find(key);
    return found != topics.end() ? found->second : std::string();
}

// Registers the provider with the core while the library is loaded. This file links first, so
// the provider is registered before the maintenance client.
[[maybe_unused]] const bool kRegisteredAtLoad = []() {
    std::shared_ptr<vorx::vcc::DDSDfxConfigInterface> provider = DDSDfxConfig::GetInstance();
    vorx::vcc::RegisterDfxInterface::RegisterDfxConfigInterface(provider);
    provider.reset();
    return true;
}();

}  // namespace

std::shared_ptr<DDSDfxConfig> DDSDfxConfig::GetInstance() {
    static const std::shared_ptr<DDSDfxConfig> instance(new DDSDfxConfig());
    return instance;
}

DDSDfxConfig::DDSDfxConfig()
    : coreType_(vorx::vcc::orxmaintaind::type::OrxMaintaindType::GetInstance()),
      ownType_(orxmaintaind::type::OrxMaintaindType::GetInstance()),
      eventTopics_(ownType_->GetEventTable()),
      methodTopics_(ownType_->GetMethodTable()) {}

DDSDfxConfig::~DDSDfxConfig() = default;

void DDSDfxConfig::DoInit() {
    std::call_once(initOnce_, [this]() {
        logger_ = log::Log::GetLog("CM");
        configParser_ = ara::kelda::common::orxConfigParser::ParseJsonToGetConfig::GetInstance();
        ParseOrxConfigNetwork();
    });
}

void DDSDfxConfig::ParseOrxConfigNetwork() {
    network_ = configParser_->GetNetworkIp();
    if (network_.first.empty()) {
        network_ = orxmaintaind::kBuiltinAppServerFlag;
    }
}

int DDSDfxConfig::MatchService(const std::string& serviceName) const {
    if (serviceName == coreType_->GetAppServicePath()) {
        return kAppService;
    }
    if (serviceName == coreType_->GetToolsServicePath()) {
        return kToolsService;
    }
    return kForeignService;
}

bool DDSDfxConfig::SetInstanceId(vorx::vcc::api::types::EntityInfo& info,
                                 const std::string& instanceId) {
    if (info.SetInstanceId(instanceId)) {
        return true;
    }
    logger_->LogWarn(log::DefaultLimitConfig("DDSDfxConfig_InvalidInstanceId"))
        << "[DDSDfxConfig][Invalid instanceId][instanceId=" << instanceId << "]";
    return false;
}

bool DDSDfxConfig::FillEntity(vorx::vcc::api::types::EntityInfo& info,
                              const ara::com::internal::BindIndex& index) {
    if (!SetInstanceId(info, index.instanceId)) {
        return false;
    }
    info.SetResourceAttr(configParser_->GetResourceAttr());
    info.SetNetwork(network_);
    return true;
}

bool DDSDfxConfig::ReadServiceDiscoveryData(const ara::com::internal::BindIndex& index,
                                            vorx::driver::dds::DDSServiceDiscoveryInfo& info) {
    DoInit();
    const int service = MatchService(index.serviceName);
    if (service == kForeignService) {
        return false;
    }
    const bool isApp = service == kAppService;
    info.SetServiceId(isApp ? kAppServiceId : kToolsServiceId);
    info.SetDiscoveryGroup(isApp ? kAppDiscoveryGroup : kToolsDiscoveryGroup);
    info.SetNetwork(network_);
    info.SetParticipantQos(kParticipantQos);
    // The discovery filter stays the driver's default: the match filters below do the work.
    info.SetDiscoveryFilter(vorx::driver::dds::DiscoveryFilter{});
    info.SetOfferFilter(std::optional<std::string>(kDiscoveryMatchFilter));
    info.SetFindFilter(std::optional<std::string>(kDiscoveryMatchFilter));
    info.SetSubscribeFilter(std::optional<std::string>(kDiscoveryMatchFilter));
    if (!SetInstanceId(info, index.instanceId)) {
        return false;
    }
    info.SetTransportQos(kDefaultTransportQos);
    return true;
}

bool DDSDfxConfig::ReadEventData(const ara::com::internal::BindIndex& index,
                                 vorx::driver::dds::DDSEventInfo& info) {
    DoInit();
    if (MatchService(index.serviceName) == kForeignService) {
        return false;
    }
    const std::string* topic = FindTopics(eventTopics_, index.entityId);
    if (!FillEntity(info, index)) {
        return false;
    }
    info.SetTopicName(topic != nullptr ? *topic : std::string());
    info.SetTransportQos(kDefaultTransportQos);
    return true;
}

bool DDSDfxConfig::ReadMethodData(const ara::com::internal::BindIndex& index,
                                  vorx::driver::dds::DDSMethodInfo& info) {
    DoInit();
    if (MatchService(index.serviceName) == kForeignService) {
        return false;
    }
    const auto* topics = FindTopics(methodTopics_, index.entityId);
    if (!FillEntity(info, index)) {
        return false;
    }
    info.SetRequestTopicName(topics != nullptr ? TopicOf(*topics, kRequestTopicKey)
                                               : std::string());
    info.SetReplyTopicName(topics != nullptr ? TopicOf(*topics, kReplyTopicKey) : std::string());
    info.SetTransportQos(kDefaultTransportQos);
    return true;
}

}  // namespace config
}  // namespace orxcm
}  // namespace orx
