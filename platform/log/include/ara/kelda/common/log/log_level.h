#ifndef ARA_KELDA_COMMON_LOG_LOG_LEVEL_H
#define ARA_KELDA_COMMON_LOG_LOG_LEVEL_H

#include <cstdint>
#include <string_view>

#include "ara/kelda/common/log/export.h"

namespace ara::kelda::common::log {

// Severity of a line, lowest first. A sink or the console gets the lines at or above its
// threshold; kOff as a threshold lets nothing through, and a line written at kOff never goes out.
enum class LogLevel : uint8_t {
    kVerbose = 0,
    kDebug = 1,
    kInfo = 2,
    kWarn = 3,
    kError = 4,
    kFatal = 5,
    kOff = 6
};

// "verbose", "debug", "info", "warning", "error", "fatal", "off"; "unknown" for a value outside
// the enumeration. The returned text is static.
KELDA_LOG_EXPORT const char* LevelName(LogLevel level);

// Reads a level name as LevelName writes it, ignoring case; "warn" is accepted for kWarn.
// On success stores the level in *level and returns true; otherwise leaves *level untouched and
// returns false.
KELDA_LOG_EXPORT bool ParseLevel(std::string_view name, LogLevel* level);

}  // namespace ara::kelda::common::log

#endif  // ARA_KELDA_COMMON_LOG_LOG_LEVEL_H
