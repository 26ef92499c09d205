// The --json form of the daemon's answers: one JSON array, one object per entry, keyed by the
// record member names.
#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "orx/maintaind/json.h"

namespace orx::orxmaint {

// One entry as a JSON object. Entity entries carry the registration record as the application
// reported it under "record"; it is large, so it is left out unless `full`.
template <class Entry>
nlohmann::json EntryJson(const Entry& entry, bool full) {
    nlohmann::json object = nlohmann::json::object();
    maintaind::VisitMembers(entry, [&object, full](std::string_view name, const auto& member) {
        if (full || name != "record") {
            object[std::string(name)] = maintaind::ToJson(member);
        }
    });
    return object;
}

template <class Entry>
nlohmann::json EntriesJson(const std::vector<Entry>& entries, bool full) {
    nlohmann::json array = nlohmann::json::array();
    for (const Entry& entry : entries) {
        array.push_back(EntryJson(entry, full));
    }
    return array;
}

// Writes `value` on one line followed by a newline. Text that is not valid UTF-8 is written with
// replacement characters rather than failing.
void PrintJson(const nlohmann::json& value, std::ostream& out);

}  // namespace orx::orxmaint
