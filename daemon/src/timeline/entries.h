// Builders of timeline entries, one per kind of thing that happened. Each returns an entry with
// id 0 (the Timeline numbers it) and the given time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "orx/maintaind/latency.h"
#include "orx/maintaind/tools/timeline.h"
#include "registry/change_set.h"

namespace orx::maintaind::daemon {

// A node came online or went offline, as the registry noted it.
tools::TimelineEntry NodeTimelineEntry(const NodeNotice& notice, uint64_t now);
// The daemon ordered latency analysis of `eventName` on or off.
tools::TimelineEntry LatencySwitchEntry(const String& eventName, LatencyMode mode, uint64_t now);
// An application acknowledged a latency switch of `eventName`.
tools::TimelineEntry LatencyAckEntry(const LatencyInfo& ack, const String& eventName, uint64_t now);
// A listener reported sample timeouts; `appName` is the application it was attributed to or "".
tools::TimelineEntry SampleTimeoutEntry(const String& listenerName, const String& appName,
                                        uint32_t timeoutMs, uint32_t count, uint64_t now);
// The daemon itself started or stopped on `host`.
tools::TimelineEntry DaemonEntry(bool start, const std::string& host, int32_t pid, uint64_t now);

// Adds one entry per notice from `changes.notices[firstNotice]` on, inserted at
// `changes.timeline[insertAt]` so that a node's coming online precedes what its own report added.
void AddNoticeEntries(ChangeSet& changes, size_t firstNotice, size_t insertAt, uint64_t now);

}  // namespace orx::maintaind::daemon
