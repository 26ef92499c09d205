#ifndef VORX_VCC_API_TYPES_SUBSCRIBER_LISTENER_H
#define VORX_VCC_API_TYPES_SUBSCRIBER_LISTENER_H

#include <cstdint>
#include <memory>
#include <string>

#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/export.h"

namespace vorx {
namespace vcc {
namespace api {
namespace types {

// What a subscriber knows when an expected sample did not come in time.
struct ListenerTimeoutInfo {
    uint16_t serviceId{0};
    std::string instanceId;
    uint32_t entityId{0};
    std::string name;                // the subscriber's name: service, instance and event
    uint32_t sampleTimeout{0};       // threshold in milliseconds that was exceeded
    uint32_t sampleTimeoutCount{0};  // timeouts of this subscriber so far, this one included
};

// What a subscriber knows when samples were lost (sequence gaps).
struct ListenerLostInfo {
    uint16_t serviceId{0};
    std::string instanceId;
    uint32_t entityId{0};
    std::string name;
    uint32_t lostCount{0};
};

// Notified by the core about the health of a subscription. Called on the
// core's thread that detects the condition; implementations must not block.
class VCC_EXPORT SubscriberListener {
  public:
    virtual ~SubscriberListener();
    virtual void OnSampleLost(const ListenerLostInfo& info, DriverType driverType);
    virtual void OnSampleTimeout(const ListenerTimeoutInfo& info, DriverType driverType);
};

// Kinds of listeners the core hands to subscribers.
enum class ListenerKind : uint8_t {
    NONE = 0,
    APPLICATION = 1,  // installed by the application
    MAINTENANCE = 2,  // the maintenance plug-in's sample-timeout reporter
};

// A listener and its kind, as the maintenance plug-in hands it to the core.
struct ListenerDescriptor {
    std::shared_ptr<SubscriberListener> listener;
    uint8_t kind{static_cast<uint8_t>(ListenerKind::NONE)};
};

}  // namespace types
}  // namespace api
}  // namespace vcc
}  // namespace vorx

#endif
