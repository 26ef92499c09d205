#include "check/value_text.h"

#include <cstdio>

namespace orx::maintaind::daemon::check {

std::string ValueText(const std::string& text) {
    return text.empty() ? "\"\"" : text;
}

std::string ValueText(bool value) {
    return value ? "true" : "false";
}

std::string ValueText(const std::vector<uint32_t>& values) {
    std::string text = "[";
    for (const uint32_t value : values) {
        text += (text.size() > 1 ? ", " : "") + std::to_string(value);
    }
    return text + "]";
}

std::string ValueText(const std::vector<uint8_t>& bytes) {
    if (bytes.empty()) {
        return "none";
    }
    uint32_t hash = 2166136261U;  // FNV-1a
    for (const uint8_t byte : bytes) {
        hash = (hash ^ byte) * 16777619U;
    }
    char text[48];
    std::snprintf(text, sizeof(text), "%zu bytes #%08x", bytes.size(), hash);
    return text;
}

std::string ValueText(const SerializeConfig& config) {
    std::string text = "type " + std::to_string(config.serializeType);
    return config.serializeConfigText.empty() ? text : text + ", " + config.serializeConfigText;
}

std::string TransportText(bool isReliable) {
    return isReliable ? "TCP" : "UDP";
}

}  // namespace orx::maintaind::daemon::check
