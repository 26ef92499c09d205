// The maintenance daemon in one process: how fast the registry takes reports, what 10 000
// entities cost in memory and on disk, how long loading them and listing them takes, and how long
// 20 clients x 500 reports through RegisterApp (in-process driver) take until all are visible.
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "app/maintaind.h"
#include "bench_reports.h"
#include "ingest/ingest_pipeline.h"
#include "orx/maintaind/service.h"
#include "orx/maintaind/tools/tools.h"
#include "orx/test/find_service.h"
#include "registry/registry.h"
#include "store/registry_store.h"
#include "tools/query_engine.h"
#include "vorx/serialize/cdr.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/proxy.h"

namespace {

using namespace orx::maintaind;
using namespace orx::maintaind::daemon;
using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) {
    return std::chrono::duration<double>(Clock::now() - since).count();
}

std::string TempPath(const std::string& name) {
    const char* base = std::getenv("TMPDIR");
    std::string dir = std::string(base != nullptr ? base : "/tmp") + "/maintaind-bench-XXXXXX";
    if (::mkdtemp(dir.data()) == nullptr) {
        std::perror("mkdtemp");
        std::exit(1);
    }
    return dir + "/" + name;
}

size_t FileBytes(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? static_cast<size_t>(info.st_size) : 0;
}

// Feeds `total` event reports from 20 applications through the pipeline in batches of `batch`.
double IngestRate(const std::string& dbPath, size_t total, size_t batch, Registry& registry) {
    StoreStatus status;
    auto store = RegistryStore::Open(dbPath, true, status);
    if (!store) {
        std::fprintf(stderr, "%s\n", status.message.c_str());
        std::exit(1);
    }
    DaemonStats stats;
    IngestPipeline pipeline(registry, store.get(), stats);
    std::vector<IngestItem> items;
    const auto start = Clock::now();
    for (size_t i = 0; i < total; ++i) {
        IngestItem item;
        item.work =
            bench::EventReportFor("app" + std::to_string(i % 20),
                                  static_cast<int32_t>(1000 + i % 20), static_cast<int>(i / 20));
        items.push_back(std::move(item));
        if (items.size() == batch || i + 1 == total) {
            pipeline.Process(items);
            items.clear();
        }
    }
    return static_cast<double>(total) / Seconds(start);
}

Registry MakeRegistry() {
    return Registry(RegistryUpdater(RegistryLimits{}, SystemWallClockMs, nullptr));
}

void InProcessEndToEnd() {
    const std::string dbPath = TempPath("e2e.db");
    DaemonSettings settings;
    settings.dbPath = dbPath;
    settings.fresh = true;
    settings.binding = vorx::vcc::api::types::DriverType::PROLOC;
    Maintaind daemon(settings);
    std::string error;
    if (!daemon.Start(error)) {
        std::fprintf(stderr, "daemon: %s\n", error.c_str());
        std::exit(1);
    }
    vorx::vcc::ServiceDescription desc;
    desc.serviceId = orx::maintaind::service::kAppServiceId;
    desc.instanceId = "1";
    desc.serviceName =
        vorx::vcc::orxmaintaind::type::OrxMaintaindType::GetInstance()->GetAppServicePath();
    desc.driverType = vorx::vcc::api::types::DriverType::PROLOC;
    const auto handle = orx::test::FindFirstOffer(desc, std::chrono::seconds(10));
    if (!handle) {
        std::fprintf(stderr, "daemon: its service was not found\n");
        std::exit(1);
    }

    constexpr int kClients = 20;
    constexpr int kReports = 500;
    const auto start = Clock::now();
    std::vector<std::thread> clients;
    for (int c = 0; c < kClients; ++c) {
        clients.emplace_back([&, c] {
            vorx::vcc::Proxy proxy(*handle);
            auto info = std::make_shared<vorx::vcc::api::types::MethodInfo>();
            info->SetEntityId(orx::maintaind::service::kRegisterAppMethodId);
            auto method = proxy.InitializeMethodProxy<ReturnCode>(info);
            for (int i = 0; i < kReports; ++i) {
                // One at a time, waiting for each answer, as the plug-in sends.
                auto future = method->Request(
                    bench::EventReportFor("client" + std::to_string(c), 5000 + c, i));
                future.wait_for(std::chrono::seconds(5));
            }
        });
    }
    size_t visible = 0;
    while (visible < static_cast<size_t>(kClients * kReports) && Seconds(start) < 60) {
        visible = daemon.GetRegistry().Read(
            [](const RegistryState& state) { return state.events.size(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    const double elapsed = Seconds(start);
    for (std::thread& client : clients) {
        client.join();
    }
    std::printf(
        "20 clients x 500 reports (in-process driver): %zu visible after %.2f s (%.0f "
        "reports/s)\n",
        visible, elapsed, static_cast<double>(visible) / elapsed);
}

}  // namespace

int main() {
    constexpr size_t kEntities = 10000;
    {
        Registry registry = MakeRegistry();
        const double rate = IngestRate(TempPath("batch1.db"), 2000, 1, registry);
        std::printf("ingest, one transaction per report: %.0f reports/s\n", rate);
    }
    const std::string dbPath = TempPath("registry.db");
    const size_t rssBefore = bench::ResidentBytes();
    {
        Registry registry = MakeRegistry();
        const double rate = IngestRate(dbPath, kEntities, 64, registry);
        const size_t rssAfter = bench::ResidentBytes();
        std::printf("ingest, batches of 64: %.0f reports/s\n", rate);
        std::printf(
            "10000 entities: resident memory +%.1f MiB, registry file %.1f MiB\n",
            static_cast<double>(rssAfter - rssBefore) / (1 << 20),
            static_cast<double>(FileBytes(dbPath) + FileBytes(dbPath + "-wal")) / (1 << 20));

        const QueryEngine engine;
        for (const bool withoutRecords : {false, true}) {
            tools::QueryFilter filter;
            filter.withoutRecords = withoutRecords;
            auto start = Clock::now();
            const tools::EventListReply reply = registry.Read(
                [&](const RegistryState& state) { return engine.Events(state, filter); });
            const double listed = Seconds(start);
            start = Clock::now();
            const std::vector<uint8_t> bytes = vorx::serialize::Encode(reply);
            std::printf(
                "QueryEventInfo over 10000 entities%s: list %.1f ms, encode %.1f ms, "
                "%.1f MiB\n",
                withoutRecords ? " without records" : "", listed * 1000, Seconds(start) * 1000,
                static_cast<double>(bytes.size()) / (1 << 20));
        }
    }
    {
        StoreStatus status;
        auto store = RegistryStore::Open(dbPath, false, status);
        RegistryState state;
        size_t skipped = 0;
        const auto start = Clock::now();
        store->Load(state, skipped);
        std::printf("restart: loading 10000 entities %.1f ms\n", Seconds(start) * 1000);
    }
    InProcessEndToEnd();
    return 0;
}
