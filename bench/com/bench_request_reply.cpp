// Round trip of one RegisterApp-like request over the in-process driver: a fully populated
// AppRegisterInfo out, a ReturnCode back, measured from Request() to the ready future. Prints p50,
// p99 and throughput for the bytes form (encode + decode both ways) and the object form.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

#include "orx/maintaind/service.h"
#include "orx/maintaind/types.h"
#include "orx/test/record_filler.h"
#include "vorx/serialize/cdr.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/skeleton.h"

namespace {

using orx::maintaind::AppRegisterInfo;
using orx::maintaind::ReturnCode;
using vorx::vcc::PayloadMode;
using Clock = std::chrono::steady_clock;

constexpr uint32_t kMethodId = orx::maintaind::service::kRegisterAppMethodId;

vorx::vcc::ServiceDescription BenchService() {
    vorx::vcc::ServiceDescription desc;
    desc.serviceId = 0x4242;
    desc.instanceId = "1";
    desc.serviceName = "/bench/RequestService";
    desc.driverType = vorx::vcc::api::types::DriverType::PROLOC;
    return desc;
}

vorx::vcc::HandleType FindOne() {
    std::mutex mutex;
    std::condition_variable found;
    vorx::vcc::ServiceHandleContainer handles;
    const auto search = vorx::vcc::Proxy::StartFindService(
        [&](vorx::vcc::ServiceHandleContainer list) {
            std::lock_guard<std::mutex> lock(mutex);
            handles = std::move(list);
            found.notify_all();
        },
        BenchService());
    std::unique_lock<std::mutex> lock(mutex);
    if (!found.wait_for(lock, std::chrono::seconds(5), [&] { return !handles.empty(); })) {
        std::fprintf(stderr, "service not found\n");
        std::exit(1);
    }
    vorx::vcc::Proxy::StopFindService(search);
    return handles[0];
}

struct Stats {
    double p50Us;
    double p99Us;
    double meanUs;
    double perSecond;
};

Stats Measure(vorx::vcc::MethodProxyImpl<ReturnCode>& method, const AppRegisterInfo& request,
              int rounds) {
    std::vector<double> latencies;
    latencies.reserve(rounds);
    const auto begin = Clock::now();
    for (int i = 0; i < rounds; ++i) {
        const auto start = Clock::now();
        auto future = method.Request(request);
        auto result = future.GetResult();
        const auto end = Clock::now();
        if (!result.HasValue()) {
            std::fprintf(stderr, "request failed: %s\n", result.Error().Message().c_str());
            std::exit(1);
        }
        latencies.push_back(std::chrono::duration<double, std::micro>(end - start).count());
    }
    const double totalSeconds = std::chrono::duration<double>(Clock::now() - begin).count();
    std::sort(latencies.begin(), latencies.end());
    double sum = 0;
    for (double l : latencies) {
        sum += l;
    }
    return Stats{latencies[latencies.size() / 2], latencies[latencies.size() * 99 / 100],
                 sum / latencies.size(), rounds / totalSeconds};
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 20000;
    const AppRegisterInfo request = orx::test::FilledRecord<AppRegisterInfo>();

    vorx::vcc::Skeleton skeleton(BenchService());
    skeleton.RegisterMethod<ReturnCode, AppRegisterInfo>(
        kMethodId, [](const AppRegisterInfo& info, vorx::vcc::Responder<ReturnCode> responder) {
            responder.Reply(ReturnCode{static_cast<uint8_t>(info.isPub ? 1 : 0)});
        });
    skeleton.OfferService();
    vorx::vcc::Proxy proxy(FindOne());
    auto info = std::make_shared<vorx::vcc::api::types::MethodInfo>();
    info->SetEntityId(kMethodId);
    auto method = proxy.InitializeMethodProxy<ReturnCode>(info);

    auto driver = vorx::vcc::DriverRegistry::GetInstance()->GetInProcessDriver();
    std::printf(
        "In-process request/reply round trip, AppRegisterInfo of %zu encoded bytes, %d "
        "rounds per mode\n",
        vorx::serialize::EncodedSize(request), rounds);
    std::printf("%-8s %10s %10s %10s %14s\n", "mode", "p50 us", "p99 us", "mean us",
                "round trips/s");
    for (PayloadMode mode : {PayloadMode::kBytes, PayloadMode::kObjects}) {
        driver->SetPayloadMode(mode);
        Measure(*method, request, std::max(rounds / 10, 100));  // warm-up
        const Stats stats = Measure(*method, request, rounds);
        std::printf("%-8s %10.1f %10.1f %10.1f %14.0f\n",
                    mode == PayloadMode::kBytes ? "bytes" : "objects", stats.p50Us, stats.p99Us,
                    stats.meanUs, stats.perSecond);
    }
    return 0;
}
