#include "ara/core/future_error_domain.h"

#include <cstdio>

#include "ara/core/internal/future_state.h"
#include "ara/kelda/common/log/log.h"

namespace ara::core {

const char* FutureErrorDomain::Name() const {
    return "Future";
}

const char* FutureErrorDomain::Message(CodeType code) const {
    switch (static_cast<future_errc>(code)) {
        case future_errc::broken_promise:
            return "the asynchronous task abandoned its shared state";
        case future_errc::future_already_retrieved:
            return "the contents of the shared state were already accessed";
        case future_errc::promise_already_satisfied:
            return "attempt to store a value into the shared state twice";
        case future_errc::no_state:
            return "no shared state exists";
    }
    return "unknown future error";
}

const ErrorDomain& GetFutureErrorDomain() noexcept {
    static const FutureErrorDomain domain;  // trivially destructible: lives until the end
    return domain;
}

ErrorCode MakeErrorCode(future_errc code, ErrorDomain::SupportDataType data) noexcept {
    return ErrorCode(static_cast<ErrorDomain::CodeType>(code), GetFutureErrorDomain(), data);
}

namespace internal {

void PrintInvalidFutureStatusNotice() {
    // Callers grep for this exact line; keep its wording.
    std::fputs(
        "[CORETYPE Future]: Error, Invlid future_status of Future, rerutn default value: "
        "timeout\n",
        stdout);
    std::fflush(stdout);
}

void ReportContinuationFailure(const char* what) noexcept {
    try {
        ara::kelda::common::log::Log::GetLog("CM")->LogError()
            << "[CORETYPE Future][Continuation threw, its future ends with broken_promise][what="
            << (what != nullptr ? what : "unknown") << "]";
    } catch (...) {
        // Nothing sensible is left to do; the completing thread must go on.
    }
}

}  // namespace internal
}  // namespace ara::core
