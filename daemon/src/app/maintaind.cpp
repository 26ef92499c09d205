#include "app/maintaind.h"

#include <unistd.h>

#include <utility>
#include <vector>

#include "daemon_log.h"
#include "orx/maintaind/service.h"
#include "orx/maintaind/tools/method_ids.h"
#include "timeline/entries.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/reserve_service.h"

namespace orx::maintaind::daemon {

namespace {

constexpr const char* kVersion = "0.1.0";

std::shared_ptr<const ProcessProbe> ProbeOf(const DaemonSettings& settings) {
    return settings.probe ? settings.probe : std::make_shared<ProcProbe>();
}

WallClock ClockOf(const DaemonSettings& settings) {
    return settings.clock ? settings.clock : WallClock(SystemWallClockMs);
}

vorx::vcc::ServiceDescription Service(const DaemonSettings& settings, uint16_t serviceId,
                                      const std::string& path) {
    vorx::vcc::ServiceDescription desc;
    desc.serviceId = serviceId;
    desc.instanceId = settings.instanceId;
    desc.serviceName = path;
    desc.driverType = settings.binding;
    return desc;
}

}  // namespace

Maintaind::Maintaind(DaemonSettings settings)
    : settings_(std::move(settings)),
      registry_(RegistryUpdater(settings_.limits, ClockOf(settings_), ProbeOf(settings_))),
      timeline_(settings_.timeline, ClockOf(settings_)) {}

Maintaind::~Maintaind() {
    Stop();
}

bool Maintaind::Start(std::string& error) {
    if (!settings_.dbPath.empty()) {
        StoreStatus status;
        store_ = RegistryStore::Open(settings_.dbPath, settings_.fresh, status, settings_.timeline);
        if (!store_) {
            error = status.message;
            return false;
        }
        size_t skipped = 0;
        status = registry_.Write([&](RegistryState& state, const RegistryUpdater&) {
            return store_->Load(state, skipped);
        });
        if (!status.ok) {
            error = status.message;
            store_.reset();
            return false;
        }
        std::vector<tools::TimelineEntry> entries;
        uint64_t lastId = 0;
        size_t skippedEntries = 0;
        status = store_->LoadTimeline(entries, lastId, skippedEntries);
        if (!status.ok) {
            error = status.message;
            store_.reset();
            return false;
        }
        timeline_.Restore(std::move(entries), lastId);
        skipped += skippedEntries;
        if (skipped > 0) {
            DaemonLog().LogWarn() << "[Maintaind][Registry rows that cannot be read were skipped]"
                                     "[file="
                                  << settings_.dbPath << ", rows=" << skipped << "]";
        }
    }
    RecordDaemonEntry(true);
    const auto [nodes, entities] = registry_.Read([](const RegistryState& state) {
        return std::make_pair(state.nodes.size(),
                              state.events.size() + state.methods.size() + state.fields.size());
    });
    DaemonLog().LogInfo() << "Registry loaded[file="
                          << (settings_.dbPath.empty() ? "(memory)" : settings_.dbPath)
                          << ", nodes=" << nodes << ", entities=" << entities << "]";

    auto driver = vorx::vcc::DriverRegistry::GetInstance()->GetDriver(settings_.binding);
    peers_ = std::make_unique<PeerTracker>(
        driver, registry_, [this](IngestItem item) { queue_->Push(std::move(item)); },
        settings_.peerGrace, settings_.livenessPeriod);
    pipeline_ = std::make_unique<IngestPipeline>(
        registry_, store_.get(), stats_, &timeline_,
        [this](const vorx::vcc::PeerKey& key) { return peers_->Resolve(key); });
    queue_ = std::make_unique<IngestQueue>(*pipeline_, settings_.queueCapacity, settings_.maxBatch);

    appServer_ = std::make_unique<MethodServer>(
        Service(settings_, service::kAppServiceId, std::string(service::kAppServicePath)), driver);
    toolsServer_ = std::make_unique<MethodServer>(
        Service(settings_, service::kToolsServiceId, std::string(service::kToolsServicePath)),
        driver);
    appService_ =
        std::make_unique<AppService>(*appServer_, *queue_, stats_, settings_.requestLimits);
    switcher_ = std::make_unique<LatencySwitcher>(
        registry_,
        [this](const LatencySwitch& order) { return appService_->PublishLatencySwitch(order); },
        *queue_, stats_);
    pipeline_->SetLatencyResender(
        [this](const LatencySwitch& order) { switcher_->Republish(order); });
    DaemonInfo info;
    info.version = kVersion;
    info.dbPath = settings_.dbPath;
    info.host = ProbeOf(settings_)->HostName();
    info.startedAt = ClockOf(settings_)();
    toolsService_ = std::make_unique<ToolsService>(*toolsServer_, registry_, *switcher_, *queue_,
                                                   stats_, std::move(info), settings_.requestLimits,
                                                   QueryEngine(settings_.entryCap));
    toolsService_->ServeTimeline(timeline_, settings_.entryCap);
    liveness_ = std::make_unique<LivenessMonitor>(
        registry_, ProbeOf(settings_),
        [this](const NodeGone& gone) {
            DaemonStats::Add(stats_.nodesGone);
            IngestItem item;
            item.work = gone;
            queue_->Push(std::move(item));
        },
        settings_.livenessPeriod);

    queue_->Start();
    toolsService_->Start();
    if (!appServer_->Offer() || !toolsServer_->Offer()) {
        error = "the driver \"" + driver->Name() + "\" refused to offer the maintenance services";
        started_ = true;
        Stop();
        return false;
    }
    liveness_->Start();
    peers_->Start();
    started_ = true;
    // Every method of the service's shared description must be served by one of the two sides.
    for (const service::MethodRow& row : service::kMethodTable) {
        if (!appServer_->Serves(row.entityId) && !toolsServer_->Serves(row.entityId)) {
            DaemonLog().LogError() << "[Maintaind][Method of the maintenance service not served]"
                                      "[methodEntityId="
                                   << row.entityId << "]";
        }
    }
    DaemonLog().LogInfo() << "Maintaind started[service=" << service::kShortName
                          << ", instanceId=" << settings_.instanceId
                          << ", driver=" << driver->Name() << "]";
    return true;
}

void Maintaind::Stop() {
    if (!started_) {
        return;
    }
    started_ = false;
    liveness_->Stop();
    peers_->Stop();
    appServer_->StopOffer();    // no RegisterApp handler runs after this
    queue_->Stop();             // stores and answers the reports already queued
    RecordDaemonEntry(false);   // published while the tools side is still offered
    toolsServer_->StopOffer();  // no tools handler runs after this
    toolsService_->Stop();      // answers the queries already posted
    DaemonLog().LogInfo() << "Maintaind stopped";
}

void Maintaind::RecordDaemonEntry(bool start) {
    ChangeSet changes;
    changes.timeline.push_back(DaemonEntry(start, ProbeOf(settings_)->HostName(),
                                           static_cast<int32_t>(::getpid()), timeline_.Now()));
    timeline_.Number(changes.timeline);
    if (store_) {
        const StoreStatus status =
            registry_.Write([&](RegistryState& state, const RegistryUpdater&) {
                return store_->Save(state, changes);
            });
        if (!status.ok) {
            DaemonLog().LogError()
                << "[Maintaind][Registry file not written][file=" << store_->Path()
                << ", reason=" << status.message << "]";
            return;
        }
    }
    timeline_.Append(changes.timeline);
}

size_t Maintaind::CheckLivenessNow() {
    return liveness_ ? liveness_->CheckOnce() : 0;
}

}  // namespace orx::maintaind::daemon
