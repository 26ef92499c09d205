// Ties nodes to the processes the driver reaches: names the sender of each report (host, host id,
// pid, start time) and turns the driver's peer changes into ingest items, so that a process of
// another host whose participant vanishes (crash, network cut) goes offline, and comes back when
// its participant does.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "ingest/ingest_item.h"
#include "orx/sync/mutex.h"
#include "registry/registry.h"
#include "registry/report_sender.h"
#include "vorx/vcc/driver/driver.h"

namespace orx::maintaind::daemon {

// A peer key as text (lower-case hex); "" for the all-zero key ("not known").
String PeerHex(const vorx::vcc::PeerKey& key);

class PeerTracker {
  public:
    using Sink = std::function<void(IngestItem)>;

    // `sink` gets a PeerLost or PeerAlive item per change, on the driver's threads or the
    // tracker's own. After `grace` from Start, and then every `period`, online nodes of other
    // hosts whose peer the driver does not know are reported lost too (nodes loaded from the
    // registry file whose process went away while the daemon was down). The references must
    // outlive the tracker.
    PeerTracker(std::shared_ptr<vorx::vcc::Driver> driver, const Registry& registry, Sink sink,
                std::chrono::milliseconds grace, std::chrono::milliseconds period);
    // Stop().
    ~PeerTracker();
    PeerTracker(const PeerTracker&) = delete;
    PeerTracker& operator=(const PeerTracker&) = delete;

    // Starts following the driver's peers. Once only.
    void Start();
    // No sink call after it returns. Idempotent.
    void Stop();

    // The sender named `key`: host and identity when the driver knows the peer, else only its
    // key. Any thread; takes no registry lock.
    ReportSender Resolve(const vorx::vcc::PeerKey& key) const;

    // Reports lost every online node of another host whose peer the driver does not know;
    // returns how many peers that were.
    size_t SweepOnce();

  private:
    void Run();

    const std::shared_ptr<vorx::vcc::Driver> driver_;
    const Registry& registry_;
    const Sink sink_;
    const std::chrono::milliseconds grace_;
    const std::chrono::milliseconds period_;
    orx::sync::Mutex mutex_;
    orx::sync::CondVar wake_;
    bool stopping_ GUARDED_BY(mutex_){false};
    vorx::vcc::PeerWatchId watch_{0};
    std::thread thread_;
};

}  // namespace orx::maintaind::daemon
