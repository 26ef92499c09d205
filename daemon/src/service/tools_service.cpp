#include "service/tools_service.h"

#include <utility>

#include "daemon_log.h"
#include "orx/maintaind/tools/check.h"
#include "orx/maintaind/tools/method_ids.h"
#include "orx/maintaind/tools/timeline.h"

namespace orx::maintaind::daemon {

namespace {

template <class Reply>
Reply Failed(tools::ToolsCode code, std::string message) {
    Reply reply{};
    reply.code = static_cast<uint8_t>(code);
    reply.message = std::move(message);
    return reply;
}

}  // namespace

ToolsService::ToolsService(MethodServer& server, const Registry& registry,
                           LatencySwitcher& switcher, const IngestQueue& queue, DaemonStats& stats,
                           DaemonInfo info, RequestLimits limits, QueryEngine engine,
                           size_t backlog)
    : server_(server),
      registry_(registry),
      switcher_(switcher),
      queue_(queue),
      stats_(stats),
      info_(std::move(info)),
      limits_(limits),
      engine_(engine),
      worker_(backlog) {
    using tools::QueryFilter;
    AddQuery(tools::kQueryAllDataTypeId, "QueryAllDataType", &QueryEngine::All);
    AddQuery(tools::kQueryDataTypeListId, "QueryDataTypeList", &QueryEngine::DataTypes);
    AddQuery(tools::kQueryDataTypeId, "QueryDataType", &QueryEngine::DataType);
    Add<QueryFilter, tools::EventListReply>(
        tools::kQueryEventInfoId, "QueryEventInfo", [this](const QueryFilter& filter) {
            return registry_.Read(
                [&](const RegistryState& state) { return engine_.Events(state, filter); });
        });
    AddQuery(tools::kQueryEventShowId, "QueryEventShow", &QueryEngine::EventShow);
    AddQuery(tools::kQueryMethodTypeId, "QueryMethodType", &QueryEngine::MethodTypes);
    AddQuery(tools::kQueryMethodInfoId, "QueryMethodInfo", &QueryEngine::Methods);
    AddQuery(tools::kQueryNodeInfoId, "QueryNodeInfo", &QueryEngine::Nodes);
    Add<QueryFilter, tools::EventListReply>(
        tools::kQuerySubEventInfoId, "QuerySubEventInfo", [this](const QueryFilter& filter) {
            return registry_.Read(
                [&](const RegistryState& state) { return engine_.Events(state, filter, true); });
        });
    AddQuery(tools::kQueryLatencyResultId, "QueryLatencyResult", &QueryEngine::LatencyResults);
    AddQuery(tools::kQueryLatencyStatusId, "QueryLatencyStatus", &QueryEngine::LatencyStatuses);
    Add<tools::LatencySwitchRequest, tools::LatencySwitchReply>(
        tools::kSwitchLatencyModeId, "SwitchLatencyMode",
        [this](const tools::LatencySwitchRequest& request) { return switcher_.Switch(request); });
    AddQuery(tools::kQueryFieldInfoId, "QueryFieldInfo", &QueryEngine::Fields);
    AddQuery(tools::kQueryE2EInfoId, "QueryE2EInfo", &QueryEngine::E2EConfigs);
    AddQuery(tools::kQuerySampleTimeoutId, "QuerySampleTimeout", &QueryEngine::SampleTimeouts);
    Add<QueryFilter, tools::DaemonStatusReply>(tools::kQueryDaemonStatusId, "QueryDaemonStatus",
                                               [this](const QueryFilter&) { return Status(); });
    Add<tools::CheckRequest, tools::CheckReply>(
        tools::kCheckContractsId, "CheckContracts", [this](const tools::CheckRequest& request) {
            return registry_.Read(
                [&](const RegistryState& state) { return checker_.Check(state, request); });
        });
}

void ToolsService::ServeTimeline(Timeline& timeline, uint32_t entryCap) {
    timeline_ = &timeline;
    Add<tools::TimelineRequest, tools::TimelineReply>(
        tools::kQueryTimelineId, "QueryTimeline",
        [&timeline, entryCap](const tools::TimelineRequest& request) {
            return timeline.Query(request, entryCap);
        });
    timeline.SetListener([this](const tools::TimelineEntry& entry) {
        if (!server_.Publish(tools::kTimelineEventId, entry)) {
            DaemonLog().LogWarn(Limit("Maintaind_TimelinePublishFailed"))
                << "[Maintaind][Timeline entry not published][id=" << entry.id << "]";
        }
    });
}

void ToolsService::Start() {
    worker_.Start();
}

void ToolsService::Stop() {
    if (timeline_ != nullptr) {
        timeline_->SetListener(nullptr);
    }
    worker_.Stop();
}

template <class Request, class Reply>
void ToolsService::AddQuery(uint32_t entityId, const char* name,
                            Reply (QueryEngine::*query)(const RegistryState&, const Request&)
                                const) {
    Add<Request, Reply>(entityId, name, [this, query](const Request& request) {
        return registry_.Read(
            [&](const RegistryState& state) { return (engine_.*query)(state, request); });
    });
}

template <class Request, class Reply>
void ToolsService::Add(uint32_t entityId, const char* name,
                       std::function<Reply(const Request&)> answer) {
    server_.Register(entityId, [this, name, answer = std::move(answer)](
                                   const vorx::vcc::MethodCall& call,
                                   const std::shared_ptr<vorx::vcc::ReplyChannel>& channel) {
        DaemonStats::Add(stats_.toolsRequests);
        const vorx::vcc::Responder<Reply> responder(channel);
        Request request;
        const std::string unreadable = ReadRequest(call.payload, limits_, request);
        if (!unreadable.empty()) {
            DaemonStats::Add(stats_.toolsBadRequests);
            DaemonLog().LogWarn(Limit("Maintaind_UndecodableToolsRequest"))
                << "[Maintaind][Tools request cannot be decoded][method=" << name
                << ", sessionId=" << call.sessionId << ", reason=" << unreadable << "]";
            responder.Reply(Failed<Reply>(tools::ToolsCode::BAD_REQUEST,
                                          "request cannot be decoded: " + unreadable));
            return;
        }
        const bool posted = worker_.Post([this, responder, answer, request = std::move(request)] {
            Reply reply = answer(request);
            if (reply.code == static_cast<uint8_t>(tools::ToolsCode::BAD_REQUEST)) {
                DaemonStats::Add(stats_.toolsBadRequests);
            }
            if (!responder.Reply(reply)) {
                DaemonLog().LogWarn(Limit("Maintaind_ToolsReplyFailed"))
                    << "[Maintaind][Tools reply could not be sent][sessionId="
                    << responder.GetSessionId() << "]";
            }
        });
        if (!posted) {
            responder.Reply(
                Failed<Reply>(tools::ToolsCode::INTERNAL_ERROR, "the daemon is busy, try again"));
        }
    });
}

tools::DaemonStatusReply ToolsService::Status() const {
    tools::DaemonStatusReply reply;
    reply.version = info_.version;
    reply.dbPath = info_.dbPath;
    reply.host = info_.host;
    reply.startedAt = info_.startedAt;
    registry_.Read([&](const RegistryState& state) {
        reply.nodeCount = static_cast<uint32_t>(state.nodes.size());
        for (const auto& [key, node] : state.nodes) {
            reply.onlineNodeCount += node.entry.online ? 1U : 0U;
        }
        reply.eventCount = static_cast<uint32_t>(state.events.size());
        reply.methodCount = static_cast<uint32_t>(state.methods.size());
        reply.fieldCount = static_cast<uint32_t>(state.fields.size());
        return 0;
    });
    reply.pendingReports = static_cast<uint32_t>(queue_.Pending());
    reply.counters = stats_.Snapshot();
    return reply;
}

}  // namespace orx::maintaind::daemon
