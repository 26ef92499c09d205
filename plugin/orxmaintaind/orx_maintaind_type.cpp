#include "orxmaintaind/orx_maintaind_type.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {
namespace type {

namespace {

// A method's topics are named after the method. RegisterApp is the exception: the daemon answers
// it on its request topic, so both keys name that topic.
OrxMaintaindType::TopicMap Topics(const std::string& method) {
    return {{kRequestTopicKey, method + "RequestTopic"}, {kReplyTopicKey, method + "ReplyTopic"}};
}

}  // namespace

OrxMaintaindType::OrxMaintaindType()
    : serviceShortName_{"MAINTAIND"},
      methodTable_{
          {0xDE83U, Topics("QueryAllDataType")},
          {0xEBEAU, Topics("QueryDataTypeList")},
          {0x8009U, Topics("QueryDataType")},
          {0x9E5AU, Topics("QueryEventInfo")},
          {0x5A44U, Topics("QueryEventShow")},
          {0x30A4U, Topics("QueryMethodType")},
          {0x94BEU, Topics("QueryMethodInfo")},
          {0xB805U, Topics("QueryNodeInfo")},
          {0x1CDFU, Topics("QuerySubEventInfo")},
          {0xE3BCU, Topics("QueryLatencyResult")},
          {0x0DEAU, Topics("QueryLatencyStatus")},
          {0xF723U, Topics("SwitchLatencyMode")},
          {0xECCDU,
           {{kRequestTopicKey, "RegisterAppRequestTopic"},
            {kReplyTopicKey, "RegisterAppRequestTopic"}}},
      },
      eventTable_{{0x75D1U, "SwitchApplicationLatency"}} {}

std::shared_ptr<OrxMaintaindType> OrxMaintaindType::GetInstance() {
    static const std::shared_ptr<OrxMaintaindType> instance = std::make_shared<OrxMaintaindType>();
    return instance;
}

}  // namespace type
}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
