// Round trip of one RegisterApp-sized request over the DDS driver between two
// processes on loopback: a fully populated AppRegisterInfo out (its CDR bytes),
// an encoded ReturnCode back. The benchmark starts its own server process
// (itself with --serve) and prints p50, p99 and mean in microseconds for two
// ways of waiting:
//   blocking: the caller waits on a condition variable for each reply, as the
//             DFX plug-in waits on its future;
//   chained:  the next request goes out from inside the reply callback, as
//             ddsperf's ping does, so the figure compares with ddsperf's.
//
//   dds_roundtrip_bench [--domain D] [--rounds N] [--warmup N] [--size BYTES]
//   dds_roundtrip_bench --size-only         request payload size in bytes
//   dds_roundtrip_bench --cyclone-config    the loopback Cyclone configuration
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <mutex>
#include <string>
#include <vector>

#include "orx/maintaind/service.h"
#include "orx/maintaind/types.h"
#include "orx/test/record_filler.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/serialize/cdr.h"

extern char** environ;

namespace {

namespace vcc = vorx::vcc;
using orx::maintaind::AppRegisterInfo;
using orx::maintaind::ReturnCode;
using vorx::driver::dds::DdsDriver;
using vorx::driver::dds::DdsStatus;
using vorx::driver::dds::ParticipantSettings;
using Clock = std::chrono::steady_clock;

constexpr uint32_t kRegisterApp = orx::maintaind::service::kRegisterAppMethodId;

struct Options {
    uint32_t domain = 222;
    int rounds = 20000;
    int warmup = 2000;
    size_t size = 0;  // request payload size; 0: a fully populated AppRegisterInfo
};

vcc::ServiceDescription BenchService() {
    vcc::ServiceDescription desc;
    desc.serviceId = orx::maintaind::service::kAppServiceId;
    desc.instanceId = "1";
    desc.serviceName = "/bench/DdsRoundTrip";
    desc.driverType = vcc::api::types::DriverType::DDS;
    return desc;
}

std::vector<uint8_t> RequestBytes() {
    return vorx::serialize::Encode(orx::test::FilledRecord<AppRegisterInfo>());
}

std::shared_ptr<DdsDriver> MakeDriver(uint32_t domain) {
    ParticipantSettings settings;
    settings.domainId = domain;
    DdsStatus status;
    auto driver = DdsDriver::Create(settings, &status);
    if (!driver) {
        std::fprintf(stderr, "DDS: %s\n", status.message().c_str());
        std::exit(1);
    }
    // Requests and replies of the shared RegisterApp topic, as the plug-in uses it.
    const auto* row = orx::maintaind::service::FindMethod(kRegisterApp);
    driver->SetMethodTopics(orx::maintaind::service::kAppServiceId, kRegisterApp,
                            {std::string(row->requestTopic), std::string(row->replyTopic)});
    return driver;
}

int Serve(const Options& options) {
    // Ends with the benchmark, however that ends.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == 1) {
        return 1;
    }
    auto driver = MakeDriver(options.domain);
    const std::vector<uint8_t> reply = vorx::serialize::Encode(ReturnCode{0});
    std::weak_ptr<DdsDriver> weak = driver;
    vcc::ServerCallbacks callbacks;
    callbacks.onRequest = [weak, reply](vcc::ProviderId provider, const vcc::MethodCall& call) {
        vcc::MethodReply answer;
        answer.clientId = call.clientId;
        answer.entityId = call.entityId;
        answer.sessionId = call.sessionId;
        answer.payload = vcc::Payload::FromBytes(reply);
        if (auto self = weak.lock()) {
            self->SendReply(provider, std::move(answer));
        }
    };
    if (driver->Offer(BenchService(), callbacks) == 0) {
        return 1;
    }
    // Runs until the parent kills it.
    for (;;) {
        pause();
    }
}

struct Stats {
    double p50;
    double p99;
    double mean;
};

Stats Summarize(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    double sum = 0;
    for (const double v : values) {
        sum += v;
    }
    return {values[values.size() / 2], values[values.size() * 99 / 100], sum / values.size()};
}

vcc::HandleType FindService(DdsDriver& driver) {
    std::mutex mutex;
    std::condition_variable found;
    vcc::ServiceHandleContainer handles;
    const auto find =
        driver.StartFind(BenchService(), [&](const vcc::ServiceHandleContainer& list) {
            std::lock_guard<std::mutex> lock(mutex);
            handles = list;
            found.notify_all();
        });
    std::unique_lock<std::mutex> lock(mutex);
    if (!found.wait_for(lock, std::chrono::seconds(20), [&] { return !handles.empty(); })) {
        std::fprintf(stderr, "server not found\n");
        std::exit(1);
    }
    const vcc::HandleType handle = handles.front();
    lock.unlock();
    driver.StopFind(find);
    return handle;
}

// Sends `total` requests; `next` decides whether the reply callback sends the
// next one itself (chained) or the calling thread does after waking up.
std::vector<double> Run(DdsDriver& driver, const vcc::HandleType& handle,
                        const std::vector<uint8_t>& request, int total, bool chained) {
    std::mutex mutex;
    std::condition_variable done;
    std::vector<double> latencies;
    latencies.reserve(static_cast<size_t>(total));
    int answered = 0;
    Clock::time_point sentAt;
    vcc::ClientId client = 0;
    uint16_t session = 0;
    const vcc::Payload payload = vcc::Payload::FromBytes(request);

    auto send = [&] {
        vcc::MethodCall call;
        call.entityId = kRegisterApp;
        call.sessionId = ++session;
        call.payload = payload;
        sentAt = Clock::now();
        if (!driver.SendRequest(client, std::move(call))) {
            std::fprintf(stderr, "send failed\n");
            std::exit(1);
        }
    };
    vcc::ClientCallbacks callbacks;
    callbacks.onReply = [&](const vcc::MethodReply&) {
        const auto now = Clock::now();
        std::lock_guard<std::mutex> lock(mutex);
        latencies.push_back(std::chrono::duration<double, std::micro>(now - sentAt).count());
        ++answered;
        if (chained && answered < total) {
            send();
            return;
        }
        done.notify_all();
    };
    client = driver.Connect(handle, callbacks);
    bool complete = true;
    if (chained) {
        std::unique_lock<std::mutex> lock(mutex);
        send();
        complete = done.wait_for(lock, std::chrono::seconds(60), [&] { return answered >= total; });
    } else {
        for (int i = 0; i < total && complete; ++i) {
            std::unique_lock<std::mutex> lock(mutex);
            send();
            complete = done.wait_for(lock, std::chrono::seconds(5), [&] { return answered > i; });
        }
    }
    if (!complete) {
        std::fprintf(stderr, "a reply did not come\n");
        std::exit(1);
    }
    driver.Disconnect(client);
    return latencies;
}

pid_t StartServer(const Options& options) {
    const std::string self = "/proc/self/exe";
    std::string domain = std::to_string(options.domain);
    char serve[] = "--serve";
    char domainFlag[] = "--domain";
    char* argv[] = {const_cast<char*>(self.c_str()), serve, domainFlag, domain.data(), nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, self.c_str(), nullptr, nullptr, argv, environ) != 0) {
        std::perror("posix_spawn");
        std::exit(1);
    }
    return pid;
}

void Print(const char* mode, const Stats& stats) {
    std::printf("%-9s p50 %8.1f us   p99 %8.1f us   mean %8.1f us\n", mode, stats.p50, stats.p99,
                stats.mean);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    bool serve = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--size-only") {
            std::printf("%zu\n", RequestBytes().size());
            return 0;
        }
        if (arg == "--cyclone-config") {
            std::printf("%s\n",
                        vorx::driver::dds::BuildCycloneConfig(ParticipantSettings()).c_str());
            return 0;
        }
        if (arg == "--serve") {
            serve = true;
        } else if (arg == "--domain" && i + 1 < argc) {
            options.domain = static_cast<uint32_t>(std::stoul(argv[++i]));
        } else if (arg == "--rounds" && i + 1 < argc) {
            options.rounds = std::stoi(argv[++i]);
        } else if (arg == "--warmup" && i + 1 < argc) {
            options.warmup = std::stoi(argv[++i]);
        } else if (arg == "--size" && i + 1 < argc) {
            options.size = std::stoul(argv[++i]);
        }
    }
    if (serve) {
        return Serve(options);
    }
    const pid_t server = StartServer(options);
    auto driver = MakeDriver(options.domain);
    const vcc::HandleType handle = FindService(*driver);
    const std::vector<uint8_t> request =
        options.size == 0 ? RequestBytes() : std::vector<uint8_t>(options.size, 0x5A);
    std::printf("DDS round trip, request %zu bytes, reply %zu bytes, %d rounds\n", request.size(),
                vorx::serialize::Encode(ReturnCode{0}).size(), options.rounds);
    Run(*driver, handle, request, options.warmup, true);
    const Stats blocking = Summarize(Run(*driver, handle, request, options.rounds, false));
    const Stats chained = Summarize(Run(*driver, handle, request, options.rounds, true));
    Print("blocking", blocking);
    Print("chained", chained);
    kill(server, SIGKILL);
    waitpid(server, nullptr, 0);
    std::printf(
        "RESULT {\"requestBytes\":%zu,\"rounds\":%d,\"blockingP50Us\":%.1f,"
        "\"blockingP99Us\":%.1f,\"chainedP50Us\":%.1f,\"chainedP99Us\":%.1f}\n",
        request.size(), options.rounds, blocking.p50, blocking.p99, chained.p50, chained.p99);
    return 0;
}
