#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_REQUEST_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_REQUEST_H

#include <chrono>
#include <cstdint>
#include <memory>

#include "ara/core/future.h"
#include "ara/kelda/common/log/log.h"
#include "orx/maintaind/types.h"
#include "orxmaintaind/maintaind_client_error_code.h"
#include "vorx/vcc/mono_time.h"

namespace vorx {
namespace vcc {
class Proxy;
}  // namespace vcc
}  // namespace vorx

namespace orx {
namespace orxcm {
namespace orxmaintaind {

// What became of one request to the daemon's RegisterApp method.
enum class RequestOutcome : uint8_t {
    kNoMethod,      // no proxy, or the proxy has no RegisterApp method (yet)
    kTimeout,       // no reply within 300 ms
    kSendFailed,    // error result, or a future error
    kReplyProblem,  // a reply with return code 1
    kReply,         // a reply with any other return code
};

// How the 300 ms wait for the reply is measured.
enum class ReplyWait : uint8_t {
    kRelative,        // wait_for(300 ms) on the future
    kSystemDeadline,  // wait_until(system clock at sending + 300 ms)
};

// Where a per-kind client sends: the daemon's proxy (empty until the daemon has been found) and
// the clock that times the wait for the reply (the real clock, or a test's manual clock). The
// client core hands it to the per-kind clients before each send, so they never look the client
// core up themselves (it may be in its destructor, still sending scheduled withdrawals).
struct DaemonLink {
    std::shared_ptr<vorx::vcc::Proxy> proxy;
    std::shared_ptr<vorx::vcc::MonoClock> clock = vorx::vcc::MonoClock::Real();
};

// Sends `request` through the RegisterApp method of the link's proxy and waits at most 300 ms of
// the link's clock for the reply. Never throws for daemon-side failures: a missing proxy or
// method, a timeout, an error result and the standard future errors (no state, broken promise,
// already retrieved, already satisfied) come back as outcomes. Any other exception of the core
// passes through. Blocks the calling thread for up to 300 ms; the request itself is logged by
// the core.
RequestOutcome RequestRegisterApp(const DaemonLink& link,
                                  const orx::maintaind::AppRegisterInfo& request, ReplyWait wait);

// How long a request waits for the daemon's reply.
constexpr std::chrono::milliseconds kReplyTimeout{300};

// Waits for `future` (an ara::core::Future) to be ready, the way `wait` says, until 300 ms of
// `clock` after `sentAt` (the clock's time when the request was sent); true when it is. A future
// without state is asked once, so its notice is printed once, and counts as not ready.
template <typename Future>
bool WaitForReply(const Future& future, ReplyWait wait, vorx::vcc::MonoClock& clock, long sentAt) {
    const auto waitReal = [&future, wait](std::chrono::nanoseconds left) {
        const auto status = (wait == ReplyWait::kRelative)
                                ? future.wait_for(left)
                                : future.wait_until(std::chrono::system_clock::now() + left);
        return status == ara::core::future_status::ready;
    };
    if (!future.valid()) {
        return waitReal(std::chrono::nanoseconds(0));
    }
    const long deadline =
        sentAt + std::chrono::duration_cast<std::chrono::nanoseconds>(kReplyTimeout).count();
    return clock.WaitFor(deadline, waitReal);
}

// The error code the callers return for an outcome: both reply outcomes count as delivered.
type::MaintaindClientErrorCode ToErrorCode(RequestOutcome outcome);

// The log lines of one kind of report, one per outcome. Every line goes out at debug level except
// the plain reply line, whose level differs between the kinds.
struct RequestLogTexts {
    const char* noMethod;
    const char* timeout;
    const char* sendFailed;
    const char* replyProblem;
    const char* reply;
    ara::kelda::common::log::LogLevel replyLevel;
};

// Logs the line of `outcome` from `texts` and returns its error code.
type::MaintaindClientErrorCode ReportRequestOutcome(ara::kelda::common::log::Log& logger,
                                                    RequestOutcome outcome,
                                                    const RequestLogTexts& texts);

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
