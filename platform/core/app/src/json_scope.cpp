#include "json_scope.h"

#include "app_log.h"

namespace vorx::vcc::app::detail {
namespace {

// A short rendering of a bad value: scalars as JSON, containers by kind, so that a huge value
// never floods the log.
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

void ProblemLog::Ignored(const std::string& key, const nlohmann::json* value,
                         const std::string& reason) {
    Write("[App][Invalid deployment value, ignored]", key, value, reason);
}

void ProblemLog::Skipped(const std::string& what, const std::string& key,
                         const nlohmann::json* value, const std::string& reason) {
    Write("[App][Invalid deployment value, " + what + " not deployed]", key, value, reason);
}

void ProblemLog::Write(const std::string& headline, const std::string& key,
                       const nlohmann::json* value, const std::string& reason) {
    std::string line = headline + "[file=" + filePath_ + ", key=" + key;
    if (value != nullptr) {
        line += ", value=" + Describe(*value);
    }
    line += ", reason=" + reason + "]";
    AppLog()->LogError() << line;
    errors_.push_back(std::move(line));
}

bool ToValue(const nlohmann::json& value, std::string& out, std::string& reason) {
    if (!value.is_string()) {
        reason = "must be a text";
        return false;
    }
    out = value.get<std::string>();
    return true;
}

bool ToValue(const nlohmann::json& value, bool& out, std::string& reason) {
    if (!value.is_boolean()) {
        reason = "must be true or false";
        return false;
    }
    out = value.get<bool>();
    return true;
}

bool ToValue(const nlohmann::json& value, std::map<std::string, std::string>& out,
             std::string& reason) {
    if (!value.is_object()) {
        reason = "must be an object of texts";
        return false;
    }
    std::map<std::string, std::string> result;
    for (const auto& [name, member] : value.items()) {
        if (!member.is_string()) {
            reason = "member \"" + name + "\" must be a text";
            return false;
        }
        result.emplace(name, member.get<std::string>());
    }
    out = std::move(result);
    return true;
}

bool AsUnsigned(const nlohmann::json& value, uint64_t& out) {
    if (value.is_number_unsigned()) {
        out = value.get<uint64_t>();
        return true;
    }
    // Documents built in code hold non-negative integers as signed ones.
    if (value.is_number_integer() && value.get<int64_t>() >= 0) {
        out = static_cast<uint64_t>(value.get<int64_t>());
        return true;
    }
    return false;
}

bool ToUnsigned(const nlohmann::json& value, uint64_t max, uint64_t& out, std::string& reason) {
    uint64_t number = 0;
    if (AsUnsigned(value, number) && number <= max) {
        out = number;
        return true;
    }
    reason = std::string(value.is_number() ? "out of range, " : "") +
             "must be an integer from 0 to " + std::to_string(max);
    return false;
}

void JsonScope::Fail(const std::string& name, const nlohmann::json* value,
                     const std::string& reason) {
    *usable_ = false;
    log_->Skipped(what_, name.empty() ? path_ : Key(name), value, reason);
}

const nlohmann::json* JsonScope::Find(const std::string& name) const {
    const auto it = object_->find(name);
    if (it == object_->end() || it->is_null()) {
        return nullptr;
    }
    return &*it;
}

std::unique_ptr<JsonScope> JsonScope::Child(const std::string& name, bool required) {
    const nlohmann::json* value = Find(name);
    if (value == nullptr) {
        if (required) {
            Fail(name, nullptr, "missing");
        }
        return nullptr;
    }
    if (!value->is_object()) {
        if (required) {
            Fail(name, value, "must be an object");
        } else {
            log_->Ignored(Key(name), value, "must be an object");
        }
        return nullptr;
    }
    auto child = std::make_unique<JsonScope>(*value, Key(name), what_, *log_);
    child->usable_ = usable_;
    return child;
}

std::vector<JsonScope> JsonScope::Elements(const std::string& name, const std::string& what) {
    std::vector<JsonScope> elements;
    const nlohmann::json* value = Find(name);
    if (value == nullptr) {
        return elements;
    }
    if (!value->is_array()) {
        log_->Ignored(Key(name), value, "must be a list of objects");
        return elements;
    }
    for (size_t i = 0; i < value->size(); ++i) {
        const std::string path = Key(name) + "[" + std::to_string(i) + "]";
        const nlohmann::json& element = (*value)[i];
        if (!element.is_object()) {
            log_->Skipped(what, path, &element, "must be an object");
            continue;
        }
        elements.emplace_back(element, path, what, *log_);
    }
    return elements;
}

}  // namespace vorx::vcc::app::detail
