// One thread that runs posted tasks in order, with a bounded backlog.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <thread>

#include "orx/sync/mutex.h"

namespace orx::maintaind::daemon {

class TaskWorker {
  public:
    explicit TaskWorker(size_t capacity);
    // Stop().
    ~TaskWorker();
    TaskWorker(const TaskWorker&) = delete;
    TaskWorker& operator=(const TaskWorker&) = delete;

    void Start();
    // Runs what is posted, then ends the thread. Later posts are refused. Idempotent.
    void Stop();
    // False when the backlog is full or the worker stopped. Any thread.
    bool Post(std::function<void()> task);

  private:
    void Run();

    const size_t capacity_;
    orx::sync::Mutex mutex_;
    orx::sync::CondVar wake_;
    std::deque<std::function<void()>> tasks_ GUARDED_BY(mutex_);
    bool stopping_ GUARDED_BY(mutex_){false};
    std::thread thread_;
};

}  // namespace orx::maintaind::daemon
