#ifndef VORX_VCC_APPLICATION_NAME_H
#define VORX_VCC_APPLICATION_NAME_H

#include <memory>
#include <string>

#include "vorx/vcc/export.h"

namespace vorx::vcc {

// The name of this application as configured in orx.json. The name is read once, when the
// instance is created, and does not change afterwards.
class VCC_EXPORT ApplicationName {
  public:
    // The process-wide instance, created on first use and never destroyed (it stays usable from
    // destructors that run at process exit). Thread-safe.
    static std::shared_ptr<ApplicationName> GetInstance();

    explicit ApplicationName(std::string name);

    // The configured name, "" when orx.json names none (or there is no orx.json).
    std::string GetAppName() const { return name_; }

  private:
    const std::string name_;
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_APPLICATION_NAME_H
