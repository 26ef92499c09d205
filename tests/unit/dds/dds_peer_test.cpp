// The DDS driver's peers: who sent a request, and which processes come and go.
#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>

#include "orx/test/wait.h"
#include "orx/test/watched.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/process_identity.h"

namespace {

using namespace std::chrono_literals;
using vorx::driver::dds::DdsDriver;
namespace vcc = vorx::vcc;
using orx::test::Watched;

std::shared_ptr<DdsDriver> MakeDriver(uint32_t domainId) {
    vorx::driver::dds::ParticipantSettings settings;
    settings.domainId = domainId;
    vorx::driver::dds::DdsStatus status;
    auto driver = DdsDriver::Create(settings, &status);
    EXPECT_TRUE(driver) << status.message();
    return driver;
}

vcc::ServiceDescription Service() {
    vcc::ServiceDescription desc;
    desc.serviceId = 0x2323;
    desc.instanceId = "1";
    desc.serviceName = "/test/PeerService";
    desc.driverType = vcc::api::types::DriverType::DDS;
    return desc;
}

// A server that answers every request with the name of the driver it runs on, and keeps the
// sender of the last request.
struct NamedServer {
    std::shared_ptr<DdsDriver> driver;
    Watched<vcc::PeerKey> lastSender;
    vcc::ProviderId provider{0};

    NamedServer(uint32_t domain, uint8_t name) : driver(MakeDriver(domain)) {
        vcc::ServerCallbacks callbacks;
        callbacks.onRequest = [this, name](vcc::ProviderId id, const vcc::MethodCall& call) {
            lastSender.Change([&](vcc::PeerKey& key) { key = call.sender; });
            vcc::MethodReply reply;
            reply.clientId = call.clientId;
            reply.entityId = call.entityId;
            reply.sessionId = call.sessionId;
            reply.payload = vcc::Payload::FromBytes({name});
            driver->SendReply(id, std::move(reply));
        };
        provider = driver->Offer(Service(), callbacks);
    }
};

TEST(DdsPeers, SendersAreNamedAndPeersComeAndGo) {
    constexpr uint32_t kDomain = 218;
    auto client = MakeDriver(kDomain);
    ASSERT_TRUE(client);
    auto server = std::make_unique<NamedServer>(kDomain, 1);
    ASSERT_NE(server->provider, 0u);
    const vcc::PeerKey serverKey = server->driver->LocalPeer().key;

    Watched<std::map<vcc::PeerKey, bool>> peers;  // alive or lost
    vcc::PeerCallbacks callbacks;
    callbacks.onAlive = [&](const vcc::PeerInfo& peer) {
        peers.Change([&](auto& all) { all[peer.key] = true; });
    };
    callbacks.onLost = [&](const vcc::PeerKey& key) {
        peers.Change([&](auto& all) { all[key] = false; });
    };
    const auto watch = client->WatchPeers(callbacks);
    ASSERT_NE(watch, 0u);
    EXPECT_TRUE(peers.WaitFor([&](const auto& all) {
        auto it = all.find(serverKey);
        return it != all.end() && it->second;
    }));

    Watched<vcc::ServiceHandleContainer> found;
    const auto find = client->StartFind(
        Service(), [&](const auto& handles) { found.Change([&](auto& list) { list = handles; }); });
    ASSERT_TRUE(found.WaitFor([](const auto& list) { return list.size() == 1; }));
    Watched<std::vector<uint8_t>> answers;
    vcc::ClientCallbacks clientCallbacks;
    clientCallbacks.onReply = [&](const vcc::MethodReply& reply) {
        answers.Change([&](auto& all) { all.push_back(reply.payload.GetBytes().at(0)); });
    };
    const auto id = client->Connect(found.Get().front(), clientCallbacks);
    client->StopFind(find);  // as a proxy made on the first offer does
    vcc::MethodCall call;
    call.entityId = 3;
    ASSERT_TRUE(client->SendRequest(id, call));
    ASSERT_TRUE(answers.WaitFor([](const auto& all) { return all.size() == 1; }));

    // The server names this process as the sender, with its host and start time.
    const vcc::PeerKey sender = server->lastSender.Get();
    EXPECT_EQ(sender, client->LocalPeer().key);
    const auto info = server->driver->FindPeer(sender);
    ASSERT_TRUE(info.has_value());
    EXPECT_EQ(info->process, vcc::CurrentProcessIdentity());
    EXPECT_EQ(info->process.pid, ::getpid());

    // The server's process goes away (its participant is deleted) and another one offers the
    // same service: the peer is reported lost, and the client's next request reaches the new
    // offer without connecting again.
    server.reset();
    EXPECT_TRUE(peers.WaitFor([&](const auto& all) { return !all.at(serverKey); }));
    EXPECT_FALSE(client->FindPeer(serverKey).has_value());
    auto second = std::make_unique<NamedServer>(kDomain, 2);
    EXPECT_TRUE(orx::test::WaitFor([&] {
        if (answers.Get().size() < 2) {
            client->SendRequest(id, call);  // refused until the new offer is known
        }
        return answers.WaitFor([](const auto& all) { return all.size() >= 2; }, 100ms);
    }));
    EXPECT_EQ(answers.Get().at(1), 2);

    client->StopWatchPeers(watch);
    client->Disconnect(id);
}

}  // namespace
