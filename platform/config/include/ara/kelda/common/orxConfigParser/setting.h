#ifndef ARA_KELDA_COMMON_ORXCONFIGPARSER_SETTING_H
#define ARA_KELDA_COMMON_ORXCONFIGPARSER_SETTING_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ara/kelda/common/orxConfigParser/export.h"

// The vocabulary of settings read at start-up: where a value came from, a value that was refused,
// and the environment as a lookup that tests can replace.
namespace ara::kelda::common::orxConfigParser {

// Where the value of a setting came from, so that a message about it can say where to fix it.
struct ORX_CONFIG_EXPORT SettingOrigin {
    enum class Source : uint8_t { kDefault, kEnvironment, kFile, kOption };

    static SettingOrigin Default();
    static SettingOrigin Environment(std::string variable);
    static SettingOrigin File(std::string file, std::string key);
    static SettingOrigin Option(std::string option);

    // "default", "environment variable ORX_DDS_DOMAIN", "key dds.domainId in /etc/orx.json",
    // "option --domain".
    std::string Describe() const;
    bool operator==(const SettingOrigin& other) const;

    Source source{Source::kDefault};
    std::string name;  // the variable, key or option; empty for a default
    std::string file;  // the file of a key
};

// A value that was refused while settings were read; the setting keeps the value it had before.
struct SettingProblem {
    SettingOrigin origin;
    std::string value;   // the refused value as written (shortened), "" when it is missing
    std::string reason;  // what is accepted, e.g. "must be an integer from 0 to 232"
};

// What reading settings found out besides the values: where each value came from, by the name
// of its setting (its orx.json key, or the variable of a setting only the environment has), and
// every value refused. One report belongs to one thread.
struct ORX_CONFIG_EXPORT SettingsReport {
    std::map<std::string, SettingOrigin> origins;
    std::vector<SettingProblem> problems;

    // Where `setting` came from; SettingOrigin::Default() when nothing set it.
    SettingOrigin OriginOf(const std::string& setting) const;
    // The first refused value of a setting that StopsStart, or null: the process must not start.
    const SettingProblem* Blocking() const;
};

// True for the settings that decide which system a process joins or how it is known there
// (dds.domainId and ORX_DDS_DOMAIN, maintenance.instanceId, application.name). A process never
// runs on with another value than the one asked for: a refused value of one of them ends the
// start, and its error line says so. `setting` is an orx.json key or a variable.
ORX_CONFIG_EXPORT bool StopsStart(const std::string& setting);

// Reads an environment variable; std::nullopt when it is not set.
using EnvLookup = std::function<std::optional<std::string>(const std::string& name)>;

// The process environment (::getenv). The one place that reads it for settings.
ORX_CONFIG_EXPORT EnvLookup ProcessEnvironment();
// An environment that holds `values` and nothing else.
ORX_CONFIG_EXPORT EnvLookup FixedEnvironment(std::map<std::string, std::string> values);
// The value of `variable` when it is set and not empty (an empty variable counts as unset).
ORX_CONFIG_EXPORT std::optional<std::string> NonEmpty(const EnvLookup& env,
                                                      const std::string& variable);

// Refuses the value of an environment variable: writes one error line on the "CM" logger,
// "[OrxConfigParser][Invalid environment variable, ignored][variable=V, value=X, reason=R]"
// ("..., the process does not start]" for a variable that StopsStart),
// and records the problem in `report` (may be null).
ORX_CONFIG_EXPORT void RefuseEnvironmentValue(const std::string& variable, const std::string& value,
                                              const std::string& reason, SettingsReport* report);

}  // namespace ara::kelda::common::orxConfigParser

#endif  // ARA_KELDA_COMMON_ORXCONFIGPARSER_SETTING_H
