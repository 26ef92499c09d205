#ifndef ARA_CORE_INTERNAL_FUTURE_STATE_H
#define ARA_CORE_INTERNAL_FUTURE_STATE_H

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <utility>

#include "ara/core/result.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/export.h"

namespace ara::core::internal {

// Prints the one-line notice for a wait on a future without state to standard output.
VCC_EXPORT void PrintInvalidFutureStatusNotice();
// Logs (logger "CM", error level) that a continuation threw; `what` may be nullptr.
VCC_EXPORT void ReportContinuationFailure(const char* what) noexcept;

// The state a promise and its future share: the outcome once there, and at most one
// continuation to run when it arrives. Continuations run
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
        orx::sync::MutexLock lock(mutex_);
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
            orx::sync::MutexLock lock(mutex_);
            if (ready_) {
                throw std::future_error(std::future_errc::promise_already_satisfied);
            }
            result_.emplace(std::move(result));
            ready_ = true;
            next = std::move(continuation_);
            cv_.NotifyAll();
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
            orx::sync::MutexLock lock(mutex_);
            if (ready_) {
                return;
            }
            broken_ = true;
            ready_ = true;
            next = std::move(continuation_);
            cv_.NotifyAll();
        }
        if (next) {
            next(this->shared_from_this());
        }
    }

    bool IsReady() const {
        orx::sync::MutexLock lock(mutex_);
        return ready_;
    }

    void Wait() const {
        orx::sync::MutexLock lock(mutex_);
        cv_.Wait(mutex_, [this]() REQUIRES(mutex_) { return ready_; });
    }

    // True when the outcome arrived before `deadline`.
    template <typename Clock, typename Duration>
    bool WaitUntil(const std::chrono::time_point<Clock, Duration>& deadline) const {
        orx::sync::MutexLock lock(mutex_);
        return cv_.WaitUntil(mutex_, deadline, [this]() REQUIRES(mutex_) { return ready_; });
    }

    template <typename Rep, typename Period>
    bool WaitFor(const std::chrono::duration<Rep, Period>& timeout) const {
        orx::sync::MutexLock lock(mutex_);
        return cv_.WaitFor(mutex_, timeout, [this]() REQUIRES(mutex_) { return ready_; });
    }

    // Moves the outcome out. REQUIRES: ready. Throws std::future_error(broken_promise) when the
    // promise died without an outcome.
    ResultType Take() {
        orx::sync::MutexLock lock(mutex_);
        if (broken_) {
            throw std::future_error(std::future_errc::broken_promise);
        }
        return std::move(*result_);
    }

    // Runs `next` when the outcome arrives, or at once on this thread when it is there already.
    // A later call replaces an earlier continuation that has not run yet.
    void SetContinuation(Continuation next) {
        {
            orx::sync::MutexLock lock(mutex_);
            if (!ready_) {
                continuation_ = std::move(next);
                return;
            }
        }
        next(this->shared_from_this());
    }

  private:
    mutable orx::sync::Mutex mutex_;
    mutable orx::sync::CondVar cv_;
    std::optional<ResultType> result_ GUARDED_BY(mutex_);
    bool ready_ GUARDED_BY(mutex_) = false;  // an outcome or broken_ is set
    bool broken_ GUARDED_BY(mutex_) = false;
    bool retrieved_ GUARDED_BY(mutex_) = false;  // get_future() was called
    Continuation continuation_ GUARDED_BY(mutex_);
};

}  // namespace ara::core::internal

#endif  // ARA_CORE_INTERNAL_FUTURE_STATE_H
