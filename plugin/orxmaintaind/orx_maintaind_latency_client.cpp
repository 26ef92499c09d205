#include "orxmaintaind/orx_maintaind_latency_client.h"

#include <limits>
#include <utility>

#include "orx/sync/mutex.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "vorx/driver/someip/someip_entity_info.h"
#include "vorx/vcc/proxy.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

using orx::maintaind::LatencyIndex;
using orx::maintaind::LatencyMode;
using orx::maintaind::LatencyModeAckInfo;

// Samples of the latency-switch event that the core keeps until we read them.
constexpr size_t kLatencySwitchCacheSize = 10U;
// Settings of the core's thread that runs our receive handler.
constexpr uint16_t kEventThreadPriority = 0U;
constexpr uint16_t kEventThreadQueueSize = 1024U;

const char* ModeText(const LatencyMode& mode) {
    return static_cast<uint8_t>(mode) == 0U ? "enable" : "disable";
}

}  // namespace

OrxMaintaindLatencyClient::OrxMaintaindLatencyClient(
    std::shared_ptr<vorx::vcc::EventController> controller)
    : logger_(ara::kelda::common::log::Log::GetLog("CM")),
      eventController_(controller ? std::move(controller)
                                  : vorx::vcc::EventController::GetInstance()),
      owner_(OrxMaintaindClient::GetInstance()),
      queryTaskHandle_(std::numeric_limits<vorx::vcc::EventHandle>::max()),
      // The daemon says 0 for "enable" and 1 for "disable"; the core's analysis mode has the
      // opposite sense.
      modeTranslation_{{static_cast<uint8_t>(LatencyMode::ENABLE),
                        static_cast<uint8_t>(LatencyAnalysisMode::ENABLE)},
                       {static_cast<uint8_t>(LatencyMode::DISABLE),
                        static_cast<uint8_t>(LatencyAnalysisMode::DISABLE)}} {}

OrxMaintaindLatencyClient::~OrxMaintaindLatencyClient() {
    eventController_->DelEvent(queryTaskHandle_);
    logger_->LogVerbose() << "OrxMaintaindClientLatency deconstructor end";
}

std::shared_ptr<vorx::vcc::Proxy> OrxMaintaindLatencyClient::DaemonProxy() const {
    const auto owner = owner_.lock();
    return owner ? owner->GetMaintaindProxy() : nullptr;
}

uint16_t OrxMaintaindLatencyClient::InstanceIdOf(const EventInfo& info) {
    return static_cast<uint16_t>(std::stoul(info.GetInstanceId()));
}

std::string OrxMaintaindLatencyClient::TopicNameOf(const EventInfo& info) {
    const auto* dds = dynamic_cast<const vorx::driver::dds::DDSEventInfo*>(&info);
    return dds != nullptr ? dds->GetTopicName() : std::string();
}

uint16_t OrxMaintaindLatencyClient::EventIdOf(const EventInfo& info) {
    const auto* someip = dynamic_cast<const vorx::driver::someip::SomeipEventInfo*>(&info);
    return someip != nullptr ? someip->GetEventId() : uint16_t{0U};
}

void OrxMaintaindLatencyClient::RegisterLatencyMode(ModeHandler handler, const EventInfoMap& infos,
                                                    const bool& isPub) {
    orx::sync::MutexLock lock(modeMutex_);
    // Only the lowest binding counts: the core registers one handler per binding and calls
    // again for the others.
    if (infos.empty() || !infos.begin()->second) {
        return;
    }
    const DriverType driverType = infos.begin()->first;
    const EventInfo& info = *infos.begin()->second;
    if (driverType == DriverType::DDS) {
        const std::string topicName = TopicNameOf(info);
        logger_->LogDebug() << "Add DDS latency switch handler[serviceId=" << info.GetServiceId()
                            << ", instanceId=" << info.GetInstanceId()
                            << ", topicName=" << topicName << "]";
        const DDSLatencyIndex key(info.GetServiceId(), InstanceIdOf(info), topicName);
        auto& handlers = isPub ? ddsPubModeHandlers_ : ddsSubModeHandlers_;
        handlers.emplace(key, std::move(handler));
    } else if (driverType == DriverType::SOMEIP) {
        const uint16_t eventId = EventIdOf(info);
        logger_->LogDebug() << "Add Someip latency switch handler[serviceId=" << info.GetServiceId()
                            << ", instanceId=" << info.GetInstanceId() << ", topicName=" << eventId
                            << "]";
        const SomeipLatencyIndex key(info.GetServiceId(), InstanceIdOf(info), eventId);
        auto& handlers = isPub ? someipPubModeHandlers_ : someipSubModeHandlers_;
        handlers.emplace(key, std::move(handler));
    }
}

void OrxMaintaindLatencyClient::UnregisterLatencyHandler(const EventInfoMap& infos) {
    for (const auto& [driverType, info] : infos) {
        if (!info) {
            continue;
        }
        if (driverType == DriverType::DDS) {
            UnRegisterDDSLatencyHandler(info);
        } else if (driverType == DriverType::SOMEIP) {
            UnRegisterSOMEIPLatencyHandler(info);
        }
    }
}

void OrxMaintaindLatencyClient::UnRegisterDDSLatencyHandler(
    const std::shared_ptr<EventInfo>& info) {
    const DDSLatencyIndex key(info->GetServiceId(), InstanceIdOf(*info), TopicNameOf(*info));
    {
        orx::sync::MutexLock lock(modeMutex_);
        ddsPubModeHandlers_.erase(key);
        ddsSubModeHandlers_.erase(key);
    }
    orx::sync::MutexLock lock(queryMutex_);
    ddsQueryHandlers_.erase(key);
}

void OrxMaintaindLatencyClient::UnRegisterSOMEIPLatencyHandler(
    const std::shared_ptr<EventInfo>& info) {
    const SomeipLatencyIndex key(info->GetServiceId(), InstanceIdOf(*info), EventIdOf(*info));
    {
        orx::sync::MutexLock lock(modeMutex_);
        someipPubModeHandlers_.erase(key);
        someipSubModeHandlers_.erase(key);
    }
    orx::sync::MutexLock lock(queryMutex_);
    someipQueryHandlers_.erase(key);
}

bool OrxMaintaindLatencyClient::LatencySubscribe(
    const uint32_t& entityId, const std::shared_ptr<vorx::driver::dds::DDSEventInfo>& info) {
    logger_->LogVerbose() << "Maintaindclient latency event subscribe";
    const auto proxy = DaemonProxy();
    if (!proxy) {
        logger_->LogWarn() << "Maintaindclient proxy is nullptr, subscribe failed";
        return false;
    }
    proxy->SetEventThreadNumber(kEventThreadPriority, kEventThreadQueueSize);
    // A weak reference: the daemon's proxy must not keep this client alive.
    const std::weak_ptr<OrxMaintaindLatencyClient> weakSelf = weak_from_this();
    const uint32_t id = entityId;
    proxy->SetReceiveHandler(
        [weakSelf, id]() {
            if (const auto self = weakSelf.lock()) {
                self->TriggerEventReceive(id);
            }
        },
        entityId);
    return proxy->Subscribe<orx::maintaind::LatencySwitch>(entityId, info, kLatencySwitchCacheSize);
}

void OrxMaintaindLatencyClient::TriggerEventReceive(const uint32_t& entityId) {
    const auto proxy = DaemonProxy();
    if (!proxy) {
        return;
    }
    proxy->GetNewSamples<orx::maintaind::LatencySwitch>(
        [this](vorx::vcc::SamplePtr<const orx::maintaind::LatencySwitch> sample) {
            if (sample) {
                ChangeEventLatencyMode(sample->mode, sample->latencyIndex);
            }
        },
        entityId, std::numeric_limits<size_t>::max());
}

void OrxMaintaindLatencyClient::ChangeEventLatencyMode(const LatencyMode& mode,
                                                       const LatencyIndex& index) {
    logger_->LogVerbose() << "Receive latency mode " << ModeText(mode)
                          << " command, serviceId : " << index.serviceId
                          << " instanceId : " << index.instanceId
                          << " topicName : " << index.eventName << " eventId" << index.eventId;
    // Each named binding overwrites the outcome: only the last recognised one decides whether
    // the order is acknowledged.
    bool found = false;
    LatencyModeAckInfo ack;
    for (const auto driverType : index.driverTypes) {
        if (driverType == orx::maintaind::DriverType::DDS) {
            found = DDSLatencyModeReceive(mode, index, ack);
        } else if (driverType == orx::maintaind::DriverType::SOMEIP) {
            found = SOMEIPLatencyModeReceive(mode, index, ack);
        }
    }
    if (index.driverTypes.empty() || !found) {
        logger_->LogVerbose() << "Latency mode not find event";
        return;
    }

    InitializeQueryTask();
    ack.mode = mode;
    // Acknowledge on the controller's thread: the send may wait 300 ms for the daemon, which
    // must not stall the core's event thread.
    auto self = shared_from_this();
    const vorx::vcc::EventHandle handle = eventController_->NewEvent(
        vorx::vcc::EventScheduleMode::kOneShot,
        [self, index, mode, ack]() { self->SendLatencyModeAck(index, mode, ack); },
        eventController_->GetCurMonoTime(), -1);
    logger_->LogDebug() << "Begin to insert send latency mode ack event[" << handle << "]";
    eventController_->InsertEvent(handle);
}

void OrxMaintaindLatencyClient::CallModeHandler(const ModeHandler& handler,
                                                const LatencyMode& mode) {
    // An unknown mode is added with translation 0, so the handler sees "disable".
    const uint8_t analysisMode = modeTranslation_[static_cast<uint8_t>(mode)];
    handler(static_cast<LatencyAnalysisMode>(analysisMode));
}

template <typename Index>
bool OrxMaintaindLatencyClient::ReceiveMode(const Index& key, const LatencyMode& mode,
                                            LatencyModeAckInfo& ack,
                                            const std::map<Index, ModeHandler>& pubHandlers,
                                            const std::map<Index, ModeHandler>& subHandlers,
                                            const char* pubText, const char* subText) {
    ack.isPubMatched = false;
    ack.isSubMatched = false;
    bool found = false;

    const auto pub = pubHandlers.find(key);
    if (pub != pubHandlers.end()) {
        logger_->LogDebug() << pubText;
        ack.isPubMatched = true;
        CallModeHandler(pub->second, mode);
        found = true;
    }

    const auto sub = subHandlers.find(key);
    if (sub != subHandlers.end()) {
        logger_->LogDebug() << subText;
        ack.isSubMatched = true;
        CallModeHandler(sub->second, mode);
        // Only subscribers measure latency, so only they take part in the query task.
        orx::sync::MutexLock queryLock(queryMutex_);
        std::set<Index>& enabledSubs = EnabledSubs(key);
        if (mode == LatencyMode::ENABLE) {
            enabledSubs.insert(key);
        } else if (mode == LatencyMode::DISABLE) {
            enabledSubs.erase(key);
        }
        found = true;
    }
    return found;
}

bool OrxMaintaindLatencyClient::DDSLatencyModeReceive(const LatencyMode& mode,
                                                      const LatencyIndex& index,
                                                      LatencyModeAckInfo& ack) {
    orx::sync::MutexLock lock(modeMutex_);
    const DDSLatencyIndex key(index.serviceId, index.instanceId, index.eventName);
    return ReceiveMode(key, mode, ack, ddsPubModeHandlers_, ddsSubModeHandlers_,
                       "Find latency index of dds pub, will deal event latency mode",
                       "Find latency index of dds sub, will deal event latency mode");
}

bool OrxMaintaindLatencyClient::SOMEIPLatencyModeReceive(const LatencyMode& mode,
                                                         const LatencyIndex& index,
                                                         LatencyModeAckInfo& ack) {
    orx::sync::MutexLock lock(modeMutex_);
    const SomeipLatencyIndex key(index.serviceId, index.instanceId, index.eventId);
    return ReceiveMode(key, mode, ack, someipPubModeHandlers_, someipSubModeHandlers_,
                       "Find latency index of someip pub, will deal event latency mode",
                       "Find latency index of someip sub, will deal event latency mode");
}

void OrxMaintaindLatencyClient::SendLatencyModeAck(const LatencyIndex& index,
                                                   const LatencyMode& mode,
                                                   const LatencyModeAckInfo& ack) {
    logger_->LogDebug() << "Send appName : " << appName_ << "latency mode " << ModeText(mode)
                        << " ack pub : " << ack.isPubMatched << " sub : " << ack.isSubMatched
                        << " serviceId :" << index.serviceId << "instanceId: " << index.instanceId
                        << "topicName : " << index.eventName << "eventId_ : " << index.eventId;
    auto info = std::make_shared<orx::maintaind::LatencyInfo>();
    info->type = 0U;  // a mode acknowledgement; results are type 1
    info->appName = appName_;
    info->latencyIndex.driverTypes = index.driverTypes;
    info->latencyIndex.serviceId = index.serviceId;
    info->latencyIndex.instanceId = index.instanceId;
    info->latencyIndex.eventName = index.eventName;
    info->latencyIndex.eventId = index.eventId;
    info->ackInfo.mode = mode;
    info->ackInfo.isPubMatched = ack.isPubMatched;
    info->ackInfo.isSubMatched = ack.isSubMatched;
    SendLatencyInfo(info);
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
