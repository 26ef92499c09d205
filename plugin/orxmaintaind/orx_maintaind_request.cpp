#include "orxmaintaind/orx_maintaind_request.h"

#include <chrono>
#include <future>

#include "orxmaintaind/orx_maintaind_type.h"
#include "vorx/vcc/proxy.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

namespace {

using ReplyFuture = ara::core::Future<orx::maintaind::ReturnCode, ara::core::ErrorCode>;

// The future errors that mean "this request produced no result"; anything else is a fault of
// the core and is not ours to hide.
bool IsLostRequest(const std::future_error& error) {
    const std::error_code code = error.code();
    return code == std::future_errc::future_already_retrieved ||
           code == std::future_errc::promise_already_satisfied ||
           code == std::future_errc::no_state || code == std::future_errc::broken_promise;
}

}  // namespace

RequestOutcome RequestRegisterApp(const DaemonLink& link,
                                  const orx::maintaind::AppRegisterInfo& request, ReplyWait wait) {
    if (!link.proxy) {
        return RequestOutcome::kNoMethod;
    }
    const auto method =
        link.proxy->GetMethodProxy<orx::maintaind::ReturnCode>(type::kRegisterAppMethodId);
    if (!method) {
        return RequestOutcome::kNoMethod;
    }
    const long sentAt = link.clock->Now();
    ReplyFuture future = method->Request(request);
    if (!WaitForReply(future, wait, *link.clock, sentAt)) {
        return RequestOutcome::kTimeout;
    }
    try {
        const auto result = future.GetResult();
        if (!result.HasValue()) {
            return RequestOutcome::kSendFailed;
        }
        return (result.Value().code == 1U) ? RequestOutcome::kReplyProblem : RequestOutcome::kReply;
    } catch (const std::future_error& error) {
        if (!IsLostRequest(error)) {
            throw;
        }
        return RequestOutcome::kSendFailed;
    }
}

type::MaintaindClientErrorCode ToErrorCode(RequestOutcome outcome) {
    switch (outcome) {
        case RequestOutcome::kNoMethod:
            return type::MaintaindClientErrorCode::kNotInitialized;
        case RequestOutcome::kTimeout:
            return type::MaintaindClientErrorCode::kTimeout;
        case RequestOutcome::kSendFailed:
            return type::MaintaindClientErrorCode::kSendFailed;
        case RequestOutcome::kReplyProblem:
        case RequestOutcome::kReply:
            return type::MaintaindClientErrorCode::kOk;
    }
    return type::MaintaindClientErrorCode::kSendFailed;
}

type::MaintaindClientErrorCode ReportRequestOutcome(ara::kelda::common::log::Log& logger,
                                                    RequestOutcome outcome,
                                                    const RequestLogTexts& texts) {
    switch (outcome) {
        case RequestOutcome::kNoMethod:
            logger.LogDebug() << texts.noMethod;
            break;
        case RequestOutcome::kTimeout:
            logger.LogDebug() << texts.timeout;
            break;
        case RequestOutcome::kSendFailed:
            logger.LogDebug() << texts.sendFailed;
            break;
        case RequestOutcome::kReplyProblem:
            logger.LogDebug() << texts.replyProblem;
            break;
        case RequestOutcome::kReply:
            logger.LogAt(texts.replyLevel) << texts.reply;
            break;
    }
    return ToErrorCode(outcome);
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
