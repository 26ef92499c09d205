#ifndef VORX_VCC_APP_SRC_DFX_REPORTS_H
#define VORX_VCC_APP_SRC_DFX_REPORTS_H

#include <functional>
#include <vector>

#include "vorx/vcc/api/types/latency.h"
#include "vorx/vcc/app/deployment.h"

namespace vorx::vcc::app::detail {

// The calls a core makes into the maintenance plug-in for one deployed service, on the side the
// deployment names (isPub true for a provided service, false for a required one). Each call goes
// to the interface registered with RegisterDfxInterface at the time of the call and does nothing
// when none is registered; the plug-in only schedules work, so none of them blocks.
class DfxReports {
  public:
    explicit DfxReports(const ServiceDeployment& service) : service_(service) {}

    // The process offers or looks for the service.
    void Node() const;
    // Events (with their E2E settings in one report), methods and fields coming up / going away.
    // Entities deployed on no reported binding (process-local only) are left out.
    void EventsUp(const std::vector<const EventDeployment*>& events) const;
    void EventsDown(const std::vector<const EventDeployment*>& events) const;
    void MethodsUp(const std::vector<const MethodDeployment*>& methods) const;
    void MethodsDown(const std::vector<const MethodDeployment*>& methods) const;
    void FieldsUp(const std::vector<const FieldDeployment*>& fields) const;
    void FieldsDown(const std::vector<const FieldDeployment*>& fields) const;
    // The handler that switches latency measurement of `event`; only for events whose
    // deployment allows latency analysis.
    void LatencyMode(
        const EventDeployment& event,
        const std::function<void(const api::types::LatencyAnalysisMode&)>& handler) const;
    // The handler that returns the latency figures of a subscribed `event`, once per reported
    // binding.
    void LatencyQuery(const EventDeployment& event,
                      const std::function<api::types::LatencyResult()>& handler) const;

    static std::vector<const EventDeployment*> AllEvents(const ServiceDeployment& service);
    static std::vector<const MethodDeployment*> AllMethods(const ServiceDeployment& service);
    static std::vector<const FieldDeployment*> AllFields(const ServiceDeployment& service);

  private:
    bool IsPub() const { return service_.role == ServiceRole::kProvided; }

    const ServiceDeployment& service_;
};

}  // namespace vorx::vcc::app::detail

#endif  // VORX_VCC_APP_SRC_DFX_REPORTS_H
