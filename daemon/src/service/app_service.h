// The application-side service: RegisterApp, which takes every report of the applications, and
// the SwitchApplicationLatency event.
#pragma once

#include <cstdint>

#include "daemon_stats.h"
#include "ingest/ingest_queue.h"
#include "ingest/report_check.h"
#include "orx/maintaind/latency.h"
#include "orx/maintaind/service.h"
#include "service/method_server.h"

namespace orx::maintaind::daemon {

// Answers RegisterApp: 0 once the report is stored; 1 at once for a request that cannot be
// decoded or is inconsistent, and after the ingest worker for a report refused by a limit. A
// report that could not be stored, or found the queue full, is not answered: the application
// times out and sends it again.
class AppService {
  public:
    // Registers RegisterApp on `server` (before it is offered). The references must outlive
    // this object and the server's offer.
    AppService(MethodServer& server, IngestQueue& queue, DaemonStats& stats, RequestLimits limits);

    // Publishes a latency switch order to every subscribed application.
    bool PublishLatencySwitch(const LatencySwitch& order);

  private:
    void OnRegisterApp(const vorx::vcc::MethodCall& call,
                       const std::shared_ptr<vorx::vcc::ReplyChannel>& channel);

    MethodServer& server_;
    IngestQueue& queue_;
    DaemonStats& stats_;
    const RequestLimits limits_;
};

}  // namespace orx::maintaind::daemon
