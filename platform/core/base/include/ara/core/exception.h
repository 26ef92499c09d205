#ifndef ARA_CORE_EXCEPTION_H
#define ARA_CORE_EXCEPTION_H

#include <exception>

#include "ara/core/error_code.h"
#include "vorx/vcc/export.h"

namespace ara::core {

// The exception that carries an ErrorCode, thrown by Future::get() and Result::ValueOrThrow()
// when they hold an error. what() is the domain's message for the code.
class VCC_EXPORT Exception : public std::exception {
  public:
    explicit Exception(ErrorCode error) noexcept;
    ~Exception() override;
    const ErrorCode& Error() const noexcept { return error_; }
    const char* what() const noexcept override;

  private:
    ErrorCode error_;
};

}  // namespace ara::core

#endif  // ARA_CORE_EXCEPTION_H
