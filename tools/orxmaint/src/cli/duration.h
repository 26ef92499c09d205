// Durations as people type them on the command line: a whole number with a unit, e.g. 500ms,
// 30s, 10m, 2h, 7d.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orx::orxmaint {

// The duration in milliseconds; std::nullopt when `text` is not a number followed by one of ms,
// s, m, h, d, or is beyond 100 years.
std::optional<uint64_t> ParseDurationMs(const std::string& text);

}  // namespace orx::orxmaint
