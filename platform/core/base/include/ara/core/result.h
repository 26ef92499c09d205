#ifndef ARA_CORE_RESULT_H
#define ARA_CORE_RESULT_H

#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "ara/core/error_code.h"

namespace ara::core {

namespace internal {
// Throws what stands for `error`: the domain's exception for an ErrorCode, the error itself for
// any other error type.
[[noreturn]] inline void ThrowError(const ErrorCode& error) {
    error.ThrowAsException();
}
template <typename E>
[[noreturn]] void ThrowError(const E& error) {
    throw error;
}
}  // namespace internal

// Either a value of T or an error of E, never both and never neither.
// Value() on a result that holds an error throws std::bad_variant_access; Error() on a result
// that holds a value likewise.
template <typename T, typename E = ErrorCode>
class Result final {
  public:
    using value_type = T;
    using error_type = E;

    static Result FromValue(const T& value) { return Result(value); }
    static Result FromValue(T&& value) { return Result(std::move(value)); }
    static Result FromError(const E& error) { return Result(ErrorTag{}, error); }
    static Result FromError(E&& error) { return Result(ErrorTag{}, std::move(error)); }

    Result(const T& value) : data_(std::in_place_index<0>, value) {}        // NOLINT
    Result(T&& value) : data_(std::in_place_index<0>, std::move(value)) {}  // NOLINT
    // From an error; only where E differs from T, so the two cannot be confused.
    template <typename U, typename = std::enable_if_t<std::is_same<std::decay_t<U>, E>::value &&
                                                      !std::is_same<T, E>::value>>
    explicit Result(U&& error) : data_(std::in_place_index<1>, std::forward<U>(error)) {}

    bool HasValue() const noexcept { return data_.index() == 0; }
    explicit operator bool() const noexcept { return HasValue(); }

    const T& Value() const& { return std::get<0>(data_); }
    T& Value() & { return std::get<0>(data_); }
    T&& Value() && { return std::get<0>(std::move(data_)); }
    const T& operator*() const& { return Value(); }
    const T* operator->() const { return &Value(); }

    const E& Error() const& { return std::get<1>(data_); }
    E&& Error() && { return std::get<1>(std::move(data_)); }

    template <typename U>
    T ValueOr(U&& defaultValue) const& {
        return HasValue() ? Value() : static_cast<T>(std::forward<U>(defaultValue));
    }
    template <typename U>
    E ErrorOr(U&& defaultError) const& {
        return HasValue() ? static_cast<E>(std::forward<U>(defaultError)) : Error();
    }

    // The value, or throws the exception that stands for the error.
    const T& ValueOrThrow() const& {
        if (!HasValue()) {
            internal::ThrowError(Error());
        }
        return Value();
    }
    T ValueOrThrow() && {
        if (!HasValue()) {
            internal::ThrowError(Error());
        }
        return std::move(*this).Value();
    }

  private:
    struct ErrorTag {};
    template <typename U>
    Result(ErrorTag, U&& error) : data_(std::in_place_index<1>, std::forward<U>(error)) {}

    std::variant<T, E> data_;
};

// Success without a value, or an error of E.
template <typename E>
class Result<void, E> final {
  public:
    using value_type = void;
    using error_type = E;

    static Result FromValue() { return Result(); }
    static Result FromError(const E& error) { return Result(error); }
    static Result FromError(E&& error) { return Result(std::move(error)); }

    Result() noexcept = default;
    explicit Result(const E& error) : error_(error) {}
    explicit Result(E&& error) : error_(std::move(error)) {}

    bool HasValue() const noexcept { return !error_.has_value(); }
    explicit operator bool() const noexcept { return HasValue(); }

    // Does nothing; there is no value to read. Present so generic code can call it.
    void Value() const noexcept {}
    // Throws std::bad_optional_access when the result holds no error.
    const E& Error() const& { return error_.value(); }
    E&& Error() && { return std::move(error_).value(); }

    template <typename U>
    E ErrorOr(U&& defaultError) const& {
        return HasValue() ? static_cast<E>(std::forward<U>(defaultError)) : *error_;
    }

    // Returns on success, or throws the exception that stands for the error.
    void ValueOrThrow() const {
        if (!HasValue()) {
            internal::ThrowError(*error_);
        }
    }

  private:
    std::optional<E> error_;
};

}  // namespace ara::core

#endif  // ARA_CORE_RESULT_H
