#include "ara/kelda/common/orxConfigParser/config_reader.h"

#include <limits>

#include "config_log.h"

namespace ara::kelda::common::orxConfigParser {
namespace {

// A short rendering of a bad value for the error line: scalars as JSON, containers by kind, so
// a huge or deeply nested value never floods the log.
std::string Describe(const nlohmann::json& value) {
    if (value.is_structured()) {
        return std::string("<") + value.type_name() + ">";
    }
    std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    constexpr size_t kMaxLength = 80;
    if (text.size() > kMaxLength) {
        text.resize(kMaxLength);
        text += "...";
    }
    return text;
}

}  // namespace

ConfigReader::ConfigReader(const nlohmann::json& document, std::string filePath)
    : document_(document), filePath_(std::move(filePath)) {}

const nlohmann::json* ConfigReader::Find(const std::string& key) {
    const nlohmann::json* current = &document_;
    size_t start = 0;
    while (true) {
        if (!current->is_object()) {
            if (!current->is_null() && start > 0) {
                ReportInvalid(key.substr(0, start - 1), current, "must be an object");
            }
            return nullptr;
        }
        const size_t dot = key.find('.', start);
        const std::string name = key.substr(start, dot == std::string::npos ? dot : dot - start);
        const auto it = current->find(name);
        if (it == current->end()) {
            return nullptr;
        }
        current = &*it;
        if (dot == std::string::npos) {
            return current->is_null() ? nullptr : current;
        }
        start = dot + 1;
    }
}

std::optional<std::string> ConfigReader::GetString(const std::string& key) {
    const nlohmann::json* value = Find(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_string()) {
        ReportInvalid(key, value, "must be a text");
        return std::nullopt;
    }
    return value->get<std::string>();
}

std::optional<bool> ConfigReader::GetBool(const std::string& key) {
    const nlohmann::json* value = Find(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_boolean()) {
        ReportInvalid(key, value, "must be true or false");
        return std::nullopt;
    }
    return value->get<bool>();
}

std::optional<uint32_t> ConfigReader::GetUint32(const std::string& key) {
    const nlohmann::json* value = Find(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (value->is_number_unsigned()) {
        const auto number = value->get<uint64_t>();
        if (number <= std::numeric_limits<uint32_t>::max()) {
            return static_cast<uint32_t>(number);
        }
        ReportInvalid(key, value, "out of range, must be an integer from 0 to 4294967295");
    } else if (value->is_number()) {
        ReportInvalid(key, value, "out of range, must be an integer from 0 to 4294967295");
    } else {
        ReportInvalid(key, value, "must be an integer from 0 to 4294967295");
    }
    return std::nullopt;
}

std::optional<std::map<std::string, std::string>> ConfigReader::GetStringMap(
    const std::string& key) {
    const nlohmann::json* value = Find(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_object()) {
        ReportInvalid(key, value, "must be an object of texts");
        return std::nullopt;
    }
    std::map<std::string, std::string> result;
    for (const auto& [name, member] : value->items()) {
        if (member.is_string()) {
            result.emplace(name, member.get<std::string>());
        } else if (!member.is_null()) {
            ReportInvalid(key + "." + name, &member, "must be a text");
        }
    }
    return result;
}

void ConfigReader::ReportInvalid(const std::string& key, const nlohmann::json* value,
                                 const std::string& reason) {
    if (!reported_.insert(key).second) {
        return;
    }
    auto stream = detail::ConfigLog()->LogError();
    stream << "[OrxConfigParser][Invalid config value, treated as not configured][file="
           << filePath_ << ", key=" << key;
    if (value != nullptr) {
        stream << ", value=" << Describe(*value);
    }
    stream << ", reason=" << reason << "]";
}

const std::string& ConfigReader::FilePath() const {
    return filePath_;
}

}  // namespace ara::kelda::common::orxConfigParser
