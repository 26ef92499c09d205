// Latency reporting and sample-timeout notices of the plug-in, against the daemon double over
// the in-process driver. The double replies at once with code 0.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include "maintaind/maintaind_listener.h"
#include "orx/maintaind/app.h"
#include "orx/maintaind/service.h"
#include "orx/test/daemon_double.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "orxmaintaind/orx_maintaind_latency_client.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/proxy.h"

namespace {

using orx::orxcm::orxmaintaind::OrxMaintaindClient;
using orx::orxcm::orxmaintaind::OrxMaintaindLatencyClient;
using vorx::vcc::api::types::DriverType;

// The daemon double and the client bound to it, for the whole run.
orx::test::DaemonDouble& Daemon() {
    static orx::test::DaemonDouble daemon;
    return daemon;
}

// Starts the client once and waits until the daemon's method is bound. Aborts the run when the
// daemon is not found within 10 s.
void BindClient() {
    static const bool bound = []() {
        Daemon();
        const auto& client = OrxMaintaindClient::GetInstance();
        client->InitializeAll();
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < deadline) {
            const auto proxy = client->GetMaintaindProxy();
            if (proxy && proxy->GetMethodProxy<orx::maintaind::ReturnCode>(
                             orx::maintaind::service::kRegisterAppMethodId)) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return false;
    }();
    if (!bound) {
        std::abort();
    }
}

// One query period with `state.range(0)` enabled subscriber events, each reporting a result:
// the period sends them one after another and waits for each reply.
void BM_LatencyPeriod(benchmark::State& state) {
    BindClient();
    const auto latency = std::make_shared<OrxMaintaindLatencyClient>();
    const auto events = static_cast<uint16_t>(state.range(0));
    for (uint16_t i = 0; i < events; ++i) {
        auto info = std::make_shared<vorx::driver::dds::DDSEventInfo>();
        info->SetServiceId(100U);
        info->SetInstanceId("1");
        info->SetTopicName("BenchTopic" + std::to_string(i));
        latency->RegisterLatencyMode([](const auto&) {}, {{DriverType::DDS, info}}, false);
        latency->RegisterLatencyQuery(
            []() {
                return vorx::vcc::api::types::LatencyResult{120, 480, 250};
            },
            info, DriverType::DDS);
        orx::maintaind::LatencyIndex index;
        index.driverTypes = {orx::maintaind::DriverType::DDS};
        index.serviceId = 100U;
        index.instanceId = 1U;
        index.eventName = info->GetTopicName();
        orx::maintaind::LatencyModeAckInfo ack;
        latency->DDSLatencyModeReceive(orx::maintaind::LatencyMode::ENABLE, index, ack);
    }
    const size_t before = Daemon().ReceivedCount();
    for (auto _ : state) {
        latency->QueryLatencyResult();
    }
    state.counters["resultsPerPeriod"] = static_cast<double>(Daemon().ReceivedCount() - before) /
                                         static_cast<double>(state.iterations());
}
BENCHMARK(BM_LatencyPeriod)->Arg(100)->Unit(benchmark::kMillisecond)->UseRealTime();

// The part of one sample-timeout notice that runs on the core's thread: build the report, send
// it and attach the reply check.
void BM_OnSampleTimeout(benchmark::State& state) {
    BindClient();
    const auto listener = std::make_shared<orx::orxcm::maintaind::MaintaindListener>();
    vorx::vcc::api::types::ListenerTimeoutInfo info;
    info.serviceId = 100U;
    info.instanceId = "1";
    info.entityId = 7U;
    info.name = "/bench/RadarService/1/Objects";
    info.sampleTimeout = 10U;
    const size_t before = Daemon().ReceivedCount();
    for (auto _ : state) {
        ++info.sampleTimeoutCount;
        listener->OnSampleTimeout(info, DriverType::DDS);
    }
    // Every notice must reach the daemon; waiting here also keeps the backlog out of the next run.
    state.counters["delivered"] =
        Daemon().WaitForCount(before + static_cast<size_t>(state.iterations()),
                              std::chrono::seconds(30))
            ? 1.0
            : 0.0;
}
BENCHMARK(BM_OnSampleTimeout)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
