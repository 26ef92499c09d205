#include "service/task_worker.h"

#include <utility>

#include "orx/sync/mutex.h"

namespace orx::maintaind::daemon {

TaskWorker::TaskWorker(size_t capacity) : capacity_(capacity) {}

TaskWorker::~TaskWorker() {
    Stop();
}

void TaskWorker::Start() {
    thread_ = std::thread([this] { Run(); });
}

void TaskWorker::Stop() {
    {
        orx::sync::MutexLock lock(mutex_);
        stopping_ = true;
    }
    wake_.NotifyAll();
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool TaskWorker::Post(std::function<void()> task) {
    {
        orx::sync::MutexLock lock(mutex_);
        if (stopping_ || tasks_.size() >= capacity_) {
            return false;
        }
        tasks_.push_back(std::move(task));
    }
    wake_.NotifyOne();
    return true;
}

void TaskWorker::Run() {
    for (;;) {
        std::function<void()> task;
        {
            orx::sync::MutexLock lock(mutex_);
            wake_.Wait(mutex_, [this]() REQUIRES(mutex_) { return stopping_ || !tasks_.empty(); });
            if (tasks_.empty()) {
                return;
            }
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
}

}  // namespace orx::maintaind::daemon
