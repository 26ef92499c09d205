// Answers the tools-side queries from a RegistryState: selects by filter, marks what is online,
// sorts, and cuts lists at the entry cap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orx/maintaind/tools/replies.h"
#include "orx/maintaind/tools/requests.h"
#include "registry/registry_state.h"

namespace orx::maintaind::daemon {

class QueryEngine {
  public:
    // No list holds more than `entryCap` entries, whatever the filter asks.
    explicit QueryEngine(uint32_t entryCap = 100000) : entryCap_(entryCap) {}

    tools::NodeListReply Nodes(const RegistryState& state, const tools::QueryFilter& filter) const;
    // `subscribersOnly` answers QuerySubEventInfo.
    tools::EventListReply Events(const RegistryState& state, const tools::QueryFilter& filter,
                                 bool subscribersOnly = false) const;
    tools::MethodListReply Methods(const RegistryState& state,
                                   const tools::QueryFilter& filter) const;
    tools::FieldListReply Fields(const RegistryState& state,
                                 const tools::QueryFilter& filter) const;
    tools::E2EListReply E2EConfigs(const RegistryState& state,
                                   const tools::QueryFilter& filter) const;
    tools::LatencyStatusListReply LatencyStatuses(const RegistryState& state,
                                                  const tools::QueryFilter& filter) const;
    tools::LatencyResultListReply LatencyResults(const RegistryState& state,
                                                 const tools::QueryFilter& filter) const;
    tools::SampleTimeoutListReply SampleTimeouts(const RegistryState& state,
                                                 const tools::QueryFilter& filter) const;
    tools::DataTypeListReply DataTypes(const RegistryState& state,
                                       const tools::QueryFilter& filter) const;
    tools::DataTypeReply DataType(const RegistryState& state,
                                  const tools::DataTypeRequest& request) const;
    tools::MethodTypeListReply MethodTypes(const RegistryState& state,
                                           const tools::QueryFilter& filter) const;
    tools::AllDataReply All(const RegistryState& state, const tools::QueryFilter& filter) const;
    tools::EventShowReply EventShow(const RegistryState& state,
                                    const tools::EventShowRequest& request) const;

  private:
    uint32_t Cap(const tools::QueryFilter& filter) const;
    // Online processes with the event that have not acknowledged the order of `status` since
    // it was given, as "app/pid@host".
    static std::vector<String> Unacknowledged(const RegistryState& state, const LatencyKey& key,
                                              const tools::LatencyStatusEntry& status);

    const uint32_t entryCap_;
};

// Lists the entries of `entities` that `filter` selects, with `online` set to what tools see (the
// entity is registered and its node online).
template <class Entry>
void SelectEntities(const RegistryState& state, const std::map<EntityKey, Entry>& entities,
                    const tools::QueryFilter& filter, uint32_t cap, std::vector<Entry>& out,
                    uint32_t& total, bool& truncated);

}  // namespace orx::maintaind::daemon
