#include "output/values.h"

#include <time.h>

#include <cstdio>

namespace orx::orxmaint {

std::string LocalTime(uint64_t epochMs) {
    if (epochMs == 0) {
        return "-";
    }
    const time_t seconds = static_cast<time_t>(epochMs / 1000U);
    struct tm local {};
    if (localtime_r(&seconds, &local) == nullptr) {
        return std::to_string(epochMs);
    }
    char text[32];
    if (strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%S", &local) == 0) {
        return std::to_string(epochMs);
    }
    return text;
}

std::string Latency(uint64_t micros) {
    char text[48];
    if (micros < 1000U) {
        std::snprintf(text, sizeof(text), "%llu us", static_cast<unsigned long long>(micros));
    } else if (micros < 999995U) {  // would round to "1000.00 ms"
        std::snprintf(text, sizeof(text), "%.2f ms", static_cast<double>(micros) / 1e3);
    } else {
        std::snprintf(text, sizeof(text), "%.2f s", static_cast<double>(micros) / 1e6);
    }
    return text;
}

std::string HexId(uint16_t id) {
    char text[8];
    std::snprintf(text, sizeof(text), "0x%04x", static_cast<unsigned>(id));
    return text;
}

std::string YesNo(bool value) {
    return value ? "yes" : "no";
}

std::string Side(bool isPub) {
    return isPub ? "pub" : "sub";
}

std::string Bindings(const std::vector<std::string>& names) {
    if (names.empty()) {
        return "-";
    }
    std::string joined;
    for (const std::string& name : names) {
        if (!joined.empty()) {
            joined += ',';
        }
        joined += name;
    }
    return joined;
}

std::string OrDash(const std::string& text) {
    return text.empty() ? "-" : text;
}

}  // namespace orx::orxmaint
