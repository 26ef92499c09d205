#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"

#include "orx/maintaind/service.h"

namespace vorx {
namespace vcc {
namespace orxmaintaind {
namespace type {

namespace service = orx::maintaind::service;

OrxMaintaindType::OrxMaintaindType()
    : serviceNames_(service::kPlatformServiceNames.begin(), service::kPlatformServiceNames.end()),
      appServicePath_{service::kAppServicePath},
      toolsServicePath_{service::kToolsServicePath} {}

std::shared_ptr<OrxMaintaindType> OrxMaintaindType::GetInstance() {
    static const std::shared_ptr<OrxMaintaindType> instance = std::make_shared<OrxMaintaindType>();
    return instance;
}

}  // namespace type
}  // namespace orxmaintaind
}  // namespace vcc
}  // namespace vorx
