#include <gtest/gtest.h>
#include <sqlite3.h>

#include "daemon_test_support.h"
#include "registry/registry_updater.h"
#include "store/registry_store.h"

namespace orx::maintaind::daemon::test {
namespace {

// Everything a ChangeSet can name, for a full save.
ChangeSet AllKeys(const RegistryState& state) {
    ChangeSet all;
    for (const auto& item : state.nodes)
        all.nodes.insert(item.first);
    for (const auto& item : state.events)
        all.events.insert(item.first);
    for (const auto& item : state.methods)
        all.methods.insert(item.first);
    for (const auto& item : state.fields)
        all.fields.insert(item.first);
    for (const auto& item : state.e2e)
        all.e2e.insert(item.first);
    for (const auto& item : state.latencyStatuses)
        all.latencyStatuses.insert(item.first);
    for (const auto& item : state.latencyResults)
        all.latencyResults.insert(item.first);
    for (const auto& item : state.sampleTimeouts)
        all.sampleTimeouts.insert(item.first);
    return all;
}

void ExpectSameState(const RegistryState& expected, const RegistryState& actual) {
    EXPECT_EQ(expected.nodes, actual.nodes);
    EXPECT_EQ(expected.events, actual.events);
    EXPECT_EQ(expected.methods, actual.methods);
    EXPECT_EQ(expected.fields, actual.fields);
    EXPECT_EQ(expected.e2e, actual.e2e);
    EXPECT_EQ(expected.latencyStatuses, actual.latencyStatuses);
    EXPECT_EQ(expected.latencyResults, actual.latencyResults);
    EXPECT_EQ(expected.sampleTimeouts, actual.sampleTimeouts);
}

class RegistryStoreTest : public ::testing::Test {
  protected:
    // A registry with something of every kind.
    RegistryState Populated() {
        RegistryState state;
        ChangeSet changes;
        probe_->Run(100, 9);
        for (const AppRegisterInfo& report :
             {NodeReport("radar", 100, true), EventReport("radar", 100, "Brake", true, "BrakeT"),
              EventReport("hud", 7, "Brake", false, "BrakeT"),
              MethodReport("radar", 100, "M", true), FieldReport("radar", 100, "F", true),
              E2EReport("radar", 100, "Brake", 1, true), LatencyReport("hud", "BrakeT", 0),
              LatencyReport("hud", "BrakeT", 1, LatencyMode::ENABLE, 10),
              TimeoutReport("listener", 3)}) {
            EXPECT_TRUE(updater_.ApplyReport(report, state, changes).accepted);
        }
        return state;
    }

    std::unique_ptr<RegistryStore> Open(bool fresh = false) {
        StoreStatus status;
        auto store = RegistryStore::Open(dir_.File("sub/dir/registry.db"), fresh, status);
        EXPECT_TRUE(status.ok) << status.message;
        return store;
    }

    RegistryState Load(RegistryStore& store, size_t* skippedOut = nullptr) {
        RegistryState state;
        size_t skipped = 0;
        const StoreStatus status = store.Load(state, skipped);
        EXPECT_TRUE(status.ok) << status.message;
        if (skippedOut != nullptr) {
            *skippedOut = skipped;
        }
        return state;
    }

    TempDir dir_;
    std::shared_ptr<FakeProbe> probe_ = std::make_shared<FakeProbe>();
    ManualClock clock_;
    RegistryUpdater updater_{RegistryLimits{}, clock_.Clock(), probe_};
};

TEST_F(RegistryStoreTest, SavedStateComesBackAfterReopeningAndDeletesStick) {
    RegistryState state = Populated();
    {
        auto store = Open();
        ASSERT_NE(store, nullptr);
        ASSERT_TRUE(store->Save(state, AllKeys(state)).ok);
    }
    auto store = Open();
    ASSERT_NE(store, nullptr);
    RegistryState loaded = Load(*store);
    ExpectSameState(state, loaded);
    EXPECT_EQ(loaded.nodes.at(Key("radar", 100)).entry.eventCount, 1U);

    // A key that is gone from the registry is deleted from the file.
    ChangeSet removal;
    const EntityKey hudEvent = state.events.begin()->first;
    ASSERT_EQ(hudEvent.appName, "hud");
    removal.events.insert(hudEvent);
    removal.sampleTimeouts.insert(state.sampleTimeouts.begin()->first);
    state.events.erase(hudEvent);
    state.nodes.at(Key("hud", 7)).entry.eventCount = 0;
    state.sampleTimeouts.clear();
    ASSERT_TRUE(store->Save(state, removal).ok);
    ExpectSameState(state, Load(*store));

    // --fresh starts empty.
    store.reset();
    auto fresh = Open(/*fresh=*/true);
    ASSERT_NE(fresh, nullptr);
    RegistryState empty = Load(*fresh);
    EXPECT_TRUE(empty.nodes.empty());
    EXPECT_TRUE(empty.events.empty());
}

TEST_F(RegistryStoreTest, BadRowsAreSkippedAndForeignFilesRefused) {
    const RegistryState state = Populated();
    {
        auto store = Open();
        ASSERT_TRUE(store->Save(state, AllKeys(state)).ok);
    }
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(dir_.File("sub/dir/registry.db").c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db,
                           "INSERT INTO items (kind, key, value) VALUES ('event', x'01', x'0203');"
                           "INSERT INTO items (kind, key, value) VALUES ('gadget', x'01', x'02');",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);
    {
        auto store = Open();
        size_t skipped = 0;
        RegistryState loaded = Load(*store, &skipped);
        EXPECT_EQ(skipped, 2U);
        ExpectSameState(state, loaded);
    }

    ASSERT_EQ(sqlite3_open(dir_.File("sub/dir/registry.db").c_str(), &db), SQLITE_OK);
    sqlite3_exec(db, "UPDATE meta SET value = '99' WHERE name = 'schema_version'", nullptr, nullptr,
                 nullptr);
    sqlite3_close(db);
    StoreStatus status;
    EXPECT_EQ(RegistryStore::Open(dir_.File("sub/dir/registry.db"), false, status), nullptr);
    EXPECT_NE(status.message.find("schema version 99"), std::string::npos) << status.message;
    auto restarted = RegistryStore::Open(dir_.File("sub/dir/registry.db"), true, status);
    ASSERT_NE(restarted, nullptr) << "--fresh starts over whatever the file held: "
                                  << status.message;
    EXPECT_TRUE(Load(*restarted).nodes.empty());

    const std::string notADatabase = dir_.File("text.db");
    ASSERT_EQ(std::system(
                  ("echo 'just some text, long enough to be a header' > " + notADatabase).c_str()),
              0);
    EXPECT_EQ(RegistryStore::Open(notADatabase, false, status), nullptr);
    EXPECT_NE(status.message.find(notADatabase), std::string::npos) << status.message;

    EXPECT_EQ(RegistryStore::Open("/proc/no/such/place/registry.db", false, status), nullptr);
    EXPECT_NE(status.message.find("cannot create directory"), std::string::npos) << status.message;
}

}  // namespace
}  // namespace orx::maintaind::daemon::test
