#include "orxmaintaind/orx_maintaind_type.h"

#include "orx/maintaind/service.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {
namespace type {

namespace service = orx::maintaind::service;

OrxMaintaindType::OrxMaintaindType()
    : serviceShortName_{service::kShortName},
      eventTable_{{static_cast<uint16_t>(service::kSwitchLatencyEventId),
                   std::string(service::kSwitchLatencyEventName)}} {
    for (const service::MethodRow& row : service::kMethodTable) {
        methodTable_.emplace(row.entityId,
                             TopicMap{{kRequestTopicKey, std::string(row.requestTopic)},
                                      {kReplyTopicKey, std::string(row.replyTopic)}});
    }
}

std::shared_ptr<OrxMaintaindType> OrxMaintaindType::GetInstance() {
    static const std::shared_ptr<OrxMaintaindType> instance = std::make_shared<OrxMaintaindType>();
    return instance;
}

}  // namespace type
}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
