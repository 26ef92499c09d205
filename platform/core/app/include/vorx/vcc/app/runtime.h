#ifndef VORX_VCC_APP_RUNTIME_H
#define VORX_VCC_APP_RUNTIME_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vorx/vcc/app/deployment.h"
#include "vorx/vcc/app/service_consumer.h"
#include "vorx/vcc/app/service_provider.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc::app {

// What an application starts first: reads orx.json once, sets up logging, loads the DFX
// plug-in and initialises it, and hands out the services deployed in orx.json.
//
// Start-up, in the constructor:
//   1. The configuration file: $ORX_CONFIG when set and not empty, else Options::configPath when
//      not empty, else "./orx.json". The choice is written to ORX_CONFIG so that every reader of
//      the process (the core, the plug-in) reads the same file. A missing or broken file means
//      "nothing configured" (logged by the configuration parser), never a failure.
//   2. Logging: Log::InitLog with "application.name" (or "orx-app") and "application.logLevel"
//      (info by default; ORX_LOG_LEVEL still wins).
//   3. The "services" deployments (deployment_parser.h); bad values are logged and skipped.
//   4. The DFX plug-in: the path in $ORX_DFX_PLUGIN, else "dfx.pluginPath" of orx.json, else
//      Options::pluginPath. Without one (or when it cannot be loaded) one log line says so and
//      the application runs on without maintenance reporting.
//   5. InitializeAll on the maintenance interface the plug-in registered, if any.
//
// One Runtime per process, made before any other use of the core and kept until the end of main;
// a second one is refused (warning, and it reads nothing). Its providers and consumers may
// outlive it. Thread-safe after construction.
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
