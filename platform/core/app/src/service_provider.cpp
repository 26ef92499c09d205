#include "vorx/vcc/app/service_provider.h"

#include "app_log.h"
#include "dds_topics.h"
#include "dfx_reports.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/app/descriptions.h"

namespace vorx::vcc::app {

class ServiceProvider::Core {
  public:
    explicit Core(ServiceDeployment deploymentIn)
        : deployment(std::move(deploymentIn)), reports(deployment) {}
    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    // The events reported as events: a field's notifier is reported with its field.
    std::vector<const EventDeployment*> Events() const {
        return detail::DfxReports::AllEvents(deployment);
    }

    void RegisterLatencySwitches() const {
        for (const EventDeployment* event : Events()) {
            reports.LatencyMode(*event, [service = deployment.serviceName, name = event->name](
                                            const api::types::LatencyAnalysisMode& mode) {
                // Senders stamp every sample anyway; the switch only tells receivers to
                // measure, so the offering side just notes it.
                detail::AppLog()->LogInfo()
                    << "[App][Latency analysis switched "
                    << (mode == api::types::LatencyAnalysisMode::ENABLE ? "on" : "off")
                    << "][service=" << service << ", event=" << name << ", side=publisher]";
            });
        }
    }

    const ServiceDeployment deployment;
    const detail::DfxReports reports;
    std::shared_ptr<Skeleton> skeleton;  // set in the constructor; null without traffic binding
    orx::sync::Mutex offerMutex;         // serialises Offer and StopOffer
    bool offered GUARDED_BY(offerMutex){false};
};

ServiceProvider::ServiceProvider(ServiceDeployment deployment)
    : core_(std::make_shared<Core>(std::move(deployment))) {
    const ServiceDeployment& service = core_->deployment;
    if (service.TrafficBinding()) {
        detail::ApplyDdsTopics(service);
        core_->skeleton = std::make_shared<Skeleton>(DescribeService(service));
    }
}

ServiceProvider::~ServiceProvider() {
    StopOffer();
}

const ServiceDeployment& ServiceProvider::Deployment() const {
    return core_->deployment;
}

bool ServiceProvider::Offer() {
    orx::sync::MutexLock lock(core_->offerMutex);
    if (core_->offered) {
        return true;
    }
    const ServiceDeployment& service = core_->deployment;
    if (core_->skeleton && !core_->skeleton->OfferService()) {
        return false;
    }
    core_->offered = true;
    const detail::DfxReports& reports = core_->reports;
    reports.Node();
    reports.EventsUp(core_->Events());
    reports.MethodsUp(detail::DfxReports::AllMethods(service));
    reports.FieldsUp(detail::DfxReports::AllFields(service));
    core_->RegisterLatencySwitches();
    detail::AppLog()->LogInfo() << "[App][Service offered][service=" << service.serviceName
                                << ", instanceId=" << service.instanceId << ", traffic="
                                << (core_->skeleton ? "yes" : "none (SOME/IP is reported only)")
                                << "]";
    return true;
}

void ServiceProvider::StopOffer() {
    orx::sync::MutexLock lock(core_->offerMutex);
    if (!core_->offered) {
        return;
    }
    core_->offered = false;
    if (core_->skeleton) {
        core_->skeleton->StopOfferService();
    }
    const ServiceDeployment& service = core_->deployment;
    const detail::DfxReports& reports = core_->reports;
    reports.EventsDown(core_->Events());
    reports.MethodsDown(detail::DfxReports::AllMethods(service));
    reports.FieldsDown(detail::DfxReports::AllFields(service));
    detail::AppLog()->LogInfo() << "[App][Service withdrawn][service=" << service.serviceName
                                << ", instanceId=" << service.instanceId << "]";
}

bool ServiceProvider::IsOffered() const {
    orx::sync::MutexLock lock(core_->offerMutex);
    return core_->offered;
}

std::shared_ptr<Skeleton> ServiceProvider::EventSkeleton(const std::string& event,
                                                         uint32_t& entityId) const {
    const EventDeployment* deployment = core_->deployment.FindEvent(event);
    if (deployment == nullptr) {
        detail::AppLog()->LogWarn(detail::AppLimit("App_PublishUnknownEvent"))
            << "[App][Event not deployed][service=" << core_->deployment.serviceName
            << ", event=" << event << "]";
        return nullptr;
    }
    entityId = deployment->entityId;
    return core_->skeleton;
}

std::shared_ptr<Skeleton> ServiceProvider::MethodSkeleton(const std::string& method,
                                                          uint32_t& entityId) const {
    const MethodDeployment* deployment = core_->deployment.FindMethod(method);
    if (deployment == nullptr) {
        detail::AppLog()->LogError()
            << "[App][Method not deployed][service=" << core_->deployment.serviceName
            << ", method=" << method << "]";
        return nullptr;
    }
    entityId = deployment->entityId;
    return core_->skeleton;
}

const FieldDeployment* ServiceProvider::FindField(const std::string& field) const {
    const FieldDeployment* deployment = core_->deployment.FindField(field);
    if (deployment == nullptr) {
        detail::AppLog()->LogError()
            << "[App][Field not deployed][service=" << core_->deployment.serviceName
            << ", field=" << field << "]";
    }
    return deployment;
}

std::shared_ptr<Skeleton> ServiceProvider::TrafficSkeleton() const {
    return core_->skeleton;
}

}  // namespace vorx::vcc::app
