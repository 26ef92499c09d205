// Handlers that can be switched off safely while another thread may be
// calling them.
#ifndef VORX_DRIVER_DDS_SRC_CALLBACK_SLOT_H
#define VORX_DRIVER_DDS_SRC_CALLBACK_SLOT_H

#include <algorithm>
#include <thread>
#include <utility>
#include <vector>

#include "orx/sync/mutex.h"

namespace vorx {
namespace driver {
namespace dds {

// Lets calls through until it is closed. Close makes sure that, once it
// returns, no call runs or starts any more. The gate's mutex is never held
// while a call runs, so the call may reach back into the driver (even to close
// this gate).
class Gate {
  public:
    // Runs `fn` unless the gate is closed; returns whether it ran.
    template <class F>
    bool Run(F&& fn) EXCLUDES(mutex_) {
        {
            orx::sync::MutexLock lock(mutex_);
            if (closed_) {
                return false;
            }
            runners_.push_back(std::this_thread::get_id());
        }
        struct Leave {
            Gate* gate;
            ~Leave() { gate->Leave(); }
        } leave{this};
        fn();
        return true;
    }

    // Closes the gate and waits for calls running on other threads to end. A
    // call running on this thread (Close from inside it) is not waited for.
    void Close() EXCLUDES(mutex_) {
        orx::sync::MutexLock lock(mutex_);
        closed_ = true;
        const auto self = std::this_thread::get_id();
        done_.Wait(mutex_, [&]() REQUIRES(mutex_) {
            return std::all_of(runners_.begin(), runners_.end(),
                               [&](const std::thread::id& id) { return id == self; });
        });
    }

  private:
    void Leave() EXCLUDES(mutex_) {
        {
            orx::sync::MutexLock lock(mutex_);
            runners_.erase(std::find(runners_.begin(), runners_.end(), std::this_thread::get_id()));
        }
        done_.NotifyAll();
    }

    orx::sync::Mutex mutex_;
    orx::sync::CondVar done_;
    bool closed_ GUARDED_BY(mutex_){false};
    std::vector<std::thread::id> runners_ GUARDED_BY(mutex_);  // threads inside a call
};

// One handler behind a gate.
template <class Handler>
class CallbackSlot {
  public:
    explicit CallbackSlot(Handler handler) : handler_(std::move(handler)) {}

    // Calls the handler with `args` unless the slot is closed.
    template <class... Args>
    bool Invoke(Args&&... args) {
        return gate_.Run([&] { handler_(std::forward<Args>(args)...); });
    }
    // See Gate::Close.
    void Close() { gate_.Close(); }

  private:
    const Handler handler_;  // never changes, so it is called without a lock
    Gate gate_;
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
