// What --service names: a service id (hexadecimal 0x... or decimal) or a service path.
#pragma once

#include <cstdint>
#include <string>

#include "orx/maintaind/tools/requests.h"

namespace orx::orxmaint {

struct ServiceSelector {
    bool byId = false;
    uint16_t serviceId = 0;
    std::string serviceName;  // when not byId: the exact service path
};

// Reads `text`. Text that starts with a digit must be a whole number, "0x"/"0X" followed by
// hexadecimal digits or plain decimal digits, from 0 to 65535; anything else is a service path.
// On success fills `selector` and returns ""; otherwise returns what is wrong, in words fit for
// the user, and leaves `selector` alone.
std::string ParseServiceSelector(const std::string& text, ServiceSelector& selector);

// Narrows `filter` to the selected service.
void ApplyServiceSelector(const ServiceSelector& selector, maintaind::tools::QueryFilter& filter);

}  // namespace orx::orxmaint
