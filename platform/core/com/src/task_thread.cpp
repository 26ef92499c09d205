#include "task_thread.h"

#include <pthread.h>

#include <cstdint>
#include <exception>
#include <map>
#include <utility>

#include "com_log.h"
#include "orx/sync/mutex.h"

namespace vorx::vcc {

struct TaskThread::State {
    explicit State(std::string threadName) : name(std::move(threadName)) {}

    const std::string name;
    orx::sync::Mutex mutex;
    orx::sync::CondVar wake;
    // Keyed by due time, then posting order.
    std::map<std::pair<Clock::time_point, uint64_t>, std::function<void()>> tasks GUARDED_BY(mutex);
    uint64_t nextSeq GUARDED_BY(mutex){0};
    bool stopping GUARDED_BY(mutex){false};
};

TaskThread::TaskThread(std::string name) : state_(std::make_shared<State>(std::move(name))) {
    thread_ = std::thread([state = state_] { Run(state); });
}

TaskThread::~TaskThread() {
    std::map<std::pair<Clock::time_point, uint64_t>, std::function<void()>> dropped;
    {
        orx::sync::MutexLock lock(state_->mutex);
        state_->stopping = true;
        dropped.swap(state_->tasks);
    }
    state_->wake.NotifyAll();
    dropped.clear();  // outside the lock: tasks may own objects with heavy destructors
    if (IsCurrent()) {
        thread_.detach();
    } else if (thread_.joinable()) {
        thread_.join();
    }
}

void TaskThread::Post(std::function<void()> task) {
    PostAt(Clock::time_point::min(), std::move(task));
}

void TaskThread::PostAt(Clock::time_point due, std::function<void()> task) {
    {
        orx::sync::MutexLock lock(state_->mutex);
        if (state_->stopping) {
            return;
        }
        state_->tasks.emplace(std::make_pair(due, state_->nextSeq++), std::move(task));
    }
    state_->wake.NotifyOne();
}

bool TaskThread::IsCurrent() const {
    return std::this_thread::get_id() == thread_.get_id();
}

void TaskThread::Run(const std::shared_ptr<State>& state) {
    // Thread names are limited to 15 characters.
    pthread_setname_np(pthread_self(), state->name.substr(0, 15).c_str());
    orx::sync::MutexLock lock(state->mutex);
    while (!state->stopping) {
        if (state->tasks.empty()) {
            state->wake.Wait(state->mutex);
            continue;
        }
        auto first = state->tasks.begin();
        const Clock::time_point due = first->first.first;
        if (due != Clock::time_point::min() && due > Clock::now()) {
            state->wake.WaitUntil(state->mutex, due);
            continue;
        }
        std::function<void()> task = std::move(first->second);
        state->tasks.erase(first);
        lock.Unlock();
        try {
            task();
        } catch (const std::exception& e) {
            ComLog().LogError() << "[TaskThread][Task failed][thread=" << state->name
                                << ", error=" << e.what() << "]";
        } catch (...) {
            ComLog().LogError() << "[TaskThread][Task failed][thread=" << state->name << "]";
        }
        task = nullptr;  // release what the task held before taking the lock again
        lock.Lock();
    }
}

}  // namespace vorx::vcc
