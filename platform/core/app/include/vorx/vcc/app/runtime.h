#ifndef VORX_VCC_APP_RUNTIME_H
#define VORX_VCC_APP_RUNTIME_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vorx/vcc/app/deployment.h"
#include "vorx/vcc/app/process_settings.h"
#include "vorx/vcc/app/service_consumer.h"
#include "vorx/vcc/app/service_provider.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc::app {

// What an application starts first: reads orx.json and the environment once, sets up logging,
// hands every module of the core its settings, loads the DFX plug-in and initialises it, and
// hands out the services deployed in orx.json.
//
// Start-up, in the constructor:
//   1. The configuration file: $ORX_CONFIG when set and not empty, else Options::configPath when
//      not empty, else "./orx.json". The choice is written to ORX_CONFIG so that the plug-in,
//      which reads orx.json itself, reads the same file. A missing or broken file means
//      "nothing configured" (logged), never a failure.
//   2. The process's settings (process_settings.h): read once, every refused value logged once.
//      A refused DDS domain (ORX_DDS_DOMAIN, "dds.domainId"), "maintenance.instanceId" or
//      "application.name" ends the process here with exit code kExitInvalidSettings (2) after
//      one fatal line: it never runs on in another system, or under a name the maintenance
//      daemon refuses, than the one asked for.
//   3. Logging: set up with "application.name" (or "orx-app"), the level (ORX_LOG_LEVEL, else
//      "application.logLevel", else info) and the log file (ORX_LOG_FILE, else
//      "application.logFile"), and DLT when ORX_LOG_DLT or "log.dlt" ask for it (application id
//      ORX_LOG_DLT_APP_ID, else "log.dltAppId", else made from the name). Logging is set up once
//      per process, so the plug-in's own initialisation later keeps all of it.
//   4. The "services" deployments (deployment_parser.h); bad values are logged and skipped.
//   5. The settings are handed to the core's modules (ApplyProcessSettings).
//   6. The DFX plug-in: the path in $ORX_DFX_PLUGIN, else "dfx.pluginPath" of orx.json, else
//      Options::pluginPath. Without one (or when it cannot be loaded) one log line says so and
//      the application runs on without maintenance reporting.
//   7. InitializeAll on the maintenance interface the plug-in registered, if any.
//
// One Runtime per process, made before any other use of the core and kept until the end of main;
// a second one is refused (warning, and it reads nothing). Its providers and consumers may
// outlive it. Thread-safe after construction.
// The exit code of a process whose Runtime refused to start on invalid settings.
constexpr int kExitInvalidSettings = 2;

class VCC_EXPORT Runtime {
  public:
    struct Options {
        std::string configPath;  // used when ORX_CONFIG is not set
        std::string pluginPath;  // used when neither ORX_DFX_PLUGIN nor orx.json names one
        bool loadPlugin{true};   // false: never load the plug-in (a registered one is still used)
    };

    Runtime();
    explicit Runtime(const Options& options);
    ~Runtime();
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;

    // The process's settings as read at start-up (empty in a refused second Runtime).
    const ProcessSettings& Settings() const;
    // "application.name", "" when not configured.
    const std::string& AppName() const;
    // The configuration file in use.
    const std::string& ConfigPath() const;
    // The usable deployments and the problems found in the others.
    const std::vector<ServiceDeployment>& Deployments() const;
    const std::vector<std::string>& DeploymentErrors() const;
    // True when a maintenance interface is registered (plug-in loaded or linked).
    bool MaintenanceEnabled() const;
    // "dfx.sampleTimeoutThresholdMs", 0 when not configured.
    uint32_t SampleTimeoutThresholdMs() const;

    // A provider / consumer of the service deployed with role "provided" / "required" whose
    // service path or short name is `service`. nullptr, with an error line, when there is none.
    std::unique_ptr<ServiceProvider> Provide(const std::string& service) const;
    std::unique_ptr<ServiceConsumer> Require(const std::string& service) const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_RUNTIME_H
