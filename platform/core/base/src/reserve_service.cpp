#include "vorx/vcc/reserve_service.h"

namespace vorx::vcc {

bool CheckIsReserveServiceId(std::uint16_t serviceId) {
    return serviceId == kMaintaindAppServiceId || serviceId == kMaintaindToolsServiceId;
}

bool CheckIsReserveServiceName(const std::string& name) {
    return name == "MAINTAIND" || name == "/velmar/ap/orx/ORXMaintaindAppService" ||
           name == "/velmar/ap/orx/ORXMaintaindToolsService";
}

}  // namespace vorx::vcc
