// The request channel's protocol under faults: lost requests, failed sends, stray, malformed and
// error replies, and what each logs.
#include <gtest/gtest.h>

#include <mutex>
#include <vector>

#include "method_fixture.h"
#include "vorx/serialize/cdr.h"

namespace vorx::vcc::test {
namespace {

using ara::com::ComErrc;
using ara::com::MakeErrorCode;

// An application error domain of the test's own, declared by the method as "RadarErrors".
class RadarErrorDomain final : public ara::core::ErrorDomain {
  public:
    constexpr RadarErrorDomain() : ErrorDomain(0x42) {}
    const char* Name() const override { return "RadarErrors"; }
    const char* Message(CodeType) const override { return "radar error"; }
};

class UndeclaredErrorDomain final : public ara::core::ErrorDomain {
  public:
    constexpr UndeclaredErrorDomain() : ErrorDomain(0x99) {}
    const char* Name() const override { return "Undeclared"; }
    const char* Message(CodeType) const override { return "undeclared"; }
};

const RadarErrorDomain kRadarErrors;
const UndeclaredErrorDomain kUndeclared;

TEST_F(MethodChannelTest, RequestWithAWaitingSessionIdReplacesTheWaitingOne) {
    std::mutex heldMutex;
    std::vector<Responder<ReturnCode>> held;
    Serve([&](const AppRegisterInfo&, Responder<ReturnCode> responder) {
        std::lock_guard<std::mutex> lock(heldMutex);
        held.push_back(responder);
    });
    method_->SetNextSessionId(5);
    auto lost = method_->Request(AppRegisterInfo{});
    method_->SetNextSessionId(5);
    auto replacing = method_->Request(AppRegisterInfo{});
    EXPECT_EQ(
        Log().Count(Level::kWarn,
                    "[MethodProxyImpl][Method has been lost, and the new request will replace "
                    "the old one][entityId=1, sessionId=5]"),
        1u);
    EXPECT_EQ(method_->WaitingCount(), 1u);
    ASSERT_TRUE(WaitFor([&] {
        std::lock_guard<std::mutex> lock(heldMutex);
        return held.size() == 2;
    }));

    held[1].Reply(ReturnCode{1});
    const auto result = Await(replacing);
    ASSERT_TRUE(result.HasValue());
    EXPECT_EQ(result.Value().code, 1);
    // The replaced caller is never answered: it ends by its own timeout, not by an error.
    EXPECT_EQ(lost.wait_for(100ms), ara::core::future_status::timeout);

    // A late reply to the replaced request finds no waiting session.
    held[0].Reply(ReturnCode{0});
    ASSERT_TRUE(Log().WaitForContaining(
        Level::kWarn, "[MethodProxyImpl][Unexpected session id][sessionId=5, methodEntityId=1]", 1,
        2s));
    EXPECT_FALSE(lost.is_ready());
}

TEST_F(MethodChannelTest, FailedSendIsReadyAtOnceWithNetworkBindingFailure) {
    faults_->FailNext(FaultChannel::kRequest);
    auto future = method_->Request(AppRegisterInfo{});
    ASSERT_TRUE(future.is_ready());
    const auto result = future.GetResult();
    ASSERT_FALSE(result.HasValue());
    EXPECT_EQ(result.Error().Value(), 3);
    EXPECT_EQ(result.Error().Domain(), ara::com::GetComErrorDomain());
    EXPECT_EQ(result.Error().Message(), "kNetworkBindingFailure");
    EXPECT_EQ(method_->WaitingCount(), 0u);
    EXPECT_EQ(Log().Count(Level::kWarn, "[MethodProxyImpl][Method request failed][id=1]"), 1u);
    EXPECT_TRUE(Received().empty());

    // Dropped and delayed requests are sent as far as the caller can tell.
    faults_->DropNext(FaultChannel::kRequest);
    auto dropped = method_->Request(AppRegisterInfo{});
    EXPECT_EQ(dropped.wait_for(50ms), ara::core::future_status::timeout);
    faults_->DelayNext(FaultChannel::kRequest, 50ms);
    auto delayed = method_->Request(AppRegisterInfo{});
    EXPECT_FALSE(delayed.is_ready());
    EXPECT_TRUE(Await(delayed).HasValue());
}

TEST_F(MethodChannelTest, ReplyForUnknownSessionIsDropped) {
    faults_->SetReplyRewriter([](MethodReply& reply) { reply.sessionId = 999; });
    method_->SetNextSessionId(12);
    auto future = method_->Request(AppRegisterInfo{});
    ASSERT_TRUE(Log().WaitForContaining(
        Level::kWarn, "[MethodProxyImpl][Unexpected session id][sessionId=999, methodEntityId=1]",
        1, 2s));
    EXPECT_FALSE(future.is_ready());
    EXPECT_EQ(method_->WaitingCount(), 1u);
}

TEST_F(MethodChannelTest, ErrorRepliesMapToTheirDomains) {
    Serve([](const AppRegisterInfo& info, Responder<ReturnCode> responder) {
        switch (info.kind) {
            case 0:
                responder.ReplyError(MakeErrorCode(ComErrc::kServiceNotOffered));
                break;
            case 1:
                responder.ReplyError(ara::core::ErrorCode(7, kRadarErrors));
                break;
            default:
                responder.ReplyError(ara::core::ErrorCode(7, kUndeclared), "boom");
                break;
        }
    });
    AppRegisterInfo request;
    request.kind = 0;
    auto core = method_->Request(request);
    const auto coreResult = Await(core);
    ASSERT_FALSE(coreResult.HasValue());
    EXPECT_EQ(coreResult.Error(), MakeErrorCode(ComErrc::kServiceNotOffered));

    request.kind = 1;
    auto application = method_->Request(request);
    const auto appResult = Await(application);
    ASSERT_FALSE(appResult.HasValue());
    EXPECT_EQ(appResult.Error().Value(), 7);
    EXPECT_EQ(appResult.Error().Domain().Id(), 0x42u);
    EXPECT_STREQ(appResult.Error().Domain().Name(), "RadarErrors");

    request.kind = 2;
    auto unregistered = method_->Request(request);
    const auto unregisteredResult = Await(unregistered);
    ASSERT_FALSE(unregisteredResult.HasValue());
    EXPECT_EQ(unregisteredResult.Error().Value(), 14);
    EXPECT_EQ(Log().Count(Level::kWarn,
                          "[MethodProxyImpl][Receive unregistered error][errorDomain=153, "
                          "errorCode=7, methodMessage=boom]"),
              1u);

    faults_->SetReplyRewriter([](MethodReply& reply) { reply.errorCode = {1, 2}; });
    method_->SetNextSessionId(20);
    auto undecodable = method_->Request(request);
    const auto undecodableResult = Await(undecodable);
    ASSERT_FALSE(undecodableResult.HasValue());
    EXPECT_EQ(undecodableResult.Error().Value(), 14);
    EXPECT_EQ(Log().Count(Level::kWarn,
                          "[MethodProxyImpl][Invalid return error code value][methodEntityId=1, "
                          "sessionId=20]"),
              1u);
}

TEST_F(MethodChannelTest, MalformedRepliesFailTheCallWithTheirWarning) {
    struct Case {
        std::function<void(MethodReply&)> spoil;
        int32_t expectedError;
        std::string expectedLine;
    };
    const std::vector<Case> cases = {
        {[](MethodReply& r) {
             r.payload = Payload::FromBytes({0xFF, 0xFF, 0xFF});
         },
         14,
         "[MethodProxyImpl][Invalid return value for method. Please check the consistency of the "
         "return data type][methodEntityId=1, sessionId=40]"},
        {[](MethodReply& r) { r.payload = Payload::FromObject(std::make_shared<const int>(1)); },
         14,
         "[MethodProxyImpl][Invalid return value for method. Please check the consistency of the "
         "return data type][methodEntityId=1, sessionId=41]"},
        {[](MethodReply& r) { r.kind = ReplyKind::kInvalid; }, 14,
         "[MethodProxyImpl][Invalid method reply for method][methodEntityId=1, sessionId=42]"},
        {[](MethodReply& r) { r.tlsFailure = true; }, 5,
         "[MethodProxyImpl][TLS error code kPeerIsUnreachable is set][methodEntityId=1, "
         "sessionId=43]"},
        {[](MethodReply& r) { r.e2eResult = 2; }, 14,
         "Setting Response with E2E Error Code for [entityId = 1]"},
    };
    method_->SetNextSessionId(40);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expectedLine);
        faults_->SetReplyRewriter(c.spoil);
        auto future = method_->Request(AppRegisterInfo{});
        const auto result = Await(future);
        ASSERT_FALSE(result.HasValue());
        EXPECT_EQ(result.Error().Value(), c.expectedError);
        EXPECT_EQ(result.Error().Domain(), ara::com::GetComErrorDomain());
        EXPECT_EQ(Log().Count(Level::kWarn, c.expectedLine), 1u);
    }
    EXPECT_EQ(method_->WaitingCount(), 0u);
}

TEST_F(MethodChannelTest, UnusableSerializationSettingsFailBeforeSending) {
    auto info = MethodDescription();
    info->SetEntityId(5);
    info->SetRequestSerializeType(api::types::SerializeType::RAW);
    auto rawType = proxy_->InitializeMethodProxy<ReturnCode>(info);
    ASSERT_NE(rawType, nullptr);
    auto first = rawType->Request(AppRegisterInfo{});
    ASSERT_TRUE(first.is_ready());
    EXPECT_EQ(first.GetResult().Error().Value(), 3);
    EXPECT_EQ(Log().Count(Level::kError, "Wrong serialize type, serialize error!"), 1u);

    info->SetEntityId(6);
    info->SetRequestSerializeType(api::types::SerializeType::CDR);
    info->SetRequestSerializeConfig(api::types::SerializeSetting{2, ""});
    auto rawConfig = proxy_->InitializeMethodProxy<ReturnCode>(info);
    auto second = rawConfig->Request(AppRegisterInfo{});
    ASSERT_TRUE(second.is_ready());
    EXPECT_EQ(second.GetResult().Error().Value(), 3);
    EXPECT_EQ(Log().Count(Level::kError, "Wrong method serialize config, serialize error!"), 1u);
    EXPECT_TRUE(Received().empty());
}

}  // namespace
}  // namespace vorx::vcc::test
