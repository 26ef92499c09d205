#include "serial_executor.h"

#include <deque>
#include <exception>
#include <utility>

#include "app_log.h"
#include "orx/sync/mutex.h"

namespace vorx::vcc::app::detail {

struct SerialExecutor::State {
    State(std::string nameIn, size_t capacityIn)
        : name(std::move(nameIn)), capacity(capacityIn == 0 ? 1 : capacityIn) {}

    const std::string name;
    const size_t capacity;
    orx::sync::Mutex mutex;
    orx::sync::CondVar wake;
    std::deque<std::function<void()>> tasks GUARDED_BY(mutex);
    bool stopped GUARDED_BY(mutex){false};
    std::thread thread GUARDED_BY(mutex);  // started by the first Post
};

SerialExecutor::SerialExecutor(std::string name, size_t capacity)
    : state_(std::make_shared<State>(std::move(name), capacity)) {}

SerialExecutor::~SerialExecutor() {
    Stop();
}

bool SerialExecutor::Post(std::function<void()> task) {
    bool dropped = false;
    {
        orx::sync::MutexLock lock(state_->mutex);
        if (state_->stopped) {
            return false;
        }
        if (state_->tasks.size() >= state_->capacity) {
            state_->tasks.pop_front();
            dropped = true;
        }
        state_->tasks.push_back(std::move(task));
        if (!state_->thread.joinable()) {
            state_->thread = std::thread(&SerialExecutor::Run, state_);
        }
    }
    state_->wake.NotifyOne();
    if (dropped) {
        AppLog()->LogWarn(AppLimit("App_HandlerQueueFull"))
            << "[App][Event handler queue full, oldest sample dropped][consumer=" << state_->name
            << "]";
    }
    return true;
}

void SerialExecutor::Stop() {
    std::thread thread;
    std::deque<std::function<void()>> dropped;  // destroyed outside the lock
    {
        orx::sync::MutexLock lock(state_->mutex);
        state_->stopped = true;
        dropped.swap(state_->tasks);
        thread = std::move(state_->thread);
    }
    state_->wake.NotifyAll();
    if (!thread.joinable()) {
        return;
    }
    if (thread.get_id() == std::this_thread::get_id()) {
        thread.detach();  // called from a task: the loop sees `stopped` and ends by itself
    } else {
        thread.join();
    }
}

void SerialExecutor::Run(const std::shared_ptr<State>& state) {
    while (true) {
        std::function<void()> task;
        {
            orx::sync::MutexLock lock(state->mutex);
            while (!state->stopped && state->tasks.empty()) {
                state->wake.Wait(state->mutex);
            }
            if (state->stopped) {
                return;
            }
            task = std::move(state->tasks.front());
            state->tasks.pop_front();
        }
        try {
            task();
        } catch (const std::exception& e) {
            AppLog()->LogError() << "[App][Event handler threw, ignored][consumer=" << state->name
                                 << ", what=" << e.what() << "]";
        } catch (...) {
            AppLog()->LogError() << "[App][Event handler threw, ignored][consumer=" << state->name
                                 << "]";
        }
    }
}

}  // namespace vorx::vcc::app::detail
