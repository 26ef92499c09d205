// Which DDS topics carry a method or an event of a service.
#ifndef VORX_DRIVER_DDS_SRC_TOPIC_RESOLVER_H
#define VORX_DRIVER_DDS_SRC_TOPIC_RESOLVER_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "orx/sync/mutex.h"
#include "vorx/driver/dds/frame.h"
#include "vorx/vcc/handle_type.h"

namespace vorx {
namespace driver {
namespace dds {

// Looks the topics up, first found wins:
//   1. the deployment set on the driver (SetMethodTopics / SetEventTopic);
//   2. for the maintenance daemon's services, the registered DFX
//      configuration provider (DDSDfxConfigInterface::ReadMethodData /
//      ReadEventData with BindIndex{service name, instance id, entity id});
//   3. default names: "vorx_<serviceId>_<instanceId>_<entityId>_Request",
//      "..._Reply" and "..._Event".
// Thread-safe.
class TopicResolver {
  public:
    void SetMethodTopics(uint16_t serviceId, uint32_t entityId, const MethodTopics& topics);
    void SetEventTopic(uint16_t serviceId, uint32_t entityId, const EventTopic& topic);

    MethodTopics ResolveMethod(const vcc::ServiceDescription& service, uint32_t entityId) const;
    EventTopic ResolveEvent(const vcc::ServiceDescription& service, uint32_t entityId) const;

    static std::string DefaultTopic(uint16_t serviceId, const std::string& instanceId,
                                    uint32_t entityId, const char* suffix);

  private:
    mutable orx::sync::Mutex mutex_;
    std::map<std::pair<uint16_t, uint32_t>, MethodTopics> methods_ GUARDED_BY(mutex_);
    std::map<std::pair<uint16_t, uint32_t>, EventTopic> events_ GUARDED_BY(mutex_);
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
