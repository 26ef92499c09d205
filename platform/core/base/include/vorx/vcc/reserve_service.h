#ifndef VORX_VCC_RESERVE_SERVICE_H
#define VORX_VCC_RESERVE_SERVICE_H

#include <cstdint>
#include <string>

#include "vorx/vcc/export.h"

namespace vorx::vcc {

// The maintenance daemon's own services, which never report themselves to the daemon.
inline constexpr std::uint16_t kMaintaindAppServiceId = 0xE000U;    // application side
inline constexpr std::uint16_t kMaintaindToolsServiceId = 0xE001U;  // tools side

// True for the service ids of the maintenance daemon (0xE000 and 0xE001).
VCC_EXPORT bool CheckIsReserveServiceId(std::uint16_t serviceId);

// True for the names of the maintenance daemon's services: "MAINTAIND",
// "/velmar/ap/orx/ORXMaintaindAppService" and "/velmar/ap/orx/ORXMaintaindToolsService".
// Exact, case-sensitive match.
VCC_EXPORT bool CheckIsReserveServiceName(const std::string& name);

}  // namespace vorx::vcc

#endif  // VORX_VCC_RESERVE_SERVICE_H
