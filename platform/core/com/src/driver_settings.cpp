#include "vorx/vcc/driver/driver_settings.h"

#include <cctype>

namespace vorx::vcc {
namespace {

namespace config = ara::kelda::common::orxConfigParser;
using api::types::DriverType;

constexpr const char* kPayloadVariable = "ORX_INPROCESS_PAYLOAD";
constexpr DriverType kBindings[] = {DriverType::PROLOC, DriverType::DDS, DriverType::SOMEIP};

size_t IndexOf(DriverType binding) {
    const auto index = static_cast<size_t>(binding);
    return index < 3 ? index : 0;
}

std::string VariableOf(DriverType binding) {
    std::string variable = std::string("ORX_") + BindingKey(binding) + "_DRIVER";
    for (char& c : variable) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return variable;
}

}  // namespace

const std::string& DriverSettings::NameOf(DriverType binding) const {
    return names[IndexOf(binding)];
}

std::string& DriverSettings::NameOf(DriverType binding) {
    return names[IndexOf(binding)];
}

bool DriverSettings::operator==(const DriverSettings& other) const {
    return names == other.names && inProcessPayload == other.inProcessPayload;
}

const char* BindingKey(DriverType binding) {
    switch (binding) {
        case DriverType::DDS:
            return "dds";
        case DriverType::SOMEIP:
            return "someip";
        case DriverType::PROLOC:
        default:
            return "proloc";
    }
}

void LoadDriverSettings(DriverSettings& settings, config::ConfigReader* file,
                        const config::EnvLookup& env, config::SettingsReport* report) {
    for (const DriverType binding : kBindings) {
        const std::string key = std::string("drivers.") + BindingKey(binding);
        if (file != nullptr) {
            if (auto name = file->GetString(key)) {
                if (name->empty()) {
                    const nlohmann::json shown = *name;
                    file->ReportInvalid(key, &shown, "must name a driver");
                } else {
                    settings.NameOf(binding) = *name;
                    if (report != nullptr) {
                        report->origins[key] = file->OriginOf(key);
                    }
                }
            }
        }
        const std::string variable = VariableOf(binding);
        if (auto name = config::NonEmpty(env, variable)) {
            settings.NameOf(binding) = *name;
            if (report != nullptr) {
                report->origins[key] = config::SettingOrigin::Environment(variable);
            }
        }
    }
    if (auto payload = config::NonEmpty(env, kPayloadVariable)) {
        if (*payload == "bytes" || *payload == "objects") {
            settings.inProcessPayload =
                *payload == "objects" ? PayloadMode::kObjects : PayloadMode::kBytes;
            if (report != nullptr) {
                report->origins[kPayloadVariable] =
                    config::SettingOrigin::Environment(kPayloadVariable);
            }
        } else {
            config::RefuseEnvironmentValue(kPayloadVariable, *payload, "must be bytes or objects",
                                           report);
        }
    }
}

}  // namespace vorx::vcc
