// Orders latency analysis of one event on or off: resolves the event a tool names, publishes the
// SwitchApplicationLatency event and records the order as the event's requested mode.
#pragma once

#include <functional>

#include "daemon_stats.h"
#include "ingest/ingest_queue.h"
#include "orx/maintaind/latency.h"
#include "orx/maintaind/tools/replies.h"
#include "orx/maintaind/tools/requests.h"
#include "registry/registry.h"

namespace orx::maintaind::daemon {

class LatencySwitcher {
  public:
    using Publisher = std::function<bool(const LatencySwitch&)>;

    // The references must outlive this object.
    LatencySwitcher(const Registry& registry, Publisher publish, IngestQueue& queue,
                    DaemonStats& stats);

    // OK once the switch is published (the requested mode is recorded shortly after, through
    // the ingest queue); BAD_REQUEST for a mode other than ENABLE or DISABLE; UNKNOWN_EVENT or
    // AMBIGUOUS_EVENT when the name does not resolve; NOT_DELIVERED when publishing failed.
    // Logs one info line per published switch. Any thread.
    tools::LatencySwitchReply Switch(const tools::LatencySwitchRequest& request);
    // Publishes an order given before again, for processes that registered the event since.
    // Logs one info line. Any thread.
    void Republish(const LatencySwitch& order);

  private:
    const Registry& registry_;
    const Publisher publish_;
    IngestQueue& queue_;
    DaemonStats& stats_;
};

}  // namespace orx::maintaind::daemon
