// The DDS driver between two processes on loopback: discovery, methods on a
// shared request/reply topic, events, and a provider that is killed.
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "child_process.h"
#include "driver_recorder.h"
#include "orx/maintaind/service.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/dds_dfx_config_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace {

using namespace std::chrono_literals;
using orx::test::ChildProcess;
using orx::test::DriverRecorder;
using vorx::driver::dds::DdsDriver;
using vorx::driver::dds::DdsStatus;
using vorx::driver::dds::ParticipantSettings;
namespace vcc = vorx::vcc;

constexpr auto kStartTimeout = 20s;
constexpr auto kTimeout = 10s;

ParticipantSettings Loopback(uint32_t domainId) {
    ParticipantSettings settings;
    settings.domainId = domainId;
    return settings;
}

std::shared_ptr<DdsDriver> MakeDriver(uint32_t domainId) {
    DdsStatus status;
    auto driver = DdsDriver::Create(Loopback(domainId), &status);
    EXPECT_TRUE(driver) << status.message();
    return driver;
}

vcc::ServiceDescription Service(uint16_t serviceId, const std::string& instanceId,
                                const std::string& path) {
    vcc::ServiceDescription desc;
    desc.serviceId = serviceId;
    desc.instanceId = instanceId;
    desc.serviceName = path;
    desc.driverType = vcc::api::types::DriverType::DDS;
    return desc;
}

std::unique_ptr<ChildProcess> StartServer(uint32_t domainId, const vcc::ServiceDescription& desc) {
    auto child = std::make_unique<ChildProcess>(
        std::vector<std::string>{DDS_PEER_PATH, "server", std::to_string(desc.serviceId),
                                 desc.instanceId, desc.serviceName},
        std::vector<std::string>{"ORX_DDS_DOMAIN=" + std::to_string(domainId)});
    EXPECT_TRUE(child->Started());
    return child;
}

uint64_t ProviderIdOf(const std::optional<std::string>& readyLine) {
    return readyLine ? std::stoull(readyLine->substr(6)) : 0;
}

std::vector<uint8_t> Bytes(const std::string& text) {
    return std::vector<uint8_t>(text.begin(), text.end());
}

std::string Text(const vcc::Payload& payload) {
    const auto& bytes = payload.GetBytes();
    return std::string(bytes.begin(), bytes.end());
}

// Answers like the DFX plug-in's configuration provider for the maintenance
// service's RegisterApp method: one topic both ways. Records what it was asked.
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
        if (index.entityId != orx::maintaind::service::kRegisterAppMethodId) {
            return false;
        }
        info.SetRequestTopicName("RegisterAppRequestTopic");
        info.SetReplyTopicName("RegisterAppRequestTopic");
        return true;
    }
    bool ReadServiceDiscoveryData(const ara::com::internal::BindIndex&,
                                  vorx::driver::dds::DDSServiceDiscoveryInfo&) override {
        return true;
    }

    std::mutex mutex;
    std::vector<ara::com::internal::BindIndex> asked;
};

TEST(DdsTwoProcess, OfferIsSeenWithdrawnAndOfferedAgain) {
    constexpr uint32_t kDomain = 201;
    const auto desc = Service(0x1234, "3", "/test/EchoService");
    auto server = StartServer(kDomain, desc);
    const uint64_t firstProvider = ProviderIdOf(server->WaitForLine("READY", kStartTimeout));
    ASSERT_NE(firstProvider, 0u);

    auto driver = MakeDriver(kDomain);
    ASSERT_TRUE(driver);
    DriverRecorder found;
    const auto find = driver->StartFind(Service(0x1234, "65534", ""), found.FindCallback());

    ASSERT_TRUE(found.WaitFor([](const auto& seen) { return DriverRecorder::HasList(seen, 1); },
                              kStartTimeout));
    const vcc::HandleType handle = found.CurrentList().front();
    EXPECT_EQ(handle.GetServiceId(), 0x1234);
    EXPECT_EQ(handle.GetInstanceId(), "3");
    EXPECT_EQ(handle.GetServiceName(), "/test/EchoService");
    EXPECT_EQ(handle.GetDriverType(), vcc::api::types::DriverType::DDS);
    EXPECT_EQ(handle.GetProviderId(), firstProvider);

    ASSERT_TRUE(server->Send("stop"));
    EXPECT_TRUE(
        found.WaitFor([](const auto& seen) { return DriverRecorder::HasList(seen, 0); }, kTimeout));

    ASSERT_TRUE(server->Send("offer"));
    ASSERT_TRUE(
        found.WaitFor([](const auto& seen) { return DriverRecorder::HasList(seen, 1); }, kTimeout));
    EXPECT_NE(found.CurrentList().front().GetProviderId(), firstProvider);

    // A search for another instance or path sees nothing of it.
    DriverRecorder other;
    const auto otherFind = driver->StartFind(Service(0x1234, "4", ""), other.FindCallback());
    const auto pathFind =
        driver->StartFind(Service(0x1234, "3", "/test/Other"), other.FindCallback());
    // The first search is told again once the offer goes for good; by then the
    // other two would have been told of it as well.
    ASSERT_TRUE(server->Send("stop"));
    EXPECT_TRUE(
        found.WaitFor([](const auto& seen) { return DriverRecorder::HasList(seen, 0); }, kTimeout));
    EXPECT_TRUE(other.Snapshot().lists.empty());
    driver->StopFind(find);
    driver->StopFind(otherFind);
    driver->StopFind(pathFind);
}

TEST(DdsTwoProcess, SharedRegisterAppTopicRepliesReachOnlyTheirClient) {
    constexpr uint32_t kDomain = 202;
    constexpr uint32_t kRegisterApp = orx::maintaind::service::kRegisterAppMethodId;
    auto provider = std::make_shared<SharedTopicProvider>();
    vcc::RegisterDfxInterface::RegisterDfxConfigInterface(provider);

    const auto desc = Service(orx::maintaind::service::kAppServiceId, "1",
                              std::string(orx::maintaind::service::kAppServicePath));
    auto server = StartServer(kDomain, desc);
    ASSERT_TRUE(server->WaitForLine("READY", kStartTimeout));

    // Two participants in this process: each has its own reader of the shared
    // topic and sees every reply, also those of the other's clients.
    auto first = MakeDriver(kDomain);
    auto second = MakeDriver(kDomain);
    ASSERT_TRUE(first && second);
    DriverRecorder firstFound;
    DriverRecorder secondFound;
    const auto firstFind = first->StartFind(desc, firstFound.FindCallback());
    const auto secondFind = second->StartFind(desc, secondFound.FindCallback());
    ASSERT_TRUE(firstFound.WaitFor(
        [](const auto& seen) { return DriverRecorder::HasList(seen, 1); }, kStartTimeout));
    ASSERT_TRUE(secondFound.WaitFor(
        [](const auto& seen) { return DriverRecorder::HasList(seen, 1); }, kStartTimeout));

    struct Client {
        std::string name;
        std::shared_ptr<DdsDriver> driver;
        DriverRecorder recorder;
        vcc::ClientId id{0};
    };
    std::vector<std::unique_ptr<Client>> clients;
    for (const auto& [name, driver] :
         {std::make_pair("alpha", first), std::make_pair("beta", first),
          std::make_pair("gamma", second)}) {
        auto client = std::make_unique<Client>();
        client->name = name;
        client->driver = driver;
        const auto handle =
            driver == first ? firstFound.CurrentList().front() : secondFound.CurrentList().front();
        client->id = driver->Connect(handle, client->recorder.ClientCallbacks());
        ASSERT_NE(client->id, 0u);
        clients.push_back(std::move(client));
    }

    // Every client uses the same session ids.
    constexpr int kRequests = 20;
    for (int session = 1; session <= kRequests; ++session) {
        for (auto& client : clients) {
            vcc::MethodCall call;
            call.entityId = kRegisterApp;
            call.sessionId = static_cast<uint16_t>(session);
            call.payload =
                vcc::Payload::FromBytes(Bytes(client->name + " " + std::to_string(session)));
            ASSERT_TRUE(client->driver->SendRequest(client->id, std::move(call)));
        }
    }
    for (auto& client : clients) {
        ASSERT_TRUE(client->recorder.WaitFor(
            [](const auto& seen) { return seen.replies.size() >= kRequests; }, kTimeout))
            << client->name << " got " << client->recorder.Snapshot().replies.size();
    }
    // Let a stray reply of another client show up if routing were wrong: one
    // more round trip on each client comes after everything sent before it.
    for (auto& client : clients) {
        vcc::MethodCall call;
        call.entityId = kRegisterApp;
        call.sessionId = 999;
        call.payload = vcc::Payload::FromBytes(Bytes("error"));
        ASSERT_TRUE(client->driver->SendRequest(client->id, std::move(call)));
        ASSERT_TRUE(client->recorder.WaitFor(
            [](const auto& seen) { return seen.replies.size() == kRequests + 1; }, kTimeout));
    }
    for (auto& client : clients) {
        const auto replies = client->recorder.Snapshot().replies;
        ASSERT_EQ(replies.size(), static_cast<size_t>(kRequests + 1)) << client->name;
        for (int i = 0; i < kRequests; ++i) {
            EXPECT_EQ(replies[i].clientId, client->id);
            EXPECT_EQ(replies[i].entityId, kRegisterApp);
            EXPECT_EQ(replies[i].kind, vcc::ReplyKind::kValue);
            EXPECT_EQ(Text(replies[i].payload),
                      client->name + " " + std::to_string(replies[i].sessionId));
        }
        const auto& error = replies.back();
        EXPECT_EQ(error.sessionId, 999);
        EXPECT_EQ(error.kind, vcc::ReplyKind::kError);
        EXPECT_EQ(error.errorDomainId, 0x8000000000000123ull);
        EXPECT_EQ(error.errorCode, (std::vector<uint8_t>{7, 0, 0, 0}));
        EXPECT_EQ(error.errorMessage, "scripted error");
        EXPECT_TRUE(error.payload.IsEmpty());
    }

    // The topics came from the DFX provider, asked with the handle's names,
    // and requests and replies really shared the one topic.
    {
        std::lock_guard<std::mutex> lock(provider->mutex);
        ASSERT_FALSE(provider->asked.empty());
        EXPECT_EQ(provider->asked.front().serviceName,
                  std::string(orx::maintaind::service::kAppServicePath));
        EXPECT_EQ(provider->asked.front().instanceId, "1");
        EXPECT_EQ(provider->asked.front().entityId, kRegisterApp);
    }
    EXPECT_EQ(first->Transport().AnnouncedRequestTopics(orx::maintaind::service::kAppServiceId),
              (std::set<std::string>{"RegisterAppRequestTopic"}));

    for (auto& client : clients) {
        client->driver->Disconnect(client->id);
    }
    first->StopFind(firstFind);
    second->StopFind(secondFind);
    vcc::RegisterDfxInterface::RegisterDfxConfigInterface(nullptr);
}

TEST(DdsTwoProcess, EventsArriveInOrderWithSequenceNumbers) {
    constexpr uint32_t kDomain = 203;
    constexpr uint32_t kEvent = orx::maintaind::service::kSwitchLatencyEventId;
    const auto desc = Service(0x1234, "5", "/test/EventService");
    auto server = StartServer(kDomain, desc);
    ASSERT_TRUE(server->WaitForLine("READY", kStartTimeout));

    auto driver = MakeDriver(kDomain);
    ASSERT_TRUE(driver);
    DriverRecorder found;
    const auto find = driver->StartFind(desc, found.FindCallback());
    ASSERT_TRUE(found.WaitFor([](const auto& seen) { return DriverRecorder::HasList(seen, 1); },
                              kStartTimeout));
    const auto handle = found.CurrentList().front();
    DriverRecorder first;
    const auto client = driver->Connect(handle, first.ClientCallbacks());
    ASSERT_TRUE(driver->Subscribe(client, kEvent));

    constexpr int kSamples = 20;
    const long before = static_cast<long>(vorx::driver::dds::MonotonicNowNs());
    ASSERT_TRUE(server->Send("publish " + std::to_string(kEvent) + " " + std::to_string(kSamples)));
    ASSERT_TRUE(server->WaitForLine("PUBLISHED", kTimeout));
    ASSERT_TRUE(
        first.WaitFor([](const auto& seen) { return seen.samples.size() >= kSamples; }, kTimeout))
        << first.Snapshot().samples.size() << " samples arrived";
    const long after = static_cast<long>(vorx::driver::dds::MonotonicNowNs());
    const auto samples = first.Snapshot().samples;
    ASSERT_EQ(samples.size(), static_cast<size_t>(kSamples));
    for (int i = 0; i < kSamples; ++i) {
        EXPECT_EQ(samples[i].entityId, kEvent);
        EXPECT_EQ(samples[i].sequence, static_cast<uint64_t>(i + 1));
        EXPECT_EQ(samples[i].payload.GetBytes().at(0), static_cast<uint8_t>(i + 1));
        // Same host: the sender's monotonic send time, on our clock.
        EXPECT_GE(samples[i].sendTimeNs, before);
        EXPECT_LE(samples[i].sendTimeNs, after);
    }

    // After Unsubscribe nothing more arrives: a second client subscribed later
    // gets the next batch, and samples are delivered in order, so the first
    // would have had them by then.
    driver->Unsubscribe(client, kEvent);
    DriverRecorder second;
    const auto secondClient = driver->Connect(handle, second.ClientCallbacks());
    ASSERT_TRUE(driver->Subscribe(secondClient, kEvent));
    ASSERT_TRUE(server->Send("publish " + std::to_string(kEvent) + " 3"));
    ASSERT_TRUE(
        second.WaitFor([](const auto& seen) { return seen.samples.size() >= 3; }, kTimeout));
    EXPECT_EQ(second.Snapshot().samples.front().sequence, static_cast<uint64_t>(kSamples + 1));
    EXPECT_EQ(first.Snapshot().samples.size(), static_cast<size_t>(kSamples));

    driver->Disconnect(client);
    driver->Disconnect(secondClient);
    driver->StopFind(find);
}

TEST(DdsTwoProcess, OfferOfAKilledProcessIsLostWithinTheLease) {
    constexpr uint32_t kDomain = 204;
    const auto desc = Service(0x4321, "1", "/test/DoomedService");
    auto server = StartServer(kDomain, desc);
    ASSERT_TRUE(server->WaitForLine("READY", kStartTimeout));

    auto driver = MakeDriver(kDomain);
    ASSERT_TRUE(driver);
    DriverRecorder found;
    const auto find = driver->StartFind(desc, found.FindCallback());
    ASSERT_TRUE(found.WaitFor([](const auto& seen) { return DriverRecorder::HasList(seen, 1); },
                              kStartTimeout));
    DriverRecorder client;
    const auto id = driver->Connect(found.CurrentList().front(), client.ClientCallbacks());

    const auto killedAt = std::chrono::steady_clock::now();
    server->Kill(SIGKILL);
    const auto lease = std::chrono::milliseconds(ParticipantSettings().leaseDurationMs);
    // The lease is checked a little after it runs out; allow for a loaded machine.
    ASSERT_TRUE(found.WaitFor([](const auto& seen) { return DriverRecorder::HasList(seen, 0); },
                              lease + 5s));
    const auto noticedAfter = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - killedAt);
    std::cout << "offer lost " << noticedAfter.count() << " ms after SIGKILL (lease "
              << lease.count() << " ms)\n";
    EXPECT_TRUE(client.WaitFor([](const auto& seen) { return seen.lost == 1; }, kTimeout));

    vcc::MethodCall call;
    call.entityId = 1;
    EXPECT_FALSE(driver->SendRequest(id, std::move(call)));
    driver->Disconnect(id);
    driver->StopFind(find);
}

}  // namespace
