// The test process as a client of a maintaind process over DDS: tools queries the way orxmaint
// makes them, RegisterApp requests the way the plug-in sends them, and raw request bytes.
#ifndef TESTS_INTEGRATION_DAEMON_DAEMON_CLIENT_H
#define TESTS_INTEGRATION_DAEMON_DAEMON_CLIENT_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orx/maintaind/app.h"
#include "orx/maintaind/tools/tools.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/proxy.h"

namespace orx::maintaind::daemon::itest {

using namespace std::chrono_literals;

class DaemonClient {
  public:
    // Call once per process before anything of the core runs: DDS on `domain` for the DDS
    // binding, and the plug-in for the maintenance service's DDS settings.
    static void Prepare(uint32_t domain, const std::string& pluginPath);

    ~DaemonClient();

    // Calls tools method `entityId`; nothing when no answer came in `timeout` (or no service).
    template <class Reply, class Request>
    std::optional<Reply> Call(uint32_t entityId, const Request& request,
                              std::chrono::milliseconds timeout = 5s) {
        vorx::vcc::Proxy* proxy = ToolsProxy();
        if (proxy == nullptr) {
            return std::nullopt;
        }
        auto method = proxy->InitializeMethodProxy<Reply>(MethodInfo(entityId));
        if (!method) {
            return std::nullopt;
        }
        auto future = method->Request(request);
        if (future.wait_for(timeout) != ara::core::future_status::ready) {
            return std::nullopt;
        }
        auto result = future.GetResult();
        return result.HasValue() ? std::optional<Reply>(result.Value()) : std::nullopt;
    }

    // RegisterApp with a report; the reply's code, or nothing.
    std::optional<uint8_t> Register(const AppRegisterInfo& report,
                                    std::chrono::milliseconds timeout = 5s);
    // RegisterApp with `bytes` as the request payload; the reply's code, or nothing.
    std::optional<uint8_t> RegisterRaw(const std::vector<uint8_t>& bytes,
                                       std::chrono::milliseconds timeout = 5s);

    // Forgets the proxies (after the daemon was restarted, a fresh search finds it).
    void Reset();

  private:
    static std::shared_ptr<vorx::vcc::api::types::MethodInfo> MethodInfo(uint32_t entityId);
    static std::optional<vorx::vcc::HandleType> Find(uint16_t serviceId,
                                                     std::chrono::milliseconds timeout);
    vorx::vcc::Proxy* ToolsProxy();
    vorx::vcc::Proxy* AppProxy();

    std::unique_ptr<vorx::vcc::Proxy> tools_;
    std::unique_ptr<vorx::vcc::Proxy> app_;
    uint16_t rawSession_ = 40000;
};

}  // namespace orx::maintaind::daemon::itest

#endif  // TESTS_INTEGRATION_DAEMON_DAEMON_CLIENT_H
