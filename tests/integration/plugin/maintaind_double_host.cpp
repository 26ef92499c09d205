// The maintenance daemon double (orx_test_support) as a process of its own on the DDS driver,
// for the multi-process tests of the plug-in until the real daemon takes its place.
//
// Standard output: "READY" once it runs, then one line "RECV <json>" per RegisterApp request it
// received (the AppRegisterInfo as orx::maintaind::ToJson writes it).
// Standard input, one command per line:
//   offer | withdraw                          offer or withdraw the maintenance service
//   latency <mode> <serviceId> <instanceId> <topic>
//                                             publish a latency switch for a DDS event
//                                             (mode 0 enables, 1 disables)
//   quit                                      end (also at end of input)
// Arguments: "--no-offer" starts without offering.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>

#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "orx/maintaind/json.h"
#include "orx/test/daemon_double.h"
#include "vorx/driver/dds/dds_driver.h"

namespace {

std::mutex gOutputMutex;

void Print(const std::string& line) {
    std::lock_guard<std::mutex> lock(gOutputMutex);
    std::cout << line << std::endl;
}

orx::maintaind::LatencySwitch ParseLatency(std::istringstream& words) {
    unsigned mode = 0;
    unsigned serviceId = 0;
    unsigned instanceId = 0;
    std::string topic;
    words >> mode >> serviceId >> instanceId >> topic;
    orx::maintaind::LatencySwitch order;
    order.mode = static_cast<orx::maintaind::LatencyMode>(mode);
    order.latencyIndex.driverTypes = {orx::maintaind::DriverType::DDS};
    order.latencyIndex.serviceId = static_cast<uint16_t>(serviceId);
    order.latencyIndex.instanceId = static_cast<uint16_t>(instanceId);
    order.latencyIndex.eventName = topic;
    return order;
}

}  // namespace

int main(int argc, char** argv) {
    ::setenv("ORX_DDS_DRIVER", "dds", 0);
    // Hands the DDS driver its settings from orx.json and the environment, as a process's
    // start-up does.
    namespace config = ara::kelda::common::orxConfigParser;
    const auto file = config::ParseJsonToGetConfig::GetInstance();
    config::ConfigReader fileReader(file->Document(), file->FilePath());
    vorx::driver::dds::SetProcessParticipantSettings(vorx::driver::dds::LoadParticipantSettings(
        &fileReader, file->GetNetworkIp(), config::ProcessEnvironment()));
    vorx::driver::dds::RegisterDdsDriver();
    orx::test::DaemonDouble::Options options;
    options.offerAtStart = !(argc > 1 && std::string(argv[1]) == "--no-offer");
    orx::test::DaemonDouble daemon(options);
    Print("READY");

    std::atomic<bool> done{false};
    std::thread reader([&daemon, &done] {
        std::string line;
        while (!done.load() && std::getline(std::cin, line)) {
            std::istringstream words(line);
            std::string command;
            words >> command;
            if (command == "offer") {
                Print(daemon.Offer() ? "OFFERED" : "OFFER FAILED");
            } else if (command == "withdraw") {
                daemon.Withdraw();
                Print("WITHDRAWN");
            } else if (command == "latency") {
                Print(daemon.PublishLatencySwitch(ParseLatency(words)) ? "LATENCY SENT"
                                                                       : "LATENCY FAILED");
            } else if (command == "quit") {
                break;
            }
        }
        done.store(true);
    });

    size_t printed = 0;
    while (!done.load()) {
        if (!daemon.WaitForCount(printed + 1, std::chrono::milliseconds(100))) {
            continue;
        }
        const auto received = daemon.Received();
        for (; printed < received.size(); ++printed) {
            Print("RECV " + orx::maintaind::ToJson(received[printed]).dump());
        }
    }
    reader.join();
    return 0;
}
