// maintaind as a process over DDS on loopback: 20 client processes register 500 events each at
// once, the way the plug-in does (one request at a time, each waiting for its answer); how long
// until all 10 000 are visible, what the daemon's memory then is, and how long
// `orxmaint --json events` takes over them.
//
//   maintaind_load_bench [domain]     (default DDS domain 181)
//
// The clients are this program run again as "maintaind_load_bench client <index> <domain>".
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "bench_reports.h"
#include "orx/maintaind/service.h"
#include "orx/maintaind/tools/tools.h"
#include "orx/test/find_service.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/proxy.h"

namespace {

using namespace orx::maintaind;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr int kClients = 20;
constexpr int kReportsPerClient = 500;

void PrepareDds(const std::string& domain) {
    ::setenv("ORX_DDS_DOMAIN", domain.c_str(), 1);
    ::setenv("ORX_DDS_DRIVER", "dds", 1);
    vorx::driver::dds::RegisterDdsDriver();
    vorx::vcc::DfxPluginLoader::Load(MAINTAIND_BENCH_PLUGIN_PATH);
}

std::unique_ptr<vorx::vcc::Proxy> Connect(uint16_t serviceId) {
    const auto handle = orx::test::FindFirstOffer(
        orx::test::MaintaindService(serviceId, vorx::vcc::api::types::DriverType::DDS), 20s);
    return handle ? std::make_unique<vorx::vcc::Proxy>(*handle) : nullptr;
}

std::shared_ptr<vorx::vcc::api::types::MethodInfo> Method(uint32_t entityId) {
    auto info = std::make_shared<vorx::vcc::api::types::MethodInfo>();
    info->SetEntityId(entityId);
    return info;
}

int RunClient(int index, const std::string& domain) {
    PrepareDds(domain);
    auto proxy = Connect(orx::maintaind::service::kAppServiceId);
    if (!proxy) {
        std::fprintf(stderr, "client %d: maintaind not found\n", index);
        return 1;
    }
    auto method = proxy->InitializeMethodProxy<ReturnCode>(
        Method(orx::maintaind::service::kRegisterAppMethodId));
    const std::string app = "loadapp" + std::to_string(index);
    for (int i = 0; i < kReportsPerClient; ++i) {
        const AppRegisterInfo report = bench::EventReportFor(app, ::getpid(), i);
        // Sent again after 300 ms without an answer, as the plug-in's replay would.
        for (;;) {
            auto future = method->Request(report);
            if (future.wait_for(300ms) == ara::core::future_status::ready &&
                future.GetResult().HasValue()) {
                break;
            }
        }
    }
    return 0;
}

size_t ResidentKiB(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::strtoul(line.c_str() + 6, nullptr, 10);
        }
    }
    return 0;
}

// User plus system CPU seconds that process `pid` used so far.
double CpuSeconds(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    const auto close = text.rfind(')');
    if (close == std::string::npos) {
        return 0;
    }
    std::istringstream fields(text.substr(close + 2));
    std::string field;
    unsigned long long user = 0;
    unsigned long long system = 0;
    for (int index = 3; fields >> field; ++index) {
        if (index == 14) {
            user = std::stoull(field);
        } else if (index == 15) {
            system = std::stoull(field);
            break;
        }
    }
    return static_cast<double>(user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

pid_t Spawn(const std::vector<std::string>& argv) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        std::vector<char*> args;
        for (const std::string& arg : argv) {
            args.push_back(const_cast<char*>(arg.c_str()));
        }
        args.push_back(nullptr);
        ::execv(args[0], args.data());
        ::_exit(127);
    }
    return pid;
}

double TimeCommand(const std::string& command) {
    const auto start = Clock::now();
    const int rc = std::system(command.c_str());
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return rc == 0 ? seconds : -1.0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 4 && std::string(argv[1]) == "client") {
        return RunClient(std::atoi(argv[2]), argv[3]);
    }
    const std::string domain = argc >= 2 ? argv[1] : "181";
    char dir[] = "/tmp/maintaind-load-XXXXXX";
    if (::mkdtemp(dir) == nullptr) {
        return 1;
    }
    ::setenv("ORX_DDS_DOMAIN", domain.c_str(), 1);
    ::setenv("ORX_LOG_LEVEL", "warning", 1);
    const pid_t daemon =
        Spawn({MAINTAIND_BENCH_DAEMON_PATH, "--db", std::string(dir) + "/registry.db", "--fresh",
               "--log-level", "warning"});
    PrepareDds(domain);  // after the fork: the children never inherit DDS threads
    auto tools = Connect(tools::kToolsServiceId);
    if (!tools) {
        std::fprintf(stderr, "maintaind not found\n");
        ::kill(daemon, SIGKILL);
        return 1;
    }
    auto status =
        tools->InitializeMethodProxy<tools::DaemonStatusReply>(Method(tools::kQueryDaemonStatusId));
    const size_t idleKiB = ResidentKiB(daemon);

    char self[PATH_MAX] = {};
    const ssize_t length = ::readlink("/proc/self/exe", self, sizeof(self) - 1);
    const std::string selfPath(self, length > 0 ? static_cast<size_t>(length) : 0);
    const double idleCpu = CpuSeconds(daemon);
    const auto start = Clock::now();
    std::vector<pid_t> clients;
    for (int c = 0; c < kClients; ++c) {
        clients.push_back(Spawn({selfPath, "client", std::to_string(c), domain}));
    }
    uint32_t visible = 0;
    double firstReport = -1;
    while (visible < kClients * kReportsPerClient && Clock::now() - start < 120s) {
        auto future = status->Request(tools::QueryFilter{});
        if (future.wait_for(2s) == ara::core::future_status::ready) {
            auto result = future.GetResult();
            if (result.HasValue()) {
                visible = result.Value().eventCount;
                if (visible > 0 && firstReport < 0) {
                    firstReport = std::chrono::duration<double>(Clock::now() - start).count();
                }
            }
        }
        std::this_thread::sleep_for(10ms);
    }
    const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    const double busyCpu = CpuSeconds(daemon) - idleCpu;
    for (pid_t client : clients) {
        ::waitpid(client, nullptr, 0);
    }
    std::printf(
        "20 processes x 500 events: %u visible %.2f s after the processes started (first "
        "report visible after %.2f s)\n",
        visible, elapsed, firstReport);
    std::printf("maintaind CPU time for them: %.2f s (%.0f us per report)\n", busyCpu,
                busyCpu * 1e6 / (kClients * kReportsPerClient));
    std::printf("maintaind resident memory: %.1f MiB idle, %.1f MiB with 10000 entities\n",
                static_cast<double>(idleKiB) / 1024,
                static_cast<double>(ResidentKiB(daemon)) / 1024);
#ifdef MAINTAIND_BENCH_ORXMAINT_PATH
    const std::string orxmaint =
        std::string(MAINTAIND_BENCH_ORXMAINT_PATH) + " --domain " + domain + " --timeout-ms 20000";
    std::printf("orxmaint --json events over 10000 entities: %.2f s\n",
                TimeCommand(orxmaint + " --json events > /dev/null"));
    std::printf("orxmaint --json --full events over 10000 entities: %.2f s\n",
                TimeCommand(orxmaint + " --json --full events > /dev/null"));
    std::printf("orxmaint events (table) over 10000 entities: %.2f s\n",
                TimeCommand(orxmaint + " events > /dev/null"));
#endif
    ::kill(daemon, SIGTERM);
    ::waitpid(daemon, nullptr, 0);
    std::system(("rm -rf '" + std::string(dir) + "'").c_str());
    return 0;
}
