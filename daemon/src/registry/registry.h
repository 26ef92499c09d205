// The registry: the one RegistryState of the daemon behind a reader-writer lock.
#pragma once

#include <mutex>
#include <shared_mutex>
#include <utility>

#include "registry/registry_state.h"
#include "registry/registry_updater.h"

namespace orx::maintaind::daemon {

// Queries read concurrently; the ingest worker is the only writer. The callbacks run with the
// lock held and must not call back into the registry.
class Registry {
  public:
    explicit Registry(RegistryUpdater updater) : updater_(std::move(updater)) {}

    // Runs fn(const RegistryState&) under the shared lock and returns its result.
    template <class F>
    auto Read(F&& fn) const {
        std::shared_lock<std::shared_mutex> lock(mutex_);
        return fn(static_cast<const RegistryState&>(state_));
    }

    // Runs fn(RegistryState&, const RegistryUpdater&) under the exclusive lock.
    template <class F>
    auto Write(F&& fn) {
        std::unique_lock<std::shared_mutex> lock(mutex_);
        return fn(state_, static_cast<const RegistryUpdater&>(updater_));
    }

    const RegistryUpdater& Updater() const { return updater_; }

  private:
    const RegistryUpdater updater_;
    mutable std::shared_mutex mutex_;
    RegistryState state_;  // guarded by mutex_
};

}  // namespace orx::maintaind::daemon
