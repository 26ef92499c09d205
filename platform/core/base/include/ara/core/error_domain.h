#ifndef ARA_CORE_ERROR_DOMAIN_H
#define ARA_CORE_ERROR_DOMAIN_H

#include <cstdint>

#include "vorx/vcc/export.h"

namespace ara::core {

class ErrorCode;

// A family of error codes (communication errors, future errors, ...). Each domain exists once per
// process: hand out a reference to an out-of-line instance and compare domains by Id().
//
// Domains are trivially destructible on purpose: a function-local static instance is never torn
// down at process exit, so error codes stay readable in code that runs during static destruction.
class VCC_EXPORT ErrorDomain {
  public:
    using IdType = std::uint64_t;
    using CodeType = std::int32_t;
    using SupportDataType = std::uint64_t;

    ErrorDomain(const ErrorDomain&) = delete;
    ErrorDomain(ErrorDomain&&) = delete;
    ErrorDomain& operator=(const ErrorDomain&) = delete;
    ErrorDomain& operator=(ErrorDomain&&) = delete;

    constexpr IdType Id() const noexcept { return id_; }

    // Short name of the domain, e.g. "Com". Never nullptr.
    virtual const char* Name() const = 0;
    // Text for `code`; never nullptr, also for codes the domain does not know.
    virtual const char* Message(CodeType code) const = 0;
    // Throws the exception that stands for `errorCode`. The default throws ara::core::Exception.
    [[noreturn]] virtual void ThrowAsException(const ErrorCode& errorCode) const;

    constexpr bool operator==(const ErrorDomain& other) const noexcept { return id_ == other.id_; }
    constexpr bool operator!=(const ErrorDomain& other) const noexcept { return id_ != other.id_; }

  protected:
    constexpr explicit ErrorDomain(IdType id) noexcept : id_(id) {}
    ~ErrorDomain() = default;

  private:
    IdType id_;
};

}  // namespace ara::core

#endif  // ARA_CORE_ERROR_DOMAIN_H
