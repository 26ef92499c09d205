// Compiled, never run, by the sync_lock_check tests: as it stands it must compile; with
// MISSING_LOCK defined a guarded member is written without its lock, and the build's lock check
// must refuse it.
#include "orx/sync/mutex.h"

class Counter {
  public:
    void Bump() {
#ifndef MISSING_LOCK
        orx::sync::MutexLock lock(mutex_);
#endif
        ++count_;
    }

  private:
    orx::sync::Mutex mutex_;
    int count_ GUARDED_BY(mutex_){0};
};

void BumpOnce() {
    Counter counter;
    counter.Bump();
}
