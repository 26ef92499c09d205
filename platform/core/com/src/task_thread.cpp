#include "task_thread.h"

#include <pthread.h>

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <map>
#include <mutex>
#include <utility>

#include "com_log.h"

namespace vorx::vcc {

struct TaskThread::State {
    explicit State(std::string threadName) : name(std::move(threadName)) {}

    const std::string name;
    std::mutex mutex;
    std::condition_variable wake;
    // Keyed by due time, then posting order.
    std::map<std::pair<Clock::time_point, uint64_t>, std::function<void()>> tasks;  // guarded
    uint64_t nextSeq{0};                                                            // guarded
    bool stopping{false};                                                           // guarded
};

TaskThread::TaskThread(std::string name) : state_(std::make_shared<State>(std::move(name))) {
    thread_ = std::thread([state = state_] { Run(state); });
}

TaskThread::~TaskThread() {
    std::map<std::pair<Clock::time_point, uint64_t>, std::function<void()>> dropped;
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->stopping = true;
        dropped.swap(state_->tasks);
    }
    state_->wake.notify_all();
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
        std::lock_guard<std::mutex> lock(state_->mutex);
        if (state_->stopping) {
            return;
        }
        state_->tasks.emplace(std::make_pair(due, state_->nextSeq++), std::move(task));
    }
    state_->wake.notify_one();
}

bool TaskThread::IsCurrent() const {
    return std::this_thread::get_id() == thread_.get_id();
}

void TaskThread::Run(const std::shared_ptr<State>& state) {
    // Thread names are limited to 15 characters.
    pthread_setname_np(pthread_self(), state->name.substr(0, 15).c_str());
    std::unique_lock<std::mutex> lock(state->mutex);
    while (!state->stopping) {
        if (state->tasks.empty()) {
            state->wake.wait(lock);
            continue;
        }
        auto first = state->tasks.begin();
        const Clock::time_point due = first->first.first;
        if (due != Clock::time_point::min() && due > Clock::now()) {
            state->wake.wait_until(lock, due);
            continue;
        }
        std::function<void()> task = std::move(first->second);
        state->tasks.erase(first);
        lock.unlock();
        try {
            task();
        } catch (const std::exception& e) {
            ComLog().LogError() << "[TaskThread][Task failed][thread=" << state->name
                                << ", error=" << e.what() << "]";
        } catch (...) {
            ComLog().LogError() << "[TaskThread][Task failed][thread=" << state->name << "]";
        }
        task = nullptr;  // release what the task held before taking the lock again
        lock.lock();
    }
}

}  // namespace vorx::vcc
