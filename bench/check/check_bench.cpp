// `orxmaint check` over a large system: 20 processes with 500 events and methods each, half of
// them offering, half using, some consumers deployed with another E2E data id. Measures the
// daemon's check alone (in this process) and the whole `orxmaint --json check` from starting the
// tool to its exit, against a tools service offered here on DDS (loopback, its own domain) that
// runs the same check for every request. Ends with one line `RESULT {json}`.
//
//   check_bench [--processes 20] [--per-process 500] [--runs 15] [--domain 97]
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "ara/kelda/common/log/log.h"
#include "check/check_engine.h"
#include "orx/maintaind/tools/tools.h"
#include "orx/test/child_process.h"
#include "registry/registry_state.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/skeleton.h"

namespace {

namespace md = orx::maintaind;
namespace tools = md::tools;
using Clock = std::chrono::steady_clock;

constexpr size_t kEntitiesPerService = 50;
constexpr size_t kMismatchEvery = 100;  // every 100th consumer event has another E2E data id

std::string ExecutableDir() {
    char path[PATH_MAX] = {};
    const ssize_t size = ::readlink("/proc/self/exe", path, sizeof(path) - 1);
    const std::string exe(path, size > 0 ? static_cast<size_t>(size) : 0);
    return exe.substr(0, exe.rfind('/'));
}

md::E2EConfigInfo Protected(uint32_t dataId) {
    md::E2EConfigInfo e2e;
    e2e.isE2EEnabled = true;
    e2e.profile = md::E2EProfile::PROFILE_04;
    e2e.dataIdList = {dataId};
    e2e.dataLength = 256;
    e2e.counterOffset = 64;
    return e2e;
}

// Entity `k` of the provider `pair` (isPub) or of its consumer, as its application registers it.
template <class Entry>
Entry Common(size_t pair, size_t k, bool isPub) {
    Entry entry;
    const size_t app = isPub ? pair : pair + 1000;
    entry.appName = "app" + std::to_string(app);
    entry.pid = static_cast<int32_t>(10000 + app);
    entry.serviceId = static_cast<uint16_t>(0x2000 + pair * 16 + k / kEntitiesPerService);
    entry.instanceId = 1;
    entry.serviceName = "/bench/Service" + std::to_string(entry.serviceId);
    entry.instanceName = "Bench/Instance1";
    entry.isPub = isPub;
    entry.online = true;
    entry.bindings = {"DDS", "SOMEIP"};
    return entry;
}

tools::EventEntry Event(size_t pair, size_t k, bool isPub) {
    auto entry = Common<tools::EventEntry>(pair, k, isPub);
    entry.eventName = "Event" + std::to_string(k);
    entry.topicName = "Topic" + std::to_string(pair) + "_" + std::to_string(k);
    entry.eventId = static_cast<uint16_t>(0x8000 + k);
    entry.dataTypeName = "/bench/Data" + std::to_string(k % 7);
    md::EventRegisterInfo& record = entry.record;
    record.serviceName = entry.serviceName;
    record.instanceName = entry.instanceName;
    record.eventName = entry.eventName;
    record.dataTypeName = entry.dataTypeName;
    record.serializeConfig.serializeType = 1;
    record.appName = entry.appName;
    record.pid = entry.pid;
    record.isOnline = true;
    const bool wrong = !isPub && k % kMismatchEvery == 0;
    md::DDSEventInfo& dds = record.eventInfos[md::DriverType::DDS].ddsEventInfo;
    dds.serviceId = entry.serviceId;
    dds.instanceId = entry.instanceId;
    dds.topicName = entry.topicName;
    dds.dataTypeName = entry.dataTypeName;
    dds.historyDepth = 8;
    dds.queueSize = 8;
    dds.reliability = md::ReliabilityKind::RELIABLE;
    dds.transportQos = {md::TransportQos::UDP};
    dds.e2eConfig = Protected(wrong ? 0xBAD : static_cast<uint32_t>(k));
    md::SomeipEventInfo& someip = record.eventInfos[md::DriverType::SOMEIP].someipEventInfo;
    someip.serviceId = entry.serviceId;
    someip.instanceId = entry.instanceId;
    someip.eventId = entry.eventId;
    someip.majorVersion = 1;
    someip.minorVersion = 2;
    someip.eventGroupIds = {1};
    someip.serializeTag = {1, 0, 4};
    someip.e2eConfig = Protected(static_cast<uint32_t>(k));
    return entry;
}

tools::MethodEntry Method(size_t pair, size_t k, bool isPub) {
    auto entry = Common<tools::MethodEntry>(pair, k, isPub);
    entry.methodName = "Method" + std::to_string(k);
    entry.requestTopicName = "Req" + std::to_string(pair) + "_" + std::to_string(k);
    entry.replyTopicName = "Rep" + std::to_string(pair) + "_" + std::to_string(k);
    entry.methodId = static_cast<uint16_t>(k);
    md::MethodRegisterInfo& record = entry.record;
    record.serviceName = entry.serviceName;
    record.methodName = entry.methodName;
    record.serviceId = entry.serviceId;
    record.instanceId = entry.instanceId;
    record.appName = entry.appName;
    record.pid = entry.pid;
    record.isOnline = true;
    md::DDSMethodInfo& dds = record.methodInfos[md::DriverType::DDS].ddsMethodInfo;
    dds.requestTopicName = entry.requestTopicName;
    dds.replyTopicName = entry.replyTopicName;
    dds.requestDataTypeName = "/bench/In";
    dds.replyDataTypeName = "/bench/Out";
    dds.reliability = md::ReliabilityKind::RELIABLE;
    md::SomeipMethodInfo& someip = record.methodInfos[md::DriverType::SOMEIP].someipMethodInfo;
    someip.methodId = entry.methodId;
    someip.majorVersion = 1;
    someip.requestSerializeTag = {1, 0, 4};
    return entry;
}

template <class Entry>
void Put(std::map<md::daemon::EntityKey, Entry>& map, Entry entry, const std::string& name) {
    md::daemon::EntityKey key{
        entry.appName, entry.pid,          "bench",         entry.serviceName, name,
        entry.isPub,   entry.instanceName, entry.serviceId, entry.instanceId};
    map.emplace(std::move(key), std::move(entry));
}

// `processes` applications of `perProcess` entities each: the first half offer, the second half
// use what the first half offers (four events to one method).
md::daemon::RegistryState MakeState(size_t processes, size_t perProcess) {
    md::daemon::RegistryState state;
    for (size_t p = 0; p < processes; ++p) {
        const size_t pair = p % (processes / 2);
        const bool isPub = p < processes / 2;
        for (size_t k = 0; k < perProcess; ++k) {
            if (k % 5 == 4) {
                auto entry = Method(pair, k, isPub);
                Put(state.methods, entry, entry.methodName);
            } else {
                auto entry = Event(pair, k, isPub);
                Put(state.events, entry, entry.eventName);
            }
        }
        md::daemon::NodeState node;
        node.entry.appName = "app" + std::to_string(isPub ? pair : pair + 1000);
        node.entry.pid = static_cast<int32_t>(10000 + (isPub ? pair : pair + 1000));
        node.entry.host = "bench";
        node.entry.online = true;
        state.nodes.emplace(
            md::daemon::NodeKey{node.entry.appName, node.entry.pid, node.entry.host}, node);
    }
    return state;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double Ms(Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
}

}  // namespace

int main(int argc, char** argv) {
    size_t processes = 20;
    size_t perProcess = 500;
    int runs = 15;
    unsigned domain = 97;
    CLI::App app{"Wall time of `orxmaint --json check` over many entities"};
    app.add_option("--processes", processes, "Applications (half offer, half use)")
        ->check(CLI::Range(2, 1000));
    app.add_option("--per-process", perProcess, "Entities per application")
        ->check(CLI::Range(1, 3000));
    app.add_option("--runs", runs, "Timed runs")->check(CLI::Range(1, 1000));
    app.add_option("--domain", domain, "DDS domain (loopback)")->check(CLI::Range(0U, 232U));
    CLI11_PARSE(app, argc, argv);

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

    const md::daemon::RegistryState state = MakeState(processes, perProcess);
    const md::daemon::check::CheckEngine engine;
    std::vector<double> engineTimes;
    tools::CheckReply reference;
    for (int i = 0; i < runs; ++i) {
        const Clock::time_point start = Clock::now();
        reference = engine.Check(state, {});
        engineTimes.push_back(Ms(Clock::now() - start));
    }
    std::printf("check in process: %u entities, %u pairs, %u findings; median %.1f ms\n",
                reference.entities, reference.pairs, reference.total, Median(engineTimes));

    vorx::vcc::ServiceDescription desc;
    desc.serviceId = tools::kToolsServiceId;
    desc.instanceId = "1";
    desc.serviceName =
        vorx::vcc::orxmaintaind::type::OrxMaintaindType::GetInstance()->GetToolsServicePath();
    desc.driverType = vorx::vcc::api::types::DriverType::DDS;
    vorx::vcc::Skeleton service(desc);
    service.RegisterMethod<tools::CheckReply, tools::CheckRequest>(
        tools::kCheckContractsId,
        [&](const tools::CheckRequest& request, vorx::vcc::Responder<tools::CheckReply> r) {
            r.Reply(engine.Check(state, request));
        });
    if (!service.OfferService()) {
        std::cerr << "the tools service could not be offered on DDS\n";
        return 1;
    }

    const std::vector<std::string> command = {dir + "/orxmaint", "--domain", std::to_string(domain),
                                              "--json", "check"};
    const auto countFindings = [](const std::string& out) {
        size_t count = 0;
        for (size_t at = out.find("{\"severity\""); at != std::string::npos;
             at = out.find("{\"severity\"", at + 1)) {
            ++count;
        }
        return count;
    };
    // One run to warm caches and let this process's DDS side settle; not counted. The system
    // holds errors, so the tool exits 1.
    const auto warm = orx::test::RunToEnd(command, {}, std::chrono::minutes(1));
    if (warm.exitCode != 1 || countFindings(warm.out) != reference.findings.size()) {
        std::cerr << "orxmaint check failed (exit " << warm.exitCode << ", "
                  << countFindings(warm.out) << " findings):\n"
                  << warm.err;
        return 1;
    }
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        const auto run = orx::test::RunToEnd(command, {}, std::chrono::minutes(1));
        if (run.exitCode != 1) {
            std::cerr << "run " << i << " failed: " << run.err;
            return 1;
        }
        times.push_back(static_cast<double>(run.wall.count()) / 1e3);
    }
    const double median = Median(times);
    std::printf(
        "orxmaint --json check, %zu entities, %d runs: wall min %.1f ms, median %.1f ms, "
        "max %.1f ms\n",
        processes * perProcess, runs, *std::min_element(times.begin(), times.end()), median,
        *std::max_element(times.begin(), times.end()));
    std::printf(
        "RESULT {\"bench\":\"orxmaint_check\",\"entities\":%zu,\"processes\":%zu,\"pairs\":%u,"
        "\"findings\":%u,\"engineMedianMs\":%.2f,\"orxmaintCheckMedianMs\":%.1f,"
        "\"targetMs\":300,\"pass\":%s}\n",
        processes * perProcess, processes, reference.pairs, reference.total, Median(engineTimes),
        median, median < 300.0 ? "true" : "false");
    return median < 300.0 ? 0 : 1;
}
