#include "cli/duration.h"

#include <array>
#include <utility>

namespace orx::orxmaint {

std::optional<uint64_t> ParseDurationMs(const std::string& text) {
    constexpr uint64_t kMaxMs = 100ULL * 366 * 24 * 3600 * 1000;
    const size_t digits = text.find_first_not_of("0123456789");
    if (digits == 0 || digits == std::string::npos || digits > 12) {
        return std::nullopt;
    }
    const std::string unit = text.substr(digits);
    static const std::array<std::pair<const char*, uint64_t>, 5> kUnits{{
        {"ms", 1},
        {"s", 1000},
        {"m", 60 * 1000},
        {"h", 3600 * 1000},
        {"d", 24 * 3600 * 1000},
    }};
    for (const auto& [name, factor] : kUnits) {
        if (unit == name) {
            const uint64_t value = std::stoull(text.substr(0, digits));
            if (value > kMaxMs / factor) {
                return std::nullopt;
            }
            return value * factor;
        }
    }
    return std::nullopt;
}

}  // namespace orx::orxmaint
