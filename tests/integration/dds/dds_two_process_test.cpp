// The DDS driver between two processes on loopback: replies on the request/reply topic that all
// applications share with the maintenance daemon, and a provider that is killed. Discovery,
// events and orderly withdrawal are the unit tests' part (tests/unit/dds); the plug-in's and the
// daemon's flows run over DDS between processes as well.
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "orx/maintaind/service.h"
#include "orx/test/child_process.h"
#include "orx/test/watched.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/dds_dfx_config_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace {

using namespace std::chrono_literals;
using vorx::driver::dds::DdsDriver;
namespace service = orx::maintaind::service;
namespace vcc = vorx::vcc;

constexpr uint32_t kDomain = 208;
constexpr auto kTimeout = 20s;
const std::string kSharedTopic(service::FindMethod(service::kRegisterAppMethodId)->requestTopic);

// Answers like the DFX plug-in's configuration provider for RegisterApp: one topic both ways.
// Records what it was asked.
class SharedTopicProvider : public vcc::DDSDfxConfigInterface {
  public:
    bool ReadEventData(const ara::com::internal::BindIndex&,
                       vorx::driver::dds::DDSEventInfo&) override {
        return false;
    }
    bool ReadMethodData(const ara::com::internal::BindIndex& index,
                        vorx::driver::dds::DDSMethodInfo& info) override {
        std::lock_guard<std::mutex> lock(mutex);
        asked.push_back(index);
        info.SetRequestTopicName(kSharedTopic);
        info.SetReplyTopicName(kSharedTopic);
        return index.entityId == service::kRegisterAppMethodId;
    }
    bool ReadServiceDiscoveryData(const ara::com::internal::BindIndex&,
                                  vorx::driver::dds::DDSServiceDiscoveryInfo&) override {
        return true;
    }

    std::mutex mutex;
    std::vector<ara::com::internal::BindIndex> asked;
};

std::shared_ptr<DdsDriver> MakeDriver() {
    vorx::driver::dds::ParticipantSettings settings;
    settings.domainId = kDomain;
    vorx::driver::dds::DdsStatus status;
    auto driver = DdsDriver::Create(settings, &status);
    EXPECT_TRUE(driver) << status.message();
    return driver;
}

vcc::Payload Text(const std::string& text) {
    return vcc::Payload::FromBytes(std::vector<uint8_t>(text.begin(), text.end()));
}

// What one search or client saw.
struct Seen {
    vcc::ServiceHandleContainer list;  // a search's latest list
    std::vector<vcc::MethodReply> replies;
    int lost{0};
};
using Recorder = orx::test::Watched<Seen>;

vcc::FindCallback ListInto(Recorder& recorder) {
    return [&recorder](const vcc::ServiceHandleContainer& handles) {
        recorder.Change([&](Seen& seen) { seen.list = handles; });
    };
}

vcc::ClientCallbacks RepliesInto(Recorder& recorder) {
    vcc::ClientCallbacks callbacks;
    callbacks.onReply = [&recorder](const vcc::MethodReply& reply) {
        recorder.Change([&](Seen& seen) { seen.replies.push_back(reply); });
    };
    callbacks.onServiceLost = [&recorder] { recorder.Change([](Seen& seen) { ++seen.lost; }); };
    return callbacks;
}

struct Client {
    std::string name;
    std::shared_ptr<DdsDriver> driver;
    Recorder recorder;
    vcc::ClientId id{0};
};

TEST(DdsTwoProcess, RepliesReachOnlyTheirClientAndAKilledProviderIsLostWithinTheLease) {
    auto provider = std::make_shared<SharedTopicProvider>();
    vcc::RegisterDfxInterface::RegisterDfxConfigInterface(provider);
    vcc::ServiceDescription desc;
    desc.serviceId = service::kAppServiceId;
    desc.instanceId = "1";
    desc.serviceName = std::string(service::kAppServicePath);
    desc.driverType = vcc::api::types::DriverType::DDS;
    orx::test::ChildProcess server(
        {{DDS_PEER_PATH, std::to_string(desc.serviceId), "1", desc.serviceName},
         {{"ORX_DDS_DOMAIN", std::to_string(kDomain)}},
         "",
         "dds_peer"});
    ASSERT_TRUE(server.WaitForText("READY", kTimeout)) << server.Output();

    // Two participants in this process: each has its own reader of the shared topic and sees
    // every reply, also those of the other's clients. All clients use the same session ids.
    std::vector<std::unique_ptr<Client>> clients;
    std::vector<Recorder> found(2);
    std::vector<vcc::FindId> finds;
    for (auto driver : {MakeDriver(), MakeDriver()}) {
        ASSERT_TRUE(driver);
        Recorder& search = found[finds.size()];
        finds.push_back(driver->StartFind(desc, ListInto(search)));
        ASSERT_TRUE(
            search.WaitFor([](const Seen& seen) { return seen.list.size() == 1; }, kTimeout));
        // Two clients on the first participant, one on the second: 60 replies in one burst,
        // within what the reply writer keeps for a reader that lags.
        for (const char* name : {"alpha", "beta"}) {
            if (finds.size() == 2 && clients.size() == 3) {
                break;
            }
            clients.push_back(std::make_unique<Client>());
            Client& client = *clients.back();
            client.name = name + std::to_string(finds.size());
            client.driver = driver;
            client.id = driver->Connect(search.Get().list.front(), RepliesInto(client.recorder));
            ASSERT_NE(client.id, 0u);
        }
    }
    constexpr uint16_t kRequests = 20;
    auto send = [](Client& client, uint16_t session, const std::string& text) {
        vcc::MethodCall call;
        call.entityId = service::kRegisterAppMethodId;
        call.sessionId = session;
        call.payload = Text(text);
        return client.driver->SendRequest(client.id, std::move(call));
    };
    for (uint16_t session = 1; session <= kRequests; ++session) {
        for (auto& client : clients) {
            ASSERT_TRUE(send(*client, session, client->name + " " + std::to_string(session)));
        }
    }
    for (auto& client : clients) {
        ASSERT_TRUE(client->recorder.WaitFor(
            [](const auto& seen) { return seen.replies.size() >= kRequests; }, kTimeout))
            << client->name << " got " << client->recorder.Get().replies.size();
    }
    // One more round trip, answered with an error: a stray reply of another client's requests
    // would have come before it.
    for (auto& client : clients) {
        ASSERT_TRUE(send(*client, kRequests + 1, "error"));
        ASSERT_TRUE(client->recorder.WaitFor(
            [](const auto& seen) { return seen.replies.size() > kRequests; }, kTimeout));
        const auto replies = client->recorder.Get().replies;
        ASSERT_EQ(replies.size(), kRequests + 1u) << client->name;
        for (uint16_t i = 0; i < kRequests; ++i) {
            EXPECT_EQ(replies[i].clientId, client->id);
            EXPECT_EQ(replies[i].kind, vcc::ReplyKind::kValue);
            const auto bytes = replies[i].payload.GetBytes();
            EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
                      client->name + " " + std::to_string(replies[i].sessionId));
        }
        const auto& error = replies.back();
        EXPECT_EQ(error.kind, vcc::ReplyKind::kError);
        EXPECT_EQ(error.errorDomainId, 0x8000000000000123ull);
        EXPECT_EQ(error.errorCode, (std::vector<uint8_t>{7, 0, 0, 0}));
        EXPECT_EQ(error.errorMessage, "scripted error");
    }
    // The topics came from the DFX provider, asked with the handle's names.
    {
        std::lock_guard<std::mutex> lock(provider->mutex);
        ASSERT_FALSE(provider->asked.empty());
        EXPECT_EQ(provider->asked.front().serviceName, desc.serviceName);
        EXPECT_EQ(provider->asked.front().entityId, service::kRegisterAppMethodId);
    }
    EXPECT_EQ(clients[0]->driver->Transport().AnnouncedRequestTopics(service::kAppServiceId),
              (std::set<std::string>{kSharedTopic}));

    // Killed, the provider is lost once its lease ends (checked a little after; allow for a
    // loaded machine): the searches hear of it, so do its clients, and requests are refused.
    server.Signal(SIGKILL);
    const auto lease =
        std::chrono::milliseconds(vorx::driver::dds::ParticipantSettings().leaseDurationMs);
    EXPECT_TRUE(found[0].WaitFor([](const Seen& seen) { return seen.list.empty(); }, lease + 5s));
    EXPECT_TRUE(clients[0]->recorder.WaitFor([](const auto& seen) { return seen.lost == 1; }, 5s));
    vcc::MethodCall call;
    call.entityId = service::kRegisterAppMethodId;
    EXPECT_FALSE(clients[0]->driver->SendRequest(clients[0]->id, std::move(call)));

    for (auto& client : clients) {
        client->driver->Disconnect(client->id);
    }
    clients[0]->driver->StopFind(finds[0]);
    clients[2]->driver->StopFind(finds[1]);
    vcc::RegisterDfxInterface::RegisterDfxConfigInterface(nullptr);
}

}  // namespace
