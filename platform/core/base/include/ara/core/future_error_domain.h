#ifndef ARA_CORE_FUTURE_ERROR_DOMAIN_H
#define ARA_CORE_FUTURE_ERROR_DOMAIN_H

#include <cstdint>

#include "ara/core/error_code.h"
#include "ara/core/error_domain.h"
#include "vorx/vcc/export.h"

namespace ara::core {

// Misuses of a future or a promise, as error codes. Futures and promises themselves report these
// conditions by throwing std::future_error with the matching std::future_errc.
enum class future_errc : std::int32_t {
    broken_promise = 101,             // the promise died without a result
    future_already_retrieved = 102,   // get_future() was called twice
    promise_already_satisfied = 103,  // a result was set twice
    no_state = 104,                   // the future or promise has no shared state
};

// Whether a wait ended because the result is there or because time ran out.
enum class future_status : std::uint8_t { ready = 1, timeout = 2 };

class VCC_EXPORT FutureErrorDomain final : public ErrorDomain {
  public:
    static constexpr IdType kId = 0x8000000000000013ULL;
    constexpr FutureErrorDomain() noexcept : ErrorDomain(kId) {}
    const char* Name() const override;  // "Future"
    const char* Message(CodeType code) const override;
};

// The single instance of the future error domain.
VCC_EXPORT const ErrorDomain& GetFutureErrorDomain() noexcept;
VCC_EXPORT ErrorCode MakeErrorCode(future_errc code,
                                   ErrorDomain::SupportDataType data = 0) noexcept;

}  // namespace ara::core

#endif  // ARA_CORE_FUTURE_ERROR_DOMAIN_H
