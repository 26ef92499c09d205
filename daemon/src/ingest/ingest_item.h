// One unit of work for the ingest worker: a report of an application or a finding of the daemon,
// and whom to tell how it went.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>

#include "orx/maintaind/app.h"
#include "registry/keys.h"
#include "registry/registry_updater.h"
#include "vorx/vcc/driver/driver.h"

namespace orx::maintaind::daemon {

// The liveness check found a process gone.
struct NodeGone {
    NodeKey node;
    uint64_t startTicks{};
};

// A participant (driver peer) vanished, or came back; `peer` as hex (PeerHex).
struct PeerLost {
    String peer;
};
struct PeerAlive {
    String peer;
};

struct IngestResult {
    enum class Status {
        kAccepted,   // applied and stored
        kRefused,    // refused by a limit; nothing changed
        kNotStored,  // applied, but the registry file could not be written (retried later)
    };
    Status status{Status::kAccepted};
    std::string reason;
};

struct IngestItem {
    std::variant<AppRegisterInfo, NodeGone, LatencyRequest, PeerLost, PeerAlive> work;
    // For a report: the process that sent it, as the driver named it (resolved on the worker).
    vorx::vcc::PeerKey sender{};
    // Called once on the ingest worker after the batch was stored; may be empty.
    std::function<void(const IngestResult&)> done;
};

}  // namespace orx::maintaind::daemon
