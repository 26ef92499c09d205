#ifndef VORX_VCC_APPLICATION_NAME_H
#define VORX_VCC_APPLICATION_NAME_H

#include <memory>
#include <string>

#include "orx/sync/mutex.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc {

// The name of this application, as the process's start-up settings give it ("application.name"
// of orx.json, handed over by the core's runtime with Configure). It reads no configuration of
// its own: a process that never calls Configure has the name "".
class VCC_EXPORT ApplicationName {
  public:
    // The process-wide instance, created on first use and never destroyed (it stays usable from
    // destructors that run at process exit). Thread-safe.
    static std::shared_ptr<ApplicationName> GetInstance();
    // Sets the process's name. Meant to be called once, at start-up, before the DFX plug-in is
    // initialised; those who took the name before keep what they took. Thread-safe.
    static void Configure(const std::string& name);

    explicit ApplicationName(std::string name);

    // The name, "" when none was configured. Thread-safe.
    std::string GetAppName() const;

  private:
    mutable orx::sync::Mutex mutex_;
    std::string name_ GUARDED_BY(mutex_);
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_APPLICATION_NAME_H
