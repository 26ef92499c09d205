#pragma once

// Locks that clang's -Wthread-safety can check (<orx/sync/thread_annotations.h>): the standard
// mutexes carry no capability attribute, so members guarded by a std::mutex cannot be checked.
// These wrappers add the attributes and nothing else; they lock, wait and fail exactly as the
// standard types they hold (a failing lock throws std::system_error).
//
//   orx::sync::Mutex mutex_;
//   int count_ GUARDED_BY(mutex_){0};
//   void Bump() EXCLUDES(mutex_) { orx::sync::MutexLock lock(mutex_); ++count_; }

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>

#include "orx/sync/thread_annotations.h"

namespace orx::sync {

// An exclusive, non-recursive lock (std::mutex).
class CAPABILITY("mutex") Mutex {
  public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    // Blocks until the calling thread holds the lock. A thread that already holds it deadlocks.
    void Lock() ACQUIRE() { mutex_.lock(); }
    // The calling thread must hold the lock.
    void Unlock() RELEASE() { mutex_.unlock(); }
    // Takes the lock if it is free; true when the calling thread now holds it.
    bool TryLock() TRY_ACQUIRE(true) { return mutex_.try_lock(); }
    // Tells the compiler that the lock is held where it cannot see it; checks nothing at run
    // time.
    void AssertHeld() const ASSERT_CAPABILITY(this) {}

  private:
    friend class CondVar;
    std::mutex mutex_;
};

// Holds a Mutex from construction to destruction. Unlock and Lock let a scope step out of the
// lock for a while (to call out, or to destroy something that must not die under it); the
// destructor releases the lock only if the scope holds it then.
class SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
    ~MutexLock() RELEASE() {
        if (held_) {
            mutex_.Unlock();
        }
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    // This scope must hold the lock.
    void Unlock() RELEASE() {
        mutex_.Unlock();
        held_ = false;
    }
    // This scope must have released the lock with Unlock.
    void Lock() ACQUIRE() {
        mutex_.Lock();
        held_ = true;
    }

  private:
    Mutex& mutex_;
    bool held_{true};
};

// A condition variable that waits with a Mutex held (std::condition_variable on the mutex
// inside). Every wait releases the mutex while it blocks and holds it again when it returns,
// also when a predicate throws. Predicates run with the mutex held; a lambda that reads guarded
// members says so with REQUIRES(mutex_) after its parameter list.
class CondVar {
  public:
    CondVar() = default;
    CondVar(const CondVar&) = delete;
    CondVar& operator=(const CondVar&) = delete;

    void NotifyOne() noexcept { cv_.notify_one(); }
    void NotifyAll() noexcept { cv_.notify_all(); }

    // Blocks until notified (or woken spuriously).
    void Wait(Mutex& mutex) REQUIRES(mutex) {
        Adopted held(mutex);
        cv_.wait(held.lock);
    }
    // Blocks until `ready()` is true.
    template <class Predicate>
    void Wait(Mutex& mutex, Predicate ready) REQUIRES(mutex) NO_THREAD_SAFETY_ANALYSIS {
        // Not checked: `ready` runs under `mutex`, which the compiler cannot tie to the
        // lambda's own annotation.
        Adopted held(mutex);
        cv_.wait(held.lock, std::move(ready));
    }
    // Blocks until notified or until `deadline`; std::cv_status::timeout when it passed.
    template <class Clock, class Duration>
    std::cv_status WaitUntil(Mutex& mutex, const std::chrono::time_point<Clock, Duration>& deadline)
        REQUIRES(mutex) {
        Adopted held(mutex);
        return cv_.wait_until(held.lock, deadline);
    }
    // Blocks until `ready()` is true or `deadline` passed; returns `ready()` at the end.
    template <class Clock, class Duration, class Predicate>
    bool WaitUntil(Mutex& mutex, const std::chrono::time_point<Clock, Duration>& deadline,
                   Predicate ready) REQUIRES(mutex) NO_THREAD_SAFETY_ANALYSIS {
        Adopted held(mutex);
        return cv_.wait_until(held.lock, deadline, std::move(ready));
    }
    // Blocks until `ready()` is true or `timeout` passed; returns `ready()` at the end.
    template <class Rep, class Period, class Predicate>
    bool WaitFor(Mutex& mutex, const std::chrono::duration<Rep, Period>& timeout, Predicate ready)
        REQUIRES(mutex) NO_THREAD_SAFETY_ANALYSIS {
        Adopted held(mutex);
        return cv_.wait_for(held.lock, timeout, std::move(ready));
    }

  private:
    // Lends the caller's held std::mutex to the standard wait and gives it back still held on
    // every way out, so the caller's MutexLock stays the one that releases it.
    struct Adopted {
        explicit Adopted(Mutex& mutex) : lock(mutex.mutex_, std::adopt_lock) {}
        ~Adopted() { lock.release(); }
        std::unique_lock<std::mutex> lock;
    };

    std::condition_variable cv_;
};

// A lock with an exclusive (writer) and a shared (reader) mode (std::shared_mutex).
class CAPABILITY("mutex") SharedMutex {
  public:
    SharedMutex() = default;
    SharedMutex(const SharedMutex&) = delete;
    SharedMutex& operator=(const SharedMutex&) = delete;

    void Lock() ACQUIRE() { mutex_.lock(); }
    void Unlock() RELEASE() { mutex_.unlock(); }
    void LockShared() ACQUIRE_SHARED() { mutex_.lock_shared(); }
    void UnlockShared() RELEASE_SHARED() { mutex_.unlock_shared(); }
    void AssertHeld() const ASSERT_CAPABILITY(this) {}

  private:
    std::shared_mutex mutex_;
};

// Holds a SharedMutex exclusively for the scope: members GUARDED_BY it may be written.
class SCOPED_CAPABILITY WriterLock {
  public:
    explicit WriterLock(SharedMutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.Lock(); }
    ~WriterLock() RELEASE() { mutex_.Unlock(); }
    WriterLock(const WriterLock&) = delete;
    WriterLock& operator=(const WriterLock&) = delete;

  private:
    SharedMutex& mutex_;
};

// Holds a SharedMutex shared for the scope: members GUARDED_BY it may be read, beside other
// readers.
class SCOPED_CAPABILITY ReaderLock {
  public:
    explicit ReaderLock(SharedMutex& mutex) ACQUIRE_SHARED(mutex) : mutex_(mutex) {
        mutex_.LockShared();
    }
    ~ReaderLock() RELEASE() { mutex_.UnlockShared(); }
    ReaderLock(const ReaderLock&) = delete;
    ReaderLock& operator=(const ReaderLock&) = delete;

  private:
    SharedMutex& mutex_;
};

}  // namespace orx::sync
