#ifndef VORX_VCC_ORXMAINTAIND_TYPE_ORX_MAINTAIND_TYPE_H
#define VORX_VCC_ORXMAINTAIND_TYPE_ORX_MAINTAIND_TYPE_H

#include <memory>
#include <set>
#include <string>

#include "vorx/vcc/export.h"

namespace vorx {
namespace vcc {
namespace orxmaintaind {
namespace type {

// The maintenance daemon's services as the core names them: the service the
// applications report to and the service the tools query. Built once, shared,
// read only. The values come from orx::maintaind::service.
class VCC_EXPORT OrxMaintaindType {
  public:
    static std::shared_ptr<OrxMaintaindType> GetInstance();

    // Services of the platform's own management that the daemon watches.
    const std::set<std::string>& GetServiceNames() const { return serviceNames_; }
    // Path of the application-side service.
    const std::string& GetAppServicePath() const { return appServicePath_; }
    // Path of the tools-side service.
    const std::string& GetToolsServicePath() const { return toolsServicePath_; }

    OrxMaintaindType();

  private:
    std::set<std::string> serviceNames_;
    std::string appServicePath_;
    std::string toolsServicePath_;
};

}  // namespace type
}  // namespace orxmaintaind
}  // namespace vcc
}  // namespace vorx

#endif
