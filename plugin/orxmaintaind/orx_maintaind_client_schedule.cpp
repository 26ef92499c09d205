// The core's report operations: each builds the cache key of the entity and schedules one job on
// the EventController; the jobs (orx_maintaind_client_cache.cpp) send or cache.

#include <memory>
#include <utility>

#include "orxmaintaind/orx_maintaind_client.h"
#include "orxmaintaind/orx_maintaind_constants.h"
#include "orxmaintaind/orx_maintaind_latency_client.h"
#include "vorx/vcc/reserve_service.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

using vorx::vcc::api::types::EventInfo;
using vorx::vcc::api::types::FieldInfo;
using vorx::vcc::api::types::MethodInfo;

// The cache key of an entity: service, instance and entity id from the first binding's
// description, plus every binding kind of the map.
template <typename Info>
OrxMaintaindBindIndex MakeBindIndex(const OrxMaintaindClient::InfoMap<Info>& infos, bool isPub,
                                    bool isRegister) {
    OrxMaintaindBindIndex index;
    const Info& first = *infos.begin()->second;
    index.serviceId = first.GetServiceId();
    index.instanceId = first.GetInstanceId();
    index.entityId = first.GetEntityId();
    for (const auto& entry : infos) {
        index.driverTypes.insert(entry.first);
    }
    index.isPub = isPub;
    index.isRegister = isRegister;
    return index;
}

// The bindings of an event that are reported as an event: a field's notifier is reported with
// its field.
OrxMaintaindClient::EventInfoMap KeepPlainEvents(const OrxMaintaindClient::EventInfoMap& infos) {
    OrxMaintaindClient::EventInfoMap kept;
    for (const auto& entry : infos) {
        if (entry.second && !entry.second->GetIsField()) {
            kept.emplace(entry.first, entry.second);
        }
    }
    return kept;
}

template <typename Info>
OrxMaintaindClient::InfoMap<Info> KeepDescribed(const OrxMaintaindClient::InfoMap<Info>& infos) {
    OrxMaintaindClient::InfoMap<Info> kept;
    for (const auto& entry : infos) {
        if (entry.second) {
            kept.emplace(entry.first, entry.second);
        }
    }
    return kept;
}

// A method of the daemon's own service or a field's getter or setter is not reported as a method.
bool IsReportedMethod(const OrxMaintaindClient::MethodInfoMap& infos) {
    if (infos.empty()) {
        return false;
    }
    const MethodInfo& first = *infos.begin()->second;
    return !vorx::vcc::CheckIsReserveServiceId(first.GetServiceId()) &&
           first.GetIsFieldMethod() != 1U;
}

bool IsReportedField(const OrxMaintaindClient::FieldInfoMap& infos) {
    return !infos.empty() &&
           !vorx::vcc::CheckIsReserveServiceId(infos.begin()->second->GetServiceId());
}

// Counts one withdrawal job as pending for as long as the controller holds the job, whether it
// runs it or drops it unrun.
template <typename Gate>
class PendingTicket {
  public:
    explicit PendingTicket(std::shared_ptr<Gate> gate) : gate_(std::move(gate)) {
        gate_->pending.fetch_add(1);
    }
    ~PendingTicket() { gate_->pending.fetch_sub(1); }
    PendingTicket(const PendingTicket&) = delete;
    PendingTicket& operator=(const PendingTicket&) = delete;

  private:
    const std::shared_ptr<Gate> gate_;
};

constexpr const char* kOnlyFieldText = "Maybe is only use field, ignore...";
constexpr const char* kNotReportedMethodText =
    "Maybe is orxmaintaind service, or it has field set/get, ignore...";

}  // namespace

bool OrxMaintaindClient::ScheduleJob(const std::function<void()>& job, const char* what) {
    const vorx::vcc::EventHandle handle = eventController_->NewEvent(
        vorx::vcc::EventScheduleMode::kOneShot, job, eventController_->GetCurMonoTime(), -1);
    logger_->LogDebug() << what << handle << "]";
    return eventController_->InsertEvent(handle);
}

void OrxMaintaindClient::ScheduleWithdrawal(const std::function<void(OrxMaintaindClient&)>& job,
                                            const char* what, const char* failure) {
    const std::shared_ptr<WithdrawalGate> gate = withdrawals_;
    // Pending before the job can run, and until the controller lets it go.
    const auto ticket = std::make_shared<PendingTicket<WithdrawalGate>>(gate);
    const bool scheduled = ScheduleJob(
        [gate, ticket, job] {
            orx::sync::MutexLock lock(gate->mutex);
            if (gate->client != nullptr) {
                job(*gate->client);
            }
        },
        what);
    if (!scheduled) {
        logger_->LogWarn() << failure;
    }
}

void OrxMaintaindClient::RegisterEventInfoToMaintaind(const EventInfoMap& infos,
                                                      const bool& isPub) {
    if (!initialised_.load()) {
        return;
    }
    const EventInfoMap kept = KeepPlainEvents(infos);
    if (kept.empty()) {
        logger_->LogVerbose() << kOnlyFieldText;
        return;
    }
    EnsureApplicationName();
    const OrxMaintaindBindIndex index = MakeBindIndex(kept, isPub, true);
    const auto self = shared_from_this();
    ScheduleJob(
        [self, index, kept] { self->RegisterEventWithThreadPool(index, kept, index.isPub); },
        "Begin to insert register event info event[");
}

void OrxMaintaindClient::UnregisterEventInfoToMaintaind(const EntityBindingMap<EventInfo>& infos,
                                                        const bool& isPub) {
    if (!initialised_.load()) {
        return;
    }
    EnsureApplicationName();
    for (const auto& entity : infos) {
        const EventInfoMap kept = KeepPlainEvents(entity.second);
        if (kept.empty()) {
            logger_->LogVerbose() << kOnlyFieldText;
            continue;
        }
        const OrxMaintaindBindIndex index = MakeBindIndex(kept, isPub, false);
        ScheduleWithdrawal(
            [index, kept](OrxMaintaindClient& client) {
                client.UnregisterEventWithThreadPool(index, kept, index.isPub);
            },
            "Begin to insert unregister event info event[",
            "Failed to insert unregister event info event");
    }
    // The latency handlers of a vanished event must not be called again.
    for (const auto& entity : infos) {
        latencyClient_->UnregisterLatencyHandler(entity.second);
    }
}

void OrxMaintaindClient::RegisterMethodInfoToMaintaind(const MethodInfoMap& infos,
                                                       const bool& isPub) {
    if (!initialised_.load()) {
        return;
    }
    const MethodInfoMap kept = KeepDescribed(infos);
    if (!IsReportedMethod(kept)) {
        logger_->LogVerbose() << kNotReportedMethodText;
        return;
    }
    EnsureApplicationName();
    const OrxMaintaindBindIndex index = MakeBindIndex(kept, isPub, true);
    const auto self = shared_from_this();
    ScheduleJob(
        [self, index, kept] { self->RegisterMethodWithThreadPool(index, kept, index.isPub); },
        "Begin to insert register method info event[");
}

void OrxMaintaindClient::UnregisterMethodInfoToMaintaind(const EntityBindingMap<MethodInfo>& infos,
                                                         const bool& isPub) {
    if (!initialised_.load()) {
        return;
    }
    EnsureApplicationName();
    for (const auto& entity : infos) {
        const MethodInfoMap kept = KeepDescribed(entity.second);
        if (!IsReportedMethod(kept)) {
            logger_->LogVerbose() << kNotReportedMethodText;
            continue;
        }
        const OrxMaintaindBindIndex index = MakeBindIndex(kept, isPub, false);
        ScheduleWithdrawal(
            [index, kept](OrxMaintaindClient& client) {
                client.UnregisterMethodWithThreadPool(index, kept, index.isPub);
            },
            "Begin to insert unregister method info event[",
            "Failed to insert unregister method info event");
    }
}

void OrxMaintaindClient::RegisterFieldInfoToMaintaind(const FieldInfoMap& infos,
                                                      const bool& isPub) {
    if (!initialised_.load()) {
        return;
    }
    const FieldInfoMap kept = KeepDescribed(infos);
    if (!IsReportedField(kept)) {
        logger_->LogVerbose() << kNotReportedMethodText;
        return;
    }
    EnsureApplicationName();
    const OrxMaintaindBindIndex index = MakeBindIndex(kept, isPub, true);
    const auto self = shared_from_this();
    ScheduleJob(
        [self, index, kept] { self->RegisterFieldWithThreadPool(index, kept, index.isPub); },
        "Begin to insert register field info event[");
}

void OrxMaintaindClient::UnregisterFieldInfoToMaintaind(const EntityBindingMap<FieldInfo>& infos,
                                                        const bool& isPub) {
    if (!initialised_.load()) {
        return;
    }
    EnsureApplicationName();
    for (const auto& entity : infos) {
        const FieldInfoMap kept = KeepDescribed(entity.second);
        if (!IsReportedField(kept)) {
            logger_->LogVerbose() << kNotReportedMethodText;
            continue;
        }
        const OrxMaintaindBindIndex index = MakeBindIndex(kept, isPub, false);
        ScheduleWithdrawal(
            [index, kept](OrxMaintaindClient& client) {
                client.UnregisterFieldWithThreadPool(index, kept, index.isPub);
            },
            "Begin to insert unregister field info event[",
            "Failed to insert unregister field info event");
    }
}

void OrxMaintaindClient::RegisterE2EInfoToMaintaind(
    const std::vector<vorx::vcc::api::types::EventE2EConfigInfo>& configs) {
    if (!initialised_.load()) {
        return;
    }
    if (configs.empty()) {
        logger_->LogVerbose() << "No sub configuration E2E, ignore to registser E2E config info";
        return;
    }
    EnsureApplicationName();
    const auto self = shared_from_this();
    ScheduleJob([self, configs] { self->RegisterE2EWithThreadPool(configs); },
                "Begin to insert register e2e info event[");
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
