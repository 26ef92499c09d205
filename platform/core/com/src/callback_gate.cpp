#include "callback_gate.h"

namespace vorx::vcc {

void CallbackGate::Close() {
    std::unique_lock<std::mutex> lock(mutex_);
    closed_ = true;
    if (active_ > 0 && runner_ == std::this_thread::get_id()) {
        return;  // closing from inside the callback itself
    }
    idle_.wait(lock, [this] { return active_ == 0; });
}

bool CallbackGate::IsClosed() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return closed_;
}

void CallbackGate::Exit() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (--active_ == 0) {
        runner_ = std::thread::id();
        idle_.notify_all();
    }
}

}  // namespace vorx::vcc
