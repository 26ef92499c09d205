#include "vorx/vcc/reserve_service.h"

#include "orx/maintaind/service.h"

namespace vorx::vcc {

bool CheckIsReserveServiceId(std::uint16_t serviceId) {
    return orx::maintaind::service::IsMaintenanceServiceId(serviceId);
}

bool CheckIsReserveServiceName(const std::string& name) {
    return orx::maintaind::service::IsMaintenanceServiceName(name);
}

}  // namespace vorx::vcc
