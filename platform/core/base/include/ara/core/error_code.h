#ifndef ARA_CORE_ERROR_CODE_H
#define ARA_CORE_ERROR_CODE_H

#include <exception>
#include <string>
#include <type_traits>
#include <utility>

#include "ara/core/error_domain.h"

namespace ara::core {

// One error: a value within a domain, plus optional support data that takes no part in
// comparisons. A plain value type; it refers to its domain, which lives for the whole process.
class ErrorCode final {
  public:
    // Builds the code from an error enumeration through the MakeErrorCode overload of the
    // enumeration's namespace, e.g. `ErrorCode ec = ara::com::ComErrc::kServiceNotAvailable;`.
    // Only enumerations that have such an overload take part in overload resolution.
    template <typename EnumT, typename = std::enable_if_t<std::is_enum<EnumT>::value>,
              typename = decltype(MakeErrorCode(std::declval<EnumT>(),
                                                ErrorDomain::SupportDataType{}))>
    ErrorCode(EnumT e, ErrorDomain::SupportDataType data = 0)  // NOLINT(runtime/explicit)
        : ErrorCode(MakeErrorCode(e, data)) {}

    constexpr ErrorCode(ErrorDomain::CodeType value, const ErrorDomain& domain,
                        ErrorDomain::SupportDataType data = 0) noexcept
        : value_(value), data_(data), domain_(&domain) {}

    constexpr ErrorDomain::CodeType Value() const noexcept { return value_; }
    constexpr ErrorDomain::SupportDataType SupportData() const noexcept { return data_; }
    constexpr const ErrorDomain& Domain() const noexcept { return *domain_; }
    std::string Message() const { return domain_->Message(value_); }

    // Throws the domain's exception for this code.
    [[noreturn]] void ThrowAsException() const {
        domain_->ThrowAsException(*this);
        std::terminate();  // only reached if a domain breaks its contract and returns
    }

    friend constexpr bool operator==(const ErrorCode& a, const ErrorCode& b) noexcept {
        return *a.domain_ == *b.domain_ && a.value_ == b.value_;
    }
    friend constexpr bool operator!=(const ErrorCode& a, const ErrorCode& b) noexcept {
        return !(a == b);
    }

  private:
    ErrorDomain::CodeType value_;
    ErrorDomain::SupportDataType data_;
    const ErrorDomain* domain_;
};

}  // namespace ara::core

#endif  // ARA_CORE_ERROR_CODE_H
