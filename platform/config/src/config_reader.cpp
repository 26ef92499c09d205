#include "ara/kelda/common/orxConfigParser/config_reader.h"

#include "config_log.h"

namespace ara::kelda::common::orxConfigParser {

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

bool AsUnsigned(const nlohmann::json& value, uint64_t& out) {
    if (value.is_number_unsigned()) {
        out = value.get<uint64_t>();
        return true;
    }
    if (value.is_number_integer() && value.get<int64_t>() >= 0) {
        out = static_cast<uint64_t>(value.get<int64_t>());
        return true;
    }
    return false;
}

bool ToUnsigned(const nlohmann::json& value, uint64_t max, uint64_t& out, std::string& reason) {
    return ToUnsignedIn(value, 0, max, out, reason);
}

bool ToUnsignedIn(const nlohmann::json& value, uint64_t min, uint64_t max, uint64_t& out,
                  std::string& reason) {
    uint64_t number = 0;
    if (AsUnsigned(value, number) && number >= min && number <= max) {
        out = number;
        return true;
    }
    reason = std::string(value.is_number() ? "out of range, " : "") +
             "must be an integer from " + std::to_string(min) + " to " + std::to_string(max);
    return false;
}

std::string DescribeValue(const nlohmann::json& value) {
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

ConfigProblems::ConfigProblems(std::string filePath) : filePath_(std::move(filePath)) {}

void ConfigProblems::Report(const std::string& headline, const std::string& key,
                            const nlohmann::json* value, const std::string& reason) {
    if (!reportedKeys_.insert(key).second) {
        return;
    }
    const std::string shown = value != nullptr ? DescribeValue(*value) : std::string();
    std::string line =
        (StopsStart(key) ? std::string("[OrxConfigParser][Invalid config value, the process does "
                                       "not start]")
                         : headline) +
        "[file=" + filePath_ + ", key=" + key;
    if (value != nullptr) {
        line += ", value=" + shown;
    }
    line += ", reason=" + reason + "]";
    detail::ConfigLog()->LogError() << line;
    Add({SettingOrigin::File(filePath_, key), shown, reason}, std::move(line));
}

void ConfigProblems::Add(SettingProblem problem, std::string line) {
    problems_.push_back(std::move(problem));
    lines_.push_back(std::move(line));
}

const std::string& ConfigProblems::FilePath() const {
    return filePath_;
}

const std::vector<SettingProblem>& ConfigProblems::Problems() const {
    return problems_;
}

const std::vector<std::string>& ConfigProblems::Lines() const {
    return lines_;
}

ConfigReader::ConfigReader(const nlohmann::json& document, std::string filePath)
    : ConfigReader(document, "", std::make_shared<ConfigProblems>(std::move(filePath)),
                   kInvalidValue) {}

ConfigReader::ConfigReader(const nlohmann::json& object, std::string path,
                           std::shared_ptr<ConfigProblems> problems, std::string headline)
    : object_(&object),
      path_(std::move(path)),
      problems_(std::move(problems)),
      headline_(std::move(headline)) {}

ConfigReader ConfigReader::Nested(const nlohmann::json& object, std::string path) const {
    return ConfigReader(object, std::move(path), problems_, headline_);
}

const nlohmann::json* ConfigReader::Find(const std::string& key) {
    const nlohmann::json* current = object_;
    size_t start = 0;
    while (true) {
        if (!current->is_object()) {
            if (!current->is_null() && start > 0) {
                ReportInvalid(key.substr(0, start - 1), current, "must be an object");
            }
            return nullptr;
        }
        const size_t dot = key.find('.', start);
        const auto it =
            current->find(key.substr(start, dot == std::string::npos ? dot : dot - start));
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

std::optional<ConfigReader> ConfigReader::Child(const std::string& key) {
    const nlohmann::json* value = Find(key);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->is_object()) {
        ReportInvalid(key, value, "must be an object");
        return std::nullopt;
    }
    return Nested(*value, Key(key));
}

void ConfigReader::ReportInvalid(const std::string& key, const nlohmann::json* value,
                                 const std::string& reason) {
    problems_->Report(headline_, Key(key), value, reason);
}

SettingOrigin ConfigReader::OriginOf(const std::string& key) const {
    return SettingOrigin::File(problems_->FilePath(), Key(key));
}

std::string ConfigReader::Key(const std::string& key) const {
    return path_.empty() ? key : path_ + "." + key;
}

const std::string& ConfigReader::Path() const {
    return path_;
}

const std::string& ConfigReader::FilePath() const {
    return problems_->FilePath();
}

ConfigProblems& ConfigReader::Problems() const {
    return *problems_;
}

const std::shared_ptr<ConfigProblems>& ConfigReader::SharedProblems() const {
    return problems_;
}

}  // namespace ara::kelda::common::orxConfigParser
