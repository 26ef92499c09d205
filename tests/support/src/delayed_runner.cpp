#include "delayed_runner.h"

namespace orx::test {

DelayedRunner::DelayedRunner() : thread_([this] { Loop(); }) {}

DelayedRunner::~DelayedRunner() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void DelayedRunner::RunAt(Clock::time_point due, std::function<void()> task) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        tasks_.emplace(std::make_pair(due, nextSeq_++), std::move(task));
    }
    wake_.notify_all();
}

void DelayedRunner::Loop() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!stopping_) {
        if (tasks_.empty()) {
            wake_.wait(lock);
            continue;
        }
        auto first = tasks_.begin();
        if (first->first.first > Clock::now()) {
            wake_.wait_until(lock, first->first.first);
            continue;
        }
        std::function<void()> task = std::move(first->second);
        tasks_.erase(first);
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
    }
}

}  // namespace orx::test
