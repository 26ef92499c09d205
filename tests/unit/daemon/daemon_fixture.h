// A maintenance daemon in the test's own process, on the in-process driver (binding PROLOC), with
// a scripted process probe and its registry file in a temporary directory, plus the clients that
// talk to it the way applications and tools do.
#ifndef TESTS_UNIT_DAEMON_DAEMON_FIXTURE_H
#define TESTS_UNIT_DAEMON_DAEMON_FIXTURE_H

#include <gtest/gtest.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "app/maintaind.h"
#include "daemon_test_support.h"
#include "orx/maintaind/service.h"
#include "orx/maintaind/tools/tools.h"
#include "orx/test/find_service.h"
#include "orx/test/log_capture.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/proxy.h"

namespace orx::maintaind::daemon::test {

using namespace std::chrono_literals;
using CoreDriverType = vorx::vcc::api::types::DriverType;

class DaemonFixture : public orx::test::LogCaptureTest {
  protected:
    void TearDown() override {
        appProxy_.reset();
        toolsProxy_.reset();
        daemon_.reset();
    }

    DaemonSettings Settings() {
        DaemonSettings settings;
        settings.dbPath = dir_.File("registry.db");
        settings.binding = CoreDriverType::PROLOC;
        settings.probe = probe_;
        settings.clock = clock_.Clock();
        settings.livenessPeriod = 60s;  // tests run the check themselves
        return settings;
    }

    void StartDaemon(DaemonSettings settings) {
        appProxy_.reset();
        toolsProxy_.reset();
        daemon_.reset();
        daemon_ = std::make_unique<Maintaind>(std::move(settings));
        std::string error;
        ASSERT_TRUE(daemon_->Start(error)) << error;
    }
    void StartDaemon() { StartDaemon(Settings()); }

    static vorx::vcc::ServiceDescription Service(uint16_t serviceId) {
        return orx::test::MaintaindService(serviceId, CoreDriverType::PROLOC);
    }

    // The handle of the daemon's service `serviceId`, as a search finds it.
    static std::optional<vorx::vcc::HandleType> Find(uint16_t serviceId) {
        return orx::test::FindFirstOffer(Service(serviceId), 5s);
    }

    vorx::vcc::Proxy& AppProxy() {
        if (!appProxy_) {
            auto handle = Find(orx::maintaind::service::kAppServiceId);
            EXPECT_TRUE(handle.has_value());
            appProxy_ = std::make_unique<vorx::vcc::Proxy>(*handle);
        }
        return *appProxy_;
    }

    // Sends one report through RegisterApp; the reply's code, or nullopt without a reply in 5 s.
    std::optional<uint8_t> Register(const AppRegisterInfo& report) {
        auto method = AppProxy().InitializeMethodProxy<ReturnCode>(
            MethodInfo(orx::maintaind::service::kRegisterAppMethodId));
        auto future = method->Request(report);
        if (future.wait_for(5s) != ara::core::future_status::ready) {
            return std::nullopt;
        }
        auto result = future.GetResult();
        return result.HasValue() ? std::optional<uint8_t>(result.Value().code) : std::nullopt;
    }

    // Calls tools method `entityId`; a default reply with code 255 when no answer came.
    template <class Reply, class Request>
    Reply Tools(uint32_t entityId, const Request& request) {
        if (!toolsProxy_) {
            auto handle = Find(tools::kToolsServiceId);
            EXPECT_TRUE(handle.has_value());
            toolsProxy_ = std::make_unique<vorx::vcc::Proxy>(*handle);
        }
        auto method = toolsProxy_->InitializeMethodProxy<Reply>(MethodInfo(entityId));
        auto future = method->Request(request);
        Reply reply{};
        reply.code = 255;
        if (future.wait_for(5s) == ara::core::future_status::ready) {
            auto result = future.GetResult();
            if (result.HasValue()) {
                reply = result.Value();
            }
        }
        return reply;
    }

    tools::NodeListReply Nodes(const tools::QueryFilter& filter = {}) {
        return Tools<tools::NodeListReply>(tools::kQueryNodeInfoId, filter);
    }
    tools::EventListReply Events(const tools::QueryFilter& filter = {}) {
        return Tools<tools::EventListReply>(tools::kQueryEventInfoId, filter);
    }

    static std::shared_ptr<vorx::vcc::api::types::MethodInfo> MethodInfo(uint32_t entityId) {
        auto info = std::make_shared<vorx::vcc::api::types::MethodInfo>();
        info->SetEntityId(entityId);
        return info;
    }

    TempDir dir_;
    std::shared_ptr<FakeProbe> probe_ = std::make_shared<FakeProbe>();
    ManualClock clock_;
    std::unique_ptr<Maintaind> daemon_;
    std::unique_ptr<vorx::vcc::Proxy> appProxy_;
    std::unique_ptr<vorx::vcc::Proxy> toolsProxy_;
};

}  // namespace orx::maintaind::daemon::test

#endif  // TESTS_UNIT_DAEMON_DAEMON_FIXTURE_H
