#ifndef ARA_CORE_INTERNAL_FUTURE_STATE_H
#define ARA_CORE_INTERNAL_FUTURE_STATE_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "ara/core/result.h"
#include "vorx/vcc/export.h"

namespace ara::core::internal {

// Prints the one-line notice for a wait on a future without state to standard output.
VCC_EXPORT void PrintInvalidFutureStatusNotice();
// Logs (logger "CM", error level) that a continuation threw; `what` may be nullptr.
VCC_EXPORT void ReportContinuationFailure(const char* what) noexcept;

// The state a promise and its future share: the outcome once there, and at most one
// continuation to run when it arrives. Every member is guarded by mutex_; continuations run
// without the lock held, on the thread that completes the state (or on the thread that attaches
// the continuation when the outcome is there already).
template <typename T, typename E>
class FutureState final : public std::enable_shared_from_this<FutureState<T, E>> {
  public:
    using ResultType = Result<T, E>;
    using Continuation = std::function<void(std::shared_ptr<FutureState>)>;

    // Marks the future as handed out. Throws std::future_error(future_already_retrieved) when
    // it was handed out before.
    void MarkRetrieved() {
        std::lock_guard<std::mutex> lock(mutex_);
        if (retrieved_) {
            throw std::future_error(std::future_errc::future_already_retrieved);
        }
        retrieved_ = true;
    }

    // Stores the outcome and wakes every waiter, then runs the continuation on this thread.
    // Throws std::future_error(promise_already_satisfied) when an outcome is there already.
    void Complete(ResultType&& result) {
        Continuation next;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (ready_) {
                throw std::future_error(std::future_errc::promise_already_satisfied);
            }
            result_.emplace(std::move(result));
            ready_ = true;
            next = std::move(continuation_);
            cv_.notify_all();
        }
        if (next) {
            next(this->shared_from_this());
        }
    }

    // The promise went away without an outcome: readers get broken_promise. No-op when an
    // outcome is there already.
    void Abandon() noexcept {
        Continuation next;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (ready_) {
                return;
            }
            broken_ = true;
            ready_ = true;
            next = std::move(continuation_);
            cv_.notify_all();
        }
        if (next) {
            next(this->shared_from_this());
        }
    }

    bool IsReady() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return ready_;
    }

    void Wait() const {
        std::unique_lock<std::mutex> lock(mutex_);
        cv_.wait(lock, [this] { return ready_; });
    }

    // True when the outcome arrived before `deadline`.
    template <typename Clock, typename Duration>
    bool WaitUntil(const std::chrono::time_point<Clock, Duration>& deadline) const {
        std::unique_lock<std::mutex> lock(mutex_);
        return cv_.wait_until(lock, deadline, [this] { return ready_; });
    }

    template <typename Rep, typename Period>
    bool WaitFor(const std::chrono::duration<Rep, Period>& timeout) const {
        std::unique_lock<std::mutex> lock(mutex_);
        return cv_.wait_for(lock, timeout, [this] { return ready_; });
    }

    // Moves the outcome out. REQUIRES: ready. Throws std::future_error(broken_promise) when the
    // promise died without an outcome.
    ResultType Take() {
        std::lock_guard<std::mutex> lock(mutex_);
        if (broken_) {
            throw std::future_error(std::future_errc::broken_promise);
        }
        return std::move(*result_);
    }

    // Runs `next` when the outcome arrives, or at once on this thread when it is there already.
    // A later call replaces an earlier continuation that has not run yet.
    void SetContinuation(Continuation next) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (!ready_) {
                continuation_ = std::move(next);
                return;
            }
        }
        next(this->shared_from_this());
    }

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable cv_;
    std::optional<ResultType> result_;  // guarded by mutex_
    bool ready_ = false;                // guarded by mutex_: an outcome or broken_ is set
    bool broken_ = false;               // guarded by mutex_
    bool retrieved_ = false;            // guarded by mutex_: get_future() was called
    Continuation continuation_;         // guarded by mutex_
};

}  // namespace ara::core::internal

#endif  // ARA_CORE_INTERNAL_FUTURE_STATE_H
