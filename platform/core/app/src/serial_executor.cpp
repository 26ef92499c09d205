#include "serial_executor.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <utility>

#include "app_log.h"

namespace vorx::vcc::app::detail {

struct SerialExecutor::State {
    State(std::string nameIn, size_t capacityIn)
        : name(std::move(nameIn)), capacity(capacityIn == 0 ? 1 : capacityIn) {}

    const std::string name;
    const size_t capacity;
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> tasks;  // guarded by mutex
    bool stopped{false};                      // guarded by mutex
    std::thread thread;                       // guarded by mutex: started by the first Post
};

SerialExecutor::SerialExecutor(std::string name, size_t capacity)
    : state_(std::make_shared<State>(std::move(name), capacity)) {}

SerialExecutor::~SerialExecutor() {
    Stop();
}

bool SerialExecutor::Post(std::function<void()> task) {
    bool dropped = false;
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
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
    state_->wake.notify_one();
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
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->stopped = true;
        dropped.swap(state_->tasks);
        thread = std::move(state_->thread);
    }
    state_->wake.notify_all();
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
            std::unique_lock<std::mutex> lock(state->mutex);
            state->wake.wait(lock, [&state] { return state->stopped || !state->tasks.empty(); });
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
