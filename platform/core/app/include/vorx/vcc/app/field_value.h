#ifndef VORX_VCC_APP_FIELD_VALUE_H
#define VORX_VCC_APP_FIELD_VALUE_H

#include <functional>
#include <utility>

#include "orx/sync/mutex.h"

namespace vorx::vcc::app {

// The value of a field on the offering side (ServiceProvider::ServeField). Getter requests read
// it, setter requests and Set change it; every change is published on the field's notifier.
// Thread-safe.
template <class T>
class FieldValue {
  public:
    // `notify` publishes a new value; it returns false when it could not (not offered, no
    // notifier).
    FieldValue(T initial, std::function<bool(const T&)> notify)
        : value_(std::move(initial)), notify_(std::move(notify)) {}

    T Get() const {
        orx::sync::MutexLock lock(mutex_);
        return value_;
    }

    // Takes `value` and publishes it; returns the value taken.
    T Set(const T& value) {
        {
            orx::sync::MutexLock lock(mutex_);
            value_ = value;
        }
        Notify(value);
        return value;
    }

    // Publishes the current value again (e.g. right after the service was offered). False when
    // it could not be published.
    bool Notify() const { return Notify(Get()); }

  private:
    bool Notify(const T& value) const { return notify_ && notify_(value); }

    mutable orx::sync::Mutex mutex_;
    T value_ GUARDED_BY(mutex_);
    const std::function<bool(const T&)> notify_;
};

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_FIELD_VALUE_H
