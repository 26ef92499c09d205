#include "orx/maintaind/config/value_conversions.h"

namespace orx {
namespace maintaind {
namespace config {

namespace {
constexpr uint16_t kUndefinedInstanceId = 0xFFFFU;
}  // namespace

orx::maintaind::DriverType ToMaintaindDriverType(vorx::vcc::api::types::DriverType driverType) {
    using CoreDriverType = vorx::vcc::api::types::DriverType;
    switch (driverType) {
        case CoreDriverType::DDS:
            return orx::maintaind::DriverType::DDS;
        case CoreDriverType::SOMEIP:
            return orx::maintaind::DriverType::SOMEIP;
        case CoreDriverType::PROLOC:
        default:
            return orx::maintaind::DriverType::PROLOC;
    }
}

std::vector<orx::maintaind::TransportQos> ToTransportQosList(
    const std::set<uint8_t>& transportQos) {
    std::vector<orx::maintaind::TransportQos> list;
    list.reserve(transportQos.size());
    for (const uint8_t value : transportQos) {
        const bool known = value >= 1U && value <= 3U;
        list.push_back(static_cast<orx::maintaind::TransportQos>(known ? value : 0U));
    }
    return list;
}

uint16_t InstanceIdToNumber(const std::string& text) {
    if (text.empty()) {
        return kUndefinedInstanceId;
    }
    uint32_t value = 0U;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            return kUndefinedInstanceId;
        }
        value = value * 10U + static_cast<uint32_t>(c - '0');
        // Checked per digit so that long texts cannot overflow the accumulator.
        if (value > 0xFFFFU) {
            return kUndefinedInstanceId;
        }
    }
    return static_cast<uint16_t>(value);
}

}  // namespace config
}  // namespace maintaind
}  // namespace orx
