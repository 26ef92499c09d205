#ifndef VORX_VCC_RESERVE_SERVICE_H
#define VORX_VCC_RESERVE_SERVICE_H

#include <cstdint>
#include <string>

#include "vorx/vcc/export.h"

namespace vorx::vcc {

// True for the service ids of the maintenance daemon's own services, which never report
// themselves to the daemon (orx::maintaind::service).
VCC_EXPORT bool CheckIsReserveServiceId(std::uint16_t serviceId);

// True for the names of the maintenance daemon's services: its short name and its two service
// paths. Exact, case-sensitive match.
VCC_EXPORT bool CheckIsReserveServiceName(const std::string& name);

}  // namespace vorx::vcc

#endif  // VORX_VCC_RESERVE_SERVICE_H
