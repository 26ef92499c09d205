#include "cli/service_selector.h"

#include <cctype>

namespace orx::orxmaint {

namespace {

constexpr uint32_t kMaxServiceId = 0xFFFFU;

bool IsDecimalDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

bool IsHexDigit(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

uint32_t DigitValue(char c) {
    if (IsDecimalDigit(c)) {
        return static_cast<uint32_t>(c - '0');
    }
    return static_cast<uint32_t>(std::tolower(static_cast<unsigned char>(c)) - 'a' + 10);
}

// Reads digits of `base` from `digits`; false when one is not a digit or the value passes
// kMaxServiceId (checked at each step, so long inputs cannot overflow).
bool ReadNumber(const std::string& digits, uint32_t base, uint32_t& value) {
    if (digits.empty()) {
        return false;
    }
    value = 0;
    for (const char c : digits) {
        const bool ok = base == 16 ? IsHexDigit(c) : IsDecimalDigit(c);
        if (!ok) {
            return false;
        }
        value = value * base + DigitValue(c);
        if (value > kMaxServiceId) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string ParseServiceSelector(const std::string& text, ServiceSelector& selector) {
    if (text.empty()) {
        return "--service needs a service id (0x1234 or 4660) or a service path";
    }
    if (!IsDecimalDigit(text.front())) {
        selector = ServiceSelector{false, 0, text};
        return "";
    }
    const bool hex = text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    uint32_t value = 0;
    if (!ReadNumber(hex ? text.substr(2) : text, hex ? 16U : 10U, value)) {
        return "--service \"" + text +
               "\" is not a service id: use 0x0000 to 0xFFFF or 0 to 65535, or a service path";
    }
    selector = ServiceSelector{true, static_cast<uint16_t>(value), ""};
    return "";
}

void ApplyServiceSelector(const ServiceSelector& selector, maintaind::tools::QueryFilter& filter) {
    if (selector.byId) {
        filter.hasServiceId = true;
        filter.serviceId = selector.serviceId;
    } else {
        filter.serviceName = selector.serviceName;
    }
}

}  // namespace orx::orxmaint
