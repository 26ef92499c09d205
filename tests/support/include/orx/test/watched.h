// State that callbacks change on their threads and a test waits on.
#ifndef ORX_TEST_WATCHED_H
#define ORX_TEST_WATCHED_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace orx::test {

// A value of `State` guarded by a mutex, with a wait for a condition on it. Thread-safe.
template <class State>
class Watched {
  public:
    // Calls change(state) under the lock and wakes the waiters.
    template <class Changer>
    void Change(Changer&& change) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            change(state_);
        }
        changed_.notify_all();
    }
    // Whether condition(state) held before `timeout` passed.
    template <class Condition>
    bool WaitFor(Condition&& condition,
                 std::chrono::milliseconds timeout = std::chrono::seconds(10)) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, timeout, [&] { return condition(state_); });
    }
    State Get() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return state_;
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    State state_{};
};

}  // namespace orx::test

#endif  // ORX_TEST_WATCHED_H
