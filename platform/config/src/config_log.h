#ifndef ORX_CONFIG_SRC_CONFIG_LOG_H
#define ORX_CONFIG_SRC_CONFIG_LOG_H

#include <memory>

#include "ara/kelda/common/log/log.h"

namespace ara::kelda::common::orxConfigParser::detail {

// The logger configuration problems are reported on: the same "CM" logger as the rest of the
// communication stack, so they show up beside the lines of whoever reads the file.
inline std::shared_ptr<log::Log> ConfigLog() {
    return log::Log::GetLog("CM");
}

}  // namespace ara::kelda::common::orxConfigParser::detail

#endif  // ORX_CONFIG_SRC_CONFIG_LOG_H
