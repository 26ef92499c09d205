#include "store/timeline_table.h"

#include <algorithm>
#include <string>

namespace orx::maintaind::daemon {

namespace {

constexpr uint8_t kKindCount = static_cast<uint8_t>(tools::TimelineKind::DAEMON_STOP) + 1;

bool KindOf(const std::string& name, uint8_t& kind) {
    for (uint8_t value = 0; value < kKindCount; ++value) {
        if (name == tools::ToString(static_cast<tools::TimelineKind>(value))) {
            kind = value;
            return true;
        }
    }
    return false;
}

// Runs a statement that returns no rows with one integer parameter.
StoreStatus RunWith(SqliteDb& db, Statement& statement, int64_t value, const char* what) {
    statement.Reset();
    statement.BindInt64(1, value);
    if (statement.Next() != Statement::Step::kDone) {
        return StoreStatus::Error(db.Failure(what));
    }
    return {};
}

}  // namespace

std::vector<std::string> TimelineTable::CreateStatements() {
    return {
        "CREATE TABLE IF NOT EXISTS timeline (id INTEGER PRIMARY KEY, time INTEGER NOT NULL, kind "
        "TEXT NOT NULL, app TEXT, pid INTEGER, host TEXT, reason TEXT, event TEXT, detail TEXT)",
        "CREATE INDEX IF NOT EXISTS timeline_time ON timeline (time)",
    };
}

std::unique_ptr<TimelineTable> TimelineTable::Prepare(SqliteDb& db, TimelineLimits limits,
                                                      StoreStatus& status) {
    std::unique_ptr<TimelineTable> table(new TimelineTable(db, limits));
    table->insert_ = std::make_unique<Statement>(
        db,
        "INSERT OR REPLACE INTO timeline (id, time, kind, app, pid, host, reason, event, detail) "
        "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)",
        status);
    if (status.ok) {
        table->pruneIds_ =
            std::make_unique<Statement>(db, "DELETE FROM timeline WHERE id <= ?1", status);
    }
    if (status.ok) {
        table->pruneTimes_ =
            std::make_unique<Statement>(db, "DELETE FROM timeline WHERE time < ?1", status);
    }
    return status.ok ? std::move(table) : nullptr;
}

StoreStatus TimelineTable::Write(const std::vector<tools::TimelineEntry>& entries) {
    if (entries.empty()) {
        return {};
    }
    uint64_t newestId = 0;
    uint64_t newestTime = 0;
    for (const tools::TimelineEntry& entry : entries) {
        insert_->Reset();
        insert_->BindInt64(1, static_cast<int64_t>(entry.id));
        insert_->BindInt64(2, static_cast<int64_t>(entry.time));
        insert_->BindText(3, tools::ToString(static_cast<tools::TimelineKind>(entry.kind)));
        insert_->BindText(4, entry.appName);
        insert_->BindInt64(5, entry.pid);
        insert_->BindText(6, entry.host);
        insert_->BindText(7, entry.reason);
        insert_->BindText(8, entry.event);
        insert_->BindText(9, entry.detail);
        if (insert_->Next() != Statement::Step::kDone) {
            return StoreStatus::Error(db_.Failure("cannot write timeline row"));
        }
        newestId = std::max(newestId, entry.id);
        newestTime = std::max(newestTime, entry.time);
    }
    if (newestId > limits_.maxEntries) {
        StoreStatus status =
            RunWith(db_, *pruneIds_, static_cast<int64_t>(newestId - limits_.maxEntries),
                    "cannot drop old timeline rows");
        if (!status.ok) {
            return status;
        }
    }
    const auto maxAge = static_cast<uint64_t>(limits_.maxAge.count());
    if (newestTime > maxAge) {
        return RunWith(db_, *pruneTimes_, static_cast<int64_t>(newestTime - maxAge),
                       "cannot drop old timeline rows");
    }
    return {};
}

StoreStatus TimelineTable::Load(std::vector<tools::TimelineEntry>& entries, uint64_t& lastId,
                                size_t& skipped) {
    entries.clear();
    lastId = 0;
    skipped = 0;
    StoreStatus status;
    Statement read(db_,
                   "SELECT id, time, kind, app, pid, host, reason, event, detail FROM timeline "
                   "ORDER BY id",
                   status);
    if (!status.ok) {
        return status;
    }
    for (;;) {
        const Statement::Step step = read.Next();
        if (step == Statement::Step::kDone) {
            break;
        }
        if (step == Statement::Step::kError) {
            return StoreStatus::Error(db_.Failure("cannot read timeline rows"));
        }
        tools::TimelineEntry entry;
        entry.id = static_cast<uint64_t>(read.ColumnInt64(0));
        lastId = std::max(lastId, entry.id);
        if (!KindOf(read.ColumnText(2), entry.kind)) {
            ++skipped;
            continue;
        }
        entry.time = static_cast<uint64_t>(read.ColumnInt64(1));
        entry.appName = read.ColumnText(3);
        entry.pid = static_cast<int32_t>(read.ColumnInt64(4));
        entry.host = read.ColumnText(5);
        entry.reason = read.ColumnText(6);
        entry.event = read.ColumnText(7);
        entry.detail = read.ColumnText(8);
        entries.push_back(std::move(entry));
    }
    return {};
}

}  // namespace orx::maintaind::daemon
