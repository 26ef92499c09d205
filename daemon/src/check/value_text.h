// Declared values as findings show them: numbers in decimal, enumerations by name, lists in
// brackets, serialization bytes by size and a short hash (enough to see that they differ).
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "orx/maintaind/common.h"
#include "orx/maintaind/enums.h"

namespace orx::maintaind::daemon::check {

std::string ValueText(const std::string& text);
std::string ValueText(bool value);
std::string ValueText(const std::vector<uint32_t>& values);
std::string ValueText(const std::vector<uint8_t>& bytes);
std::string ValueText(const SerializeConfig& config);

template <class T>
std::string ValueText(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return ToString(value);
    } else {
        static_assert(std::is_integral_v<T>, "no text form for this type");
        return std::to_string(value);
    }
}

// "TCP" for a reliable SOME/IP binding, "UDP" otherwise.
std::string TransportText(bool isReliable);

}  // namespace orx::maintaind::daemon::check
