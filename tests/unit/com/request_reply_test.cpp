#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>

#include "method_fixture.h"
#include "orx/test/record_filler.h"

namespace vorx::vcc::test {
namespace {

class RequestReplyTest : public MethodChannelTest,
                         public ::testing::WithParamInterface<PayloadMode> {
  protected:
    void SetUp() override {
        DriverRegistry::GetInstance()->GetInProcessDriver()->SetPayloadMode(GetParam());
        MethodChannelTest::SetUp();
    }
};

TEST_P(RequestReplyTest, FullRecordRoundTripsAndReplyCompletesOnTheDriverThread) {
    AppRegisterInfo info = orx::test::FilledRecord<AppRegisterInfo>();
    info.kind = 1;
    std::atomic<bool> continuationOnOtherThread{false};
    const auto testThread = std::this_thread::get_id();

    // The server answers the first request only once the continuation is attached.
    std::mutex heldMutex;
    std::vector<Responder<ReturnCode>> held;
    Serve([&](const AppRegisterInfo&, Responder<ReturnCode> responder) {
        std::lock_guard<std::mutex> lock(heldMutex);
        held.push_back(responder);
    });
    auto first = method_->Request(info);
    auto done = first.then([&](ara::core::Future<ReturnCode> reply) {
        continuationOnOtherThread = std::this_thread::get_id() != testThread;
        return reply.GetResult().Value().code;
    });
    ASSERT_TRUE(WaitFor([&] {
        std::lock_guard<std::mutex> lock(heldMutex);
        return held.size() == 1;
    }));
    held[0].Reply(ReturnCode{info.kind});
    Serve([](const AppRegisterInfo& request, Responder<ReturnCode> responder) {
        responder.Reply(ReturnCode{request.kind});
    });
    ASSERT_EQ(done.wait_for(2s), ara::core::future_status::ready);
    EXPECT_EQ(done.get(), 1);
    EXPECT_TRUE(continuationOnOtherThread.load());

    info.kind = 0;
    auto second = method_->Request(info);
    const auto result = Await(second);
    ASSERT_TRUE(result.HasValue());
    EXPECT_EQ(result.Value().code, 0);

    const auto received = Received();
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[1], info);
    EXPECT_EQ(method_->WaitingCount(), 0u);
}

TEST_P(RequestReplyTest, MethodsWithSeveralOrNoArgumentsCarryThemAll) {
    skeleton_->RegisterMethod<std::string, int32_t, std::string, bool>(
        2, [](const int32_t& number, const std::string& text, const bool& flag,
              Responder<std::string> responder) {
            responder.Reply(text + ":" + std::to_string(number) + (flag ? ":yes" : ":no"));
        });
    skeleton_->RegisterMethod<uint32_t>(
        3, [](Responder<uint32_t> responder) { responder.Reply(77u); });
    auto info = std::make_shared<api::types::MethodInfo>();
    info->SetEntityId(2);
    auto several = proxy_->InitializeMethodProxy<std::string>(info);
    info->SetEntityId(3);
    auto none = proxy_->InitializeMethodProxy<uint32_t>(info);
    ASSERT_NE(several, nullptr);
    ASSERT_NE(none, nullptr);

    auto text = several->Request(int32_t{-5}, std::string("radar"), true);
    auto number = none->Request();
    ASSERT_EQ(text.wait_for(2s), ara::core::future_status::ready);
    ASSERT_EQ(number.wait_for(2s), ara::core::future_status::ready);
    EXPECT_EQ(text.get(), "radar:-5:yes");
    EXPECT_EQ(number.get(), 77u);
}

INSTANTIATE_TEST_SUITE_P(PayloadModes, RequestReplyTest,
                         ::testing::Values(PayloadMode::kBytes, PayloadMode::kObjects),
                         [](const ::testing::TestParamInfo<PayloadMode>& param) {
                             return param.param == PayloadMode::kBytes ? "Bytes" : "Objects";
                         });

TEST_F(MethodChannelTest, MethodProxiesAreKeptPerEntityAndReturnType) {
    auto again = proxy_->InitializeMethodProxy<ReturnCode>(MethodDescription());
    EXPECT_EQ(again, method_);
    EXPECT_EQ(proxy_->GetMethodProxy<ReturnCode>(kMethodId), method_);
    EXPECT_EQ(proxy_->GetMethodProxy<ReturnCode>(99), nullptr);
    EXPECT_EQ(proxy_->GetMethodProxy<uint32_t>(kMethodId), nullptr);
    EXPECT_EQ(proxy_->InitializeMethodProxy<uint32_t>(MethodDescription()), nullptr);
    EXPECT_EQ(proxy_->InitializeMethodProxy<ReturnCode>(nullptr), nullptr);
    EXPECT_EQ(method_->GetEntityId(), kMethodId);
}

TEST_F(MethodChannelTest, ServiceLossFailsWaitingRequestsAndTheProxyWorksAfterReoffer) {
    Serve([](const AppRegisterInfo&, Responder<ReturnCode>) {});  // never replies
    method_->SetNextSessionId(30);
    auto first = method_->Request(AppRegisterInfo{});
    auto second = method_->Request(AppRegisterInfo{});
    ASSERT_TRUE(WaitFor([&] { return Received().size() == 2; }));

    skeleton_->StopOfferService();
    for (auto* future : {&first, &second}) {
        const auto result = Await(*future);
        ASSERT_FALSE(result.HasValue());
        EXPECT_EQ(result.Error(), ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable));
    }
    EXPECT_EQ(Log().Count(Level::kInfo, "Server is disappeared, promise for session 30"), 1u);
    EXPECT_EQ(Log().Count(Level::kInfo, "Server is disappeared, promise for session 31"), 1u);

    // While nothing is offered a request cannot be sent at all.
    auto unsent = method_->Request(AppRegisterInfo{});
    ASSERT_TRUE(unsent.is_ready());
    EXPECT_EQ(unsent.GetResult().Error().Value(), 3);

    Serve([](const AppRegisterInfo&, Responder<ReturnCode> responder) {
        responder.Reply(ReturnCode{1});
    });
    ASSERT_TRUE(skeleton_->OfferService());
    auto afterReoffer = method_->Request(AppRegisterInfo{});
    const auto result = Await(afterReoffer);
    ASSERT_TRUE(result.HasValue());
    EXPECT_EQ(result.Value().code, 1);
}

TEST_F(MethodChannelTest, DestroyedProxyFailsWaitingAndLaterRequests) {
    Serve([](const AppRegisterInfo&, Responder<ReturnCode>) {});
    auto waiting = method_->Request(AppRegisterInfo{});
    ASSERT_TRUE(WaitFor([&] { return Received().size() == 1; }));

    proxy_.reset();
    const auto lost = Await(waiting);
    ASSERT_FALSE(lost.HasValue());
    EXPECT_EQ(lost.Error().Value(), 1);

    auto late = method_->Request(AppRegisterInfo{});
    ASSERT_TRUE(late.is_ready());
    EXPECT_EQ(late.GetResult().Error(),
              ara::com::MakeErrorCode(ara::com::ComErrc::kNetworkBindingFailure));
    EXPECT_EQ(Log().Count(Level::kWarn,
                          "[MethodProxyImpl][Method driver is nullptr, request failed][id=1]"),
              1u);
}

TEST_F(MethodChannelTest, ReplyLaterFromAnotherThreadAndOnlyOnce) {
    std::vector<Responder<ReturnCode>> held;
    std::mutex heldMutex;
    Serve([&](const AppRegisterInfo&, Responder<ReturnCode> responder) {
        std::lock_guard<std::mutex> lock(heldMutex);
        held.push_back(responder);
    });
    auto future = method_->Request(AppRegisterInfo{});
    ASSERT_TRUE(WaitFor([&] {
        std::lock_guard<std::mutex> lock(heldMutex);
        return held.size() == 1;
    }));
    Responder<ReturnCode> responder = held[0];
    std::thread([responder] { EXPECT_TRUE(responder.Reply(ReturnCode{1})); }).join();
    EXPECT_FALSE(responder.Reply(ReturnCode{0}));
    EXPECT_FALSE(
        responder.ReplyError(ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotOffered)));
    const auto result = Await(future);
    ASSERT_TRUE(result.HasValue());
    EXPECT_EQ(result.Value().code, 1);
}

}  // namespace
}  // namespace vorx::vcc::test
