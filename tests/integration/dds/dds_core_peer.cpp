// A second process for the tests of the core over the DDS driver: skeletons
// and proxies of vorx::vcc with ORX_DDS_DRIVER=dds, the maintenance records as
// payload. Roles:
//
//   dds_core_peer maintaind
//       Offers the maintenance service (0xE000, instance 1) with RegisterApp:
//       the reply code is 1 for a report of kind 1, else 0; each request prints
//       "GOT kind=<kind>". Prints "READY", then reads commands on stdin:
//         switch <count>   publishes <count> LatencySwitch events, prints "SENT"
//   dds_core_peer exit-client
//       Finds the service, binds RegisterApp, prints "BOUND" and returns from
//       main. A static object's destructor then sends one report during static
//       destruction, waits at most 300 ms for the reply and prints
//       "EXIT REPLY code=<code>" or "EXIT REPLY none".
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <iostream>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>

#include "orx/maintaind/service.h"
#include "orx/maintaind/types.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/skeleton.h"

namespace {

namespace vcc = vorx::vcc;
using orx::maintaind::AppRegisterInfo;
using orx::maintaind::LatencySwitch;
using orx::maintaind::ReturnCode;

constexpr uint32_t kRegisterApp = orx::maintaind::service::kRegisterAppMethodId;
constexpr uint32_t kSwitchLatency = orx::maintaind::service::kSwitchLatencyEventId;

void Say(const std::string& line) {
    // write(2) works at any point of process exit, also after iostreams.
    const std::string text = line + "\n";
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
}

vcc::ServiceDescription Maintaind() {
    vcc::ServiceDescription desc;
    desc.serviceId = orx::maintaind::service::kAppServiceId;
    desc.instanceId = "1";
    desc.serviceName =
        vcc::orxmaintaind::type::OrxMaintaindType::GetInstance()->GetAppServicePath();
    desc.driverType = vcc::api::types::DriverType::DDS;
    return desc;
}

int RunMaintaind() {
    vcc::Skeleton skeleton(Maintaind());
    skeleton.RegisterMethod<ReturnCode, AppRegisterInfo>(
        kRegisterApp, [](const AppRegisterInfo& info, vcc::Responder<ReturnCode> responder) {
            Say("GOT kind=" + std::to_string(info.kind));
            responder.Reply(ReturnCode{static_cast<uint8_t>(info.kind == 1 ? 1 : 0)});
        });
    if (!skeleton.OfferService()) {
        Say("FAILED offer");
        return 1;
    }
    Say("READY");
    std::string line;
    while (std::getline(std::cin, line)) {
        std::istringstream words(line);
        std::string command;
        int count = 0;
        words >> command >> count;
        if (command == "switch") {
            for (int i = 0; i < count; ++i) {
                LatencySwitch sample;
                sample.mode = orx::maintaind::LatencyMode::ENABLE;
                sample.latencyIndex.instanceId = static_cast<uint16_t>(i + 1);
                skeleton.Send(kSwitchLatency, sample);
            }
            Say("SENT");
        }
    }
    return 0;
}

// Holds the proxy like the DFX plug-in's client singleton does and reports
// from its destructor at process exit.
struct ExitReporter {
    std::shared_ptr<vcc::Proxy> proxy;

    ~ExitReporter() {
        if (!proxy) {
            return;
        }
        auto method = proxy->GetMethodProxy<ReturnCode>(kRegisterApp);
        if (!method) {
            Say("EXIT REPLY no-method");
            return;
        }
        AppRegisterInfo report;
        report.kind = 3;
        auto future = method->Request(report);
        if (future.wait_for(std::chrono::milliseconds(300)) != ara::core::future_status::ready) {
            Say("EXIT REPLY none");
            return;
        }
        auto result = future.GetResult();
        Say(result.HasValue() ? "EXIT REPLY code=" + std::to_string(result.Value().code)
                              : "EXIT REPLY error");
    }
};

ExitReporter exitReporter;  // made before main, so destroyed after everything made later

int RunExitClient() {
    std::mutex mutex;
    std::condition_variable changed;
    vcc::ServiceHandleContainer found;
    const auto search = vcc::Proxy::StartFindService(
        [&](vcc::ServiceHandleContainer handles) {
            std::lock_guard<std::mutex> lock(mutex);
            found = std::move(handles);
            changed.notify_all();
        },
        Maintaind());
    {
        std::unique_lock<std::mutex> lock(mutex);
        if (!changed.wait_for(lock, std::chrono::seconds(20), [&] { return !found.empty(); })) {
            Say("FAILED find");
            return 1;
        }
    }
    vcc::Proxy::StopFindService(search);
    exitReporter.proxy = std::make_shared<vcc::Proxy>(found.front());
    auto info = std::make_shared<vorx::driver::dds::DDSMethodInfo>();
    info->SetEntityId(kRegisterApp);
    if (!exitReporter.proxy->InitializeMethodProxy<ReturnCode>(info)) {
        Say("FAILED bind");
        return 1;
    }
    Say("BOUND");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // Ends with the test that started it, however that ends.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // Linking the driver registers it; saying so also keeps the library when
    // the linker drops unreferenced ones.
    vorx::driver::dds::RegisterDdsDriver();
    const std::string role = argc > 1 ? argv[1] : "";
    if (role == "maintaind") {
        return RunMaintaind();
    }
    if (role == "exit-client") {
        return RunExitClient();
    }
    std::cerr << "usage: dds_core_peer maintaind|exit-client\n";
    return 2;
}
