// Applies batches of ingest items: registry update, one transaction of the registry file, then
// the answers. This order is what lets the daemon promise that an answered report is stored.
#pragma once

#include <functional>
#include <vector>

#include "daemon_stats.h"
#include "ingest/ingest_item.h"
#include "registry/change_set.h"
#include "registry/registry.h"
#include "store/registry_store.h"
#include "timeline/timeline.h"

namespace orx::maintaind::daemon {

// Names the process behind a report's sender key; called on the ingest worker, without the
// registry lock.
using SenderResolver = std::function<ReportSender(const vorx::vcc::PeerKey&)>;

class IngestPipeline {
  public:
    // `store` may be nullptr (nothing is persisted); `timeline` may be nullptr (no timeline is
    // kept); `resolver` may be empty (senders unknown). The references must outlive the pipeline.
    IngestPipeline(Registry& registry, RegistryStore* store, DaemonStats& stats,
                   Timeline* timeline = nullptr, SenderResolver resolver = {});

    // Applies every item in order under one registry write lock, stores what changed in one
    // transaction with the timeline entries it caused, logs node and refusal lines, appends the
    // stored entries to the timeline, and calls each item's `done`. When the store
    // fails, the items complete with kNotStored and their changes are written with the next
    // batch. Called by one thread at a time.
    void Process(std::vector<IngestItem>& batch);

    // Gets the latency switches to publish again after a batch (ChangeSet::latencyResend), once
    // it is stored, on the worker. Set before the first batch.
    void SetLatencyResender(std::function<void(const LatencySwitch&)> resend) {
        resend_ = std::move(resend);
    }

  private:
    IngestResult Apply(IngestItem& item, const ReportSender& sender, RegistryState& state,
                       const RegistryUpdater& updater, ChangeSet& changes);
    void LogNotices(const ChangeSet& changes) const;

    Registry& registry_;
    RegistryStore* const store_;
    DaemonStats& stats_;
    const SenderResolver resolver_;
    std::function<void(const LatencySwitch&)> resend_;
    Timeline* const timeline_;
    ChangeSet unsaved_;  // changes of failed transactions, retried with the next batch
    bool storeFailing_{false};
};

}  // namespace orx::maintaind::daemon
