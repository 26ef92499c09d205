#ifndef VORX_VCC_COM_SRC_TASK_THREAD_H
#define VORX_VCC_COM_SRC_TASK_THREAD_H

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace vorx::vcc {

// One thread of the core that runs posted tasks one after another: in posting order for tasks
// due now, at their time for delayed ones. A task that throws is logged and the thread goes on.
//
// The destructor drops the tasks that have not run, waits for a running one and joins the
// thread; called from inside a task it lets the thread end on its own after that task instead.
// Thread-safe.
class TaskThread {
  public:
    using Clock = std::chrono::steady_clock;

    explicit TaskThread(std::string name);
    ~TaskThread();
    TaskThread(const TaskThread&) = delete;
    TaskThread& operator=(const TaskThread&) = delete;

    void Post(std::function<void()> task);
    void PostAt(Clock::time_point due, std::function<void()> task);
    // True when called from this thread.
    bool IsCurrent() const;

  private:
    struct State;
    static void Run(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_;  // shared with the thread, which may outlive this object
    std::thread thread_;
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_COM_SRC_TASK_THREAD_H
