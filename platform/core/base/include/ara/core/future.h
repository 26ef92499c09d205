#ifndef ARA_CORE_FUTURE_H
#define ARA_CORE_FUTURE_H

#include <chrono>
#include <exception>
#include <future>
#include <memory>
#include <type_traits>
#include <utility>

#include "ara/core/error_code.h"
#include "ara/core/future_error_domain.h"
#include "ara/core/internal/future_state.h"
#include "ara/core/result.h"

namespace ara::core {

template <typename T, typename E>
class Future;
template <typename T, typename E>
class Promise;

namespace internal {

template <typename T, typename E>
class PromiseBase;

// What then() returns for a continuation whose own return type is R:
//   void            -> Future<void, E>
//   Result<U, E2>   -> Future<U, E2>   (the result is passed on as it is)
//   Future<U, E2>   -> Future<U, E2>   (completes when the inner future does)
//   any other U     -> Future<U, E>
template <typename R, typename E>
struct ThenTraits {
    using FutureType = Future<R, E>;
    using PromiseType = Promise<R, E>;
    template <typename Fn, typename Arg>
    static void Run(Fn& fn, Arg&& arg, const std::shared_ptr<PromiseType>& promise) {
        promise->set_value(fn(std::forward<Arg>(arg)));
    }
};

template <typename E>
struct ThenTraits<void, E> {
    using FutureType = Future<void, E>;
    using PromiseType = Promise<void, E>;
    template <typename Fn, typename Arg>
    static void Run(Fn& fn, Arg&& arg, const std::shared_ptr<PromiseType>& promise) {
        fn(std::forward<Arg>(arg));
        promise->set_value();
    }
};

template <typename U, typename E2, typename E>
struct ThenTraits<Result<U, E2>, E> {
    using FutureType = Future<U, E2>;
    using PromiseType = Promise<U, E2>;
    template <typename Fn, typename Arg>
    static void Run(Fn& fn, Arg&& arg, const std::shared_ptr<PromiseType>& promise) {
        promise->SetResult(fn(std::forward<Arg>(arg)));
    }
};

template <typename U, typename E2, typename E>
struct ThenTraits<Future<U, E2>, E> {
    using FutureType = Future<U, E2>;
    using PromiseType = Promise<U, E2>;
    template <typename Fn, typename Arg>
    static void Run(Fn& fn, Arg&& arg, const std::shared_ptr<PromiseType>& promise) {
        Future<U, E2> inner = fn(std::forward<Arg>(arg));
        if (!inner.valid()) {
            return;  // the promise dies unset: broken_promise
        }
        inner.then([promise](Future<U, E2> done) {
            try {
                promise->SetResult(done.GetResult());
            } catch (const std::future_error&) {
                // The inner promise broke; ours dies unset and breaks likewise.
            }
        });
    }
};

}  // namespace internal

// The receiving end of a Promise: the value of type T or the error of type E that the promise's
// owner sets, possibly from another thread. Move-only. Waiting uses a condition variable.
//
// Thread safety: one Future object is used by one thread at a time; the promise side may run
// concurrently on any thread.
template <typename T, typename E = ErrorCode>
class Future final {
    using State = internal::FutureState<T, E>;

  public:
    using ValueType = T;
    using ErrorType = E;

    // A future without state: valid() is false.
    Future() noexcept = default;
    Future(Future&&) noexcept = default;
    Future& operator=(Future&&) noexcept = default;
    Future(const Future&) = delete;
    Future& operator=(const Future&) = delete;
    ~Future() = default;

    // True until the outcome has been taken (GetResult, get) or handed to then().
    bool valid() const noexcept { return state_ != nullptr; }

    // True when the outcome (or the broken promise) is there; false for an invalid future.
    bool is_ready() const { return state_ != nullptr && state_->IsReady(); }

    // Blocks until the outcome is there; returns at once for an invalid future.
    void wait() const {
        if (state_) {
            state_->Wait();
        }
    }

    // Blocks until the outcome is there (ready) or `timeout` has passed (timeout). A future
    // without state prints a one-line notice to standard output and returns timeout.
    template <typename Rep, typename Period>
    future_status wait_for(const std::chrono::duration<Rep, Period>& timeout) const {
        if (!state_) {
            internal::PrintInvalidFutureStatusNotice();
            return future_status::timeout;
        }
        return state_->WaitFor(timeout) ? future_status::ready : future_status::timeout;
    }

    // Like wait_for, with an absolute deadline (usually on std::chrono::system_clock).
    template <typename Clock, typename Duration>
    future_status wait_until(const std::chrono::time_point<Clock, Duration>& deadline) const {
        if (!state_) {
            internal::PrintInvalidFutureStatusNotice();
            return future_status::timeout;
        }
        return state_->WaitUntil(deadline) ? future_status::ready : future_status::timeout;
    }

    // Blocks until the outcome is there and returns it; the future is invalid afterwards.
    // Throws std::future_error(no_state) on an invalid future and
    // std::future_error(broken_promise) when the promise died without an outcome.
    Result<T, E> GetResult() {
        if (!state_) {
            throw std::future_error(std::future_errc::no_state);
        }
        std::shared_ptr<State> state = std::move(state_);
        state->Wait();
        return state->Take();
    }

    // Like GetResult, but returns the value or throws the exception that stands for the error
    // (ara::core::Exception for an ErrorCode).
    T get() { return GetResult().ValueOrThrow(); }

    // Attaches `func`, called as func(Future<T, E>) with a ready future, and returns a future of
    // what it returns (see internal::ThenTraits). `func` runs on the thread that completes the
    // promise, or at once on this thread when the outcome is there already. This future is
    // invalid afterwards. If `func` throws, the exception is logged and the returned future ends
    // with broken_promise; the completing thread goes on. Throws std::future_error(no_state) on
    // an invalid future.
    template <typename F>
    auto then(F&& func) ->
        typename internal::ThenTraits<std::invoke_result_t<std::decay_t<F>&, Future<T, E>>,
                                      E>::FutureType {
        using Traits =
            internal::ThenTraits<std::invoke_result_t<std::decay_t<F>&, Future<T, E>>, E>;
        using NextPromise = typename Traits::PromiseType;
        if (!state_) {
            throw std::future_error(std::future_errc::no_state);
        }
        auto fn = std::make_shared<std::decay_t<F>>(std::forward<F>(func));
        auto next = std::make_shared<NextPromise>();
        auto nextFuture = next->get_future();
        std::shared_ptr<State> state = std::move(state_);
        state->SetContinuation([fn, next](std::shared_ptr<State> done) {
            try {
                Traits::Run(*fn, Future(std::move(done)), next);
            } catch (const std::exception& e) {
                internal::ReportContinuationFailure(e.what());
            } catch (...) {
                internal::ReportContinuationFailure(nullptr);
            }
        });
        return nextFuture;
    }

  private:
    friend class internal::PromiseBase<T, E>;

    explicit Future(std::shared_ptr<State> state) noexcept : state_(std::move(state)) {}

    std::shared_ptr<State> state_;
};

}  // namespace ara::core

// Future and Promise need each other; either header gives both.
#include "ara/core/promise.h"

#endif  // ARA_CORE_FUTURE_H
