#include "vorx/vcc/api/types/entity_info.h"

#include <cctype>

#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"
#include "vorx/vcc/api/types/subscriber_listener.h"
#include "vorx/vcc/dds_dfx_config_interface.h"
#include "vorx/vcc/orx_maintaind_interface.h"

namespace vorx {
namespace vcc {
namespace api {
namespace types {

EntityInfo::~EntityInfo() = default;
EventInfo::~EventInfo() = default;
MethodInfo::~MethodInfo() = default;
FieldInfo::~FieldInfo() = default;

bool EntityInfo::SetInstanceId(const std::string& instanceId) {
    if (instanceId.empty() || instanceId.size() > 5U) {
        return false;
    }
    uint32_t value = 0U;
    for (const char c : instanceId) {
        if (std::isdigit(static_cast<unsigned char>(c)) == 0) {
            return false;
        }
        value = value * 10U + static_cast<uint32_t>(c - '0');
    }
    if (value > 0xFFFFU) {
        return false;
    }
    instanceId_ = instanceId;
    return true;
}

SubscriberListener::~SubscriberListener() = default;
void SubscriberListener::OnSampleLost(const ListenerLostInfo&, DriverType) {}
void SubscriberListener::OnSampleTimeout(const ListenerTimeoutInfo&, DriverType) {}

}  // namespace types
}  // namespace api

OrxMaintaindInterface::~OrxMaintaindInterface() = default;

api::types::ListenerDescriptor OrxMaintaindInterface::GetMaintaindClientListener() {
    return {};
}

DDSDfxConfigInterface::~DDSDfxConfigInterface() = default;

}  // namespace vcc

namespace driver {
namespace dds {
DDSEventInfo::~DDSEventInfo() = default;
DDSMethodInfo::~DDSMethodInfo() = default;
DDSServiceDiscoveryInfo::~DDSServiceDiscoveryInfo() = default;
}  // namespace dds
namespace someip {
SomeipEventInfo::~SomeipEventInfo() = default;
SomeipMethodInfo::~SomeipMethodInfo() = default;
}  // namespace someip
}  // namespace driver
}  // namespace vorx
