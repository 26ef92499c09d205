#include "callback_gate.h"

#include "orx/sync/mutex.h"

namespace vorx::vcc {

void CallbackGate::Close() {
    orx::sync::MutexLock lock(mutex_);
    closed_ = true;
    if (active_ > 0 && runner_ == std::this_thread::get_id()) {
        return;  // closing from inside the callback itself
    }
    idle_.Wait(mutex_, [this]() REQUIRES(mutex_) { return active_ == 0; });
}

bool CallbackGate::IsClosed() const {
    orx::sync::MutexLock lock(mutex_);
    return closed_;
}

void CallbackGate::Exit() {
    orx::sync::MutexLock lock(mutex_);
    if (--active_ == 0) {
        runner_ = std::thread::id();
        idle_.NotifyAll();
    }
}

}  // namespace vorx::vcc
