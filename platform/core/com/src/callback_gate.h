#ifndef VORX_VCC_COM_SRC_CALLBACK_GATE_H
#define VORX_VCC_COM_SRC_CALLBACK_GATE_H

#include <thread>

#include "orx/sync/mutex.h"

namespace vorx::vcc {

// Lets callbacks of one registration (a search, an offer, a client) run until it is closed, and
// makes Close() wait for a callback that runs right now, unless Close() is called from inside
// that callback. After Close() returns no callback of this gate starts any more.
class CallbackGate {
  public:
    // Runs `fn` unless the gate is closed. Returns whether it ran.
    template <class F>
    bool Run(F&& fn) EXCLUDES(mutex_) {
        {
            orx::sync::MutexLock lock(mutex_);
            if (closed_) {
                return false;
            }
            ++active_;
            runner_ = std::this_thread::get_id();
        }
        struct Leave {
            CallbackGate* gate;
            ~Leave() { gate->Exit(); }
        } leave{this};
        fn();
        return true;
    }

    void Close() EXCLUDES(mutex_);
    bool IsClosed() const EXCLUDES(mutex_);

  private:
    void Exit() EXCLUDES(mutex_);

    mutable orx::sync::Mutex mutex_;
    orx::sync::CondVar idle_;
    bool closed_ GUARDED_BY(mutex_){false};
    int active_ GUARDED_BY(mutex_){0};
    std::thread::id runner_ GUARDED_BY(mutex_);  // thread of the running callback
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_COM_SRC_CALLBACK_GATE_H
