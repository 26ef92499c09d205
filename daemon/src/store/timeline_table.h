// The timeline's rows in the registry file: table `timeline` (id, time, kind, app, pid, host,
// reason, event, detail), one row per entry, `kind` as the name tools print. Written inside the
// transaction of the batch that caused the entries, so an answered report's entries are in the
// file too.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "orx/maintaind/tools/timeline.h"
#include "store/sqlite_db.h"
#include "timeline/timeline.h"

namespace orx::maintaind::daemon {

class TimelineTable {
  public:
    // The statements that create the table and its index (run by the store at open).
    static std::vector<std::string> CreateStatements();

    // Prepares the statements. nullptr with `status` set on failure. `db` must outlive it.
    static std::unique_ptr<TimelineTable> Prepare(SqliteDb& db, TimelineLimits limits,
                                                  StoreStatus& status);

    // Inserts `entries` (numbered) and drops the rows over the limits: beyond the newest
    // `maxEntries` ids, or older than `maxAge` before the newest entry written. Inside the
    // caller's transaction.
    StoreStatus Write(const std::vector<tools::TimelineEntry>& entries);

    // Reads the kept rows, oldest first, and the highest id ever given (0 when none). Rows of an
    // unknown kind are skipped and counted in `skipped`.
    StoreStatus Load(std::vector<tools::TimelineEntry>& entries, uint64_t& lastId, size_t& skipped);

  private:
    TimelineTable(SqliteDb& db, TimelineLimits limits) : db_(db), limits_(limits) {}

    SqliteDb& db_;
    const TimelineLimits limits_;
    std::unique_ptr<Statement> insert_;
    std::unique_ptr<Statement> pruneIds_;
    std::unique_ptr<Statement> pruneTimes_;
};

}  // namespace orx::maintaind::daemon
