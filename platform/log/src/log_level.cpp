#include "ara/kelda/common/log/log_level.h"

#include <cctype>

namespace ara::kelda::common::log {
namespace {

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return true;
}

}  // namespace

const char* LevelName(LogLevel level) {
    switch (level) {
        case LogLevel::kVerbose:
            return "verbose";
        case LogLevel::kDebug:
            return "debug";
        case LogLevel::kInfo:
            return "info";
        case LogLevel::kWarn:
            return "warning";
        case LogLevel::kError:
            return "error";
        case LogLevel::kFatal:
            return "fatal";
        case LogLevel::kOff:
            return "off";
    }
    return "unknown";
}

bool ParseLevel(std::string_view name, LogLevel* level) {
    for (uint8_t value = 0; value <= static_cast<uint8_t>(LogLevel::kOff); ++value) {
        const auto candidate = static_cast<LogLevel>(value);
        if (EqualsIgnoringCase(name, LevelName(candidate))) {
            *level = candidate;
            return true;
        }
    }
    if (EqualsIgnoringCase(name, "warn")) {
        *level = LogLevel::kWarn;
        return true;
    }
    return false;
}

}  // namespace ara::kelda::common::log
