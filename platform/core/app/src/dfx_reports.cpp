#include "dfx_reports.h"

#include "app_log.h"
#include "vorx/vcc/app/descriptions.h"
#include "vorx/vcc/application_name.h"
#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace vorx::vcc::app::detail {
namespace {

std::shared_ptr<OrxMaintaindInterface> Maintaind() {
    return RegisterDfxInterface::GetOrxMaintaindInterface();
}

// The daemon answers a refused report with a bare code, so what the core can tell before
// sending, it tells: a report without an application name is refused every time.
void WarnWhenReportsWillBeRefused() {
    if (ApplicationName::GetInstance()->GetAppName().empty()) {
        AppLog()->LogWarn(ara::kelda::common::log::LogLimitConfig{60000, 1, "App_NoAppName"})
            << "[App][maintaind refuses the reports of this process][setting=application.name, "
               "value=, reason=not set in orx.json; the application does not appear in "
               "orxmaint nodes]";
    }
}

template <class Deployment>
std::vector<const Deployment*> Pointers(const std::vector<Deployment>& all) {
    std::vector<const Deployment*> pointers;
    pointers.reserve(all.size());
    for (const auto& one : all) {
        pointers.push_back(&one);
    }
    return pointers;
}

}  // namespace

void DfxReports::Node() const {
    if (auto maintaind = Maintaind()) {
        WarnWhenReportsWillBeRefused();
        maintaind->RegisterNodePid(service_.serviceId);
    }
}

void DfxReports::EventsUp(const std::vector<const EventDeployment*>& events) const {
    auto maintaind = Maintaind();
    if (!maintaind) {
        return;
    }
    std::vector<api::types::EventE2EConfigInfo> e2e;
    for (const EventDeployment* event : events) {
        const EventInfoMap infos = DescribeEvent(service_, *event);
        if (infos.empty()) {
            continue;
        }
        maintaind->RegisterEventInfoToMaintaind(infos, IsPub());
        for (auto& config : DescribeE2E(service_, *event)) {
            e2e.push_back(std::move(config));
        }
    }
    if (!e2e.empty()) {
        maintaind->RegisterE2EInfoToMaintaind(e2e);
    }
}

void DfxReports::EventsDown(const std::vector<const EventDeployment*>& events) const {
    auto maintaind = Maintaind();
    OrxMaintaindInterface::EntityBindingMap<api::types::EventInfo> all;
    for (const EventDeployment* event : events) {
        EventInfoMap infos = DescribeEvent(service_, *event);
        if (!infos.empty()) {
            all.emplace(event->entityId, std::move(infos));
        }
    }
    if (maintaind && !all.empty()) {
        maintaind->UnregisterEventInfoToMaintaind(all, IsPub());
    }
}

void DfxReports::MethodsUp(const std::vector<const MethodDeployment*>& methods) const {
    auto maintaind = Maintaind();
    if (!maintaind) {
        return;
    }
    for (const MethodDeployment* method : methods) {
        const MethodInfoMap infos = DescribeMethod(service_, *method);
        if (!infos.empty()) {
            maintaind->RegisterMethodInfoToMaintaind(infos, IsPub());
        }
    }
}

void DfxReports::MethodsDown(const std::vector<const MethodDeployment*>& methods) const {
    auto maintaind = Maintaind();
    OrxMaintaindInterface::EntityBindingMap<api::types::MethodInfo> all;
    for (const MethodDeployment* method : methods) {
        MethodInfoMap infos = DescribeMethod(service_, *method);
        if (!infos.empty()) {
            all.emplace(method->entityId, std::move(infos));
        }
    }
    if (maintaind && !all.empty()) {
        maintaind->UnregisterMethodInfoToMaintaind(all, IsPub());
    }
}

void DfxReports::FieldsUp(const std::vector<const FieldDeployment*>& fields) const {
    auto maintaind = Maintaind();
    if (!maintaind) {
        return;
    }
    for (const FieldDeployment* field : fields) {
        const FieldInfoMap infos = DescribeField(service_, *field);
        if (!infos.empty()) {
            maintaind->RegisterFieldInfoToMaintaind(infos, IsPub());
        }
    }
}

void DfxReports::FieldsDown(const std::vector<const FieldDeployment*>& fields) const {
    auto maintaind = Maintaind();
    OrxMaintaindInterface::EntityBindingMap<api::types::FieldInfo> all;
    for (const FieldDeployment* field : fields) {
        FieldInfoMap infos = DescribeField(service_, *field);
        if (!infos.empty()) {
            all.emplace(infos.begin()->second->GetEntityId(), std::move(infos));
        }
    }
    if (maintaind && !all.empty()) {
        maintaind->UnregisterFieldInfoToMaintaind(all, IsPub());
    }
}

void DfxReports::LatencyMode(
    const EventDeployment& event,
    const std::function<void(const api::types::LatencyAnalysisMode&)>& handler) const {
    auto maintaind = Maintaind();
    if (!maintaind || !event.latencyAnalysis) {
        return;
    }
    const EventInfoMap infos = DescribeEvent(service_, event);
    if (!infos.empty()) {
        maintaind->RegisterLatencyMode(handler, infos, IsPub());
    }
}

void DfxReports::LatencyQuery(const EventDeployment& event,
                              const std::function<api::types::LatencyResult()>& handler) const {
    auto maintaind = Maintaind();
    if (!maintaind || !event.latencyAnalysis) {
        return;
    }
    for (const auto& [driver, info] : DescribeEvent(service_, event)) {
        maintaind->RegisterLatencyQuery(handler, info, driver);
    }
}

std::vector<const EventDeployment*> DfxReports::AllEvents(const ServiceDeployment& service) {
    return Pointers(service.events);
}

std::vector<const MethodDeployment*> DfxReports::AllMethods(const ServiceDeployment& service) {
    return Pointers(service.methods);
}

std::vector<const FieldDeployment*> DfxReports::AllFields(const ServiceDeployment& service) {
    return Pointers(service.fields);
}

}  // namespace vorx::vcc::app::detail
