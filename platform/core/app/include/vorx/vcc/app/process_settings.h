#ifndef VORX_VCC_APP_PROCESS_SETTINGS_H
#define VORX_VCC_APP_PROCESS_SETTINGS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "ara/kelda/common/log/log_level.h"
#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "ara/kelda/common/orxConfigParser/setting.h"
#include "vorx/driver/dds/participant_settings.h"
#include "vorx/vcc/driver/driver_settings.h"
#include "vorx/vcc/export.h"

// The settings of a process that uses the core, read once at start-up from orx.json and the
// environment and handed to each module as the few values it needs. The modules read neither
// orx.json nor the environment themselves. The core's Runtime does this for applications; the
// maintenance daemon and its tool call the same two functions.
namespace vorx::vcc::app {

struct ProcessSettings {
    std::string configPath;  // the orx.json read
    // "application.name"; "" when not configured.
    std::string appName;
    // ORX_LOG_LEVEL, else "application.logLevel", else info.
    ara::kelda::common::log::LogLevel logLevel{ara::kelda::common::log::LogLevel::kInfo};
    // ORX_LOG_FILE, else "application.logFile"; "" for none.
    std::string logFile;
    // ORX_LOG_DLT (1/0, true/false, on/off), else "log.dlt": log lines go to the local
    // dlt-daemon as well.
    bool logDlt{false};
    // ORX_LOG_DLT_APP_ID, else "log.dltAppId": the DLT application id (up to 4 characters); ""
    // derives it from the application name.
    std::string dltAppId;
    // ORX_DFX_PLUGIN, else "dfx.pluginPath", else ProcessDefaults::pluginPath.
    std::string pluginPath;
    // "dfx.sampleTimeoutThresholdMs"; 0 when not configured.
    uint32_t sampleTimeoutThresholdMs{0};
    // "maintenance.instanceId", else ProcessDefaults::maintenanceInstanceId: where the
    // maintenance daemon offers its services.
    std::string maintenanceInstanceId;
    // Drivers of the bindings (LoadDriverSettings), over ProcessDefaults::ddsDriver.
    DriverSettings drivers;
    // The process's DDS participant (driver::dds::LoadParticipantSettings).
    driver::dds::ParticipantSettings dds;
    // Where each value came from (by orx.json key, or variable for the environment's own
    // settings) and every value refused, the file's own problems included.
    ara::kelda::common::orxConfigParser::SettingsReport report;
};

// What a kind of process uses where nothing is configured.
struct ProcessDefaults {
    // The DDS binding's driver: the in-process driver for applications (orx.json's "drivers"
    // chooses DDS), the DDS driver for the maintenance daemon and its tool, which are reached
    // from other processes.
    std::string ddsDriver{kInProcessDriverName};
    std::string pluginPath;
    std::string maintenanceInstanceId{"1"};
    // False for processes whose log set-up reads (and reports) ORX_LOG_LEVEL itself, so that a
    // bad value is reported once.
    bool logLevelFromEnvironment{true};
};

// The longest application name accepted: the name is the key of every maintenance report.
constexpr size_t kMaxAppNameLength = 255;

// Reads the settings from `file` (the process's orx.json as ParseJsonToGetConfig read it: its
// document, and the maintenance keys it reads itself) and `env`. Every refused value is logged
// once (one error line naming the file and key, or the variable) and recorded in the report;
// its setting keeps its default; a refused value of a setting that decides which system the
// process joins (ara::kelda::common::orxConfigParser::StopsStart: the DDS domain, the
// maintenance instance, the application name) is in report.Blocking(), and the caller must not
// start. Never throws.
VCC_EXPORT ProcessSettings
LoadProcessSettings(const ara::kelda::common::orxConfigParser::ParseJsonToGetConfig& file,
                    const ara::kelda::common::orxConfigParser::EnvLookup& env,
                    const ProcessDefaults& defaults = {});

// Hands each module its part: the application name (ApplicationName), the drivers of the
// bindings (DriverRegistry, with the DDS driver registered), the DDS participant (the process's
// DDS driver). Logging and the DFX plug-in are the caller's: the Runtime sets them up from the
// same settings, the daemon and the tool from their command lines. Call once, before anything
// uses the core.
VCC_EXPORT void ApplyProcessSettings(const ProcessSettings& settings);

// The start-up shared by the maintenance daemon and its tool, which reach the daemon's services
// from other processes: the process's orx.json and environment read once with the DDS binding on
// the DDS driver unless they choose another, `adjust` applied (command-line options; may be
// empty), the settings handed to the modules, log lines sent to DLT as well when the settings ask
// for it (at the console's threshold, which the caller set up), and the DFX plug-in loaded (the
// one beside the executable, else the configured one) for the maintenance services' DDS
// settings, without initialising it: these processes never report themselves.
// When a setting that decides where the maintenance services are (the DDS domain, the
// maintenance instance) was refused, `refusal` holds it, nothing is handed to the modules and no
// plug-in is loaded: the caller must end with exit code 2 (its error line is written already).
struct MaintenanceProcess {
    ProcessSettings settings;
    bool pluginLoaded{false};
    std::optional<ara::kelda::common::orxConfigParser::SettingProblem> refusal;
};
VCC_EXPORT MaintenanceProcess
SetUpMaintenanceProcess(const std::function<void(ProcessSettings&)>& adjust = {});

// The DFX plug-in installed beside this executable (<exe dir>/../lib/liborxcm_dfx.so), or ""
// when there is none.
VCC_EXPORT std::string PluginBesideExecutable();

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_PROCESS_SETTINGS_H
