#include "service/app_service.h"

#include <utility>

#include "daemon_log.h"
#include "orx/maintaind/app.h"

namespace orx::maintaind::daemon {

namespace {

constexpr uint8_t kAccepted = 0;
constexpr uint8_t kProblem = 1;

}  // namespace

AppService::AppService(MethodServer& server, IngestQueue& queue, DaemonStats& stats,
                       RequestLimits limits)
    : server_(server), queue_(queue), stats_(stats), limits_(limits) {
    server_.Register(service::kRegisterAppMethodId,
                     [this](const vorx::vcc::MethodCall& call,
                            const std::shared_ptr<vorx::vcc::ReplyChannel>& channel) {
                         OnRegisterApp(call, channel);
                     });
}

bool AppService::PublishLatencySwitch(const LatencySwitch& order) {
    return server_.Publish(service::kSwitchLatencyEventId, order);
}

void AppService::OnRegisterApp(const vorx::vcc::MethodCall& call,
                               const std::shared_ptr<vorx::vcc::ReplyChannel>& channel) {
    DaemonStats::Add(stats_.requests);
    const vorx::vcc::Responder<ReturnCode> responder(channel);
    AppRegisterInfo report;
    const std::string unreadable = ReadRequest(call.payload, limits_, report);
    if (!unreadable.empty()) {
        DaemonStats::Add(stats_.undecodable);
        DaemonLog().LogWarn(Limit("Maintaind_UndecodableRequest"))
            << "[Maintaind][RegisterApp request cannot be decoded][sessionId=" << call.sessionId
            << ", size=" << call.payload.ByteSize() << ", reason=" << unreadable << "]";
        responder.Reply(ReturnCode{kProblem});
        return;
    }
    const std::string problem = CheckReport(report);
    if (!problem.empty()) {
        DaemonStats::Add(stats_.inconsistent);
        DaemonLog().LogWarn(Limit("Maintaind_InconsistentReport"))
            << "[Maintaind][Inconsistent report][kind=" << static_cast<unsigned>(report.kind)
            << ", sessionId=" << call.sessionId << ", reason=" << problem << "]";
        responder.Reply(ReturnCode{kProblem});
        return;
    }
    IngestItem item;
    item.work = std::move(report);
    item.sender = call.sender;
    item.done = [responder](const IngestResult& result) {
        switch (result.status) {
            case IngestResult::Status::kAccepted:
                responder.Reply(ReturnCode{kAccepted});
                break;
            case IngestResult::Status::kRefused:
                responder.Reply(ReturnCode{kProblem});
                break;
            case IngestResult::Status::kNotStored:
                break;  // no answer: the application sends it again
        }
    };
    if (!queue_.Push(std::move(item))) {
        DaemonStats::Add(stats_.unanswered);
        DaemonLog().LogWarn(Limit("Maintaind_QueueFull"))
            << "[Maintaind][Report queue full, request left unanswered][sessionId="
            << call.sessionId << ", pending=" << queue_.Pending() << "]";
    }
}

}  // namespace orx::maintaind::daemon
