#include "tools/latency_switcher.h"

#include <utility>

#include "daemon_log.h"
#include "tools/event_resolver.h"

namespace orx::maintaind::daemon {

namespace {

String BindingList(const LatencyIndex& index) {
    String text;
    for (DriverType binding : index.driverTypes) {
        text += (text.empty() ? "" : ",") + String(ToString(binding));
    }
    return text;
}

}  // namespace

LatencySwitcher::LatencySwitcher(const Registry& registry, Publisher publish, IngestQueue& queue,
                                 DaemonStats& stats)
    : registry_(registry), publish_(std::move(publish)), queue_(queue), stats_(stats) {}

void LatencySwitcher::Republish(const LatencySwitch& order) {
    if (!publish_ || !publish_(order)) {
        DaemonLog().LogWarn(Limit("Maintaind_SwitchNotPublished"))
            << "[Maintaind][Latency switch not published again][topicName="
            << order.latencyIndex.eventName << ", eventId=" << order.latencyIndex.eventId << "]";
        return;
    }
    DaemonStats::Add(stats_.latencySwitches);
    DaemonLog().LogInfo() << "Latency switch published again[mode=enable, serviceId="
                          << order.latencyIndex.serviceId
                          << ", instanceId=" << order.latencyIndex.instanceId
                          << ", topicName=" << order.latencyIndex.eventName
                          << ", eventId=" << order.latencyIndex.eventId
                          << ", bindings=" << BindingList(order.latencyIndex) << "]";
}

tools::LatencySwitchReply LatencySwitcher::Switch(const tools::LatencySwitchRequest& request) {
    tools::LatencySwitchReply reply;
    if (request.mode != LatencyMode::ENABLE && request.mode != LatencyMode::DISABLE) {
        reply.code = static_cast<uint8_t>(tools::ToolsCode::BAD_REQUEST);
        reply.message = "mode " + std::to_string(static_cast<unsigned>(request.mode)) +
                        " is neither ENABLE (0) nor DISABLE (1)";
        return reply;
    }
    ResolvedEvent resolved = registry_.Read([&](const RegistryState& state) {
        return ResolveEvent(state, request.event, request.filter);
    });
    reply.code = static_cast<uint8_t>(resolved.code);
    reply.message = resolved.message;
    reply.candidates = std::move(resolved.candidates);
    if (resolved.code != tools::ToolsCode::OK) {
        return reply;
    }
    reply.eventName = resolved.eventName;
    reply.latencyIndex = resolved.index;

    LatencySwitch order;
    order.mode = request.mode;
    order.latencyIndex = resolved.index;
    const char* mode = request.mode == LatencyMode::ENABLE ? "enable" : "disable";
    if (!publish_ || !publish_(order)) {
        reply.code = static_cast<uint8_t>(tools::ToolsCode::NOT_DELIVERED);
        reply.message = "the latency switch could not be published";
        DaemonLog().LogWarn(Limit("Maintaind_SwitchNotPublished"))
            << "[Maintaind][Latency switch not published][event=" << resolved.eventName
            << ", mode=" << mode << "]";
        return reply;
    }
    DaemonStats::Add(stats_.latencySwitches);
    DaemonLog().LogInfo() << "Latency switch published[event=" << resolved.eventName
                          << ", mode=" << mode << ", serviceId=" << resolved.index.serviceId
                          << ", instanceId=" << resolved.index.instanceId
                          << ", topicName=" << resolved.index.eventName
                          << ", eventId=" << resolved.index.eventId
                          << ", bindings=" << BindingList(resolved.index) << "]";

    IngestItem item;
    item.work = LatencyRequest{resolved.key, resolved.index, resolved.eventName, request.mode};
    if (!queue_.Push(std::move(item))) {
        DaemonLog().LogWarn(Limit("Maintaind_QueueFull"))
            << "[Maintaind][Report queue full, latency switch not recorded][event="
            << resolved.eventName << "]";
    }
    return reply;
}

}  // namespace orx::maintaind::daemon
