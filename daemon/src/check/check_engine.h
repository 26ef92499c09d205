// The contract check: for every service instance in the registry, pairs each online provider
// (event publisher, method server, field owner) with each online consumer of the same entity and
// lists what the two declared differently, plus entities used without a provider or offered
// without a user. The tools service answers CheckContracts with it; anything else in the daemon
// that wants the findings (a status page) calls it the same way.
#pragma once

#include <cstdint>

#include "orx/maintaind/tools/check.h"
#include "registry/registry_state.h"

namespace orx::maintaind::daemon::check {

class CheckEngine {
  public:
    // No reply lists more than `entryCap` findings, whatever the request asks.
    explicit CheckEngine(uint32_t entryCap = 100000) : entryCap_(entryCap) {}

    // Reads `state` only; call it under the registry's read lock (Registry::Read). Safe to call
    // from several threads at once. The reply's code is OK; the findings and counts are described
    // in tools/check.h.
    tools::CheckReply Check(const RegistryState& state, const tools::CheckRequest& request) const;

  private:
    const uint32_t entryCap_;
};

}  // namespace orx::maintaind::daemon::check
