// The DFX plug-in end to end, loaded the way the core loads it:
//
//  1. start-up cost: DfxPluginLoader::Load (dlopen, static initialisers, registration) and the
//     core's InitializeAll, each measured in a fresh child process, several times;
//  2. replay throughput: 2,000 event reports made before the daemon exists are cached; the time
//     from offering the daemon (double replying at once) to the last report it received;
//  3. with --dds DOMAIN, the same replay between two processes over the DDS driver on loopback:
//     the application (a child process) caches its reports, then this process offers the daemon
//     double on DDS and times offer to last report, including discovery of the offer.
//
// Usage: bench_plugin_replay [runs=15] [reports=2000] [--dds DOMAIN]
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "orx/test/daemon_double.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/event_controller.h"
#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace {

using Clock = std::chrono::steady_clock;
using vorx::vcc::api::types::DriverType;

double MicrosSince(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

void UseConfig(const std::string& path) {
    std::ofstream(path) << R"({"application": {"name": "BenchApp"}})";
    setenv("ORX_CONFIG", path.c_str(), 1);
    vorx::vcc::ApplicationName::Configure("BenchApp");  // as a process's start-up does
}

// Runs `body(fd)` in a child process and returns what it wrote to `fd`.
template <typename Body>
std::string InChild(Body body) {
    int fds[2];
    if (pipe(fds) != 0) {
        return {};
    }
    const pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        const std::string out = body();
        const ssize_t written = write(fds[1], out.data(), out.size());
        _exit(written == static_cast<ssize_t>(out.size()) ? 0 : 1);
    }
    close(fds[1]);
    std::string out;
    char buffer[512];
    ssize_t got = 0;
    while ((got = read(fds[0], buffer, sizeof buffer)) > 0) {
        out.append(buffer, static_cast<size_t>(got));
    }
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return out;
}

std::shared_ptr<vorx::vcc::OrxMaintaindInterface> LoadPlugin() {
    if (!vorx::vcc::DfxPluginLoader::Load(ORXCM_DFX_PATH)) {
        return nullptr;
    }
    return vorx::vcc::RegisterDfxInterface::GetOrxMaintaindInterface();
}

// "<load µs> <InitializeAll µs>"
std::string MeasureStartUp() {
    const auto loadStart = Clock::now();
    const auto core = LoadPlugin();
    const double load = MicrosSince(loadStart);
    if (!core) {
        return "fail";
    }
    const auto initStart = Clock::now();
    core->InitializeAll();
    const double init = MicrosSince(initStart);
    char line[64];
    std::snprintf(line, sizeof line, "%.1f %.1f", load, init);
    return line;
}

// Waits until every job scheduled on the core's controller before this call has run.
void DrainEventController() {
    auto done = std::make_shared<std::promise<void>>();
    auto future = done->get_future();
    const auto controller = vorx::vcc::EventController::GetInstance();
    controller->InsertEvent(controller->NewEvent(
        vorx::vcc::EventScheduleMode::kOneShot, [done] { done->set_value(); },
        vorx::vcc::GetCurMonoTime(), -1));
    future.wait();
}

// Loads the plug-in, starts it and makes `reports` event reports; they wait in its cache while no
// daemon is offered.
std::shared_ptr<vorx::vcc::OrxMaintaindInterface> CacheReports(uint32_t reports) {
    const auto core = LoadPlugin();
    if (!core) {
        return nullptr;
    }
    core->InitializeAll();
    for (uint32_t entity = 1; entity <= reports; ++entity) {
        auto info = std::make_shared<vorx::driver::dds::DDSEventInfo>();
        info->SetServiceId(0x10);
        info->SetInstanceId("1");
        info->SetEntityId(entity);
        info->SetEventName("Event" + std::to_string(entity));
        info->SetTopicName("Topic" + std::to_string(entity));
        core->RegisterEventInfoToMaintaind({{DriverType::DDS, info}}, true);
    }
    DrainEventController();  // every report is in the cache now
    return core;
}

// "<reports> <ms from offer to last report>"
std::string MeasureReplay(uint32_t reports) {
    orx::test::DaemonDouble::Options options;
    options.offerAtStart = false;
    auto* daemon = new orx::test::DaemonDouble(options);  // ends with the child
    if (!CacheReports(reports)) {
        return "fail";
    }

    const auto start = Clock::now();
    daemon->Offer();
    const bool all = daemon->WaitForCount(reports, std::chrono::minutes(5));
    const double ms = MicrosSince(start) / 1000.0;
    if (!all) {
        return "fail";
    }
    char line[64];
    std::snprintf(line, sizeof line, "%u %.1f", reports, ms);
    return line;
}

// The replay between two processes over DDS. The application runs in a child forked before this
// process starts DDS; it caches its reports, says so on a pipe and waits for the end of its pipe
// to close. Returns "<reports> <ms>" or "fail".
std::string MeasureReplayOverDds(uint32_t reports, const std::string& domain) {
    setenv("ORX_DDS_DRIVER", "dds", 1);
    setenv("ORX_DDS_DOMAIN", domain.c_str(), 1);
    int ready[2];
    int stop[2];
    if (pipe(ready) != 0 || pipe(stop) != 0) {
        return "fail";
    }
    const pid_t app = fork();
    if (app == 0) {
        close(ready[0]);
        close(stop[1]);
        vorx::driver::dds::RegisterDdsDriver();
        const bool cached = CacheReports(reports) != nullptr;
        const char answer = cached ? 'y' : 'n';
        if (write(ready[1], &answer, 1) != 1) {
            _exit(1);
        }
        char ignored = 0;
        while (read(stop[0], &ignored, 1) > 0) {
        }
        _exit(0);
    }
    close(ready[1]);
    close(stop[0]);
    vorx::driver::dds::RegisterDdsDriver();
    orx::test::DaemonDouble::Options options;
    options.offerAtStart = false;
    auto* daemon = new orx::test::DaemonDouble(options);  // DDS lives until this process ends
    char answer = 'n';
    const bool cached = read(ready[0], &answer, 1) == 1 && answer == 'y';
    std::string out = "fail";
    if (cached) {
        // Let the two participants find each other first: the figure is about the service
        // appearing, not about DDS participant discovery at process start.
        usleep(500 * 1000);
        const auto start = Clock::now();
        daemon->Offer();
        if (daemon->WaitForCount(reports, std::chrono::minutes(5))) {
            char line[64];
            std::snprintf(line, sizeof line, "%u %.1f", reports, MicrosSince(start) / 1000.0);
            out = line;
        }
    }
    close(stop[1]);
    close(ready[0]);
    int status = 0;
    waitpid(app, &status, 0);
    return out;
}

double Percentile(std::vector<double> values, double p) {
    std::sort(values.begin(), values.end());
    const size_t index = static_cast<size_t>(p * static_cast<double>(values.size() - 1) + 0.5);
    return values[index];
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    std::string ddsDomain;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--dds" && i + 1 < args.size()) {
            ddsDomain = args[i + 1];
            args.erase(args.begin() + static_cast<long>(i),
                       args.begin() + static_cast<long>(i) + 2);
            break;
        }
    }
    const int runs = !args.empty() ? std::max(1, std::atoi(args[0].c_str())) : 15;
    const uint32_t reports =
        args.size() > 1 ? static_cast<uint32_t>(std::max(1, std::atoi(args[1].c_str()))) : 2000U;
    const std::string config = "/tmp/bench_plugin_" + std::to_string(getpid()) + ".json";
    UseConfig(config);

    std::vector<double> loads;
    std::vector<double> inits;
    for (int run = 0; run < runs; ++run) {
        double load = 0.0;
        double init = 0.0;
        if (std::sscanf(InChild(MeasureStartUp).c_str(), "%lf %lf", &load, &init) == 2) {
            loads.push_back(load);
            inits.push_back(init);
        }
    }
    if (loads.empty()) {
        std::fprintf(stderr, "start-up measurement failed\n");
        return 1;
    }
    std::printf(
        "load (dlopen + registration): median %.0f us, min %.0f us, max %.0f us (%zu runs)\n",
        Percentile(loads, 0.5), Percentile(loads, 0.0), Percentile(loads, 1.0), loads.size());
    std::printf("InitializeAll:                median %.0f us, min %.0f us, max %.0f us\n",
                Percentile(inits, 0.5), Percentile(inits, 0.0), Percentile(inits, 1.0));

    unsigned count = 0;
    double ms = 0.0;
    if (std::sscanf(InChild([reports] { return MeasureReplay(reports); }).c_str(), "%u %lf", &count,
                    &ms) != 2) {
        std::fprintf(stderr, "replay measurement failed\n");
        return 1;
    }
    std::printf("replay of %u cached reports: %.1f ms from offer to last report, %.0f reports/s\n",
                count, ms, count / (ms / 1000.0));
    if (!ddsDomain.empty()) {
        // Last: this starts DDS in this process, and children must be forked before that.
        if (std::sscanf(MeasureReplayOverDds(reports, ddsDomain).c_str(), "%u %lf", &count, &ms) !=
            2) {
            std::fprintf(stderr, "replay over DDS failed\n");
            unlink(config.c_str());
            return 1;
        }
        std::printf(
            "replay over DDS (domain %s): %.1f ms from offer to last of %u reports, %.0f "
            "reports/s\n",
            ddsDomain.c_str(), ms, count, count / (ms / 1000.0));
    }
    unlink(config.c_str());
    return 0;
}
