// The latency client on its own, without a daemon: handlers, translation, bookkeeping and the
// acknowledgement decision, read from the handlers and the captured log. Each case runs in its
// own process, so the process-wide query task starts fresh.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>

#include "latency_test_support.h"
#include "orx/test/log_capture.h"
#include "orxmaintaind/orx_maintaind_latency_client.h"

namespace {

namespace log = ara::kelda::common::log;
using namespace orx::test::latency;
using orx::orxcm::orxmaintaind::OrxMaintaindLatencyClient;
using LogLevel = log::LogLevel;

constexpr std::chrono::seconds kWait{5};
const char* const kNotFound = "Latency mode not find event";
const char* const kAckScheduled = "Begin to insert send latency mode ack event[";

class LatencyModeTest : public ::testing::Test {
  protected:
    void SetUp() override { firstInProcess_ = CountCaseInThisProcess() == 1; }
    size_t Count(LogLevel level, const std::string& part) const {
        return capture_->CountContaining(level, part);
    }

    bool firstInProcess_ = false;
    orx::test::ScopedLogCapture capture_;
    std::shared_ptr<OrxMaintaindLatencyClient> client_ =
        std::make_shared<OrxMaintaindLatencyClient>();
};

TEST_F(LatencyModeTest, OnlyTheLastNamedBindingDecidesTheAcknowledgement) {
    ModeRecorder pub;
    client_->RegisterLatencyMode(pub.Handler(),
                                 {{CoreDriverType::DDS, DdsEvent(10, "2", "topicA")}}, true);
    EXPECT_EQ(capture_->Count(LogLevel::kDebug,
                              "Add DDS latency switch handler[serviceId=10, instanceId=2, "
                              "topicName=topicA]"),
              1U);

    // No binding named: nothing is looked up.
    client_->ChangeEventLatencyMode(kEnable, Index({}, 10, 2, "topicA"));
    EXPECT_TRUE(pub.Modes().empty());
    EXPECT_EQ(capture_->Count(LogLevel::kVerbose, kNotFound), 1U);

    // DDS matches, but the SOME/IP lookup comes last and finds nothing.
    client_->ChangeEventLatencyMode(kEnable, Index({kDds, kSomeip}, 10, 2, "topicA", 7));
    EXPECT_EQ(pub.Modes(), (std::vector<int>{1}));
    EXPECT_EQ(capture_->Count(LogLevel::kVerbose, kNotFound), 2U);
    EXPECT_EQ(Count(LogLevel::kDebug, kAckScheduled), 0U);
    EXPECT_EQ(Count(LogLevel::kInfo, "First enable latency query task"), 0U);

    // The same bindings the other way round: DDS comes last and matched.
    client_->ChangeEventLatencyMode(kDisable, Index({kSomeip, kDds}, 10, 2, "topicA", 7));
    EXPECT_EQ(pub.Modes(), (std::vector<int>{1, 0}));
    EXPECT_EQ(capture_->Count(LogLevel::kVerbose, kNotFound), 2U);
    EXPECT_EQ(Count(LogLevel::kDebug, kAckScheduled), 1U);
    EXPECT_EQ(capture_->Count(LogLevel::kVerbose,
                              "Receive latency mode disable command, serviceId : 10 instanceId : "
                              "2 topicName : topicA eventId7"),
              1U);
    // Without a daemon the acknowledgement is dropped after a warning.
    EXPECT_TRUE(capture_->WaitForContaining(
        LogLevel::kWarn, "Proxy is not created, register event info fail.", 1, kWait));
}

TEST_F(LatencyModeTest, ModesAreTranslatedAndOnlyEnableAndDisableMoveTheEnabledSet) {
    ModeRecorder sub;
    QueryStub query({1, 0, 1});  // maximum 0: nothing is ever sent
    const auto event = DdsEvent(10, "2", "topicA");
    client_->RegisterLatencyMode(sub.Handler(), {{CoreDriverType::DDS, event}}, false);
    client_->RegisterLatencyQuery(query.Handler(), event, CoreDriverType::DDS);
    const auto order = Index({kDds}, 10, 2, "topicA");
    const auto unknownMode = static_cast<orx::maintaind::LatencyMode>(2);

    client_->ChangeEventLatencyMode(unknownMode, order);  // not enabled before, still not
    client_->QueryLatencyResult();
    EXPECT_EQ(query.Calls(), 0);

    client_->ChangeEventLatencyMode(kEnable, order);
    client_->QueryLatencyResult();
    EXPECT_GE(query.Calls(), 1);

    client_->ChangeEventLatencyMode(unknownMode, order);  // enabled before, still enabled
    int calls = query.Calls();
    client_->QueryLatencyResult();
    EXPECT_GT(query.Calls(), calls);

    client_->ChangeEventLatencyMode(kDisable, order);
    calls = query.Calls();
    client_->QueryLatencyResult();
    EXPECT_EQ(query.Calls(), calls);

    // 0 enables (core 1), 1 disables (core 0), anything else reaches the handler as 0.
    EXPECT_EQ(sub.Modes(), (std::vector<int>{0, 1, 0, 0}));
}

TEST_F(LatencyModeTest, FirstHandlerIsKeptAndOnlyTheLowestBindingIsRegistered) {
    ModeRecorder first;
    ModeRecorder second;
    ModeRecorder both;
    client_->RegisterLatencyMode(first.Handler(),
                                 {{CoreDriverType::DDS, DdsEvent(10, "2", "topicA")}}, true);
    client_->RegisterLatencyMode(second.Handler(),
                                 {{CoreDriverType::DDS, DdsEvent(10, "2", "topicA")}}, true);
    client_->RegisterLatencyMode(both.Handler(),
                                 {{CoreDriverType::DDS, DdsEvent(11, "1", "topicB")},
                                  {CoreDriverType::SOMEIP, SomeipEvent(11, "1", 300)}},
                                 true);
    // Null descriptions and the process-local binding are ignored.
    client_->RegisterLatencyMode(second.Handler(), {{CoreDriverType::DDS, nullptr}}, true);
    client_->RegisterLatencyMode(second.Handler(),
                                 {{CoreDriverType::PROLOC, DdsEvent(10, "2", "topicA")}}, true);

    client_->ChangeEventLatencyMode(kEnable, Index({kDds}, 10, 2, "topicA"));
    EXPECT_EQ(first.Modes(), (std::vector<int>{1}));
    EXPECT_TRUE(second.Modes().empty());

    client_->ChangeEventLatencyMode(kEnable, Index({kSomeip}, 11, 1, "", 300));
    EXPECT_TRUE(both.Modes().empty());
    EXPECT_EQ(capture_->Count(LogLevel::kVerbose, kNotFound), 1U);
    client_->ChangeEventLatencyMode(kEnable, Index({kDds}, 11, 1, "topicB"));
    EXPECT_EQ(both.Modes(), (std::vector<int>{1}));
    EXPECT_EQ(Count(LogLevel::kDebug, "Add Someip latency switch handler"), 0U);
}

TEST_F(LatencyModeTest, SomeipHandlersAreKeyedByEventIdAndLoggedAsTopicName) {
    ModeRecorder sub;
    client_->RegisterLatencyMode(sub.Handler(),
                                 {{CoreDriverType::SOMEIP, SomeipEvent(12, "3", 300)}}, false);
    EXPECT_EQ(capture_->Count(LogLevel::kDebug,
                              "Add Someip latency switch handler[serviceId=12, instanceId=3, "
                              "topicName=300]"),
              1U);
    client_->ChangeEventLatencyMode(kEnable, Index({kSomeip}, 12, 3, "ignored", 301));
    EXPECT_TRUE(sub.Modes().empty());
    client_->ChangeEventLatencyMode(kEnable, Index({kSomeip}, 12, 3, "ignored", 300));
    EXPECT_EQ(sub.Modes(), (std::vector<int>{1}));
    EXPECT_EQ(capture_->Count(LogLevel::kDebug,
                              "Find latency index of someip sub, will deal event latency mode"),
              1U);
}

TEST_F(LatencyModeTest, QueryTaskStartsOnTheFirstSuccessfulOrderOnly) {
    if (!firstInProcess_) {
        GTEST_SKIP() << kNeedsOwnProcess;  // the query task starts once per process
    }
    ModeRecorder sub;
    client_->RegisterLatencyMode(sub.Handler(), {{CoreDriverType::DDS, DdsEvent(10, "2", "t")}},
                                 false);
    client_->ChangeEventLatencyMode(kEnable, Index({kDds}, 10, 2, "other"));
    EXPECT_EQ(Count(LogLevel::kInfo, "First enable latency query task"), 0U);

    client_->ChangeEventLatencyMode(kEnable, Index({kDds}, 10, 2, "t"));
    client_->ChangeEventLatencyMode(kDisable, Index({kDds}, 10, 2, "t"));
    EXPECT_EQ(capture_->Count(LogLevel::kInfo, "First enable latency query task"), 1U);
    EXPECT_EQ(Count(LogLevel::kDebug, "Begin to insert cyclicity query latency event["), 1U);
    EXPECT_EQ(Count(LogLevel::kDebug, kAckScheduled), 2U);
    // The task runs at once and then every second, with nothing enabled any more.
    EXPECT_TRUE(
        capture_->WaitForContaining(LogLevel::kVerbose, "Query latency task running", 1, kWait));
}

TEST_F(LatencyModeTest, UnregisteredEventIsSkippedSilently) {
    ModeRecorder sub;
    QueryStub query({5, 9, 7});
    const auto event = DdsEvent(10, "2", "topicA");
    client_->RegisterLatencyMode(sub.Handler(), {{CoreDriverType::DDS, event}}, false);
    client_->RegisterLatencyQuery(query.Handler(), event, CoreDriverType::DDS);
    client_->ChangeEventLatencyMode(kEnable, Index({kDds}, 10, 2, "topicA"));

    client_->UnregisterLatencyHandler({{CoreDriverType::DDS, DdsEvent(10, "2", "topicA")}});
    const int calls = query.Calls();
    const size_t sent = Count(LogLevel::kDebug, "Send latency result by dds");
    client_->QueryLatencyResult();
    EXPECT_EQ(query.Calls(), calls);
    EXPECT_EQ(Count(LogLevel::kDebug, "Send latency result by dds"), sent);

    // Its mode handler is gone as well.
    client_->ChangeEventLatencyMode(kDisable, Index({kDds}, 10, 2, "topicA"));
    EXPECT_EQ(sub.Modes(), (std::vector<int>{1}));
    EXPECT_EQ(capture_->Count(LogLevel::kVerbose, kNotFound), 1U);
}

TEST_F(LatencyModeTest, EmptyHandlerRaisesBadFunctionCall) {
    client_->RegisterLatencyMode(nullptr, {{CoreDriverType::DDS, DdsEvent(10, "2", "t")}}, true);
    EXPECT_THROW(client_->ChangeEventLatencyMode(kEnable, Index({kDds}, 10, 2, "t")),
                 std::bad_function_call);
    // Not acknowledged, and the mode lock is free again.
    EXPECT_EQ(Count(LogLevel::kDebug, kAckScheduled), 0U);
    client_->ChangeEventLatencyMode(kEnable, Index({kDds}, 10, 3, "t"));
    EXPECT_EQ(capture_->Count(LogLevel::kVerbose, kNotFound), 1U);
}

}  // namespace
