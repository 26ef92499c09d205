#ifndef VORX_VCC_COM_SRC_APPLICATION_ERROR_DOMAIN_H
#define VORX_VCC_COM_SRC_APPLICATION_ERROR_DOMAIN_H

#include <cstdint>
#include <string>

#include "ara/core/error_domain.h"

namespace vorx::vcc {

// The error domain object for an application error domain that a method declares (id and name
// from its description). The same id always gives the same object, which lives as long as the
// process, so error codes that refer to it stay valid. Thread-safe.
const ara::core::ErrorDomain& GetApplicationErrorDomain(uint64_t id, const std::string& name);

}  // namespace vorx::vcc

#endif  // VORX_VCC_COM_SRC_APPLICATION_ERROR_DOMAIN_H
