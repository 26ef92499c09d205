#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_REQUEST_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_REQUEST_H

#include <cstdint>
#include <memory>

#include "ara/kelda/common/log/log.h"
#include "orx/maintaind/types.h"
#include "orxmaintaind/maintaind_client_error_code.h"

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

// Sends `request` through the RegisterApp method of `proxy` and waits at most 300 ms for the
// reply. Never throws for daemon-side failures: a missing proxy or method, a timeout, an error
// result and the standard future errors (no state, broken promise, already retrieved, already
// satisfied) come back as outcomes. Any other exception of the core passes through. Blocks the
// calling thread for up to 300 ms; the request itself is logged by the core.
RequestOutcome RequestRegisterApp(const std::shared_ptr<vorx::vcc::Proxy>& proxy,
                                  const orx::maintaind::AppRegisterInfo& request, ReplyWait wait);

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
