#include "ara/kelda/common/orxConfigParser/setting.h"

#include <cstdlib>
#include <utility>

#include "config_log.h"

namespace ara::kelda::common::orxConfigParser {
namespace {

// A variable's value as a message shows it: cut after 80 characters.
std::string Shorten(std::string value) {
    constexpr size_t kMaxLength = 80;
    if (value.size() > kMaxLength) {
        value.resize(kMaxLength);
        value += "...";
    }
    return value;
}

}  // namespace

SettingOrigin SettingOrigin::Default() {
    return {};
}

SettingOrigin SettingOrigin::Environment(std::string variable) {
    SettingOrigin origin;
    origin.source = Source::kEnvironment;
    origin.name = std::move(variable);
    return origin;
}

SettingOrigin SettingOrigin::File(std::string file, std::string key) {
    SettingOrigin origin;
    origin.source = Source::kFile;
    origin.name = std::move(key);
    origin.file = std::move(file);
    return origin;
}

SettingOrigin SettingOrigin::Option(std::string option) {
    SettingOrigin origin;
    origin.source = Source::kOption;
    origin.name = std::move(option);
    return origin;
}

std::string SettingOrigin::Describe() const {
    switch (source) {
        case Source::kEnvironment:
            return "environment variable " + name;
        case Source::kFile:
            return (name.empty() ? std::string("file ") : "key " + name + " in ") + file;
        case Source::kOption:
            return "option " + name;
        case Source::kDefault:
        default:
            return "default";
    }
}

bool SettingOrigin::operator==(const SettingOrigin& other) const {
    return source == other.source && name == other.name && file == other.file;
}

SettingOrigin SettingsReport::OriginOf(const std::string& setting) const {
    const auto found = origins.find(setting);
    return found == origins.end() ? SettingOrigin::Default() : found->second;
}

const SettingProblem* SettingsReport::Blocking() const {
    for (const auto& problem : problems) {
        if (StopsStart(problem.origin.name)) {
            return &problem;
        }
    }
    return nullptr;
}

bool StopsStart(const std::string& setting) {
    return setting == "dds.domainId" || setting == "ORX_DDS_DOMAIN" ||
           setting == "maintenance.instanceId" || setting == "application.name";
}

EnvLookup ProcessEnvironment() {
    return [](const std::string& name) -> std::optional<std::string> {
        const char* value = std::getenv(name.c_str());
        if (value == nullptr) {
            return std::nullopt;
        }
        return std::string(value);
    };
}

EnvLookup FixedEnvironment(std::map<std::string, std::string> values) {
    return [values = std::move(values)](const std::string& name) -> std::optional<std::string> {
        const auto found = values.find(name);
        if (found == values.end()) {
            return std::nullopt;
        }
        return found->second;
    };
}

std::optional<std::string> NonEmpty(const EnvLookup& env, const std::string& variable) {
    if (!env) {
        return std::nullopt;
    }
    auto value = env(variable);
    if (!value || value->empty()) {
        return std::nullopt;
    }
    return value;
}

void RefuseEnvironmentValue(const std::string& variable, const std::string& rawValue,
                            const std::string& reason, SettingsReport* report) {
    const std::string value = Shorten(rawValue);
    detail::ConfigLog()->LogError()
        << (StopsStart(variable)
                ? "[OrxConfigParser][Invalid environment variable, the process does not start]"
                : "[OrxConfigParser][Invalid environment variable, ignored]")
        << "[variable=" << variable << ", value=" << value << ", reason=" << reason << "]";
    if (report != nullptr) {
        report->problems.push_back({SettingOrigin::Environment(variable), value, reason});
    }
}

}  // namespace ara::kelda::common::orxConfigParser
