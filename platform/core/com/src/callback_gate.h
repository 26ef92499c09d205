#ifndef VORX_VCC_COM_SRC_CALLBACK_GATE_H
#define VORX_VCC_COM_SRC_CALLBACK_GATE_H

#include <condition_variable>
#include <mutex>
#include <thread>

namespace vorx::vcc {

// Lets callbacks of one registration (a search, an offer, a client) run until it is closed, and
// makes Close() wait for a callback that runs right now, unless Close() is called from inside
// that callback. After Close() returns no callback of this gate starts any more.
class CallbackGate {
  public:
    // Runs `fn` unless the gate is closed. Returns whether it ran.
    template <class F>
    bool Run(F&& fn) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
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

    void Close();
    bool IsClosed() const;

  private:
    void Exit();

    mutable std::mutex mutex_;
    std::condition_variable idle_;
    bool closed_{false};      // guarded by mutex_
    int active_{0};           // guarded by mutex_
    std::thread::id runner_;  // guarded by mutex_: thread of the running callback
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_COM_SRC_CALLBACK_GATE_H
