#include "ara/core/error_domain.h"

#include "ara/core/error_code.h"
#include "ara/core/exception.h"

namespace ara::core {

void ErrorDomain::ThrowAsException(const ErrorCode& errorCode) const {
    throw Exception(errorCode);
}

Exception::Exception(ErrorCode error) noexcept : error_(error) {}

Exception::~Exception() = default;

const char* Exception::what() const noexcept {
    return error_.Domain().Message(error_.Value());
}

}  // namespace ara::core
