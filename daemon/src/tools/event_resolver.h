// Finds the one event a tool names: by its full name, its last path component or its DDS topic.
#pragma once

#include <vector>

#include "orx/maintaind/latency.h"
#include "orx/maintaind/tools/method_ids.h"
#include "orx/maintaind/tools/requests.h"
#include "registry/keys.h"
#include "registry/registry_state.h"

namespace orx::maintaind::daemon {

struct ResolvedEvent {
    tools::ToolsCode code{tools::ToolsCode::OK};
    String message;                  // why it did not resolve
    std::vector<String> candidates;  // AMBIGUOUS_EVENT: one description per matching event
    LatencyKey key;                  // OK: the event
    String eventName;
    LatencyIndex index;                    // OK: how a latency switch addresses it
    std::vector<EntityKey> registrations;  // OK: its registrations among the selected ones
};

// Resolves `name` over the event registrations that `filter` selects (its own name member is not
// used). Tries the full name, then the last path component, then the topic name, and takes the
// first kind of match that finds anything; the matches must all address one event (same service
// id, instance id, topic, SOME/IP event id), else the result is AMBIGUOUS_EVENT.
//
// The switch's bindings: DDS when the event has a DDS binding and SOMEIP when it has a SOME/IP
// one, with DDS last. Applications key their latency handler by the event's DDS binding when it
// has one and act on the last binding of the list that they recognise, so DDS last makes the
// switch reach (and be acknowledged by) every application of a two-binding event.
ResolvedEvent ResolveEvent(const RegistryState& state, const String& name,
                           const tools::QueryFilter& filter);

}  // namespace orx::maintaind::daemon
