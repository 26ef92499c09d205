#include "orx/test/find_service.h"

#include <condition_variable>
#include <mutex>

#include "orx/maintaind/service.h"

namespace orx::test {

vorx::vcc::ServiceDescription MaintaindService(uint16_t serviceId,
                                               vorx::vcc::api::types::DriverType binding) {
    namespace service = orx::maintaind::service;
    vorx::vcc::ServiceDescription desc;
    desc.serviceId = serviceId;
    desc.instanceId = "1";
    desc.serviceName =
        std::string(serviceId == service::kAppServiceId ? service::kAppServicePath
                                                        : service::kToolsServicePath);
    desc.driverType = binding;
    return desc;
}

std::optional<vorx::vcc::HandleType> FindFirstOffer(const vorx::vcc::ServiceDescription& service,
                                                    std::chrono::milliseconds timeout) {
    std::mutex mutex;
    std::condition_variable found;
    std::optional<vorx::vcc::HandleType> handle;
    const auto search = vorx::vcc::Proxy::StartFindService(
        [&](vorx::vcc::ServiceHandleContainer handles) {
            std::lock_guard<std::mutex> lock(mutex);
            if (!handles.empty() && !handle) {
                handle = handles.front();
                found.notify_all();
            }
        },
        service);
    {
        std::unique_lock<std::mutex> lock(mutex);
        found.wait_for(lock, timeout, [&] { return handle.has_value(); });
    }
    // Waits for a handler call in progress, so nothing touches the locals after this.
    vorx::vcc::Proxy::StopFindService(search);
    std::lock_guard<std::mutex> lock(mutex);
    return handle;
}

}  // namespace orx::test
