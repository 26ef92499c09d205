#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "daemon_stats.h"
#include "daemon_test_support.h"
#include "ingest/ingest_pipeline.h"
#include "registry/registry.h"
#include "store/registry_store.h"
#include "timeline/timeline.h"

namespace orx::maintaind::daemon::test {
namespace {

using tools::TimelineEntry;
using tools::TimelineKind;

std::vector<std::string> Kinds(const std::vector<TimelineEntry>& entries) {
    std::vector<std::string> kinds;
    for (const TimelineEntry& entry : entries) {
        kinds.push_back(tools::ToString(static_cast<TimelineKind>(entry.kind)) +
                        (entry.appName.empty() ? "" : ":" + entry.appName) +
                        (entry.reason.empty() ? "" : ":" + entry.reason));
    }
    return kinds;
}

std::vector<uint64_t> Ids(const std::vector<TimelineEntry>& entries) {
    std::vector<uint64_t> ids;
    for (const TimelineEntry& entry : entries) {
        ids.push_back(entry.id);
    }
    return ids;
}

// A daemon's ingest path over a registry file, with a small timeline so the bounds show.
class TimelineTest : public ::testing::Test {
  protected:
    std::unique_ptr<RegistryStore> OpenStore() {
        StoreStatus status;
        auto store = RegistryStore::Open(dir_.File("registry.db"), false, status, limits_);
        EXPECT_TRUE(status.ok) << status.message;
        return store;
    }

    void Ingest(IngestPipeline& pipeline, std::vector<AppRegisterInfo> reports) {
        std::vector<IngestItem> batch;
        for (AppRegisterInfo& report : reports) {
            IngestItem item;
            item.work = std::move(report);
            batch.push_back(std::move(item));
        }
        pipeline.Process(batch);
    }

    std::vector<TimelineEntry> Stored(RegistryStore& store) {
        std::vector<TimelineEntry> entries;
        uint64_t lastId = 0;
        size_t skipped = 0;
        EXPECT_TRUE(store.LoadTimeline(entries, lastId, skipped).ok);
        EXPECT_EQ(skipped, 0U);
        return entries;
    }

    TempDir dir_;
    std::shared_ptr<FakeProbe> probe_ = std::make_shared<FakeProbe>();
    ManualClock clock_;
    TimelineLimits limits_{5, std::chrono::milliseconds(1000)};
    Registry registry_{RegistryUpdater(RegistryLimits{}, clock_.Clock(), probe_)};
    DaemonStats stats_;
};

TEST_F(TimelineTest, EntriesAreStoredWithTheirBatchInOrderAndWithinBounds) {
    auto store = OpenStore();
    ASSERT_NE(store, nullptr);
    Timeline timeline(limits_, clock_.Clock());
    std::vector<TimelineEntry> pushed;
    timeline.SetListener([&](const TimelineEntry& entry) { pushed.push_back(entry); });
    IngestPipeline pipeline(registry_, store.get(), stats_, &timeline);

    // Node transitions come from the registry's notices, the rest from the updater, in the
    // order the reports were applied.
    Ingest(pipeline, {NodeReport("radar", 100, true), LatencyReport("hud", "BrakeT", 0),
                      TimeoutReport("listener", 3), NodeReport("radar", 100, false)});
    const std::vector<std::string> expected = {"online:radar", "latency-ack:hud", "sample-timeout",
                                               "offline:radar:offline report"};
    const tools::TimelineReply all = timeline.Query({}, 100);
    EXPECT_EQ(Kinds(all.entries), expected);
    EXPECT_EQ(Ids(all.entries), (std::vector<uint64_t>{1, 2, 3, 4}));
    EXPECT_EQ(all.entries[0].time, 1000U);
    EXPECT_EQ(Ids(pushed), Ids(all.entries));
    // In the file as soon as the batch was processed (the reports are answered after that).
    EXPECT_EQ(Kinds(Stored(*store)), expected);

    // Filters: application, time, count (the newest are kept).
    tools::TimelineRequest radar;
    radar.appName = "radar";
    EXPECT_EQ(Ids(timeline.Query(radar, 100).entries), (std::vector<uint64_t>{1, 4}));
    tools::TimelineRequest newest;
    newest.maxEntries = 1;
    const tools::TimelineReply one = timeline.Query(newest, 100);
    EXPECT_EQ(Ids(one.entries), (std::vector<uint64_t>{4}));
    EXPECT_TRUE(one.truncated);
    EXPECT_EQ(one.total, 4U);

    // Beyond the count the oldest go, in memory and in the file.
    clock_.Advance(600);
    Ingest(pipeline, {TimeoutReport("listener", 4), TimeoutReport("listener", 5)});
    EXPECT_EQ(Ids(timeline.Query({}, 100).entries), (std::vector<uint64_t>{2, 3, 4, 5, 6}));
    EXPECT_EQ(Ids(Stored(*store)), (std::vector<uint64_t>{2, 3, 4, 5, 6}));
    tools::TimelineRequest recent;
    recent.since = 1600;
    EXPECT_EQ(Ids(timeline.Query(recent, 100).entries), (std::vector<uint64_t>{5, 6}));

    // Beyond the age too; ids go on after a restart even when every old entry has aged out.
    clock_.Advance(600);
    Ingest(pipeline, {TimeoutReport("listener", 6)});
    EXPECT_EQ(Ids(timeline.Query({}, 100).entries), (std::vector<uint64_t>{5, 6, 7}));
    EXPECT_EQ(Ids(Stored(*store)), (std::vector<uint64_t>{5, 6, 7}));
    store.reset();
    auto reopened = OpenStore();
    ASSERT_NE(reopened, nullptr);
    std::vector<TimelineEntry> entries;
    uint64_t lastId = 0;
    size_t skipped = 0;
    ASSERT_TRUE(reopened->LoadTimeline(entries, lastId, skipped).ok);
    Timeline restarted(limits_, clock_.Clock());
    restarted.Restore(std::move(entries), lastId);
    std::vector<TimelineEntry> next(1);
    restarted.Number(next);
    EXPECT_EQ(next[0].id, 8U);
}

}  // namespace
}  // namespace orx::maintaind::daemon::test
