#include "fake_tools_service.h"

#include <type_traits>

namespace orx::orxmaint::test {

namespace tools = maintaind::tools;

namespace {

vorx::vcc::ServiceDescription ToolsService(const std::string& instanceId) {
    vorx::vcc::ServiceDescription desc;
    desc.serviceId = tools::kToolsServiceId;
    desc.instanceId = instanceId;
    desc.serviceName = std::string(maintaind::service::kToolsServicePath);
    desc.driverType = vorx::vcc::api::types::DriverType::DDS;
    return desc;
}

}  // namespace

FakeToolsService::FakeToolsService(const std::string& instanceId)
    : skeleton_(ToolsService(instanceId)) {}

FakeToolsService::~FakeToolsService() {
    skeleton_.StopOfferService();
}

template <class Reply, class Request>
void FakeToolsService::Serve(uint32_t entityId, const Reply& reply) {
    skeleton_.RegisterMethod<Reply, Request>(
        entityId,
        [this, entityId, &reply](const Request& request, vorx::vcc::Responder<Reply> responder) {
            {
                std::lock_guard<std::mutex> lock(mutex_);
                if constexpr (std::is_same_v<Request, tools::QueryFilter>) {
                    lastFilter_ = request;
                } else if constexpr (std::is_same_v<Request, tools::LatencySwitchRequest>) {
                    lastSwitch_ = request;
                    lastFilter_ = request.filter;
                } else {
                    lastDataType_ = request;
                    lastFilter_ = request.filter;
                }
            }
            Remember(entityId);
            if (answer) {
                responder.Reply(reply);
            } else {
                std::lock_guard<std::mutex> lock(mutex_);
                unanswered_.push_back(std::make_shared<vorx::vcc::Responder<Reply>>(responder));
            }
        });
}

bool FakeToolsService::Offer() {
    using tools::QueryFilter;
    Serve<tools::NodeListReply, QueryFilter>(tools::kQueryNodeInfoId, nodes);
    Serve<tools::EventListReply, QueryFilter>(tools::kQueryEventInfoId, events);
    Serve<tools::MethodListReply, QueryFilter>(tools::kQueryMethodInfoId, methods);
    Serve<tools::FieldListReply, QueryFilter>(tools::kQueryFieldInfoId, fields);
    Serve<tools::E2EListReply, QueryFilter>(tools::kQueryE2EInfoId, e2eConfigs);
    Serve<tools::DataTypeListReply, QueryFilter>(tools::kQueryDataTypeListId, dataTypes);
    Serve<tools::DataTypeReply, tools::DataTypeRequest>(tools::kQueryDataTypeId, dataType);
    Serve<tools::LatencyStatusListReply, QueryFilter>(tools::kQueryLatencyStatusId,
                                                      latencyStatuses);
    Serve<tools::LatencyResultListReply, QueryFilter>(tools::kQueryLatencyResultId, latencyResults);
    Serve<tools::LatencySwitchReply, tools::LatencySwitchRequest>(tools::kSwitchLatencyModeId,
                                                                  latencySwitch);
    Serve<tools::SampleTimeoutListReply, QueryFilter>(tools::kQuerySampleTimeoutId, timeouts);
    Serve<tools::DaemonStatusReply, QueryFilter>(tools::kQueryDaemonStatusId, status);
    return skeleton_.OfferService();
}

void FakeToolsService::Remember(uint32_t entityId) {
    std::lock_guard<std::mutex> lock(mutex_);
    lastMethod_ = entityId;
    ++requests_;
}

tools::QueryFilter FakeToolsService::LastFilter() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lastFilter_;
}

tools::LatencySwitchRequest FakeToolsService::LastSwitch() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lastSwitch_;
}

tools::DataTypeRequest FakeToolsService::LastDataTypeRequest() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lastDataType_;
}

uint32_t FakeToolsService::LastMethod() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lastMethod_;
}

size_t FakeToolsService::RequestCount() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

}  // namespace orx::orxmaint::test
