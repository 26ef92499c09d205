#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_TYPE_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_TYPE_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "orx/maintaind/service.h"
#include "orxmaintaind/orxcm_dfx_export.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {
namespace type {

// The daemon's ids as the plug-in names them; the values live in orx::maintaind::service.
constexpr uint16_t kMaintaindServiceId = orx::maintaind::service::kAppServiceId;
// The daemon's method that carries every report (RegisterApp).
constexpr uint32_t kRegisterAppMethodId = orx::maintaind::service::kRegisterAppMethodId;
// The daemon's event that orders latency switches (SwitchApplicationLatency).
constexpr uint32_t kSwitchLatencyEventId = orx::maintaind::service::kSwitchLatencyEventId;
// Keys of a method's topic map.
constexpr const char* kRequestTopicKey = orx::maintaind::service::kRequestTopicKey.data();
constexpr const char* kReplyTopicKey = orx::maintaind::service::kReplyTopicKey.data();

// One description of the maintenance daemon's service "MAINTAIND": the DDS topics of every method
// and the names of its events, by entity id, in the shape the plug-in's clients look them up.
// Built once from orx::maintaind::service, shared, only read afterwards, so it may be used from
// any thread.
class ORXCM_DFX_EXPORT OrxMaintaindType {
  public:
    // Topic map of one method: exactly the keys "Request" and "Reply".
    using TopicMap = std::map<std::string, std::string>;

    // The process-wide description, built on first use.
    static std::shared_ptr<OrxMaintaindType> GetInstance();

    OrxMaintaindType();

    // Always "MAINTAIND".
    const std::string& GetServiceShortName() const { return serviceShortName_; }
    // Every method of the service: entity id to its topic map.
    const std::map<uint16_t, TopicMap>& GetMethodTable() const { return methodTable_; }
    // Every event of the service: entity id to its name.
    const std::map<uint16_t, std::string>& GetEventTable() const { return eventTable_; }

  private:
    std::string serviceShortName_;
    std::map<uint16_t, TopicMap> methodTable_;
    std::map<uint16_t, std::string> eventTable_;
};

}  // namespace type
}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
