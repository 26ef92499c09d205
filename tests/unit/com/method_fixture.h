#ifndef TESTS_UNIT_COM_METHOD_FIXTURE_H
#define TESTS_UNIT_COM_METHOD_FIXTURE_H

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "com_test_util.h"
#include "orx/maintaind/types.h"
#include "orx/test/log_capture.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/driver/fault_injecting_driver.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/skeleton.h"

namespace vorx::vcc::test {

using orx::maintaind::AppRegisterInfo;
using orx::maintaind::ReturnCode;
using Level = ara::kelda::common::log::LogLevel;

inline constexpr uint32_t kMethodId = 1;

// A server offering method kMethodId (AppRegisterInfo in, ReturnCode out) and a proxy with its
// method proxy, both over a FaultInjectingDriver around the in-process driver.
class MethodChannelTest : public orx::test::LogCaptureTest {
  protected:
    void SetUp() override {
        auto registry = DriverRegistry::GetInstance();
        faults_ = std::make_shared<FaultInjectingDriver>(registry->GetInProcessDriver());
        registry->SetDriver(api::types::DriverType::PROLOC, faults_);

        skeleton_ = std::make_unique<Skeleton>(TestService());
        skeleton_->RegisterMethod<ReturnCode, AppRegisterInfo>(
            kMethodId, [this](const AppRegisterInfo& info, Responder<ReturnCode> responder) {
                std::function<void(const AppRegisterInfo&, Responder<ReturnCode>)> serve;
                {
                    std::lock_guard<std::mutex> lock(mutex_);
                    received_.push_back(info);
                    serve = serve_;
                }
                serve(info, responder);
            });
        ASSERT_TRUE(skeleton_->OfferService());
        proxy_ = MakeProxy();
        ASSERT_NE(proxy_, nullptr);
        method_ = proxy_->InitializeMethodProxy<ReturnCode>(MethodDescription());
        ASSERT_NE(method_, nullptr);
    }

    void TearDown() override {
        method_.reset();
        proxy_.reset();
        skeleton_.reset();
        DriverRegistry::GetInstance()->SetDriver(api::types::DriverType::PROLOC, nullptr);
    }

    static std::shared_ptr<api::types::MethodInfo> MethodDescription() {
        auto info = std::make_shared<api::types::MethodInfo>();
        info->SetEntityId(kMethodId);
        info->SetErrorDomains({{"RadarErrors", 0x42}});
        return info;
    }

    // A proxy made from the handle that a search reports.
    static std::unique_ptr<Proxy> MakeProxy() {
        FoundLists found;
        const FindServiceHandle search = Proxy::StartFindService(found.Handler(), TestService());
        const bool ok = found.WaitForSize(1);
        Proxy::StopFindService(search);
        if (!ok) {
            return nullptr;
        }
        return std::make_unique<Proxy>(found.All().back()[0]);
    }

    // Sets what the server does with each request (by default it replies code = info.kind).
    void Serve(std::function<void(const AppRegisterInfo&, Responder<ReturnCode>)> serve) {
        std::lock_guard<std::mutex> lock(mutex_);
        serve_ = std::move(serve);
    }

    std::vector<AppRegisterInfo> Received() {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

    // Waits for the future and returns its result.
    static ara::core::Result<ReturnCode> Await(ara::core::Future<ReturnCode>& future) {
        EXPECT_EQ(future.wait_for(2s), ara::core::future_status::ready);
        return future.GetResult();
    }

    std::shared_ptr<FaultInjectingDriver> faults_;
    std::unique_ptr<Skeleton> skeleton_;
    std::unique_ptr<Proxy> proxy_;
    std::shared_ptr<MethodProxyImpl<ReturnCode>> method_;

  private:
    std::mutex mutex_;
    std::vector<AppRegisterInfo> received_;  // guarded by mutex_
    std::function<void(const AppRegisterInfo&, Responder<ReturnCode>)> serve_ =
        [](const AppRegisterInfo& info, Responder<ReturnCode> responder) {
            responder.Reply(ReturnCode{info.kind});
        };  // guarded by mutex_
};

}  // namespace vorx::vcc::test

#endif  // TESTS_UNIT_COM_METHOD_FIXTURE_H
