// A second process for the DDS tests. It joins DDS through the process's own
// DDS driver (orx.json via ORX_CONFIG, ORX_DDS_DOMAIN) and plays one role:
//
//   dds_peer server <serviceId> <instanceId> <servicePath>
//       Offers the service and answers every request with its own payload
//       (the payload "error" gets an error reply instead). Prints
//       "READY <providerId>", then follows commands on stdin, one per line:
//         publish <entityId> <count>  publishes <count> samples (payload: the
//                                     4-byte index), prints "PUBLISHED"
//         stop / offer                withdraws / offers again, prints "STOPPED"
//                                     / "OFFERED"
//         quit                        exits
//   dds_peer client <serviceId> <instanceId> <servicePath> <requests>
//       Waits for the service, sends <requests> requests and prints
//       "REPLIES <n>" with the number of matching replies, then exits.
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "vorx/driver/dds/dds_driver.h"

namespace {

using vorx::driver::dds::DdsDriver;
namespace vcc = vorx::vcc;

constexpr uint64_t kTestErrorDomain = 0x8000000000000123ull;

void Say(const std::string& line) {
    std::cout << line << std::endl;  // flushes: the test reads line by line
}

vcc::ServiceDescription Describe(char** argv) {
    vcc::ServiceDescription desc;
    desc.serviceId = static_cast<uint16_t>(std::stoul(argv[2]));
    desc.instanceId = argv[3];
    desc.serviceName = argv[4];
    desc.driverType = vcc::api::types::DriverType::DDS;
    return desc;
}

std::vector<uint8_t> Bytes(const std::string& text) {
    return std::vector<uint8_t>(text.begin(), text.end());
}

int RunServer(const std::shared_ptr<DdsDriver>& driver, const vcc::ServiceDescription& desc) {
    std::weak_ptr<DdsDriver> weak = driver;
    vcc::ServerCallbacks callbacks;
    std::atomic<vcc::ProviderId> current{0};
    callbacks.onRequest = [weak](vcc::ProviderId provider, const vcc::MethodCall& call) {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        vcc::MethodReply reply;
        reply.clientId = call.clientId;
        reply.entityId = call.entityId;
        reply.sessionId = call.sessionId;
        if (call.payload.GetBytes() == Bytes("error")) {
            reply.kind = vcc::ReplyKind::kError;
            reply.errorDomainId = kTestErrorDomain;
            reply.errorCode = {7, 0, 0, 0};
            reply.errorMessage = "scripted error";
        } else {
            reply.kind = vcc::ReplyKind::kValue;
            reply.payload = call.payload;
        }
        self->SendReply(provider, std::move(reply));
    };
    current = driver->Offer(desc, callbacks);
    if (current == 0) {
        Say("FAILED offer");
        return 1;
    }
    Say("READY " + std::to_string(current.load()));
    std::string line;
    while (std::getline(std::cin, line)) {
        std::istringstream words(line);
        std::string command;
        words >> command;
        if (command == "publish") {
            uint32_t entityId = 0;
            uint32_t count = 0;
            words >> entityId >> count;
            for (uint32_t i = 1; i <= count; ++i) {
                vcc::EventSample sample;
                sample.entityId = entityId;
                sample.payload = vcc::Payload::FromBytes(
                    {static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8), 0, 0});
                driver->Publish(current, std::move(sample));
            }
            Say("PUBLISHED");
        } else if (command == "stop") {
            driver->StopOffer(current);
            Say("STOPPED");
        } else if (command == "offer") {
            current = driver->Offer(desc, callbacks);
            Say("OFFERED");
        } else if (command == "quit") {
            break;
        }
    }
    return 0;
}

int RunClient(const std::shared_ptr<DdsDriver>& driver, const vcc::ServiceDescription& desc,
              int requests) {
    std::mutex mutex;
    std::condition_variable changed;
    vcc::ServiceHandleContainer found;
    int replies = 0;
    const auto find = driver->StartFind(desc, [&](const vcc::ServiceHandleContainer& handles) {
        std::lock_guard<std::mutex> lock(mutex);
        found = handles;
        changed.notify_all();
    });
    std::unique_lock<std::mutex> lock(mutex);
    if (!changed.wait_for(lock, std::chrono::seconds(20), [&] { return !found.empty(); })) {
        Say("FAILED find");
        return 1;
    }
    const vcc::HandleType handle = found.front();
    lock.unlock();
    driver->StopFind(find);

    vcc::ClientCallbacks callbacks;
    callbacks.onReply = [&](const vcc::MethodReply& reply) {
        std::lock_guard<std::mutex> guard(mutex);
        if (reply.kind == vcc::ReplyKind::kValue &&
            reply.payload.GetBytes() == Bytes("ping " + std::to_string(reply.sessionId))) {
            ++replies;
        }
        changed.notify_all();
    };
    const vcc::ClientId client = driver->Connect(handle, callbacks);
    for (int i = 1; i <= requests; ++i) {
        vcc::MethodCall call;
        call.entityId = 1;
        call.sessionId = static_cast<uint16_t>(i);
        call.payload = vcc::Payload::FromBytes(Bytes("ping " + std::to_string(i)));
        if (!driver->SendRequest(client, std::move(call))) {
            Say("FAILED send");
        }
    }
    lock.lock();
    changed.wait_for(lock, std::chrono::seconds(20), [&] { return replies >= requests; });
    Say("REPLIES " + std::to_string(replies));
    lock.unlock();
    driver->Disconnect(client);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // Ends with the test that started it, however that ends.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (argc < 5) {
        std::cerr << "usage: dds_peer server|client <serviceId> <instanceId> <servicePath> "
                     "[requests]\n";
        return 2;
    }
    // Hands the DDS driver its settings from orx.json and the environment, as a process's
    // start-up does.
    namespace config = ara::kelda::common::orxConfigParser;
    const auto file = config::ParseJsonToGetConfig::GetInstance();
    config::ConfigReader reader(file->Document(), file->FilePath());
    vorx::driver::dds::SetProcessParticipantSettings(vorx::driver::dds::LoadParticipantSettings(
        &reader, file->GetNetworkIp(), config::ProcessEnvironment()));
    auto driver = DdsDriver::GetShared();
    if (!driver) {
        Say("FAILED dds");
        return 1;
    }
    const std::string role = argv[1];
    const vcc::ServiceDescription desc = Describe(argv);
    if (role == "server") {
        return RunServer(driver, desc);
    }
    if (role == "client" && argc >= 6) {
        return RunClient(driver, desc, std::stoi(argv[5]));
    }
    return 2;
}
