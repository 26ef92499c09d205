#include "topic_resolver.h"

#include "orx/sync/mutex.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/dds_dfx_config_interface.h"
#include "vorx/vcc/register_dfx_interface.h"
#include "vorx/vcc/reserve_service.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

std::shared_ptr<vcc::DDSDfxConfigInterface> DfxProviderFor(const vcc::ServiceDescription& service) {
    if (!vcc::CheckIsReserveServiceName(service.serviceName)) {
        return nullptr;
    }
    return vcc::RegisterDfxInterface::GetDfxConfigInterface();
}

// Topic names may only hold letters, digits and '_'; anything else becomes '_'.
std::string Sanitize(std::string text) {
    for (char& c : text) {
        const bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (!ok) {
            c = '_';
        }
    }
    return text;
}

}  // namespace

std::string TopicResolver::DefaultTopic(uint16_t serviceId, const std::string& instanceId,
                                        uint32_t entityId, const char* suffix) {
    return "vorx_" + std::to_string(serviceId) + "_" + Sanitize(instanceId) + "_" +
           std::to_string(entityId) + "_" + suffix;
}

void TopicResolver::SetMethodTopics(uint16_t serviceId, uint32_t entityId,
                                    const MethodTopics& topics) {
    orx::sync::MutexLock lock(mutex_);
    methods_[{serviceId, entityId}] = topics;
}

void TopicResolver::SetEventTopic(uint16_t serviceId, uint32_t entityId, const EventTopic& topic) {
    orx::sync::MutexLock lock(mutex_);
    events_[{serviceId, entityId}] = topic;
}

MethodTopics TopicResolver::ResolveMethod(const vcc::ServiceDescription& service,
                                          uint32_t entityId) const {
    {
        orx::sync::MutexLock lock(mutex_);
        auto found = methods_.find({service.serviceId, entityId});
        if (found != methods_.end()) {
            return found->second;
        }
    }
    if (auto provider = DfxProviderFor(service)) {
        DDSMethodInfo info;
        const ara::com::internal::BindIndex index{service.serviceName, service.instanceId,
                                                  entityId};
        if (provider->ReadMethodData(index, info) && !info.GetRequestTopicName().empty()) {
            MethodTopics topics;
            topics.requestTopic = info.GetRequestTopicName();
            topics.replyTopic = info.GetReplyTopicName().empty() ? info.GetRequestTopicName()
                                                                 : info.GetReplyTopicName();
            return topics;
        }
    }
    MethodTopics topics;
    topics.requestTopic = DefaultTopic(service.serviceId, service.instanceId, entityId, "Request");
    topics.replyTopic = DefaultTopic(service.serviceId, service.instanceId, entityId, "Reply");
    return topics;
}

EventTopic TopicResolver::ResolveEvent(const vcc::ServiceDescription& service,
                                       uint32_t entityId) const {
    {
        orx::sync::MutexLock lock(mutex_);
        auto found = events_.find({service.serviceId, entityId});
        if (found != events_.end()) {
            return found->second;
        }
    }
    if (auto provider = DfxProviderFor(service)) {
        DDSEventInfo info;
        const ara::com::internal::BindIndex index{service.serviceName, service.instanceId,
                                                  entityId};
        if (provider->ReadEventData(index, info) && !info.GetTopicName().empty()) {
            EventTopic topic;
            topic.topic = info.GetTopicName();
            if (info.GetHistoryDepth() > 0) {
                topic.historyDepth = info.GetHistoryDepth();
            }
            // The provider may leave reliability at its zero value; a reliable
            // reader is the safe choice for control events.
            topic.reliable = true;
            return topic;
        }
    }
    EventTopic topic;
    topic.topic = DefaultTopic(service.serviceId, service.instanceId, entityId, "Event");
    return topic;
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
