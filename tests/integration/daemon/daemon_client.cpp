#include "daemon_client.h"
#include "orx/maintaind/service.h"

#include <stdlib.h>

#include <condition_variable>
#include <mutex>

#include "orx/test/find_service.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/serialize/cdr.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"

namespace orx::maintaind::daemon::itest {

namespace {

vorx::vcc::ServiceDescription Service(uint16_t serviceId) {
    return orx::test::MaintaindService(serviceId, vorx::vcc::api::types::DriverType::DDS);
}

}  // namespace

void DaemonClient::Prepare(uint32_t domain, const std::string& pluginPath) {
    ::setenv("ORX_DDS_DOMAIN", std::to_string(domain).c_str(), 1);
    ::setenv("ORX_DDS_DRIVER", "dds", 1);
    vorx::driver::dds::RegisterDdsDriver();
    vorx::vcc::DfxPluginLoader::Load(pluginPath);
}

DaemonClient::~DaemonClient() {
    Reset();
}

void DaemonClient::Reset() {
    tools_.reset();
    app_.reset();
}

std::shared_ptr<vorx::vcc::api::types::MethodInfo> DaemonClient::MethodInfo(uint32_t entityId) {
    auto info = std::make_shared<vorx::vcc::api::types::MethodInfo>();
    info->SetEntityId(entityId);
    return info;
}

std::optional<vorx::vcc::HandleType> DaemonClient::Find(uint16_t serviceId,
                                                        std::chrono::milliseconds timeout) {
    return orx::test::FindFirstOffer(Service(serviceId), timeout);
}

vorx::vcc::Proxy* DaemonClient::ToolsProxy() {
    if (!tools_) {
        if (auto handle = Find(tools::kToolsServiceId, 10s)) {
            tools_ = std::make_unique<vorx::vcc::Proxy>(*handle);
        }
    }
    return tools_.get();
}

vorx::vcc::Proxy* DaemonClient::AppProxy() {
    if (!app_) {
        if (auto handle = Find(orx::maintaind::service::kAppServiceId, 10s)) {
            app_ = std::make_unique<vorx::vcc::Proxy>(*handle);
        }
    }
    return app_.get();
}

std::optional<uint8_t> DaemonClient::Register(const AppRegisterInfo& report,
                                              std::chrono::milliseconds timeout) {
    vorx::vcc::Proxy* proxy = AppProxy();
    if (proxy == nullptr) {
        return std::nullopt;
    }
    auto method = proxy->InitializeMethodProxy<ReturnCode>(
        MethodInfo(orx::maintaind::service::kRegisterAppMethodId));
    auto future = method->Request(report);
    if (future.wait_for(timeout) != ara::core::future_status::ready) {
        return std::nullopt;
    }
    auto result = future.GetResult();
    return result.HasValue() ? std::optional<uint8_t>(result.Value().code) : std::nullopt;
}

std::optional<uint8_t> DaemonClient::RegisterRaw(const std::vector<uint8_t>& bytes,
                                                 std::chrono::milliseconds timeout) {
    const auto handle = Find(orx::maintaind::service::kAppServiceId, 10s);
    if (!handle) {
        return std::nullopt;
    }
    auto driver =
        vorx::vcc::DriverRegistry::GetInstance()->GetDriver(vorx::vcc::api::types::DriverType::DDS);
    std::mutex mutex;
    std::condition_variable replied;
    std::optional<uint8_t> code;
    const uint16_t session = rawSession_++;
    vorx::vcc::ClientCallbacks callbacks;
    callbacks.onReply = [&](const vorx::vcc::MethodReply& reply) {
        ReturnCode value;
        if (reply.sessionId != session || reply.kind != vorx::vcc::ReplyKind::kValue ||
            !vorx::serialize::Decode(reply.payload.GetBytes(), value).ok()) {
            return;
        }
        std::lock_guard<std::mutex> lock(mutex);
        code = value.code;
        replied.notify_all();
    };
    const vorx::vcc::ClientId client = driver->Connect(*handle, callbacks);
    if (client == 0) {
        return std::nullopt;
    }
    vorx::vcc::MethodCall call;
    call.entityId = orx::maintaind::service::kRegisterAppMethodId;
    call.sessionId = session;
    call.payload = vorx::vcc::Payload::FromBytes(bytes);
    if (driver->SendRequest(client, call)) {
        std::unique_lock<std::mutex> lock(mutex);
        replied.wait_for(lock, timeout, [&] { return code.has_value(); });
    }
    driver->Disconnect(client);
    std::lock_guard<std::mutex> lock(mutex);
    return code;
}

}  // namespace orx::maintaind::daemon::itest
