#include "dds_topics.h"

#include <memory>

#include "app_log.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/driver/fault_injecting_driver.h"

namespace vorx::vcc::app::detail {
namespace {

using driver::dds::DdsDriver;

std::shared_ptr<DdsDriver> ProcessDdsDriver() {
    std::shared_ptr<Driver> driver =
        DriverRegistry::GetInstance()->GetDriver(api::types::DriverType::DDS);
    if (auto faults = std::dynamic_pointer_cast<FaultInjectingDriver>(driver)) {
        driver = faults->Inner();
    }
    return std::dynamic_pointer_cast<DdsDriver>(driver);
}

void SetEvent(DdsDriver& target, uint16_t serviceId, const EventDeployment& event) {
    driver::dds::EventTopic topic;
    topic.topic = event.dds.topic;
    topic.historyDepth = event.dds.historyDepth;
    topic.reliable = event.dds.reliability == driver::dds::ReliabilityKind::RELIABLE;
    target.SetEventTopic(serviceId, event.entityId, topic);
}

void SetMethod(DdsDriver& target, uint16_t serviceId, const MethodDeployment& method) {
    driver::dds::MethodTopics topics;
    topics.requestTopic = method.dds.requestTopic;
    topics.replyTopic = method.dds.replyTopic;
    target.SetMethodTopics(serviceId, method.entityId, topics);
}

}  // namespace

void ApplyDdsTopics(const ServiceDeployment& service) {
    if (!service.dds) {
        return;
    }
    const auto dds = ProcessDdsDriver();
    if (!dds) {
        // Easy to miss when a deployment says DDS: nothing outside this process will see the
        // service. Tests choose this on purpose; everyone else wants to know.
        AppLog()->LogInfo()
            << "[Runtime][The DDS binding runs on the in-process driver, other processes will not "
               "see this service; set \"drivers\": {\"dds\": \"dds\"} in orx.json or "
               "ORX_DDS_DRIVER=dds to use DDS][service="
            << service.serviceName << "]";
        return;
    }
    for (const auto& event : service.events) {
        SetEvent(*dds, service.serviceId, event);
    }
    for (const auto& method : service.methods) {
        SetMethod(*dds, service.serviceId, method);
    }
    for (const auto& field : service.fields) {
        if (field.notifier) {
            SetEvent(*dds, service.serviceId, *field.notifier);
        }
        if (field.getter) {
            SetMethod(*dds, service.serviceId, *field.getter);
        }
        if (field.setter) {
            SetMethod(*dds, service.serviceId, *field.setter);
        }
    }
}

}  // namespace vorx::vcc::app::detail
