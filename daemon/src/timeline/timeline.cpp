#include "timeline/timeline.h"

#include <algorithm>
#include <utility>

namespace orx::maintaind::daemon {

void Timeline::Restore(std::vector<tools::TimelineEntry> entries, uint64_t lastId) {
    orx::sync::MutexLock lock(mutex_);
    entries_.assign(std::make_move_iterator(entries.begin()),
                    std::make_move_iterator(entries.end()));
    lastId_ = std::max(lastId, entries_.empty() ? uint64_t{0} : entries_.back().id);
    TrimLocked();
}

void Timeline::Number(std::vector<tools::TimelineEntry>& entries) {
    orx::sync::MutexLock lock(mutex_);
    for (tools::TimelineEntry& entry : entries) {
        if (entry.id == 0) {
            entry.id = ++lastId_;
        }
    }
}

void Timeline::Append(const std::vector<tools::TimelineEntry>& entries) {
    if (entries.empty()) {
        return;
    }
    Listener listener;
    {
        orx::sync::MutexLock lock(mutex_);
        entries_.insert(entries_.end(), entries.begin(), entries.end());
        TrimLocked();
        listener = listener_;
    }
    if (listener) {
        for (const tools::TimelineEntry& entry : entries) {
            listener(entry);
        }
    }
}

void Timeline::TrimLocked() {
    while (entries_.size() > limits_.maxEntries) {
        entries_.pop_front();
    }
    if (entries_.empty()) {
        return;
    }
    const auto maxAge = static_cast<uint64_t>(limits_.maxAge.count());
    const uint64_t newest = entries_.back().time;
    while (!entries_.empty() && newest > maxAge && entries_.front().time < newest - maxAge) {
        entries_.pop_front();
    }
}

tools::TimelineReply Timeline::Query(const tools::TimelineRequest& request, uint32_t cap) const {
    const uint32_t most =
        request.maxEntries == 0 ? cap : std::min<uint32_t>(request.maxEntries, cap);
    tools::TimelineReply reply;
    orx::sync::MutexLock lock(mutex_);
    // A scan rather than a bisection by time: the wall clock may have been set back meanwhile.
    std::vector<const tools::TimelineEntry*> matching;
    for (const tools::TimelineEntry& entry : entries_) {
        if (entry.time >= request.since &&
            (request.appName.empty() || entry.appName == request.appName)) {
            matching.push_back(&entry);
        }
    }
    reply.total = static_cast<uint32_t>(matching.size());
    const size_t skip = matching.size() > most ? matching.size() - most : 0;
    reply.truncated = skip > 0;
    reply.entries.reserve(matching.size() - skip);
    for (size_t i = skip; i < matching.size(); ++i) {
        reply.entries.push_back(*matching[i]);
    }
    return reply;
}

void Timeline::SetListener(Listener listener) {
    orx::sync::MutexLock lock(mutex_);
    listener_ = std::move(listener);
}

}  // namespace orx::maintaind::daemon
