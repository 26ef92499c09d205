// The DDS driver's Driver behaviour between two participants of one process,
// on loopback.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>

#include "orx/maintaind/service.h"
#include "orx/test/watched.h"
#include "vorx/driver/dds/dds_driver.h"

namespace {

using namespace std::chrono_literals;
using vorx::driver::dds::DdsDriver;
using vorx::driver::dds::DdsStatus;
using vorx::driver::dds::MethodTopics;
using vorx::driver::dds::ParticipantSettings;
namespace vcc = vorx::vcc;

constexpr auto kTimeout = 10s;

std::shared_ptr<DdsDriver> MakeDriver(uint32_t domainId) {
    ParticipantSettings settings;
    settings.domainId = domainId;
    DdsStatus status;
    auto driver = DdsDriver::Create(settings, &status);
    EXPECT_TRUE(driver) << status.message();
    return driver;
}

vcc::ServiceDescription Service(const std::string& instanceId) {
    vcc::ServiceDescription desc;
    desc.serviceId = 0x2222;
    desc.instanceId = instanceId;
    desc.serviceName = "/test/LocalService";
    desc.driverType = vcc::api::types::DriverType::DDS;
    return desc;
}

using orx::test::Watched;

vcc::ServerCallbacks EchoServer(const std::shared_ptr<DdsDriver>& driver) {
    vcc::ServerCallbacks callbacks;
    std::weak_ptr<DdsDriver> weak = driver;
    callbacks.onRequest = [weak](vcc::ProviderId provider, const vcc::MethodCall& call) {
        // Reply from another thread, as a server that answers later would.
        std::thread([weak, provider, call] {
            vcc::MethodReply reply;
            reply.clientId = call.clientId;
            reply.entityId = call.entityId;
            reply.sessionId = call.sessionId;
            reply.payload = call.payload;
            if (auto self = weak.lock()) {
                self->SendReply(provider, std::move(reply));
            }
        }).detach();
    };
    return callbacks;
}

TEST(DdsDriver, SearchesGetTheCurrentListOnEveryChange) {
    auto server = MakeDriver(210);
    auto client = MakeDriver(210);
    ASSERT_TRUE(server && client);
    const auto one = server->Offer(Service("1"), {});
    const auto two = server->Offer(Service("2"), {});
    ASSERT_NE(one, 0u);
    ASSERT_NE(two, 0u);

    Watched<std::vector<size_t>> sizes;
    const auto find = client->StartFind(Service("65534"), [&](const auto& handles) {
        sizes.Change([&](auto& all) { all.push_back(handles.size()); });
    });
    ASSERT_TRUE(sizes.WaitFor([](const auto& all) { return !all.empty() && all.back() == 2; }));

    server->StopOffer(one);
    ASSERT_TRUE(sizes.WaitFor([](const auto& all) { return all.back() == 1; }));

    // A search that stops itself from inside its handler hears nothing after.
    Watched<int> selfStopped;
    std::mutex idMutex;
    vcc::FindId selfFind = 0;
    {
        std::lock_guard<std::mutex> starting(idMutex);
        selfFind = client->StartFind(Service("2"), [&](const auto&) {
            std::lock_guard<std::mutex> lock(idMutex);
            client->StopFind(selfFind);
            selfStopped.Change([](int& calls) { ++calls; });
        });
    }
    ASSERT_TRUE(selfStopped.WaitFor([](int calls) { return calls == 1; }));
    server->StopOffer(two);
    // The first search is told after the second would have been (same thread,
    // searches in the order they started).
    ASSERT_TRUE(sizes.WaitFor([](const auto& all) { return all.back() == 0; }));
    EXPECT_EQ(selfStopped.Get(), 1);
    client->StopFind(find);
}

TEST(DdsDriver, RequestsUseTheDeployedTopicsAndRepliesComeBack) {
    auto server = MakeDriver(211);
    auto client = MakeDriver(211);
    ASSERT_TRUE(server && client);
    client->SetMethodTopics(0x2222, 7, MethodTopics{"LocalAskTopic", "LocalAnswerTopic"});
    const auto provider = server->Offer(Service("1"), EchoServer(server));
    ASSERT_NE(provider, 0u);

    Watched<vcc::ServiceHandleContainer> found;
    const auto find = client->StartFind(Service("1"), [&](const auto& handles) {
        found.Change([&](auto& list) { list = handles; });
    });
    ASSERT_TRUE(found.WaitFor([](const auto& list) { return list.size() == 1; }));

    Watched<std::vector<vcc::MethodReply>> replies;
    vcc::ClientCallbacks callbacks;
    callbacks.onReply = [&](const vcc::MethodReply& reply) {
        replies.Change([&](auto& all) { all.push_back(reply); });
    };
    const auto id = client->Connect(found.Get().front(), callbacks);
    for (uint16_t session = 1; session <= 3; ++session) {
        vcc::MethodCall call;
        call.entityId = 7;
        call.sessionId = session;
        call.payload = vcc::Payload::FromBytes({static_cast<uint8_t>(session), 0xAB});
        ASSERT_TRUE(client->SendRequest(id, std::move(call)));
    }
    ASSERT_TRUE(replies.WaitFor([](const auto& all) { return all.size() == 3; }));
    for (const auto& reply : replies.Get()) {
        EXPECT_EQ(reply.payload.GetBytes(),
                  (std::vector<uint8_t>{static_cast<uint8_t>(reply.sessionId), 0xAB}));
    }
    EXPECT_EQ(server->Transport().AnnouncedRequestTopics(0x2222),
              (std::set<std::string>{"LocalAskTopic"}));

    // Objects cannot cross processes: refused, not sent.
    vcc::MethodCall objectCall;
    objectCall.entityId = 7;
    objectCall.payload = vcc::Payload::FromObject(std::make_shared<const int>(5));
    EXPECT_FALSE(client->SendRequest(id, std::move(objectCall)));
    EXPECT_EQ(client->GetPayloadMode(), vcc::PayloadMode::kBytes);

    // Requests of an unknown client, replies to an unknown client: refused.
    EXPECT_FALSE(client->SendRequest(id + 1000, vcc::MethodCall{}));
    vcc::MethodReply stray;
    stray.clientId = 12345;
    EXPECT_FALSE(server->SendReply(provider, stray));
    client->Disconnect(id);
    client->StopFind(find);
}

TEST(DdsDriver, ClientsHearOfLossAndDisconnectWaitsForARunningCallback) {
    auto server = MakeDriver(212);
    auto client = MakeDriver(212);
    ASSERT_TRUE(server && client);
    const auto provider = server->Offer(Service("1"), EchoServer(server));
    Watched<vcc::ServiceHandleContainer> found;
    const auto find = client->StartFind(Service("1"), [&](const auto& handles) {
        found.Change([&](auto& list) { list = handles; });
    });
    ASSERT_TRUE(found.WaitFor([](const auto& list) { return list.size() == 1; }));
    const auto handle = found.Get().front();

    // A reply callback that blocks until released.
    std::promise<void> entered;
    std::promise<void> release;
    auto released = release.get_future().share();
    vcc::ClientCallbacks blocking;
    blocking.onReply = [&](const vcc::MethodReply&) {
        entered.set_value();
        released.wait();
    };
    const auto blocked = client->Connect(handle, blocking);
    vcc::MethodCall call;
    call.entityId = 1;
    ASSERT_TRUE(client->SendRequest(blocked, call));
    ASSERT_EQ(entered.get_future().wait_for(kTimeout), std::future_status::ready);
    auto disconnecting = std::async(std::launch::async, [&] { client->Disconnect(blocked); });
    EXPECT_EQ(disconnecting.wait_for(100ms), std::future_status::timeout);
    release.set_value();
    EXPECT_EQ(disconnecting.wait_for(kTimeout), std::future_status::ready);

    // Withdrawing the offer tells the client that talked to it.
    Watched<int> lost;
    vcc::ClientCallbacks watching;
    watching.onServiceLost = [&] { lost.Change([](int& count) { ++count; }); };
    const auto other = client->Connect(handle, watching);
    server->StopOffer(provider);
    EXPECT_TRUE(lost.WaitFor([](int count) { return count == 1; }));
    EXPECT_TRUE(found.WaitFor([](const auto& list) { return list.empty(); }));
    client->Disconnect(other);
    client->StopFind(find);
}

}  // namespace

namespace {

TEST(DdsDriver, EventsReachSubscribersOfTheSameService) {
    auto server = MakeDriver(213);
    auto client = MakeDriver(213);
    ASSERT_TRUE(server && client);
    const auto provider = server->Offer(Service("1"), {});
    Watched<vcc::ServiceHandleContainer> found;
    const auto find = client->StartFind(Service("1"), [&](const auto& handles) {
        found.Change([&](auto& list) { list = handles; });
    });
    ASSERT_TRUE(found.WaitFor([](const auto& list) { return list.size() == 1; }));
    Watched<std::vector<vcc::EventSample>> samples;
    vcc::ClientCallbacks callbacks;
    callbacks.onEvent = [&](const vcc::EventSample& sample) {
        samples.Change([&](auto& all) { all.push_back(sample); });
    };
    const auto id = client->Connect(found.Get().front(), callbacks);
    ASSERT_TRUE(client->Subscribe(id, 9));
    const long before = static_cast<long>(vorx::driver::dds::MonotonicNowNs());
    for (uint8_t i = 1; i <= 5; ++i) {
        vcc::EventSample sample;
        sample.entityId = 9;
        sample.payload = vcc::Payload::FromBytes({i, 2, 3});
        EXPECT_TRUE(server->Publish(provider, std::move(sample)));
    }
    ASSERT_TRUE(samples.WaitFor([](const auto& all) { return all.size() == 5; }))
        << samples.Get().size();
    const long after = static_cast<long>(vorx::driver::dds::MonotonicNowNs());
    // In order, numbered, and stamped with the sender's monotonic time (the latency figures).
    const auto all = samples.Get();
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i].entityId, 9U);
        EXPECT_EQ(all[i].sequence, i + 1);
        EXPECT_EQ(all[i].payload.GetBytes().at(0), i + 1);
        EXPECT_GE(all[i].sendTimeNs, before);
        EXPECT_LE(all[i].sendTimeNs, after);
    }
    client->Disconnect(id);
    client->StopFind(find);
}

}  // namespace

namespace {

// One driver that serves a method and calls it, requests and replies sharing
// one topic: the server sees only requests, the client only its replies.
TEST(DdsDriver, OneDriverServesAndCallsOverASharedTopic) {
    auto driver = MakeDriver(214);
    ASSERT_TRUE(driver);
    driver->SetMethodTopics(0x2222, orx::maintaind::service::kRegisterAppMethodId,
                            MethodTopics{"SharedBothWays", "SharedBothWays"});
    Watched<int> requests;
    vcc::ServerCallbacks server = EchoServer(driver);
    auto echo = server.onRequest;
    server.onRequest = [&, echo](vcc::ProviderId provider, const vcc::MethodCall& call) {
        requests.Change([](int& count) { ++count; });
        echo(provider, call);
    };
    ASSERT_NE(driver->Offer(Service("1"), server), 0u);
    Watched<vcc::ServiceHandleContainer> found;
    const auto find = driver->StartFind(Service("1"), [&](const auto& handles) {
        found.Change([&](auto& list) { list = handles; });
    });
    ASSERT_TRUE(found.WaitFor([](const auto& list) { return list.size() == 1; }));

    Watched<std::vector<uint16_t>> sessions;
    vcc::ClientCallbacks callbacks;
    callbacks.onReply = [&](const vcc::MethodReply& reply) {
        sessions.Change([&](auto& all) { all.push_back(reply.sessionId); });
    };
    const auto id = driver->Connect(found.Get().front(), callbacks);
    for (uint16_t session = 1; session <= 5; ++session) {
        vcc::MethodCall call;
        call.entityId = orx::maintaind::service::kRegisterAppMethodId;
        call.sessionId = session;
        call.payload = vcc::Payload::FromBytes({1});
        ASSERT_TRUE(driver->SendRequest(id, std::move(call)));
    }
    ASSERT_TRUE(sessions.WaitFor([](const auto& all) { return all.size() == 5; }));
    // The echo server answers each request from a thread of its own.
    auto answered = sessions.Get();
    std::sort(answered.begin(), answered.end());
    EXPECT_EQ(answered, (std::vector<uint16_t>{1, 2, 3, 4, 5}));
    EXPECT_EQ(requests.Get(), 5);
    driver->Disconnect(id);
    driver->StopFind(find);
}

}  // namespace
