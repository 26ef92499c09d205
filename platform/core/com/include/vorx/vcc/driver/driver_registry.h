#ifndef VORX_VCC_DRIVER_DRIVER_REGISTRY_H
#define VORX_VCC_DRIVER_DRIVER_REGISTRY_H

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "orx/sync/mutex.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/driver/driver_settings.h"
#include "vorx/vcc/driver/in_process_driver.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc {

// Chooses the driver of each binding (DriverType PROLOC, DDS, SOMEIP) for the whole process.
//
// The choices are DriverSettings: handed over by the process's start-up (Configure, from
// orx.json and the environment, read once), or, in a process that never configures the
// registry (tests, small tools), read from the environment alone on first use (see
// LoadDriverSettings: ORX_<BINDING>_DRIVER, ORX_INPROCESS_PAYLOAD). A binding gets its driver
// on its first use: "inprocess" is the process's in-process driver (one instance serves every
// binding that chooses it, so offers and searches of one binding meet); other names are those
// registered with RegisterFactory (the DDS driver registers itself when it is linked). An
// unknown name, or a factory that yields nothing, falls back to "inprocess" with a warning.
//
// Tests replace the driver of a binding with SetDriver (e.g. a FaultInjectingDriver around the
// in-process driver); objects made afterwards use it, objects made before keep theirs.
//
// Lifetime: the instance, the in-process driver and the drivers made by factories are never
// destroyed, so proxies and skeletons keep working during static destruction at process exit. A
// driver installed with SetDriver lives as long as someone holds it. Thread-safe.
class VCC_EXPORT DriverRegistry {
  public:
    using Factory = std::function<std::shared_ptr<Driver>()>;

    static std::shared_ptr<DriverRegistry> GetInstance();

    // The driver of `binding`; never nullptr.
    std::shared_ptr<Driver> GetDriver(api::types::DriverType binding);
    // The process's in-process driver.
    std::shared_ptr<InProcessDriver> GetInProcessDriver();
    // Installs `driver` for `binding`; nullptr returns the binding to the configured choice.
    void SetDriver(api::types::DriverType binding, std::shared_ptr<Driver> driver);
    // Makes a driver known under `name` for the configuration above. A later registration of the
    // same name replaces the earlier one.
    void RegisterFactory(const std::string& name, Factory factory);
    // Hands over the process's driver choices. Bindings that have their driver already keep
    // it; the in-process driver takes the payload mode at once.
    void Configure(const DriverSettings& settings);
    // The choices in use: those configured, else those of the environment.
    DriverSettings Settings() const;
    // The configured driver name of `binding`.
    std::string ConfiguredName(api::types::DriverType binding) const;

    // `env`: where the choices come from until Configure is called.
    explicit DriverRegistry(ara::kelda::common::orxConfigParser::EnvLookup env =
                                ara::kelda::common::orxConfigParser::ProcessEnvironment());

  private:
    std::shared_ptr<Driver> Create(api::types::DriverType binding);
    const DriverSettings& SettingsLocked() const REQUIRES(mutex_);

    const ara::kelda::common::orxConfigParser::EnvLookup env_;
    mutable orx::sync::Mutex mutex_;
    mutable std::optional<DriverSettings> settings_ GUARDED_BY(mutex_);
    std::shared_ptr<InProcessDriver> inProcess_ GUARDED_BY(mutex_);
    std::array<std::shared_ptr<Driver>, 3> drivers_ GUARDED_BY(mutex_);
    std::map<std::string, Factory> factories_ GUARDED_BY(mutex_);
    std::map<std::string, std::shared_ptr<Driver>> made_ GUARDED_BY(mutex_);  // one per factory
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_DRIVER_DRIVER_REGISTRY_H
