#ifndef VORX_VCC_COM_SRC_COM_LOG_H
#define VORX_VCC_COM_SRC_COM_LOG_H

#include "ara/kelda/common/log/log.h"

namespace vorx::vcc {

// The core's logger ("CM"). Loggers live as long as the process, so this works at exit too.
ara::kelda::common::log::Log& ComLog();

// The rate limit of the warning named `key`.
ara::kelda::common::log::LogLimitConfig Limit(const char* key);

}  // namespace vorx::vcc

#endif  // VORX_VCC_COM_SRC_COM_LOG_H
