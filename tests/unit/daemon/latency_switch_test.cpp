#include <gtest/gtest.h>

#include "daemon_fixture.h"
#include "orx/maintaind/service.h"
#include "vorx/vcc/process_identity.h"

namespace orx::maintaind::daemon::test {
namespace {

using Level = ara::kelda::common::log::LogLevel;

// Subscribes the latency switch event like an application does and keeps what arrives.
class SwitchListener {
  public:
    explicit SwitchListener(const vorx::vcc::HandleType& handle) : proxy_(handle) {
        proxy_.SetReceiveHandler(
            [this] {
                proxy_.GetNewSamples<LatencySwitch>(
                    [this](vorx::vcc::SamplePtr<const LatencySwitch> sample) {
                        std::lock_guard<std::mutex> lock(mutex_);
                        received_.push_back(*sample);
                    },
                    orx::maintaind::service::kSwitchLatencyEventId, SIZE_MAX);
            },
            orx::maintaind::service::kSwitchLatencyEventId);
        subscribed_ = proxy_.Subscribe<LatencySwitch>(
            orx::maintaind::service::kSwitchLatencyEventId, nullptr, 10);
    }
    bool Subscribed() const { return subscribed_; }
    std::vector<LatencySwitch> Received() {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

  private:
    vorx::vcc::Proxy proxy_;
    bool subscribed_ = false;
    std::mutex mutex_;
    std::vector<LatencySwitch> received_;
};

class LatencySwitchTest : public DaemonFixture {
  protected:
    void SetUp() override {
        StartDaemon();
        // One event on DDS and SOME/IP, offered and subscribed; two events whose names end
        // alike in different services.
        for (const AppRegisterInfo& report :
             {EventReport("radar", 1, "/demo/Radar/Brake", true, "BrakeTopic", 0x10, 1, true,
                          0x8001),
              EventReport("hud", 2, "/demo/Radar/Brake", false, "BrakeTopic", 0x10, 1, true,
                          0x8001),
              EventReport("radar", 1, "/demo/Radar/Speed", true, "RadarSpeed", 0x10),
              EventReport("engine", 3, "/demo/Engine/Speed", true, "EngineSpeed", 0x20)}) {
            ASSERT_EQ(Register(report), std::optional<uint8_t>(0));
        }
    }

    tools::LatencySwitchReply Switch(const std::string& event, LatencyMode mode,
                                     const tools::QueryFilter& filter = {}) {
        tools::LatencySwitchRequest request;
        request.event = event;
        request.mode = mode;
        request.filter = filter;
        return Tools<tools::LatencySwitchReply>(tools::kSwitchLatencyModeId, request);
    }
};

TEST_F(LatencySwitchTest, NamedEventIsSwitchedWithItsBindingsAndRecorded) {
    auto handle = Find(orx::maintaind::service::kAppServiceId);
    ASSERT_TRUE(handle);
    SwitchListener app(*handle);
    ASSERT_TRUE(app.Subscribed());

    const auto reply = Switch("Brake", LatencyMode::ENABLE);  // its last path component
    ASSERT_EQ(reply.code, 0) << reply.message;
    EXPECT_EQ(reply.eventName, "/demo/Radar/Brake");
    ASSERT_TRUE(WaitFor([&] { return app.Received().size() == 1; }));
    const LatencySwitch order = app.Received()[0];
    EXPECT_EQ(order.mode, LatencyMode::ENABLE);
    EXPECT_EQ(order.latencyIndex.driverTypes,
              (std::vector<DriverType>{DriverType::SOMEIP, DriverType::DDS}))
        << "DDS last, so applications acknowledge through their DDS handler";
    EXPECT_EQ(order.latencyIndex.serviceId, 0x10);
    EXPECT_EQ(order.latencyIndex.instanceId, 1);
    EXPECT_EQ(order.latencyIndex.eventName, "BrakeTopic");
    EXPECT_EQ(order.latencyIndex.eventId, 0x8001);
    EXPECT_EQ(reply.latencyIndex, order.latencyIndex);
    EXPECT_EQ(Log().CountContaining(
                  Level::kInfo,
                  "Latency switch published[event=/demo/Radar/Brake, mode=enable, serviceId=16, "
                  "instanceId=1, topicName=BrakeTopic, eventId=32769, bindings=SOMEIP,DDS]"),
              1U);

    // The order shows as requested; the application's acknowledgement joins it.
    ASSERT_TRUE(WaitFor([&] {
        const auto statuses = Tools<tools::LatencyStatusListReply>(tools::kQueryLatencyStatusId,
                                                                   tools::QueryFilter{});
        return statuses.statuses.size() == 1 && statuses.statuses[0].requested;
    }));
    AppRegisterInfo ack = LatencyReport("hud", "BrakeTopic", 0, LatencyMode::ENABLE);
    ack.latencyInfo.latencyIndex = order.latencyIndex;
    ASSERT_EQ(Register(ack), std::optional<uint8_t>(0));
    const auto statuses =
        Tools<tools::LatencyStatusListReply>(tools::kQueryLatencyStatusId, tools::QueryFilter{});
    ASSERT_EQ(statuses.statuses.size(), 1U);
    const tools::LatencyStatusEntry& status = statuses.statuses[0];
    EXPECT_EQ(status.eventName, "/demo/Radar/Brake");
    EXPECT_EQ(status.requestedMode, LatencyMode::ENABLE);
    EXPECT_TRUE(status.enabled);
    ASSERT_EQ(status.acks.size(), 1U);
    EXPECT_EQ(status.acks[0].appName, "hud");
    EXPECT_EQ(status.acks[0].pid, 2);
    const std::string host = vorx::vcc::CurrentProcessIdentity().hostName;
    EXPECT_EQ(status.unacknowledged, std::vector<String>{"radar/1@" + host});
    // QueryEventShow names both sides of the event and its latency state.
    tools::EventShowRequest show;
    show.event = "BrakeTopic";
    const auto shown = Tools<tools::EventShowReply>(tools::kQueryEventShowId, show);
    ASSERT_EQ(shown.code, 0) << shown.message;
    EXPECT_EQ(shown.events.size(), 2U);
    EXPECT_TRUE(shown.latency.enabled);

    // A process that registers the event later gets the order again, and is listed until it
    // acknowledges.
    ASSERT_EQ(Register(EventReport("hud", 5, "/demo/Radar/Brake", false, "BrakeTopic", 0x10, 1,
                                   true, 0x8001)),
              std::optional<uint8_t>(0));
    ASSERT_TRUE(WaitFor([&] { return app.Received().size() == 2; }));
    EXPECT_EQ(app.Received()[1], order);
    const auto later =
        Tools<tools::LatencyStatusListReply>(tools::kQueryLatencyStatusId, tools::QueryFilter{});
    ASSERT_EQ(later.statuses.size(), 1U);
    EXPECT_EQ(later.statuses[0].unacknowledged,
              (std::vector<String>{"hud/5@" + host, "radar/1@" + host}));
}

TEST_F(LatencySwitchTest, UnknownAndAmbiguousNamesAreAnsweredClearly) {
    auto unknown = Switch("Steering", LatencyMode::ENABLE);
    EXPECT_EQ(unknown.code, static_cast<uint8_t>(tools::ToolsCode::UNKNOWN_EVENT));
    EXPECT_EQ(unknown.message, "no registered event is named \"Steering\"");

    auto ambiguous = Switch("Speed", LatencyMode::DISABLE);
    EXPECT_EQ(ambiguous.code, static_cast<uint8_t>(tools::ToolsCode::AMBIGUOUS_EVENT));
    ASSERT_EQ(ambiguous.candidates.size(), 2U);
    EXPECT_EQ(ambiguous.candidates[0],
              "/demo/Radar/Speed (serviceId=16, instanceId=1, topic=RadarSpeed)");

    // Narrowed by application, by service id, or named by topic or full name, it resolves.
    tools::QueryFilter engine;
    engine.appName = "engine";
    EXPECT_EQ(Switch("Speed", LatencyMode::DISABLE, engine).eventName, "/demo/Engine/Speed");
    tools::QueryFilter service;
    service.hasServiceId = true;
    service.serviceId = 0x10;
    EXPECT_EQ(Switch("Speed", LatencyMode::DISABLE, service).eventName, "/demo/Radar/Speed");
    EXPECT_EQ(Switch("EngineSpeed", LatencyMode::DISABLE).eventName, "/demo/Engine/Speed");
    EXPECT_EQ(Switch("/demo/Radar/Speed", LatencyMode::DISABLE).code, 0);

    auto badMode = Switch("BrakeTopic", static_cast<LatencyMode>(7));
    EXPECT_EQ(badMode.code, static_cast<uint8_t>(tools::ToolsCode::BAD_REQUEST));
    const auto status =
        Tools<tools::DaemonStatusReply>(tools::kQueryDaemonStatusId, tools::QueryFilter{});
    EXPECT_EQ(status.counters.latencySwitches, 4U);
}

}  // namespace
}  // namespace orx::maintaind::daemon::test
