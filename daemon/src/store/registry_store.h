// The registry file: every entry of the RegistryState as one row, so that what the daemon
// answered survives its restart and a kill -9.
//
// Layout: table `items` (id, kind TEXT, key BLOB, app TEXT, pid INTEGER, name TEXT, value BLOB,
// unique on kind and key), one row per map entry; `kind` names the map ("node", "event", "method",
// "field", "e2e", "latency_status", "latency_results", "sample_timeout"), `key` and `value` are the
// CDR bytes of the map's key and value records, `app`, `pid` and `name` are there for people
// reading the file. Table `meta` holds the schema version. Table `timeline` holds the timeline
// (store/timeline_table.h), bounded by TimelineLimits.
//
// Durability: WAL journal with synchronous=NORMAL. A committed transaction is in the file before
// Save returns, so it survives the daemon being killed; only a power loss may take the last
// transactions.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "registry/change_set.h"
#include "registry/registry_state.h"
#include "store/sqlite_db.h"
#include "store/timeline_table.h"
#include "timeline/timeline.h"

namespace orx::maintaind::daemon {

class RegistryStore {
  public:
    // Opens the registry file at `path`, creating it and its directories as needed. With `fresh`
    // everything stored is dropped first (also a registry of another schema version). nullptr
    // with `status` set on failure (cannot create, not a database, another schema version).
    static std::unique_ptr<RegistryStore> Open(const std::string& path, bool fresh,
                                               StoreStatus& status,
                                               TimelineLimits timelineLimits = {});
    ~RegistryStore();

    // Reads every stored row into `state` (which should be empty). Rows that cannot be decoded
    // are skipped and counted in `skipped`.
    StoreStatus Load(RegistryState& state, size_t& skipped);

    // Reads the stored timeline, oldest first, and the highest id it ever gave (see
    // TimelineTable::Load).
    StoreStatus LoadTimeline(std::vector<tools::TimelineEntry>& entries, uint64_t& lastId,
                             size_t& skipped);

    // Writes, in one transaction, the current value of every key named in `changes`, deleting the
    // keys that are no longer in `state`, and the timeline entries of `changes` (numbered). On
    // failure nothing of it is stored.
    StoreStatus Save(const RegistryState& state, const ChangeSet& changes);

    const std::string& Path() const { return path_; }

  private:
    RegistryStore(std::string path, std::unique_ptr<SqliteDb> db);
    StoreStatus CheckSchema();
    StoreStatus Prepare(TimelineLimits timelineLimits);

    const std::string path_;
    std::unique_ptr<SqliteDb> db_;
    std::unique_ptr<Statement> upsert_;
    std::unique_ptr<Statement> erase_;
    std::unique_ptr<TimelineTable> timeline_;
};

}  // namespace orx::maintaind::daemon
