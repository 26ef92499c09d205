// Whether an entry is selected by a QueryFilter.
#pragma once

#include "orx/maintaind/tools/entries.h"
#include "orx/maintaind/tools/requests.h"

namespace orx::maintaind::daemon {

// True when `filterName` is empty or names `name` in full, by its last path component, or names
// `topic` (when the entry has one).
bool NameMatches(const String& filterName, const String& name, const String& topic = String());

// The members every kind of entry shares: application, pid, service and instance ids, service
// name, side and online state. `online` is the entry's online state as listed.
bool CommonMatches(const tools::QueryFilter& filter, const String& appName, int32_t pid,
                   uint16_t serviceId, uint16_t instanceId, const String& serviceName, bool isPub,
                   bool online);

bool Matches(const tools::QueryFilter& filter, const tools::EventEntry& entry, bool online);
bool Matches(const tools::QueryFilter& filter, const tools::MethodEntry& entry, bool online);
bool Matches(const tools::QueryFilter& filter, const tools::FieldEntry& entry, bool online);
bool Matches(const tools::QueryFilter& filter, const tools::NodeEntry& entry);
bool Matches(const tools::QueryFilter& filter, const tools::E2EEntry& entry, bool online);
// Application filter: some application acknowledged; name: event name or topic.
bool Matches(const tools::QueryFilter& filter, const tools::LatencyStatusEntry& entry);
bool Matches(const tools::QueryFilter& filter, const tools::LatencyResultEntry& entry);
// Name filter: a part of the listener name.
bool Matches(const tools::QueryFilter& filter, const tools::SampleTimeoutEntry& entry);

}  // namespace orx::maintaind::daemon
