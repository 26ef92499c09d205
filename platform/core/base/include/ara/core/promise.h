#ifndef ARA_CORE_PROMISE_H
#define ARA_CORE_PROMISE_H

#include <future>
#include <memory>
#include <utility>

#include "ara/core/error_code.h"
#include "ara/core/future.h"
#include "ara/core/internal/future_state.h"
#include "ara/core/result.h"

namespace ara::core {
namespace internal {

// What Promise<T, E> and Promise<void, E> share: the state, the future, errors and results.
template <typename T, typename E>
class PromiseBase {
    using State = FutureState<T, E>;

  public:
    PromiseBase() : state_(std::make_shared<State>()) {}
    PromiseBase(PromiseBase&&) noexcept = default;
    PromiseBase& operator=(PromiseBase&& other) noexcept {
        if (this != &other) {
            Abandon();
            state_ = std::move(other.state_);
        }
        return *this;
    }
    PromiseBase(const PromiseBase&) = delete;
    PromiseBase& operator=(const PromiseBase&) = delete;

    // Returns the future of this promise. Throws std::future_error(future_already_retrieved) on
    // a second call and std::future_error(no_state) on a moved-from promise.
    Future<T, E> get_future() {
        State& state = Checked();
        state.MarkRetrieved();
        return Future<T, E>(state_);
    }

    // Completes the future with `error`. Throws std::future_error(promise_already_satisfied)
    // when an outcome was set before, std::future_error(no_state) on a moved-from promise.
    // Continuations attached with then() run on this thread before the call returns.
    void SetError(E error) { SetResult(Result<T, E>::FromError(std::move(error))); }

    // Completes the future with `result`; otherwise like SetError.
    void SetResult(Result<T, E> result) { Checked().Complete(std::move(result)); }

  protected:
    // A promise that dies without an outcome breaks its future: readers get broken_promise.
    ~PromiseBase() { Abandon(); }

    State& Checked() {
        if (!state_) {
            throw std::future_error(std::future_errc::no_state);
        }
        return *state_;
    }

  private:
    void Abandon() noexcept {
        if (state_) {
            state_->Abandon();
        }
    }

    std::shared_ptr<State> state_;
};

}  // namespace internal

// The sending end: sets a value or an error once, from any thread, and so completes the future.
// Move-only. Setters throw std::future_error as described in internal::PromiseBase.
template <typename T, typename E = ErrorCode>
class Promise final : public internal::PromiseBase<T, E> {
  public:
    Promise() = default;
    Promise(Promise&&) noexcept = default;
    Promise& operator=(Promise&&) noexcept = default;
    ~Promise() = default;

    void set_value(const T& value) { this->SetResult(Result<T, E>::FromValue(value)); }
    void set_value(T&& value) { this->SetResult(Result<T, E>::FromValue(std::move(value))); }
};

template <typename E>
class Promise<void, E> final : public internal::PromiseBase<void, E> {
  public:
    Promise() = default;
    Promise(Promise&&) noexcept = default;
    Promise& operator=(Promise&&) noexcept = default;
    ~Promise() = default;

    void set_value() { this->SetResult(Result<void, E>::FromValue()); }
};

}  // namespace ara::core

#endif  // ARA_CORE_PROMISE_H
