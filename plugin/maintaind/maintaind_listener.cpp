#include "maintaind/maintaind_listener.h"

#include <exception>
#include <utility>

#include "ara/core/error_code.h"
#include "ara/core/future.h"
#include "orx/maintaind/app.h"
#include "orx/maintaind/enums.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "orxmaintaind/orx_maintaind_type.h"
#include "vorx/vcc/proxy.h"

namespace orx {
namespace orxcm {
namespace maintaind {

namespace {

namespace log = ara::kelda::common::log;

using orxmaintaind::type::kRegisterAppMethodId;

using ReplyFuture = ara::core::Future<orx::maintaind::ReturnCode, ara::core::ErrorCode>;

// Checks the daemon's reply to one notice; runs on whichever thread completes the reply.
void CheckReply(const std::shared_ptr<log::Log>& logger, ReplyFuture reply) {
    bool failed = true;
    bool problem = false;
    try {
        const auto result = reply.GetResult();
        failed = !result.HasValue();
        problem = !failed && result.Value().code == 1U;
    } catch (const std::exception&) {
        // The reply's promise broke: the same as an error reply.
    }
    if (failed) {
        logger->LogWarn(log::DefaultLimitConfig("MaintaindListener_NotifyFailed"))
            << "[MaintaindListener][OrxMaintaindClient cannot notify listener data]";
    } else if (problem) {
        logger->LogWarn(log::DefaultLimitConfig("MaintaindListener_NotifyProblem"))
            << "[MaintaindListener][Get Maintaind reply, but maybe has some problem with notify "
               "listener data]";
    }
}

}  // namespace

MaintaindListener::MaintaindListener()
    : logger_(log::Log::GetLog("CM")), client_(orxmaintaind::OrxMaintaindClient::GetInstance()) {}

MaintaindListener::~MaintaindListener() = default;

void MaintaindListener::OnSampleTimeout(const vorx::vcc::api::types::ListenerTimeoutInfo& info,
                                        vorx::vcc::api::types::DriverType /*driverType*/) {
    try {
        const auto client = client_.lock();
        const auto proxy = client ? client->GetMaintaindProxy() : nullptr;
        const auto method =
            proxy ? proxy->GetMethodProxy<orx::maintaind::ReturnCode>(kRegisterAppMethodId)
                  : nullptr;
        if (!method) {
            logger_->LogWarn(log::DefaultLimitConfig("MaintaindListener_NoProxy"))
                << "Proxy is not created, register event info fail.";
            return;
        }

        // Only the listener entry is filled; the report kind stays at its default too.
        orx::maintaind::AppRegisterInfo request;
        orx::maintaind::ListenerParams& params =
            request.listenerParams[orx::maintaind::ListenerType::SAMPLE_TIMEOUT];
        params.listenerName = info.name;
        params.sampleTimeout = info.sampleTimeout;
        params.sampleTimeoutCount = info.sampleTimeoutCount;

        ReplyFuture reply = method->Request(request);
        if (!reply.valid()) {
            CheckReply(logger_, std::move(reply));
            return;
        }
        // Never wait here: the core calls us on the thread that watches its subscribers.
        auto logger = logger_;
        reply.then([logger](ReplyFuture done) { CheckReply(logger, std::move(done)); });
    } catch (const std::exception& e) {
        // The core must not see our failures; the notice is lost like any unsent one.
        logger_->LogWarn(log::DefaultLimitConfig("MaintaindListener_Exception"))
            << "[MaintaindListener][Notify listener data failed][reason=" << e.what() << "]";
    }
}

void MaintaindListener::SetTimeoutThreshold(uint32_t threshold) {
    timeoutThreshold_.store(threshold, std::memory_order_relaxed);
}

uint32_t MaintaindListener::GetTimeoutThreshold() const {
    return timeoutThreshold_.load(std::memory_order_relaxed);
}

}  // namespace maintaind
}  // namespace orxcm
}  // namespace orx
