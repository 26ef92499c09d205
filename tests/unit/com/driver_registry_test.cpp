#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <tuple>
#include <vector>

#include "com_test_util.h"
#include "orx/maintaind/service.h"
#include "orx/maintaind/types.h"
#include "orx/test/log_capture.h"
#include "vorx/vcc/dds_dfx_config_interface.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/driver/driver_settings.h"
#include "vorx/vcc/driver/fault_injecting_driver.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/register_dfx_interface.h"
#include "vorx/vcc/skeleton.h"

namespace vorx::vcc::test {
namespace {

using api::types::DriverType;
using Level = ara::kelda::common::log::LogLevel;

namespace config = ara::kelda::common::orxConfigParser;
class DriverRegistryTest : public orx::test::LogCaptureTest {};

TEST_F(DriverRegistryTest, ChoicesComeFromTheEnvironmentUntilTheProcessConfiguresThem) {
    DriverRegistry registry(config::FixedEnvironment({{"ORX_SOMEIP_DRIVER", "special"},
                                                      {"ORX_DDS_DRIVER", "nosuchdriver"},
                                                      {"ORX_INPROCESS_PAYLOAD", "objects"}}));
    const auto inProcess = registry.GetInProcessDriver();
    EXPECT_EQ(inProcess->GetPayloadMode(), PayloadMode::kObjects);
    EXPECT_EQ(registry.GetDriver(DriverType::PROLOC), inProcess) << "the default";
    auto special = std::make_shared<FaultInjectingDriver>(inProcess);
    int made = 0;
    registry.RegisterFactory("special", [&]() -> std::shared_ptr<Driver> {
        ++made;
        return special;
    });
    EXPECT_EQ(registry.GetDriver(DriverType::SOMEIP), special);
    EXPECT_EQ(registry.GetDriver(DriverType::SOMEIP), special);
    EXPECT_EQ(made, 1);
    EXPECT_EQ(registry.GetDriver(DriverType::DDS), inProcess);
    EXPECT_EQ(Log().Count(Level::kWarn,
                          "[DriverRegistry][Unknown driver, the in-process driver is used "
                          "instead][binding=dds, driver=nosuchdriver]"),
              1u);

    // A test may put its own driver in, and take it out again.
    registry.SetDriver(DriverType::DDS, special);
    EXPECT_EQ(registry.GetDriver(DriverType::DDS), special);
    registry.SetDriver(DriverType::DDS, nullptr);
    EXPECT_EQ(registry.GetDriver(DriverType::DDS), inProcess);

    // The process's own choices: bindings that have a driver keep it; the payload mode and the
    // names change at once.
    DriverSettings settings;
    settings.NameOf(DriverType::PROLOC) = "special";
    registry.Configure(settings);
    EXPECT_EQ(registry.Settings(), settings);
    EXPECT_EQ(inProcess->GetPayloadMode(), PayloadMode::kBytes);
    EXPECT_EQ(registry.ConfiguredName(DriverType::SOMEIP), "inprocess");
    EXPECT_EQ(registry.GetDriver(DriverType::SOMEIP), special) << "made before";
    EXPECT_EQ(registry.GetDriver(DriverType::PROLOC), inProcess) << "made before";
}

TEST_F(DriverRegistryTest, DriverSettingsReadTheFileThenTheEnvironment) {
    const auto document =
        nlohmann::json::parse(R"({"drivers": {"dds": "dds", "someip": 5, "proloc": ""}})");
    config::ConfigReader file(document, "/etc/orx.json");
    config::SettingsReport report;
    DriverSettings settings;
    LoadDriverSettings(settings, &file,
                       config::FixedEnvironment({{"ORX_PROLOC_DRIVER", "special"},
                                                 {"ORX_SOMEIP_DRIVER", ""},
                                                 {"ORX_INPROCESS_PAYLOAD", "pigeons"}}),
                       &report);
    EXPECT_EQ(settings.names, (std::array<std::string, 3>{"special", "dds", "inprocess"}));
    EXPECT_EQ(settings.inProcessPayload, PayloadMode::kBytes);
    EXPECT_EQ(report.OriginOf("drivers.dds"),
              config::SettingOrigin::File("/etc/orx.json", "drivers.dds"));
    EXPECT_EQ(report.OriginOf("drivers.proloc"),
              config::SettingOrigin::Environment("ORX_PROLOC_DRIVER"));
    EXPECT_EQ(report.OriginOf("drivers.someip"), config::SettingOrigin::Default());
    EXPECT_EQ(file.Problems().Lines().size(), 2u) << Log().Dump();
    EXPECT_EQ(Log().CountContaining(Level::kError, "key=drivers.someip, value=5"), 1u);
    EXPECT_EQ(
        Log().CountContaining(Level::kError, "key=drivers.proloc, value=\"\", reason=must name"),
        1u);
    ASSERT_EQ(report.problems.size(), 1u);
    EXPECT_EQ(report.problems[0].origin,
              config::SettingOrigin::Environment("ORX_INPROCESS_PAYLOAD"));
}

// A configuration provider that records what it was asked and answers as told.
class RecordingDfxConfig final : public DDSDfxConfigInterface {
  public:
    using BindIndex = ara::com::internal::BindIndex;
    bool ReadEventData(const BindIndex& index, driver::dds::DDSEventInfo&) override {
        return Record(index);
    }
    bool ReadMethodData(const BindIndex& index, driver::dds::DDSMethodInfo&) override {
        return Record(index);
    }
    bool ReadServiceDiscoveryData(const BindIndex& index,
                                  driver::dds::DDSServiceDiscoveryInfo&) override {
        return Record(index);
    }
    std::vector<BindIndex> Asked() {
        std::lock_guard<std::mutex> lock(mutex_);
        return asked_;
    }
    std::atomic<bool> answer{true};

  private:
    bool Record(const BindIndex& index) {
        std::lock_guard<std::mutex> lock(mutex_);
        asked_.push_back(index);
        return answer.load();
    }
    std::mutex mutex_;
    std::vector<BindIndex> asked_;
};

TEST_F(DriverRegistryTest, TheMaintenanceServiceOnDdsNeedsTheDfxConfigurationsConsent) {
    namespace service = orx::maintaind::service;
    ServiceDescription maintenance = TestService("1", DriverType::DDS);
    maintenance.serviceId = service::kAppServiceId;
    maintenance.serviceName = std::string(service::kAppServicePath);
    auto config = std::make_shared<RecordingDfxConfig>();
    RegisterDfxInterface::RegisterDfxConfigInterface(config);
    Skeleton skeleton(maintenance);
    ASSERT_TRUE(skeleton.OfferService());
    FoundLists found;
    const FindServiceHandle search = Proxy::StartFindService(found.Handler(), maintenance);
    ASSERT_TRUE(found.WaitForSize(1));
    Proxy::StopFindService(search);
    auto method = std::make_shared<api::types::MethodInfo>();
    method->SetEntityId(service::kRegisterAppMethodId);
    Proxy proxy(found.All().back()[0]);
    EXPECT_NE(proxy.InitializeMethodProxy<orx::maintaind::ReturnCode>(method), nullptr);
    EXPECT_TRUE(proxy.Subscribe<orx::maintaind::LatencySwitch>(service::kSwitchLatencyEventId,
                                                               nullptr, 10));
    const auto asked = config->Asked();
    ASSERT_EQ(asked.size(), 3u);
    EXPECT_EQ(asked[0].serviceName, std::string(service::kAppServicePath));
    EXPECT_EQ(std::make_tuple(asked[0].instanceId, asked[0].entityId, asked[1].entityId,
                              asked[2].entityId),
              std::make_tuple(std::string("1"), 0u, uint32_t{service::kRegisterAppMethodId},
                              uint32_t{service::kSwitchLatencyEventId}));
    // Other services are none of its business.
    Proxy::StopFindService(
        Proxy::StartFindService(found.Handler(), TestService("1", DriverType::DDS)));
    EXPECT_EQ(config->Asked().size(), 3u);

    // A refusal stops the search, the method and the event.
    config->answer = false;
    EXPECT_EQ(Proxy::StartFindService(found.Handler(), maintenance).id, 0u);
    Proxy refused(found.All().back()[0]);
    EXPECT_EQ(refused.InitializeMethodProxy<orx::maintaind::ReturnCode>(method), nullptr);
    EXPECT_FALSE(refused.Subscribe<orx::maintaind::LatencySwitch>(service::kSwitchLatencyEventId,
                                                                  nullptr, 10));
    EXPECT_EQ(Log().CountContaining(Level::kWarn, "refused by the DFX configuration"), 3u);
    EXPECT_EQ(
        Log().Count(Level::kError, "[Proxy][Method proxy cannot be created][methodEntityId=60621]"),
        1u);
}

}  // namespace
}  // namespace vorx::vcc::test
