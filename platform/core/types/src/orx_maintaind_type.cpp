#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"

namespace vorx {
namespace vcc {
namespace orxmaintaind {
namespace type {

OrxMaintaindType::OrxMaintaindType()
    : serviceNames_{"ExecutionService", "StateService", "RecoveryService"},
      appServicePath_{"/velmar/ap/orx/ORXMaintaindAppService"},
      toolsServicePath_{"/velmar/ap/orx/ORXMaintaindToolsService"} {}

std::shared_ptr<OrxMaintaindType> OrxMaintaindType::GetInstance() {
    static const std::shared_ptr<OrxMaintaindType> instance = std::make_shared<OrxMaintaindType>();
    return instance;
}

}  // namespace type
}  // namespace orxmaintaind
}  // namespace vcc
}  // namespace vorx
