// The --json form of the daemon's answers: one JSON array on one line, one object per entry,
// keyed by the record member names.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "output/json_writer.h"

namespace orx::orxmaint {

// Entity entries carry the registration record as the application reported it under "record";
// it is large, so it is left out unless `full`.
template <class Entry>
void WriteEntries(JsonWriter& json, const std::vector<Entry>& entries, bool full) {
    json.BeginArray();
    for (const Entry& entry : entries) {
        json.BeginObject();
        if (full) {
            json.Members(entry);
        } else {
            json.Members(entry, {"record"});
        }
        json.EndObject();
    }
    json.EndArray();
}

// Writes `text` and a newline to `out` in one go.
void PrintJsonLine(std::string& text, std::ostream& out);

// Prints a one-object JSON array on one line; `members` writes the object's members.
template <class Members>
void PrintSingleObject(Members members, std::ostream& out) {
    std::string text;
    JsonWriter json(text);
    json.BeginArray();
    json.BeginObject();
    members(json);
    json.EndObject();
    json.EndArray();
    PrintJsonLine(text, out);
}

// Prints `entries` as one JSON array on one line.
template <class Entry>
void PrintEntries(const std::vector<Entry>& entries, bool full, std::ostream& out) {
    std::string text;
    text.reserve(entries.size() * 320);
    JsonWriter json(text);
    WriteEntries(json, entries, full);
    PrintJsonLine(text, out);
}

}  // namespace orx::orxmaint
