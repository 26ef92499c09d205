#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_TYPE_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_TYPE_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "orxmaintaind/orxcm_dfx_export.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {
namespace type {

// Service id of the maintenance daemon's application-side service.
constexpr uint16_t kMaintaindServiceId = 0xE000U;
// The daemon's method that carries every report (RegisterApp).
constexpr uint32_t kRegisterAppMethodId = 60621U;
// The daemon's event that orders latency switches (SwitchApplicationLatency).
constexpr uint32_t kSwitchLatencyEventId = 30161U;
// Keys of a method's topic map.
constexpr const char* kRequestTopicKey = "Request";
constexpr const char* kReplyTopicKey = "Reply";

// One description of the maintenance daemon's service "MAINTAIND": the DDS topics of every method
// and the names of its events, by entity id. Built once, shared, only read afterwards, so it may
// be used from any thread.
//
// This file depends on nothing else of the plug-in: the daemon compiles it into itself so both
// sides share one description.
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
