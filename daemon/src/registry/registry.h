// The registry: the one RegistryState of the daemon behind a reader-writer lock.
#pragma once

#include <utility>

#include "orx/sync/mutex.h"
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
        orx::sync::ReaderLock lock(mutex_);
        return fn(static_cast<const RegistryState&>(state_));
    }

    // Runs fn(RegistryState&, const RegistryUpdater&) under the exclusive lock.
    template <class F>
    auto Write(F&& fn) {
        orx::sync::WriterLock lock(mutex_);
        return fn(state_, static_cast<const RegistryUpdater&>(updater_));
    }

    const RegistryUpdater& Updater() const { return updater_; }

  private:
    const RegistryUpdater updater_;
    mutable orx::sync::SharedMutex mutex_;
    RegistryState state_ GUARDED_BY(mutex_);
};

}  // namespace orx::maintaind::daemon
