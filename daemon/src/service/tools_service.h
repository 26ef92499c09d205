// The tools-side service: every query and the latency switch, answered on a worker thread of its
// own so that large answers never hold up the applications' reports.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "check/check_engine.h"
#include "daemon_stats.h"
#include "ingest/ingest_queue.h"
#include "ingest/report_check.h"
#include "registry/registry.h"
#include "service/method_server.h"
#include "service/task_worker.h"
#include "timeline/timeline.h"
#include "tools/latency_switcher.h"
#include "tools/query_engine.h"

namespace orx::maintaind::daemon {

// What QueryDaemonStatus tells besides the counts and counters.
struct DaemonInfo {
    String version;
    String dbPath;
    String host;
    uint64_t startedAt{};
};

class ToolsService {
  public:
    // Registers every tools method on `server` (before it is offered). The references must
    // outlive this object. Requests that cannot be decoded get the method's reply with
    // BAD_REQUEST; requests beyond `backlog` waiting ones get INTERNAL_ERROR.
    ToolsService(MethodServer& server, const Registry& registry, LatencySwitcher& switcher,
                 const IngestQueue& queue, DaemonStats& stats, DaemonInfo info,
                 RequestLimits limits, QueryEngine engine, size_t backlog = 256);

    // Serves QueryTimeline from `timeline` and publishes each entry appended to it as the
    // timeline event of this service. REQUIRES: called before the server is offered; `timeline`
    // must outlive this object (its listener is cleared by Stop).
    void ServeTimeline(Timeline& timeline, uint32_t entryCap);

    void Start();
    // Answers what is waiting, then stops. Idempotent.
    void Stop();

  private:
    template <class Request, class Reply>
    void Add(uint32_t entityId, const char* name, std::function<Reply(const Request&)> answer);
    // A query answered under the registry's read lock.
    template <class Request, class Reply>
    void AddQuery(uint32_t entityId, const char* name,
                  Reply (QueryEngine::*query)(const RegistryState&, const Request&) const);
    tools::DaemonStatusReply Status() const;

    MethodServer& server_;
    const Registry& registry_;
    LatencySwitcher& switcher_;
    const IngestQueue& queue_;
    DaemonStats& stats_;
    const DaemonInfo info_;
    const RequestLimits limits_;
    const QueryEngine engine_;
    const check::CheckEngine checker_;
    TaskWorker worker_;
    Timeline* timeline_{nullptr};
};

}  // namespace orx::maintaind::daemon
