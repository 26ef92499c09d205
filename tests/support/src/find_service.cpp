#include "orx/test/find_service.h"

#include <condition_variable>
#include <mutex>

namespace orx::test {

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
