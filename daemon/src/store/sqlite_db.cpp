#include "store/sqlite_db.h"

#include <sqlite3.h>

namespace orx::maintaind::daemon {

std::unique_ptr<SqliteDb> SqliteDb::Open(const std::string& path, StoreStatus& status) {
    sqlite3* db = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int rc = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
    if (rc != SQLITE_OK) {
        status = StoreStatus::Error("cannot open registry file " + path + ": " +
                                    (db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(rc)));
        sqlite3_close(db);
        return nullptr;
    }
    sqlite3_busy_timeout(db, 2000);
    status = {};
    return std::unique_ptr<SqliteDb>(new SqliteDb(db));
}

SqliteDb::~SqliteDb() {
    sqlite3_close_v2(db_);
}

StoreStatus SqliteDb::Exec(const std::string& sql) {
    char* error = nullptr;
    if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
        std::string text = error != nullptr ? error : sqlite3_errmsg(db_);
        sqlite3_free(error);
        return StoreStatus::Error("\"" + sql.substr(0, 60) + "\" failed: " + text);
    }
    return {};
}

std::string SqliteDb::Failure(const std::string& what) const {
    return what + ": " + sqlite3_errmsg(db_);
}

Statement::Statement(SqliteDb& db, const std::string& sql, StoreStatus& status) {
    if (sqlite3_prepare_v2(db.Handle(), sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK) {
        status = StoreStatus::Error(db.Failure("cannot prepare \"" + sql.substr(0, 60) + "\""));
        sqlite3_finalize(stmt_);
        stmt_ = nullptr;
    }
}

Statement::~Statement() {
    sqlite3_finalize(stmt_);
}

void Statement::BindText(int index, const std::string& value) {
    sqlite3_bind_text(stmt_, index, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
}

void Statement::BindInt64(int index, int64_t value) {
    sqlite3_bind_int64(stmt_, index, value);
}

void Statement::BindBlob(int index, const std::vector<uint8_t>& value) {
    sqlite3_bind_blob(stmt_, index, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
}

Statement::Step Statement::Next() {
    switch (sqlite3_step(stmt_)) {
        case SQLITE_ROW:
            return Step::kRow;
        case SQLITE_DONE:
            return Step::kDone;
        default:
            return Step::kError;
    }
}

void Statement::Reset() {
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
}

std::string Statement::ColumnText(int index) const {
    const unsigned char* text = sqlite3_column_text(stmt_, index);
    const int size = sqlite3_column_bytes(stmt_, index);
    return text != nullptr ? std::string(reinterpret_cast<const char*>(text), size) : std::string();
}

int64_t Statement::ColumnInt64(int index) const {
    return sqlite3_column_int64(stmt_, index);
}

std::vector<uint8_t> Statement::ColumnBlob(int index) const {
    const auto* data = static_cast<const uint8_t*>(sqlite3_column_blob(stmt_, index));
    const int size = sqlite3_column_bytes(stmt_, index);
    return data != nullptr ? std::vector<uint8_t>(data, data + size) : std::vector<uint8_t>();
}

}  // namespace orx::maintaind::daemon
