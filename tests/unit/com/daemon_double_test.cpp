// The daemon double in tests/support, driven through the core as the plug-in drives it.
#include "orx/test/daemon_double.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "com_test_util.h"
#include "orx/test/log_capture.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/proxy.h"

namespace vorx::vcc::test {
namespace {

using orx::maintaind::AppRegisterInfo;
using orx::maintaind::LatencySwitch;
using orx::maintaind::ReturnCode;
using orx::test::DaemonDouble;
using orx::test::ScriptedReply;

class DaemonDoubleTest : public orx::test::LogCaptureTest {
  protected:
    // Searches the daemon as the plug-in does (DDS, any instance) and binds RegisterApp.
    void Connect() {
        auto info = std::make_shared<driver::dds::DDSServiceDiscoveryInfo>();
        info->SetServiceId(DaemonDouble::kServiceId);
        info->SetServiceName(
            orxmaintaind::type::OrxMaintaindType::GetInstance()->GetAppServicePath());
        search_ = Proxy::StartFindService(found_.Handler(), info);
        ASSERT_TRUE(found_.WaitForSize(1));
        proxy_ = std::make_shared<Proxy>(found_.All().back()[0]);
        auto method = std::make_shared<driver::dds::DDSMethodInfo>();
        method->SetEntityId(DaemonDouble::kRegisterAppMethodId);
        method_ = proxy_->InitializeMethodProxy<ReturnCode>(method);
        ASSERT_NE(method_, nullptr);
    }

    void TearDown() override { Proxy::StopFindService(search_); }

    static AppRegisterInfo Report(uint8_t kind) {
        AppRegisterInfo info;
        info.kind = kind;
        info.nodeCommonRegisterInfo.appName = "radar";
        return info;
    }

    DaemonDouble daemon_;
    FoundLists found_;
    FindServiceHandle search_;
    std::shared_ptr<Proxy> proxy_;
    std::shared_ptr<MethodProxyImpl<ReturnCode>> method_;
};

TEST_F(DaemonDoubleTest, ScriptedBehavioursAreTakenInOrderThenTheDefault) {
    Connect();
    EXPECT_EQ(found_.All().back()[0].GetInstanceId(), "1");
    daemon_.Script(ScriptedReply::Code(1, 30ms));
    daemon_.Script(
        ScriptedReply::Error(ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotOffered)));
    daemon_.Script(ScriptedReply::NoReply());
    daemon_.Script(ScriptedReply::RequestSendFails());
    daemon_.SetDefault(ScriptedReply::Code(0));

    auto delayed = method_->Request(Report(3));
    EXPECT_EQ(delayed.wait_for(10ms), ara::core::future_status::timeout);
    ASSERT_EQ(delayed.wait_for(2s), ara::core::future_status::ready);
    EXPECT_EQ(delayed.get().code, 1);

    auto error = method_->Request(Report(0));
    ASSERT_EQ(error.wait_for(2s), ara::core::future_status::ready);
    EXPECT_EQ(error.GetResult().Error().Value(), 11);

    auto silent = method_->Request(Report(1));
    EXPECT_EQ(silent.wait_for(100ms), ara::core::future_status::timeout);

    auto unsent = method_->Request(Report(2));
    ASSERT_TRUE(unsent.is_ready());
    EXPECT_EQ(unsent.GetResult().Error().Value(), 3);

    auto normal = method_->Request(Report(4));
    ASSERT_EQ(normal.wait_for(2s), ara::core::future_status::ready);
    EXPECT_EQ(normal.get().code, 0);

    // Every request that arrived was recorded, the unsent one not.
    ASSERT_TRUE(daemon_.WaitForCount(4, 1s));
    const auto received = daemon_.Received();
    ASSERT_EQ(received.size(), 4u);
    EXPECT_EQ(received[0], Report(3));
    EXPECT_EQ(received[3], Report(4));
    EXPECT_EQ(daemon_.ScriptedLeft(), 0u);
    EXPECT_TRUE(WaitUntil([&] { return daemon_.RepliesSent() == 3u; }));
}

TEST_F(DaemonDoubleTest, WithdrawAndReofferAreSeenByTheSearchAndTheProxyCarriesOn) {
    Connect();
    daemon_.Script(ScriptedReply::Withdraw(50ms));
    auto lost = method_->Request(Report(0));
    ASSERT_EQ(lost.wait_for(2s), ara::core::future_status::ready);
    EXPECT_EQ(lost.GetResult().Error().Value(), 1);  // kServiceNotAvailable
    ASSERT_TRUE(found_.WaitForSize(0));
    ASSERT_TRUE(found_.WaitForSize(1));  // offered again

    auto after = method_->Request(Report(1));
    ASSERT_EQ(after.wait_for(2s), ara::core::future_status::ready);
    EXPECT_EQ(after.get().code, 0);
    EXPECT_TRUE(daemon_.WaitFor(
        [](const std::vector<AppRegisterInfo>& all) { return all.size() == 2 && all[1].kind == 1; },
        1s));
}

TEST_F(DaemonDoubleTest, ReplySendFailureLeavesTheCallerWaitingAndLatencyOrdersArrive) {
    Connect();
    daemon_.Script(ScriptedReply::ReplySendFails());
    auto future = method_->Request(Report(0));
    EXPECT_EQ(future.wait_for(100ms), ara::core::future_status::timeout);
    EXPECT_EQ(daemon_.RepliesSent(), 0u);

    ASSERT_TRUE(proxy_->Subscribe<LatencySwitch>(DaemonDouble::kLatencyEventId, nullptr, 10));
    LatencySwitch order;
    order.latencyIndex.serviceId = 0x1234;
    order.latencyIndex.eventName = "RadarTopic";
    ASSERT_TRUE(daemon_.PublishLatencySwitch(order));
    std::vector<LatencySwitch> orders;
    ASSERT_TRUE(WaitUntil([&] {
        proxy_->GetNewSamples<LatencySwitch>(
            [&orders](SamplePtr<const LatencySwitch> s) { orders.push_back(*s); },
            DaemonDouble::kLatencyEventId, 10);
        return !orders.empty();
    }));
    EXPECT_EQ(orders[0], order);
}

}  // namespace
}  // namespace vorx::vcc::test
