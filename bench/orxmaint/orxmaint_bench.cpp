// Wall time of `orxmaint --json events` over many entities: from starting the process to its
// exit, with DDS discovery, the query, decoding and printing. This process offers the tools
// service on DDS (loopback, its own domain) with canned entries, so only the tool is measured,
// plus the encoding of the reply here.
//
//   orxmaint_bench [--entities 10000] [--runs 15] [--domain 98] [--pause-ms 3500]
//                  [--full] [--serve-seconds N]
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>

#include "ara/kelda/common/log/log.h"
#include "event_entries.h"
#include "orx/maintaind/tools/tools.h"
#include "orx/test/child_process.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/codec.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/skeleton.h"

namespace {

namespace tools = orx::maintaind::tools;
using Clock = std::chrono::steady_clock;

std::string ExecutableDir() {
    char path[PATH_MAX] = {};
    const ssize_t size = ::readlink("/proc/self/exe", path, sizeof(path) - 1);
    const std::string exe(path, size > 0 ? static_cast<size_t>(size) : 0);
    return exe.substr(0, exe.rfind('/'));
}

// Runs `args` to its end (at most a minute) in the benchmark's own environment.
orx::test::RunResult Spawn(const std::vector<std::string>& args) {
    return orx::test::RunToEnd(args, {}, std::chrono::minutes(1));
}

double Millis(std::chrono::microseconds time) {
    return static_cast<double>(time.count()) / 1e3;
}

size_t CountObjects(const std::string& json) {
    // Each entry object starts with its first member, "appName".
    size_t count = 0;
    for (size_t at = json.find("{\"appName\""); at != std::string::npos;
         at = json.find("{\"appName\"", at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    size_t entities = 10000;
    int runs = 15;
    unsigned domain = 98;
    unsigned timeoutMs = 2000;
    unsigned pauseMs = 0;
    unsigned serveSeconds = 0;
    bool full = false;
    CLI::App app{"Wall time of `orxmaint --json events` over many entities"};
    app.add_option("--entities", entities, "Event entries in the answer");
    app.add_option("--runs", runs, "Timed runs")->check(CLI::Range(1, 1000));
    app.add_option("--domain", domain, "DDS domain (loopback)")->check(CLI::Range(0U, 232U));
    app.add_option("--timeout-ms", timeoutMs, "--timeout-ms of each orxmaint run");
    app.add_option("--pause-ms", pauseMs, "Pause before each timed run");
    app.add_option("--serve-seconds", serveSeconds,
                   "Only offer the service this long, for runs of orxmaint by hand");
    app.add_flag("--full", full,
                 "Run `orxmaint --json --full events`: the answer carries every entry's "
                 "registration record");
    CLI11_PARSE(app, argc, argv);

    // This process and the tool it starts: loopback DDS on the benchmark's domain, no orx.json.
    ::setenv("ORX_DDS_DOMAIN", std::to_string(domain).c_str(), 1);
    ::setenv("ORX_DDS_DRIVER", "dds", 1);
    ::setenv("ORX_CONFIG", "/nonexistent/orx.json", 1);
    ::unsetenv("CYCLONEDDS_URI");
    ara::kelda::common::log::Log::InitLog("ORXBENCH", "ORXBENCH",
                                          ara::kelda::common::log::LogLevel::kWarn);
    vorx::driver::dds::RegisterDdsDriver();
    const std::string dir = ExecutableDir();
    if (!vorx::vcc::DfxPluginLoader::Load(dir + "/../lib/liborxcm_dfx.so")) {
        std::cerr << "the DFX plug-in is missing next to this benchmark\n";
        return 1;
    }

    tools::EventListReply reply;
    reply.events = orx::orxmaint::bench::MakeEventEntries(entities);
    reply.total = static_cast<uint32_t>(entities);
    // What maintaind answers when the filter asks for entries without their records.
    tools::EventListReply leanReply = reply;
    for (tools::EventEntry& entry : leanReply.events) {
        entry.record = orx::maintaind::EventRegisterInfo{};
    }
    vorx::vcc::ServiceDescription desc;
    desc.serviceId = tools::kToolsServiceId;
    desc.instanceId = "1";
    desc.serviceName =
        vorx::vcc::orxmaintaind::type::OrxMaintaindType::GetInstance()->GetToolsServicePath();
    desc.driverType = vorx::vcc::api::types::DriverType::DDS;
    vorx::vcc::Skeleton service(desc);
    service.RegisterMethod<tools::EventListReply, tools::QueryFilter>(
        tools::kQueryEventInfoId,
        [&reply, &leanReply](const tools::QueryFilter& filter,
                             vorx::vcc::Responder<tools::EventListReply> r) {
            r.Reply(filter.withoutRecords ? leanReply : reply);
        });
    if (!service.OfferService()) {
        std::cerr << "the tools service could not be offered on DDS\n";
        return 1;
    }

    if (serveSeconds > 0) {
        std::printf("offering %zu event entries on DDS domain %u for %u s\n", entities, domain,
                    serveSeconds);
        std::fflush(stdout);
        std::this_thread::sleep_for(std::chrono::seconds(serveSeconds));
        return 0;
    }

    // The share of the answer's encoding and decoding, measured here once.
    {
        const tools::EventListReply& sent = full ? reply : leanReply;
        const Clock::time_point start = Clock::now();
        std::vector<uint8_t> bytes;
        vorx::vcc::codec::EncodeValue(sent, bytes);
        const Clock::time_point encoded = Clock::now();
        tools::EventListReply decoded;
        vorx::vcc::codec::DecodeValue(bytes.data(), bytes.size(), decoded);
        const Clock::time_point end = Clock::now();
        std::printf("answer: %zu bytes CDR; encode %.1f ms, decode %.1f ms (in this process)\n",
                    bytes.size(),
                    std::chrono::duration<double, std::milli>(encoded - start).count(),
                    std::chrono::duration<double, std::milli>(end - encoded).count());
    }

    std::vector<std::string> command = {dir + "/orxmaint",
                                        "--domain",
                                        std::to_string(domain),
                                        "--timeout-ms",
                                        std::to_string(timeoutMs),
                                        "--json",
                                        "events"};
    if (full) {
        command.insert(command.end() - 1, "--full");
    }
    // One run to warm caches and let this process's DDS side settle; not counted.
    const auto warm = Spawn(command);
    if (warm.exitCode != 0 || CountObjects(warm.out) != entities) {
        std::cerr << "orxmaint failed (exit " << warm.exitCode << ", " << CountObjects(warm.out)
                  << " entries):\n"
                  << warm.err;
        return 1;
    }
    std::vector<double> times;
    std::vector<double> cpuTimes;
    for (int i = 0; i < runs; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
        const auto run = Spawn(command);
        if (run.exitCode != 0) {
            std::cerr << "run " << i << " failed: " << run.err;
            return 1;
        }
        std::fprintf(stderr, "run %d: %.1f ms (cpu %.1f ms)\n", i, Millis(run.wall),
                     Millis(run.cpu));
        times.push_back(Millis(run.wall));
        cpuTimes.push_back(Millis(run.cpu));
    }
    std::sort(times.begin(), times.end());
    std::sort(cpuTimes.begin(), cpuTimes.end());
    std::printf(
        "orxmaint --json events, %zu entities%s, %d runs: wall min %.1f ms, median %.1f "
        "ms, max %.1f ms; orxmaint cpu median %.1f ms; output %zu bytes\n",
        entities, full ? " with --full" : "", runs, times.front(), times[times.size() / 2],
        times.back(), cpuTimes[cpuTimes.size() / 2], warm.out.size());

    // Where the time goes, from the tool's own debug lines.
    std::vector<std::string> verbose = command;
    verbose.insert(verbose.begin() + 1, "--verbose");
    const auto detail = Spawn(verbose);
    std::printf("one run with --verbose: %.1f ms\n", Millis(detail.wall));
    size_t begin = 0;
    while (begin < detail.err.size()) {
        const size_t end = detail.err.find('\n', begin);
        const std::string line = detail.err.substr(begin, end - begin);
        if (line.find("[orxmaint]") != std::string::npos) {
            std::printf("  %s\n", line.c_str());
        }
        begin = end == std::string::npos ? detail.err.size() : end + 1;
    }
    std::printf(
        "RESULT {\"entities\":%zu,\"full\":%s,\"runs\":%d,\"wallMedianMs\":%.1f,"
        "\"wallMaxMs\":%.1f,\"cpuMedianMs\":%.1f,\"outputBytes\":%zu}\n",
        entities, full ? "true" : "false", runs, times[times.size() / 2], times.back(),
        cpuTimes[cpuTimes.size() / 2], warm.out.size());
    return 0;
}
