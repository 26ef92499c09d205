#ifndef ORX_MAINTAIND_CONFIG_VALUE_CONVERSIONS_H
#define ORX_MAINTAIND_CONFIG_VALUE_CONVERSIONS_H

// Small value translations between the core's descriptions and the maintenance
// records. The event conversion uses them, and so do the per-kind registration
// clients that fill records themselves (methods, fields, E2E).

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "orx/maintaind/config/export.h"
#include "orx/maintaind/types.h"
#include "vorx/vcc/api/types/driver_type.h"

namespace orx {
namespace maintaind {
namespace config {

// The core numbers its bindings PROLOC 0, DDS 1, SOMEIP 2; the records number
// them DDS 0, SOMEIP 1, PROLOC 2. A value the core does not define maps to PROLOC.
MAINTAIND_MSG_EXPORT orx::maintaind::DriverType ToMaintaindDriverType(
    vorx::vcc::api::types::DriverType driverType);

// The core's set of transport choices as a list in set (ascending) order. The
// values 1 (UDP), 2 (TCP) and 3 (SHM) are kept; any other value becomes 0
// (INVALID), so the list always has as many elements as the set.
MAINTAIND_MSG_EXPORT std::vector<orx::maintaind::TransportQos> ToTransportQosList(
    const std::set<uint8_t>& transportQos);

// An instance id as the deployment writes it ("0" to "65535", decimal digits only,
// no sign or blanks) as a number. Anything else, the empty text included, gives
// 0xFFFF, the "undefined instance" value.
MAINTAIND_MSG_EXPORT uint16_t InstanceIdToNumber(const std::string& text);

}  // namespace config
}  // namespace maintaind
}  // namespace orx

#endif  // ORX_MAINTAIND_CONFIG_VALUE_CONVERSIONS_H
