#include "ingest/ingest_pipeline.h"

#include <type_traits>
#include <utility>

#include "daemon_log.h"
#include "registry/report_class.h"
#include "timeline/entries.h"

namespace orx::maintaind::daemon {

IngestPipeline::IngestPipeline(Registry& registry, RegistryStore* store, DaemonStats& stats,
                               Timeline* timeline, SenderResolver resolver)
    : registry_(registry),
      store_(store),
      stats_(stats),
      resolver_(std::move(resolver)),
      timeline_(timeline) {}

IngestResult IngestPipeline::Apply(IngestItem& item, const ReportSender& sender,
                                   RegistryState& state, const RegistryUpdater& updater,
                                   ChangeSet& changes) {
    IngestResult result;
    std::visit(
        [&](const auto& work) {
            using Work = std::decay_t<decltype(work)>;
            if constexpr (std::is_same_v<Work, AppRegisterInfo>) {
                const ApplyOutcome outcome = updater.ApplyReport(work, sender, state, changes);
                if (!outcome.accepted) {
                    result.status = IngestResult::Status::kRefused;
                    result.reason = outcome.reason;
                    DaemonStats::Add(stats_.overLimit);
                    DaemonLog().LogWarn(Limit("Maintaind_ReportRefused"))
                        << "[Maintaind][Report refused][kind=" << ToString(ClassifyReport(work))
                        << ", reason=" << outcome.reason << "]";
                }
            } else if constexpr (std::is_same_v<Work, NodeGone>) {
                updater.ApplyNodeGone(work.node, work.startTicks, state, changes);
            } else if constexpr (std::is_same_v<Work, PeerLost>) {
                updater.ApplyPeerLost(work.peer, state, changes);
            } else if constexpr (std::is_same_v<Work, PeerAlive>) {
                updater.ApplyPeerAlive(work.peer, state, changes);
            } else {
                updater.ApplyLatencyRequest(work, state, changes);
            }
        },
        item.work);
    return result;
}

void IngestPipeline::Process(std::vector<IngestItem>& batch) {
    std::vector<IngestResult> results;
    results.reserve(batch.size());
    // Senders are named before the lock is taken: the driver's peer table has its own lock.
    std::vector<ReportSender> senders(batch.size());
    for (size_t i = 0; i < batch.size(); ++i) {
        if (resolver_ && std::holds_alternative<AppRegisterInfo>(batch[i].work)) {
            senders[i] = resolver_(batch[i].sender);
        }
    }
    ChangeSet changes;
    StoreStatus saved;
    std::vector<tools::TimelineEntry> stored;  // timeline entries in the file now
    registry_.Write([&](RegistryState& state, const RegistryUpdater& updater) {
        for (size_t i = 0; i < batch.size(); ++i) {
            const size_t firstNotice = changes.notices.size();
            const size_t timelineAt = changes.timeline.size();
            results.push_back(Apply(batch[i], senders[i], state, updater, changes));
            if (timeline_ != nullptr) {
                AddNoticeEntries(changes, firstNotice, timelineAt, timeline_->Now());
            }
        }
        if (timeline_ != nullptr) {
            timeline_->Number(changes.timeline);
        } else {
            changes.timeline.clear();
        }
        if (store_ != nullptr) {
            // Saved under the lock so no query sees a state the file does not hold yet and
            // no later batch overtakes this one.
            ChangeSet toSave = std::move(unsaved_);
            unsaved_ = ChangeSet{};
            toSave.Merge(changes);
            toSave.notices.clear();
            toSave.latencyResend.clear();
            saved = store_->Save(state, toSave);
            if (!saved.ok) {
                unsaved_ = std::move(toSave);
            } else {
                stored = std::move(toSave.timeline);
            }
        } else {
            stored = changes.timeline;
        }
    });
    if (!saved.ok) {
        DaemonStats::Add(stats_.storeErrors);
        if (!storeFailing_) {
            DaemonLog().LogError()
                << "[Maintaind][Registry file not written, answers held back][file="
                << store_->Path() << ", reason=" << saved.message << "]";
        }
        storeFailing_ = true;
    } else if (storeFailing_) {
        storeFailing_ = false;
        DaemonLog().LogInfo() << "[Maintaind][Registry file written again][file=" << store_->Path()
                              << "]";
    }
    LogNotices(changes);
    if (timeline_ != nullptr) {
        timeline_->Append(stored);  // pushes each entry to the tools
    }
    if (resend_ && saved.ok) {
        for (const auto& [key, index] : changes.latencyResend) {
            LatencySwitch order;
            order.mode = LatencyMode::ENABLE;
            order.latencyIndex = index;
            resend_(order);
        }
    }
    for (size_t i = 0; i < batch.size(); ++i) {
        IngestResult& result = results[i];
        if (!saved.ok && result.status == IngestResult::Status::kAccepted) {
            result.status = IngestResult::Status::kNotStored;
            result.reason = saved.message;
        }
        if (result.status == IngestResult::Status::kAccepted &&
            std::holds_alternative<AppRegisterInfo>(batch[i].work)) {
            DaemonStats::Add(stats_.accepted);
        }
        if (batch[i].done) {
            batch[i].done(result);
        }
    }
}

void IngestPipeline::LogNotices(const ChangeSet& changes) const {
    for (const NodeNotice& notice : changes.notices) {
        if (notice.online) {
            auto line = DaemonLog().LogInfo();
            line << "Node online[appName=" << notice.node.appName << ", pid=" << notice.node.pid
                 << ", host=" << (notice.host.empty() ? "unknown" : notice.host);
            if (!notice.reason.empty()) {
                line << ", reason=" << notice.reason;
            }
            line << "]";
        } else {
            DaemonLog().LogInfo() << "Node offline[appName=" << notice.node.appName
                                  << ", pid=" << notice.node.pid
                                  << ", host=" << (notice.host.empty() ? "unknown" : notice.host)
                                  << ", reason=" << notice.reason << "]";
        }
    }
}

}  // namespace orx::maintaind::daemon
