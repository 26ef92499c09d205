#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

#include "com_test_util.h"
#include "orx/maintaind/service.h"
#include "orx/maintaind/types.h"
#include "orx/test/log_capture.h"
#include "vorx/vcc/dds_dfx_config_interface.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/driver/fault_injecting_driver.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/register_dfx_interface.h"
#include "vorx/vcc/skeleton.h"

namespace vorx::vcc::test {
namespace {

using api::types::DriverType;
using Level = ara::kelda::common::log::LogLevel;

class DriverRegistryTest : public orx::test::LogCaptureTest {};

// Each test runs in a process of its own, so the environment is read fresh by the registry.
TEST_F(DriverRegistryTest, EveryBindingUsesTheOneInProcessDriverByDefault) {
    auto registry = DriverRegistry::GetInstance();
    EXPECT_EQ(registry->ConfiguredName(DriverType::DDS), "inprocess");
    auto inProcess = registry->GetInProcessDriver();
    EXPECT_EQ(registry->GetDriver(DriverType::DDS), inProcess);
    EXPECT_EQ(registry->GetDriver(DriverType::SOMEIP), inProcess);
    EXPECT_EQ(registry->GetDriver(DriverType::PROLOC), inProcess);
    EXPECT_EQ(inProcess->Name(), "inprocess");
}

TEST_F(DriverRegistryTest, EnvironmentChoosesARegisteredFactoryAndUnknownNamesFallBack) {
    ASSERT_EQ(setenv("ORX_SOMEIP_DRIVER", "special", 1), 0);
    ASSERT_EQ(setenv("ORX_DDS_DRIVER", "nosuchdriver", 1), 0);
    auto registry = DriverRegistry::GetInstance();
    auto special = std::make_shared<FaultInjectingDriver>(registry->GetInProcessDriver());
    int made = 0;
    registry->RegisterFactory("special", [&]() -> std::shared_ptr<Driver> {
        ++made;
        return special;
    });
    EXPECT_EQ(registry->GetDriver(DriverType::SOMEIP), special);
    EXPECT_EQ(registry->GetDriver(DriverType::SOMEIP), special);
    EXPECT_EQ(made, 1);
    EXPECT_EQ(registry->GetDriver(DriverType::DDS), registry->GetInProcessDriver());
    EXPECT_EQ(Log().Count(Level::kWarn,
                          "[DriverRegistry][Unknown driver, the in-process driver is used "
                          "instead][binding=dds, driver=nosuchdriver]"),
              1u);

    // A test may put its own driver in, and take it out again.
    registry->SetDriver(DriverType::DDS, special);
    EXPECT_EQ(registry->GetDriver(DriverType::DDS), special);
    registry->SetDriver(DriverType::DDS, nullptr);
    EXPECT_EQ(registry->GetDriver(DriverType::DDS), registry->GetInProcessDriver());
    unsetenv("ORX_SOMEIP_DRIVER");
    unsetenv("ORX_DDS_DRIVER");
}

// A configuration provider that records what it was asked and answers as told.
class RecordingDfxConfig final : public DDSDfxConfigInterface {
  public:
    explicit RecordingDfxConfig(bool answer) : answer_(answer) {}
    bool ReadEventData(const ara::com::internal::BindIndex& index,
                       driver::dds::DDSEventInfo&) override {
        return Record(index);
    }
    bool ReadMethodData(const ara::com::internal::BindIndex& index,
                        driver::dds::DDSMethodInfo&) override {
        return Record(index);
    }
    bool ReadServiceDiscoveryData(const ara::com::internal::BindIndex& index,
                                  driver::dds::DDSServiceDiscoveryInfo&) override {
        return Record(index);
    }
    std::vector<ara::com::internal::BindIndex> Asked() {
        std::lock_guard<std::mutex> lock(mutex_);
        return asked_;
    }

  private:
    bool Record(const ara::com::internal::BindIndex& index) {
        std::lock_guard<std::mutex> lock(mutex_);
        asked_.push_back(index);
        return answer_;
    }
    const bool answer_;
    std::mutex mutex_;
    std::vector<ara::com::internal::BindIndex> asked_;
};

ServiceDescription MaintenanceService() {
    return TestService("1", DriverType::DDS);
}

TEST_F(DriverRegistryTest, MaintenanceServiceOnDdsAsksTheDfxConfigurationFirst) {
    ServiceDescription maintenance = MaintenanceService();
    maintenance.serviceId = orx::maintaind::service::kAppServiceId;
    maintenance.serviceName = std::string(orx::maintaind::service::kAppServicePath);
    auto config = std::make_shared<RecordingDfxConfig>(true);
    RegisterDfxInterface::RegisterDfxConfigInterface(config);

    Skeleton skeleton(maintenance);
    ASSERT_TRUE(skeleton.OfferService());
    FoundLists found;
    const FindServiceHandle search = Proxy::StartFindService(found.Handler(), maintenance);
    ASSERT_NE(search.id, 0u);
    ASSERT_TRUE(found.WaitForSize(1));
    Proxy::StopFindService(search);
    Proxy proxy(found.All().back()[0]);
    auto info = std::make_shared<api::types::MethodInfo>();
    info->SetEntityId(orx::maintaind::service::kRegisterAppMethodId);
    EXPECT_NE(proxy.InitializeMethodProxy<orx::maintaind::ReturnCode>(info), nullptr);
    EXPECT_TRUE(proxy.Subscribe<orx::maintaind::LatencySwitch>(
        orx::maintaind::service::kSwitchLatencyEventId, nullptr, 10));

    const auto asked = config->Asked();
    ASSERT_EQ(asked.size(), 3u);
    EXPECT_EQ(asked[0].serviceName, std::string(orx::maintaind::service::kAppServicePath));
    EXPECT_EQ(asked[0].instanceId, "1");
    EXPECT_EQ(asked[0].entityId, 0u);
    EXPECT_EQ(asked[1].entityId, orx::maintaind::service::kRegisterAppMethodId);
    EXPECT_EQ(asked[2].entityId, orx::maintaind::service::kSwitchLatencyEventId);

    // Other services are none of its business.
    FoundLists other;
    const FindServiceHandle otherSearch =
        Proxy::StartFindService(other.Handler(), MaintenanceService());
    EXPECT_NE(otherSearch.id, 0u);
    Proxy::StopFindService(otherSearch);
    EXPECT_EQ(config->Asked().size(), 3u);
}

TEST_F(DriverRegistryTest, RefusalOfTheDfxConfigurationStopsSearchMethodAndEvent) {
    ServiceDescription maintenance = MaintenanceService();
    maintenance.serviceId = orx::maintaind::service::kAppServiceId;
    maintenance.serviceName = "MAINTAIND";
    Skeleton skeleton(maintenance);
    ASSERT_TRUE(skeleton.OfferService());
    FoundLists found;
    const FindServiceHandle search = Proxy::StartFindService(found.Handler(), maintenance);
    ASSERT_TRUE(found.WaitForSize(1));
    Proxy::StopFindService(search);

    RegisterDfxInterface::RegisterDfxConfigInterface(std::make_shared<RecordingDfxConfig>(false));
    EXPECT_EQ(Proxy::StartFindService(found.Handler(), maintenance).id, 0u);
    Proxy proxy(found.All().back()[0]);
    auto info = std::make_shared<api::types::MethodInfo>();
    info->SetEntityId(orx::maintaind::service::kRegisterAppMethodId);
    EXPECT_EQ(proxy.InitializeMethodProxy<orx::maintaind::ReturnCode>(info), nullptr);
    EXPECT_FALSE(proxy.Subscribe<orx::maintaind::LatencySwitch>(
        orx::maintaind::service::kSwitchLatencyEventId, nullptr, 10));
    EXPECT_EQ(Log().CountContaining(Level::kWarn, "refused by the DFX configuration"), 3u);
    EXPECT_EQ(
        Log().Count(Level::kError, "[Proxy][Method proxy cannot be created][methodEntityId=60621]"),
        1u);
}

}  // namespace
}  // namespace vorx::vcc::test
