// A second process for the DDS tests: joins DDS through the process's own DDS driver
// (ORX_DDS_DOMAIN) and offers one service, answering every request with its own payload (the
// payload "error" gets an error reply instead). Prints "READY <providerId>" once the offer is
// out, then runs until its standard input closes.
//
//   dds_peer <serviceId> <instanceId> <servicePath>
#include <signal.h>
#include <sys/prctl.h>

#include <iostream>
#include <string>
#include <vector>

#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "vorx/driver/dds/dds_driver.h"

namespace {

namespace vcc = vorx::vcc;

constexpr uint64_t kTestErrorDomain = 0x8000000000000123ull;

vcc::ServerCallbacks EchoServer(const std::shared_ptr<vorx::driver::dds::DdsDriver>& driver) {
    std::weak_ptr<vorx::driver::dds::DdsDriver> weak = driver;
    vcc::ServerCallbacks callbacks;
    callbacks.onRequest = [weak](vcc::ProviderId provider, const vcc::MethodCall& call) {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        vcc::MethodReply reply;
        reply.clientId = call.clientId;
        reply.entityId = call.entityId;
        reply.sessionId = call.sessionId;
        const std::string error = "error";
        if (call.payload.GetBytes() == std::vector<uint8_t>(error.begin(), error.end())) {
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
    return callbacks;
}

}  // namespace

int main(int argc, char** argv) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // ends with the test that started it, however that ends
    if (argc != 4) {
        std::cerr << "usage: dds_peer <serviceId> <instanceId> <servicePath>\n";
        return 2;
    }
    // Hands the DDS driver its settings from orx.json and the environment, as a process's
    // start-up does.
    namespace config = ara::kelda::common::orxConfigParser;
    const auto file = config::ParseJsonToGetConfig::GetInstance();
    config::ConfigReader reader(file->Document(), file->FilePath());
    vorx::driver::dds::SetProcessParticipantSettings(vorx::driver::dds::LoadParticipantSettings(
        &reader, file->GetNetworkIp(), config::ProcessEnvironment()));
    auto driver = vorx::driver::dds::DdsDriver::GetShared();
    if (!driver) {
        std::cout << "FAILED dds" << std::endl;
        return 1;
    }
    vcc::ServiceDescription desc;
    desc.serviceId = static_cast<uint16_t>(std::stoul(argv[1]));
    desc.instanceId = argv[2];
    desc.serviceName = argv[3];
    desc.driverType = vcc::api::types::DriverType::DDS;
    const vcc::ProviderId provider = driver->Offer(desc, EchoServer(driver));
    if (provider == 0) {
        std::cout << "FAILED offer" << std::endl;
        return 1;
    }
    std::cout << "READY " << provider << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
    }
    return 0;
}
