// Latency analysis: the daemon's switch orders reach the handlers the core registered and are
// acknowledged; enabled subscribers report their results once a second of the test's clock.
#include <functional>

#include "ara/com/com_error_domain.h"
#include "orxmaintaind/orx_maintaind_latency_client.h"
#include "orxmaintaind/orx_maintaind_latency_index.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

namespace record = orx::maintaind;
using orx::orxcm::orxmaintaind::DDSLatencyIndex;
using orx::orxcm::orxmaintaind::OrxMaintaindLatencyClient;
using orx::orxcm::orxmaintaind::SomeipLatencyIndex;
using vorx::vcc::api::types::LatencyAnalysisMode;
using vorx::vcc::api::types::LatencyResult;

constexpr auto kDds = record::DriverType::DDS;
constexpr auto kSomeip = record::DriverType::SOMEIP;
constexpr auto kEnable = record::LatencyMode::ENABLE;
constexpr auto kDisable = record::LatencyMode::DISABLE;

// An order's event; `driverTypes` in the daemon's numbering (0 DDS, 1 SOME/IP).
record::LatencyIndex Index(std::vector<record::DriverType> driverTypes, uint16_t serviceId,
                           uint16_t instanceId, const std::string& topic, uint16_t eventId = 0) {
    record::LatencyIndex index;
    index.driverTypes = std::move(driverTypes);
    index.serviceId = serviceId;
    index.instanceId = instanceId;
    index.eventName = topic;
    index.eventId = eventId;
    return index;
}

// Records the modes a handler was called with, from any thread.
class ModeRecorder {
  public:
    std::function<void(const LatencyAnalysisMode&)> Handler() const {
        return [state = state_](const LatencyAnalysisMode& mode) {
            std::lock_guard<std::mutex> lock(state->mutex);
            state->modes.push_back(static_cast<int>(mode));
        };
    }
    std::vector<int> Modes() const {
        std::lock_guard<std::mutex> lock(state_->mutex);
        return state_->modes;
    }

  private:
    struct State {
        std::mutex mutex;
        std::vector<int> modes;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

std::function<LatencyResult()> Query(LatencyResult result) {
    return [result] { return result; };
}

class LatencyTest : public PluginTest {
  protected:
    void Publish(record::LatencyMode mode, const record::LatencyIndex& index) {
        record::LatencySwitch order;
        order.mode = mode;
        order.latencyIndex = index;
        ASSERT_TRUE(daemon_->PublishLatencySwitch(order));
    }
    // Latency reports received: acknowledgements (type 0) or results (type 1). Each must carry
    // nothing but its latency record, with the report kind left at 0.
    std::vector<record::LatencyInfo> Reports(uint8_t type) const {
        std::vector<record::LatencyInfo> out;
        for (const auto& report : Received()) {
            if (report.latencyInfo != record::LatencyInfo{} && report.latencyInfo.type == type) {
                EXPECT_EQ(Rest(report), AppRegisterInfo{});
                out.push_back(report.latencyInfo);
            }
        }
        return out;
    }
    bool WaitForAcks(size_t count) const {
        return WaitFor([&] { return Reports(0).size() >= count; }, kWait);
    }
};

TEST_F(LatencyTest, HandlersAreKeyedByTheFirstBindingAndTheFirstRegistrationStays) {
    const auto client = std::make_shared<OrxMaintaindLatencyClient>(controller_);
    ModeRecorder first, second, both, someip;
    client->RegisterLatencyMode(first.Handler(), {{DriverType::DDS, DdsEvent(10, 1, "A", "2")}},
                                true);
    client->RegisterLatencyMode(second.Handler(), {{DriverType::DDS, DdsEvent(10, 1, "A", "2")}},
                                true);
    client->RegisterLatencyMode(second.Handler(), {{DriverType::DDS, nullptr}}, true);
    client->RegisterLatencyMode(second.Handler(), {{DriverType::PROLOC, DdsEvent(12, 1, "C")}},
                                true);
    client->RegisterLatencyMode(both.Handler(),
                                {{DriverType::DDS, DdsEvent(11, 1, "B")},
                                 {DriverType::SOMEIP, SomeipEvent(11, 1, "B", 300)}},
                                true);
    client->RegisterLatencyMode(someip.Handler(),
                                {{DriverType::SOMEIP, SomeipEvent(13, 1, "D", 300, "3")}}, false);

    client->ChangeEventLatencyMode(kEnable, Index({kDds}, 10, 2, "ATopic"));
    client->ChangeEventLatencyMode(kEnable, Index({kDds}, 12, 1, "CTopic"));
    client->ChangeEventLatencyMode(kEnable, Index({kSomeip}, 11, 1, "", 300));  // not registered
    client->ChangeEventLatencyMode(kEnable, Index({kDds}, 11, 1, "BTopic"));
    // SOME/IP handlers are found by event id, whatever the name.
    client->ChangeEventLatencyMode(kEnable, Index({kSomeip}, 13, 3, "DTopic", 301));
    client->ChangeEventLatencyMode(kDisable, Index({kSomeip}, 13, 3, "other", 300));
    EXPECT_EQ(first.Modes(), (std::vector<int>{1}));
    EXPECT_TRUE(second.Modes().empty());
    EXPECT_EQ(both.Modes(), (std::vector<int>{1}));
    EXPECT_EQ(someip.Modes(), (std::vector<int>{0}));

    // An empty handler raises bad_function_call and leaves the mode lock free.
    client->RegisterLatencyMode(nullptr, {{DriverType::DDS, DdsEvent(14, 1, "E")}}, true);
    EXPECT_THROW(client->ChangeEventLatencyMode(kEnable, Index({kDds}, 14, 1, "ETopic")),
                 std::bad_function_call);
    client->ChangeEventLatencyMode(kDisable, Index({kDds}, 10, 2, "ATopic"));
    EXPECT_EQ(first.Modes(), (std::vector<int>{1, 0}));
}

TEST_F(LatencyTest, AnOrderIsAcknowledgedWhenTheLastBindingItNamesMatched) {
    StartDaemon();
    StartClient();
    ModeRecorder pub, sub, someipSub;
    const auto event = DdsEvent(10, 1, "A", "2");
    Core()->RegisterLatencyMode(pub.Handler(), {{DriverType::DDS, event}}, true);
    Core()->RegisterLatencyMode(sub.Handler(), {{DriverType::DDS, event}}, false);
    Core()->RegisterLatencyMode(someipSub.Handler(),
                                {{DriverType::SOMEIP, SomeipEvent(11, 1, "B", 300)}}, false);

    Publish(kEnable, Index({}, 10, 2, "ATopic"));  // names no binding: nothing is looked up
    // DDS matches, but the SOME/IP lookup comes last and finds nothing: not acknowledged.
    Publish(kEnable, Index({kDds, kSomeip}, 10, 2, "ATopic", 7));
    Publish(kDisable, Index({kSomeip, kDds}, 10, 2, "ATopic", 7));
    Publish(kEnable, Index({kSomeip}, 11, 1, "", 300));
    ASSERT_TRUE(WaitForAcks(2));
    Settle();

    EXPECT_EQ(pub.Modes(), (std::vector<int>{1, 0}));
    EXPECT_EQ(sub.Modes(), (std::vector<int>{1, 0}));
    EXPECT_EQ(someipSub.Modes(), (std::vector<int>{1}));
    record::LatencyInfo disabled;
    disabled.appName = kAppName;
    disabled.latencyIndex = Index({kSomeip, kDds}, 10, 2, "ATopic", 7);
    disabled.ackInfo.mode = kDisable;
    disabled.ackInfo.isPubMatched = true;
    disabled.ackInfo.isSubMatched = true;
    record::LatencyInfo enabled;
    enabled.appName = kAppName;
    enabled.latencyIndex = Index({kSomeip}, 11, 1, "", 300);
    enabled.ackInfo.mode = kEnable;
    enabled.ackInfo.isSubMatched = true;
    EXPECT_EQ(Reports(0), (std::vector<record::LatencyInfo>{disabled, enabled}));
}

TEST_F(LatencyTest, EnabledSubscribersReportTheirResultsEverySecondDdsFirst) {
    StartDaemon();
    StartClient();
    ModeRecorder sub;
    const auto dds = DdsEvent(20, 1, "Lat");
    const auto someip = SomeipEvent(21, 1, "Lat", 300);
    const auto idle = DdsEvent(22, 1, "Idle");
    Core()->RegisterLatencyMode(sub.Handler(), {{DriverType::DDS, dds}}, false);
    Core()->RegisterLatencyMode(sub.Handler(), {{DriverType::SOMEIP, someip}}, false);
    Core()->RegisterLatencyMode(sub.Handler(), {{DriverType::DDS, idle}}, false);
    Core()->RegisterLatencyQuery(Query({10, 30, 20}), dds, DriverType::DDS);
    Core()->RegisterLatencyQuery(Query({1, 2, 3}), someip, DriverType::SOMEIP);
    Core()->RegisterLatencyQuery(Query({4, 0, 4}), idle, DriverType::DDS);  // no samples

    Publish(kEnable, Index({kSomeip}, 21, 1, "", 300));
    Publish(kEnable, Index({kDds}, 22, 1, "IdleTopic"));
    Publish(kEnable, Index({kDds}, 20, 1, "LatTopic"));
    ASSERT_TRUE(WaitForAcks(3));
    Settle();
    // The query task started with the first order and ran at once; from now on it runs every
    // second, one task however many orders enabled analysis.
    const size_t atStart = Reports(1).size();
    Advance(999 * kMs);
    EXPECT_EQ(Reports(1).size(), atStart);
    Advance(1 * kMs);
    record::LatencyInfo ddsResult;
    ddsResult.type = 1;
    ddsResult.appName = kAppName;
    ddsResult.latencyIndex = Index({kDds}, 20, 1, "LatTopic");
    ddsResult.resultInfo.result = {10, 30, 20};
    ddsResult.resultInfo.notifyTime = 1000;  // milliseconds of the clock
    record::LatencyInfo someipResult = ddsResult;
    someipResult.latencyIndex = Index({kSomeip}, 21, 1, "", 300);
    someipResult.resultInfo.result = {1, 2, 3};
    auto results = Reports(1);
    ASSERT_EQ(results.size(), atStart + 2);
    EXPECT_EQ(std::vector<record::LatencyInfo>(results.begin() + atStart, results.end()),
              (std::vector<record::LatencyInfo>{ddsResult, someipResult}));

    // Disabling takes an event out; a mode that is neither enable nor disable changes nothing.
    Publish(kDisable, Index({kDds}, 20, 1, "LatTopic"));
    Publish(static_cast<record::LatencyMode>(2), Index({kSomeip}, 21, 1, "", 300));
    ASSERT_TRUE(WaitForAcks(5));
    Settle();
    Advance(1000 * kMs);
    someipResult.resultInfo.notifyTime = 2000;
    results = Reports(1);
    ASSERT_EQ(results.size(), atStart + 3);
    EXPECT_EQ(results.back(), someipResult);
    // 0 enables (the core's 1), 1 disables (0), any other mode reaches the handler as 0.
    EXPECT_EQ(sub.Modes(), (std::vector<int>{1, 1, 1, 0, 0}));

    // An enabled event whose handlers went with it is skipped.
    Core()->UnregisterEventInfoToMaintaind({{21, {{DriverType::SOMEIP, someip}}}}, false);
    Settle();
    Advance(1000 * kMs);
    EXPECT_EQ(Reports(1).size(), atStart + 3);
}

TEST_F(LatencyTest, LatencyRepliesAreCheckedAndNothingIsSentAgain) {
    StartDaemon();
    StartClient();
    ModeRecorder pub;
    Core()->RegisterLatencyMode(pub.Handler(), {{DriverType::DDS, DdsEvent(20, 1, "T")}}, true);
    daemon_->Script(ScriptedReply::Code(1));
    daemon_->Script(ScriptedReply::NoReply());
    daemon_->Script(
        ScriptedReply::Error(ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable)));
    const auto index = Index({kDds}, 20, 1, "TTopic");
    Publish(kEnable, index);
    Publish(kDisable, index);
    Publish(kEnable, index);
    ASSERT_TRUE(WaitForReceived(2));
    Step(300 * kMs);  // the second acknowledgement gets no reply in time
    ASSERT_TRUE(WaitForReceived(3));
    Settle();
    EXPECT_EQ(Log().Count(LogLevel::kDebug,
                          "Get Maintaind reply, but maybe has some problem with register "
                          "LatencyInfo"),
              1U);
    EXPECT_EQ(Log().Count(LogLevel::kWarn, "Get maintaind reply fail, latency result send failed"),
              1U);
    EXPECT_EQ(Log().Count(LogLevel::kWarn, "OrxMaintaindClient cannot send latency result"), 1U);
    Advance(3000 * kMs);
    EXPECT_EQ(daemon_->ReceivedCount(), 3U);
}

TEST(LatencyIndexTest, IndexesOrderFieldByFieldTopicsByteWise) {
    EXPECT_LT(DDSLatencyIndex(1, 2, "a"), DDSLatencyIndex(1, 2, "ab"));
    EXPECT_LT(DDSLatencyIndex(1, 2, "ab"), DDSLatencyIndex(1, 3, ""));
    EXPECT_LT(DDSLatencyIndex(1, 65535, "z"), DDSLatencyIndex(2, 0, ""));
    EXPECT_LT(DDSLatencyIndex(1, 2, "B"), DDSLatencyIndex(1, 2, "a"));
    EXPECT_FALSE(DDSLatencyIndex(1, 2, "a") < DDSLatencyIndex(1, 2, "a"));
    EXPECT_LT(SomeipLatencyIndex(1, 2, 65535), SomeipLatencyIndex(1, 3, 0));
    EXPECT_LT(SomeipLatencyIndex(1, 65535, 65535), SomeipLatencyIndex(2, 0, 0));
    EXPECT_FALSE(SomeipLatencyIndex(2, 0, 0) < SomeipLatencyIndex(1, 9, 9));
}

}  // namespace
}  // namespace orx::test::plugin
