#include "service/task_worker.h"

#include <utility>

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
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool TaskWorker::Post(std::function<void()> task) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (stopping_ || tasks_.size() >= capacity_) {
            return false;
        }
        tasks_.push_back(std::move(task));
    }
    wake_.notify_one();
    return true;
}

void TaskWorker::Run() {
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            wake_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
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
