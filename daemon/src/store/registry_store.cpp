#include "store/registry_store.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "store/store_tables.h"

namespace orx::maintaind::daemon {

namespace {

constexpr int kSchemaVersion = 3;

// mkdir -p of the directory part of `path`.
StoreStatus MakeParentDirectories(const std::string& path) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        const std::string dir = path.substr(0, slash);
        if (::mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST) {
            return StoreStatus::Error("cannot create directory " + dir + ": " +
                                      std::strerror(errno));
        }
    }
    return {};
}

}  // namespace

RegistryStore::RegistryStore(std::string path, std::unique_ptr<SqliteDb> db)
    : path_(std::move(path)), db_(std::move(db)) {}

RegistryStore::~RegistryStore() {
    upsert_.reset();
    erase_.reset();
    timeline_.reset();
}

std::unique_ptr<RegistryStore> RegistryStore::Open(const std::string& path, bool fresh,
                                                   StoreStatus& status,
                                                   TimelineLimits timelineLimits) {
    status = MakeParentDirectories(path);
    if (!status.ok) {
        return nullptr;
    }
    auto db = SqliteDb::Open(path, status);
    if (!db) {
        return nullptr;
    }
    std::unique_ptr<RegistryStore> store(new RegistryStore(path, std::move(db)));
    std::vector<std::string> statements = {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL"};
    if (fresh) {
        // Dropped rather than emptied, so that a file of another schema version starts over too.
        statements.push_back("DROP TABLE IF EXISTS items");
        statements.push_back("DROP TABLE IF EXISTS meta");
        statements.push_back("DROP TABLE IF EXISTS timeline");
    }
    // Values are large (an event's record is a kilobyte or more), so rows live in a rowid table
    // with a unique index on their key rather than in a WITHOUT ROWID table.
    statements.push_back("CREATE TABLE IF NOT EXISTS meta (name TEXT PRIMARY KEY, value TEXT)");
    statements.push_back(
        "CREATE TABLE IF NOT EXISTS items (id INTEGER PRIMARY KEY, kind TEXT NOT NULL, key BLOB "
        "NOT NULL, app TEXT, pid INTEGER, name TEXT, value BLOB NOT NULL, UNIQUE (kind, key))");
    // A file of the same version made before the timeline existed gets the table here.
    for (std::string& sql : TimelineTable::CreateStatements()) {
        statements.push_back(std::move(sql));
    }
    for (const std::string& sql : statements) {
        status = store->db_->Exec(sql);
        if (!status.ok) {
            status.message = path + ": " + status.message;
            return nullptr;
        }
    }
    status = store->CheckSchema();
    if (status.ok) {
        status = store->Prepare(timelineLimits);
    }
    if (!status.ok) {
        status.message = path + ": " + status.message;
        return nullptr;
    }
    return store;
}

StoreStatus RegistryStore::CheckSchema() {
    StoreStatus status;
    Statement read(*db_, "SELECT value FROM meta WHERE name = 'schema_version'", status);
    if (!status.ok) {
        return status;
    }
    if (read.Next() == Statement::Step::kRow) {
        const std::string version = read.ColumnText(0);
        if (version != std::to_string(kSchemaVersion)) {
            return StoreStatus::Error(
                "registry file has schema version " + version + ", this daemon reads version " +
                std::to_string(kSchemaVersion) + " (--fresh starts a new registry)");
        }
        return {};
    }
    return db_->Exec("INSERT INTO meta (name, value) VALUES ('schema_version', '" +
                     std::to_string(kSchemaVersion) + "')");
}

StoreStatus RegistryStore::Prepare(TimelineLimits timelineLimits) {
    StoreStatus status;
    upsert_ = std::make_unique<Statement>(
        *db_,
        "INSERT INTO items (kind, key, app, pid, name, value) VALUES (?1, ?2, ?3, ?4, ?5, ?6) "
        "ON CONFLICT (kind, key) DO UPDATE SET app = ?3, pid = ?4, name = ?5, value = ?6",
        status);
    if (!status.ok) {
        return status;
    }
    erase_ =
        std::make_unique<Statement>(*db_, "DELETE FROM items WHERE kind = ?1 AND key = ?2", status);
    if (status.ok) {
        timeline_ = TimelineTable::Prepare(*db_, timelineLimits, status);
    }
    return status;
}

StoreStatus RegistryStore::Load(RegistryState& state, size_t& skipped) {
    skipped = 0;
    StoreStatus status;
    Statement read(*db_, "SELECT kind, key, value FROM items", status);
    if (!status.ok) {
        return status;
    }
    for (;;) {
        const Statement::Step step = read.Next();
        if (step == Statement::Step::kDone) {
            break;
        }
        if (step == Statement::Step::kError) {
            return StoreStatus::Error(db_->Failure("cannot read registry rows"));
        }
        if (!LoadRow(read.ColumnText(0), read.ColumnBlob(1), read.ColumnBlob(2), state)) {
            ++skipped;
        }
    }
    RecountEntities(state);
    return {};
}

StoreStatus RegistryStore::LoadTimeline(std::vector<tools::TimelineEntry>& entries,
                                        uint64_t& lastId, size_t& skipped) {
    return timeline_->Load(entries, lastId, skipped);
}

StoreStatus RegistryStore::Save(const RegistryState& state, const ChangeSet& changes) {
    StoreStatus status = db_->Exec("BEGIN");
    if (!status.ok) {
        return status;
    }
    RowWriter writer{*db_, *upsert_, *erase_};
    status = SaveChanges(state, changes, writer);
    if (status.ok) {
        status = timeline_->Write(changes.timeline);
    }
    if (status.ok) {
        status = db_->Exec("COMMIT");
    }
    if (!status.ok) {
        db_->Exec("ROLLBACK");
    }
    return status;
}

}  // namespace orx::maintaind::daemon
