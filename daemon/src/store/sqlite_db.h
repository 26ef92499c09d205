// A thin owner of one SQLite connection and its prepared statements. SQLite's result codes become
// a StoreStatus with a message that names what failed, here and nowhere else.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace orx::maintaind::daemon {

struct StoreStatus {
    bool ok = true;
    std::string message;  // what failed, with SQLite's own text

    static StoreStatus Error(std::string text) { return {false, std::move(text)}; }
};

class SqliteDb {
  public:
    // Opens or creates the database file at `path`. nullptr with `status` set on failure.
    static std::unique_ptr<SqliteDb> Open(const std::string& path, StoreStatus& status);
    ~SqliteDb();
    SqliteDb(const SqliteDb&) = delete;
    SqliteDb& operator=(const SqliteDb&) = delete;

    // Runs one or more statements without results.
    StoreStatus Exec(const std::string& sql);
    // SQLite's message for the last failure on this connection, prefixed with `what`.
    std::string Failure(const std::string& what) const;
    sqlite3* Handle() const { return db_; }

  private:
    explicit SqliteDb(sqlite3* db) : db_(db) {}
    sqlite3* db_;
};

// One prepared statement. Not thread-safe; used by one thread at a time.
class Statement {
  public:
    // Prepares `sql`; check Ok() (the failure is in `status`).
    Statement(SqliteDb& db, const std::string& sql, StoreStatus& status);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    bool Ok() const { return stmt_ != nullptr; }

    // Parameters count from 1. The values are copied.
    void BindText(int index, const std::string& value);
    void BindInt64(int index, int64_t value);
    void BindBlob(int index, const std::vector<uint8_t>& value);

    enum class Step { kRow, kDone, kError };
    Step Next();
    // Clears the bindings and makes the statement ready to run again.
    void Reset();

    // Columns count from 0; valid after Next() returned kRow.
    std::string ColumnText(int index) const;
    int64_t ColumnInt64(int index) const;
    std::vector<uint8_t> ColumnBlob(int index) const;

  private:
    sqlite3_stmt* stmt_{nullptr};
};

}  // namespace orx::maintaind::daemon
