// How each map of the RegistryState becomes rows of the registry file and back.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "registry/change_set.h"
#include "registry/registry_state.h"
#include "store/sqlite_db.h"

namespace orx::maintaind::daemon {

// Writes or deletes rows with the store's prepared statements.
struct RowWriter {
    SqliteDb& db;
    Statement& upsert;
    Statement& erase;

    StoreStatus Upsert(const char* kind, const std::vector<uint8_t>& key, const std::string& app,
                       int64_t pid, const std::string& name, const std::vector<uint8_t>& value);
    StoreStatus Erase(const char* kind, const std::vector<uint8_t>& key);
};

// Writes the rows of every key in `changes` (inside the caller's transaction).
StoreStatus SaveChanges(const RegistryState& state, const ChangeSet& changes, RowWriter& writer);

// Decodes one row into `state`. False when the kind is unknown or the bytes cannot be decoded.
bool LoadRow(const std::string& kind, const std::vector<uint8_t>& key,
             const std::vector<uint8_t>& value, RegistryState& state);

}  // namespace orx::maintaind::daemon
