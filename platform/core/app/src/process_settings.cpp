#include "vorx/vcc/app/process_settings.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>

#include "ara/kelda/common/log/dlt.h"
#include "ara/kelda/common/log/log_sink.h"
#include "ara/kelda/common/orxConfigParser/config_reader.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/driver/driver_registry.h"

namespace vorx::vcc::app {
namespace {

namespace config = ara::kelda::common::orxConfigParser;
namespace kelda = ara::kelda::common::log;
using config::SettingOrigin;

constexpr const char* kLevelNames = "verbose, debug, info, warning, error, fatal, off";

// Reads the application's keys of one file; every value taken is recorded with its origin.
class Reader {
  public:
    Reader(const config::ParseJsonToGetConfig& file, const config::EnvLookup& env,
           ProcessSettings& settings)
        : file_(file.Document(), file.FilePath()), env_(env), settings_(settings) {}

    config::ConfigReader& File() { return file_; }

    // `key` of the file, then `variable` of the environment, over `out`.
    void Text(const char* key, const char* variable, std::string& out) {
        if (auto value = file_.GetString(key)) {
            out = *value;
            Took(key, file_.OriginOf(key));
        }
        if (variable != nullptr) {
            if (auto value = config::NonEmpty(env_, variable)) {
                out = *value;
                Took(key, SettingOrigin::Environment(variable));
            }
        }
    }

    void Level(const char* key, const char* variable, kelda::LogLevel& out) {
        if (auto name = file_.GetString(key)) {
            if (kelda::ParseLevel(*name, &out)) {
                Took(key, file_.OriginOf(key));
            } else {
                file_.ReportInvalid(key, file_.Find(key),
                                    std::string("must be one of ") + kLevelNames);
            }
        }
        if (variable == nullptr) {
            return;
        }
        if (auto name = config::NonEmpty(env_, variable)) {
            if (kelda::ParseLevel(*name, &out)) {
                Took(key, SettingOrigin::Environment(variable));
            } else {
                config::RefuseEnvironmentValue(variable, *name,
                                               std::string("must be one of ") + kLevelNames +
                                                   "; the level stays " + kelda::LevelName(out),
                                               &settings_.report);
            }
        }
    }

    void Flag(const char* key, const char* variable, bool& out) {
        if (auto value = file_.GetBool(key)) {
            out = *value;
            Took(key, file_.OriginOf(key));
        }
        if (auto text = config::NonEmpty(env_, variable)) {
            if (*text == "1" || *text == "true" || *text == "on") {
                out = true;
            } else if (*text == "0" || *text == "false" || *text == "off") {
                out = false;
            } else {
                config::RefuseEnvironmentValue(
                    variable, *text, "must be 1, 0, true, false, on or off", &settings_.report);
                return;
            }
            Took(key, SettingOrigin::Environment(variable));
        }
    }

    void Number(const char* key, uint32_t& out) {
        if (auto value = file_.GetUint32(key)) {
            out = *value;
            Took(key, file_.OriginOf(key));
        }
    }

    void Took(const std::string& key, SettingOrigin origin) {
        settings_.report.origins[key] = std::move(origin);
    }

  private:
    config::ConfigReader file_;
    const config::EnvLookup& env_;
    ProcessSettings& settings_;
};

}  // namespace

ProcessSettings LoadProcessSettings(const config::ParseJsonToGetConfig& file,
                                    const config::EnvLookup& env, const ProcessDefaults& defaults) {
    ProcessSettings settings;
    settings.configPath = file.FilePath();
    settings.pluginPath = defaults.pluginPath;
    settings.maintenanceInstanceId = defaults.maintenanceInstanceId;
    settings.drivers.NameOf(api::types::DriverType::DDS) = defaults.ddsDriver;
    // The file's own problems and those of the maintenance keys come first, as they were found.
    settings.report.problems = file.Problems();
    try {
        Reader reader(file, env, settings);
        reader.Text("application.name", nullptr, settings.appName);
        if (settings.appName.size() > kMaxAppNameLength) {
            // The daemon would refuse every report of a name this long; say so before starting.
            reader.File().ReportInvalid(
                "application.name", reader.File().Find("application.name"),
                "must be a text of at most " + std::to_string(kMaxAppNameLength) + " characters");
            settings.appName.clear();
        }
        reader.Level("application.logLevel",
                     defaults.logLevelFromEnvironment ? "ORX_LOG_LEVEL" : nullptr,
                     settings.logLevel);
        reader.Text("application.logFile", "ORX_LOG_FILE", settings.logFile);
        reader.Flag("log.dlt", "ORX_LOG_DLT", settings.logDlt);
        reader.Text("log.dltAppId", "ORX_LOG_DLT_APP_ID", settings.dltAppId);
        reader.Text("dfx.pluginPath", "ORX_DFX_PLUGIN", settings.pluginPath);
        reader.Number("dfx.sampleTimeoutThresholdMs", settings.sampleTimeoutThresholdMs);
        if (!file.GetInstanceId().empty()) {
            settings.maintenanceInstanceId = file.GetInstanceId();
            reader.Took("maintenance.instanceId",
                        SettingOrigin::File(file.FilePath(), "maintenance.instanceId"));
        }
        LoadDriverSettings(settings.drivers, &reader.File(), env, &settings.report);
        settings.dds = driver::dds::LoadParticipantSettings(&reader.File(), file.GetNetworkIp(),
                                                            env, &settings.report);
        const auto& found = reader.File().Problems().Problems();
        settings.report.problems.insert(settings.report.problems.end(), found.begin(), found.end());
    } catch (const std::exception&) {
        // Only memory can run out here; what was read stays, the rest keeps its defaults.
    }
    return settings;
}

void ApplyProcessSettings(const ProcessSettings& settings) {
    ApplicationName::Configure(settings.appName);
    driver::dds::SetProcessParticipantSettings(settings.dds);
    driver::dds::RegisterDdsDriver();
    DriverRegistry::GetInstance()->Configure(settings.drivers);
}

MaintenanceProcess SetUpMaintenanceProcess(const std::function<void(ProcessSettings&)>& adjust) {
    ProcessDefaults defaults;
    defaults.ddsDriver = "dds";
    defaults.logLevelFromEnvironment = false;  // the caller's log set-up read ORX_LOG_LEVEL
    MaintenanceProcess process;
    process.settings = LoadProcessSettings(*config::ParseJsonToGetConfig::GetInstance(),
                                           config::ProcessEnvironment(), defaults);
    if (adjust) {
        adjust(process.settings);
    }
    for (const auto& problem : process.settings.report.problems) {
        // The maintenance processes report under no application name of their own.
        if (config::StopsStart(problem.origin.name) && problem.origin.name != "application.name") {
            process.refusal = problem;
            return process;
        }
    }
    // Before the plug-in loads, so that its lines reach DLT too.
    if (process.settings.logDlt) {
        ara::kelda::common::log::EnableDlt(process.settings.dltAppId,
                                           ara::kelda::common::log::ConsoleThreshold());
    }
    ApplyProcessSettings(process.settings);
    const std::string beside = PluginBesideExecutable();
    process.pluginLoaded =
        DfxPluginLoader::Load(!beside.empty() ? beside : process.settings.pluginPath);
    return process;
}

std::string PluginBesideExecutable() {
    char path[PATH_MAX] = {};
    const ssize_t size = ::readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (size <= 0) {
        return "";
    }
    const std::string exe(path, static_cast<size_t>(size));
    const auto slash = exe.rfind('/');
    if (slash == std::string::npos) {
        return "";
    }
    const std::string plugin = exe.substr(0, slash) + "/../lib/liborxcm_dfx.so";
    struct stat info {};
    return ::stat(plugin.c_str(), &info) == 0 && S_ISREG(info.st_mode) ? plugin : "";
}

}  // namespace vorx::vcc::app
