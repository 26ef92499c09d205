// Turns the records applications report into the entries tools list, and names their keys.
#pragma once

#include "orx/maintaind/event.h"
#include "orx/maintaind/field.h"
#include "orx/maintaind/latency.h"
#include "orx/maintaind/method.h"
#include "orx/maintaind/tools/entries.h"
#include "registry/keys.h"

namespace orx::maintaind::daemon {

// The summary members are derived from the record: ids, topics and data type from the DDS
// binding first, then the SOME/IP one; `bindings` from the per-binding maps. `online` is the
// record's own flag; times are left at 0.
tools::EventEntry MakeEventEntry(const EventRegisterInfo& record, bool isPub);
tools::MethodEntry MakeMethodEntry(const MethodRegisterInfo& record, bool isPub);
tools::FieldEntry MakeFieldEntry(const FieldRegisterInfo& record, bool isPub);

// The key of an entity reported by the process on `host`.
EntityKey KeyOf(const tools::EventEntry& entry, const String& host);
EntityKey KeyOf(const tools::MethodEntry& entry, const String& host);
EntityKey KeyOf(const tools::FieldEntry& entry, const String& host);

// How latency switches and reports address this event (see LatencyKey).
LatencyKey LatencyKeyOf(const tools::EventEntry& entry);

// The last path component of a name: the text after its last '/', or the whole name.
String LastPathComponent(const String& name);

}  // namespace orx::maintaind::daemon
