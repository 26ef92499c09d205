// The periodic latency query and the send path shared by results and acknowledgements.
#include <chrono>
#include <exception>
#include <mutex>
#include <string>
#include <utility>

#include "ara/core/error_code.h"
#include "ara/core/future.h"
#include "orx/maintaind/app.h"
#include "orx/sync/mutex.h"
#include "orxmaintaind/orx_maintaind_latency_client.h"
#include "orxmaintaind/orx_maintaind_request.h"
#include "orxmaintaind/orx_maintaind_type.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/proxy.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

using orx::maintaind::LatencyInfo;

using type::kRegisterAppMethodId;
// Period of the query task in nanoseconds.
constexpr long kQueryPeriodNs = 1000000000L;

}  // namespace

void OrxMaintaindLatencyClient::RegisterLatencyQuery(QueryHandler handler,
                                                     const std::shared_ptr<EventInfo>& info,
                                                     const DriverType& driverType) {
    orx::sync::MutexLock lock(queryMutex_);
    if (!info) {
        return;
    }
    if (driverType == DriverType::DDS) {
        const std::string topicName = TopicNameOf(*info);
        logger_->LogDebug() << "Add DDS query latency result handler, serviceId : "
                            << info->GetServiceId() << " instanceId : " << info->GetInstanceId()
                            << " topicName : " << topicName;
        const DDSLatencyIndex key(info->GetServiceId(), InstanceIdOf(*info), topicName);
        ddsQueryHandlers_.emplace(key, std::move(handler));
    } else if (driverType == DriverType::SOMEIP) {
        const uint16_t eventId = EventIdOf(*info);
        logger_->LogDebug() << "Add Someip query latency result handler, serviceId : "
                            << info->GetServiceId() << " instanceId : " << info->GetInstanceId()
                            << " topicName : " << eventId;
        const SomeipLatencyIndex key(info->GetServiceId(), InstanceIdOf(*info), eventId);
        someipQueryHandlers_.emplace(key, std::move(handler));
    }
}

void OrxMaintaindLatencyClient::InitializeQueryTask() {
    // One query task per process, however many orders switch analysis on.
    static std::once_flag queryTaskOnce;
    std::call_once(queryTaskOnce, [this]() {
        appName_ = vorx::vcc::ApplicationName::GetInstance()->GetAppName();
        logger_->LogInfo() << "First enable latency query task";
        auto self = shared_from_this();
        queryTaskHandle_ = eventController_->NewEvent(
            vorx::vcc::EventScheduleMode::kCyclic, [self]() { self->QueryLatencyResult(); },
            eventController_->GetCurMonoTime(), kQueryPeriodNs);
        logger_->LogDebug() << "Begin to insert cyclicity query latency event[" << queryTaskHandle_
                            << "]";
        eventController_->InsertEvent(queryTaskHandle_);
    });
}

void OrxMaintaindLatencyClient::QueryLatencyResult() {
    orx::sync::MutexLock lock(queryMutex_);
    logger_->LogVerbose() << "Query latency task running";
    // An enabled event whose handler is gone (unregistered) is skipped.
    for (const DDSLatencyIndex& key : ddsEnabledSubs_) {
        const auto handler = ddsQueryHandlers_.find(key);
        if (handler == ddsQueryHandlers_.end()) {
            continue;
        }
        logger_->LogDebug() << "Send latency result by dds, serviceId is : " << key.serviceId
                            << " instanceId is : " << key.instanceId << " topicName is "
                            << key.topicName;
        auto info = std::make_shared<LatencyInfo>();
        info->latencyIndex.driverTypes = {orx::maintaind::DriverType::DDS};
        info->latencyIndex.serviceId = key.serviceId;
        info->latencyIndex.instanceId = key.instanceId;
        info->latencyIndex.eventName = key.topicName;
        SendLatencyResult(handler->second, info);
    }
    for (const SomeipLatencyIndex& key : someipEnabledSubs_) {
        const auto handler = someipQueryHandlers_.find(key);
        if (handler == someipQueryHandlers_.end()) {
            continue;
        }
        logger_->LogDebug() << "Send latency result by someip, serviceId is : " << key.serviceId
                            << " instanceId is : " << key.instanceId
                            << " eventId is :" << key.eventId;
        auto info = std::make_shared<LatencyInfo>();
        info->latencyIndex.driverTypes = {orx::maintaind::DriverType::SOMEIP};
        info->latencyIndex.serviceId = key.serviceId;
        info->latencyIndex.instanceId = key.instanceId;
        info->latencyIndex.eventId = key.eventId;
        SendLatencyResult(handler->second, info);
    }
}

void OrxMaintaindLatencyClient::SendLatencyResult(const QueryHandler& handler,
                                                  const std::shared_ptr<LatencyInfo>& info) {
    const vorx::vcc::api::types::LatencyResult result = handler();
    // No sample in this period: the core reports a maximum of 0.
    if (result.maxLatency == 0U) {
        logger_->LogDebug() << "have not received timestamp during this query period";
        return;
    }
    info->type = 1U;  // a result; acknowledgements are type 0
    info->appName = appName_;
    info->resultInfo.notifyTime = RecordNotifyTime();
    info->resultInfo.result.minLatency = result.minLatency;
    info->resultInfo.result.maxLatency = result.maxLatency;
    info->resultInfo.result.averageLatency = result.averageLatency;
    NotifyLatencyResult(info);
}

uint64_t OrxMaintaindLatencyClient::RecordNotifyTime() const {
    // Seconds times 1000 plus nanoseconds divided by 1000000 is the whole milliseconds.
    return static_cast<uint64_t>(eventController_->GetCurMonoTime()) / 1000000U;
}

void OrxMaintaindLatencyClient::NotifyLatencyResult(const std::shared_ptr<LatencyInfo>& info) {
    const orx::maintaind::LatencyIndex& index = info->latencyIndex;
    std::string entityText;
    if (!index.driverTypes.empty() &&
        index.driverTypes.front() == orx::maintaind::DriverType::DDS) {
        entityText = " topName : " + index.eventName;
    } else {
        entityText = " eventId : " + std::to_string(static_cast<int32_t>(index.eventId));
    }
    logger_->LogDebug() << "Notify application : " << appName_
                        << " Event serviceId : " << index.serviceId
                        << " instanceId :" << index.instanceId << entityText;
    SendLatencyInfo(info);
}

void OrxMaintaindLatencyClient::SendLatencyInfo(const std::shared_ptr<LatencyInfo>& info) {
    const auto proxy = DaemonProxy();
    const auto method =
        proxy ? proxy->GetMethodProxy<orx::maintaind::ReturnCode>(kRegisterAppMethodId) : nullptr;
    if (!method) {
        logger_->LogWarn() << "Proxy is not created, register event info fail.";
        return;
    }

    // Only the latency record is filled; the report kind stays at its default too.
    orx::maintaind::AppRegisterInfo request;
    request.latencyInfo = *info;
    const long sentAt = eventController_->GetCurMonoTime();
    auto reply = method->Request(request);
    if (!reply.valid() ||
        !WaitForReply(reply, ReplyWait::kSystemDeadline, *eventController_->Clock(), sentAt)) {
        logger_->LogWarn() << "Get maintaind reply fail, latency result send failed";
        return;
    }

    bool failed = true;
    bool problem = false;
    try {
        const auto result = reply.GetResult();
        failed = !result.HasValue();
        problem = !failed && result.Value().code == 1U;
    } catch (const std::exception&) {
        // The reply's promise broke: the same as an error reply.
    }
    if (failed) {
        logger_->LogWarn() << "OrxMaintaindClient cannot send latency result";
    } else if (problem) {
        logger_->LogDebug()
            << "Get Maintaind reply, but maybe has some problem with register LatencyInfo";
    }
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
