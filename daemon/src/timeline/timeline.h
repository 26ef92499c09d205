// The timeline as queries see it: the kept entries in memory, oldest first, numbered with ids that
// only grow. The registry file holds the same entries (RegistryStore writes them with the batch
// that caused them); this view is loaded from it at start and appended to after each stored batch.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <utility>
#include <vector>

#include "orx/maintaind/tools/timeline.h"
#include "orx/sync/mutex.h"
#include "registry/wall_clock.h"

namespace orx::maintaind::daemon {

// How much of the timeline is kept, in memory and in the file.
struct TimelineLimits {
    size_t maxEntries = 100000;
    std::chrono::milliseconds maxAge{std::chrono::hours(24 * 7)};
};

class Timeline {
  public:
    // Called with each appended entry, on the appending thread, without the timeline's lock.
    using Listener = std::function<void(const tools::TimelineEntry&)>;

    // `clock` gives the time of entries made from notices (empty: the system clock).
    Timeline(TimelineLimits limits, WallClock clock)
        : limits_(limits), clock_(clock ? std::move(clock) : WallClock(SystemWallClockMs)) {}

    const TimelineLimits& Limits() const { return limits_; }
    uint64_t Now() const { return clock_(); }

    // Replaces the kept entries with `entries` (oldest first, as the file holds them) and
    // continues numbering after the highest id, or after `lastId` when that is higher.
    void Restore(std::vector<tools::TimelineEntry> entries, uint64_t lastId) EXCLUDES(mutex_);

    // Gives every entry with id 0 the next id. Ids are given in order, so an entry numbered
    // later happened later. Any thread.
    void Number(std::vector<tools::TimelineEntry>& entries) EXCLUDES(mutex_);

    // Keeps `entries` (stored already, numbered, oldest first), drops what is over the limits
    // (age measured from the newest entry's time) and hands each entry to the listener.
    void Append(const std::vector<tools::TimelineEntry>& entries) EXCLUDES(mutex_);

    // Entries at or after `request.since` of `request.appName` (any when empty), oldest first;
    // at most `request.maxEntries` (or `cap` when 0 or higher), the newest ones.
    tools::TimelineReply Query(const tools::TimelineRequest& request, uint32_t cap) const
        EXCLUDES(mutex_);

    // Set before entries are appended; replaces an earlier listener.
    void SetListener(Listener listener) EXCLUDES(mutex_);

  private:
    void TrimLocked() REQUIRES(mutex_);

    const TimelineLimits limits_;
    const WallClock clock_;
    mutable orx::sync::Mutex mutex_;
    std::deque<tools::TimelineEntry> entries_ GUARDED_BY(mutex_);
    uint64_t lastId_ GUARDED_BY(mutex_){0};
    Listener listener_ GUARDED_BY(mutex_);
};

}  // namespace orx::maintaind::daemon
