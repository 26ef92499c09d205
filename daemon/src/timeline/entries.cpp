#include "timeline/entries.h"

#include <iterator>
#include <vector>

namespace orx::maintaind::daemon {

namespace {

tools::TimelineEntry Entry(tools::TimelineKind kind, uint64_t now) {
    tools::TimelineEntry entry;
    entry.kind = static_cast<uint8_t>(kind);
    entry.time = now;
    return entry;
}

const char* ModeName(LatencyMode mode) {
    return mode == LatencyMode::ENABLE ? "enable" : "disable";
}

}  // namespace

tools::TimelineEntry NodeTimelineEntry(const NodeNotice& notice, uint64_t now) {
    tools::TimelineEntry entry =
        Entry(notice.online ? tools::TimelineKind::ONLINE : tools::TimelineKind::OFFLINE, now);
    entry.appName = notice.node.appName;
    entry.pid = notice.node.pid;
    entry.host = notice.host;
    entry.reason = notice.reason;
    return entry;
}

tools::TimelineEntry LatencySwitchEntry(const String& eventName, LatencyMode mode, uint64_t now) {
    tools::TimelineEntry entry = Entry(tools::TimelineKind::LATENCY_SWITCH, now);
    entry.event = eventName;
    entry.detail = String("mode=") + ModeName(mode);
    return entry;
}

tools::TimelineEntry LatencyAckEntry(const LatencyInfo& ack, const String& eventName,
                                     uint64_t now) {
    tools::TimelineEntry entry = Entry(tools::TimelineKind::LATENCY_ACK, now);
    entry.appName = ack.appName;
    entry.event = eventName;
    entry.detail = String("mode=") + ModeName(ack.ackInfo.mode) +
                   ", pubMatched=" + (ack.ackInfo.isPubMatched ? "true" : "false") +
                   ", subMatched=" + (ack.ackInfo.isSubMatched ? "true" : "false");
    return entry;
}

tools::TimelineEntry SampleTimeoutEntry(const String& listenerName, const String& appName,
                                        uint32_t timeoutMs, uint32_t count, uint64_t now) {
    tools::TimelineEntry entry = Entry(tools::TimelineKind::SAMPLE_TIMEOUT, now);
    entry.appName = appName;
    entry.event = listenerName;
    entry.detail =
        "count=" + std::to_string(count) + ", sampleTimeoutMs=" + std::to_string(timeoutMs);
    return entry;
}

tools::TimelineEntry DaemonEntry(bool start, const std::string& host, int32_t pid, uint64_t now) {
    tools::TimelineEntry entry =
        Entry(start ? tools::TimelineKind::DAEMON_START : tools::TimelineKind::DAEMON_STOP, now);
    entry.appName = "maintaind";
    entry.pid = pid;
    entry.host = host;
    return entry;
}

void AddNoticeEntries(ChangeSet& changes, size_t firstNotice, size_t insertAt, uint64_t now) {
    if (firstNotice >= changes.notices.size()) {
        return;
    }
    std::vector<tools::TimelineEntry> added;
    added.reserve(changes.notices.size() - firstNotice);
    for (size_t i = firstNotice; i < changes.notices.size(); ++i) {
        added.push_back(NodeTimelineEntry(changes.notices[i], now));
    }
    if (insertAt > changes.timeline.size()) {
        insertAt = changes.timeline.size();
    }
    changes.timeline.insert(changes.timeline.begin() + static_cast<std::ptrdiff_t>(insertAt),
                            std::make_move_iterator(added.begin()),
                            std::make_move_iterator(added.end()));
}

}  // namespace orx::maintaind::daemon
