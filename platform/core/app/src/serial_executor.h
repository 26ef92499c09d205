#ifndef VORX_VCC_APP_SRC_SERIAL_EXECUTOR_H
#define VORX_VCC_APP_SRC_SERIAL_EXECUTOR_H

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace vorx::vcc::app::detail {

// One thread that runs the application's event handlers of one consumer, one after another, so
// that a slow handler never holds up the driver's threads (which also deliver method replies).
//
// The queue is bounded: when it is full the oldest waiting task is dropped (a rate-limited
// warning names `name`). A task that throws is logged and the thread goes on. The thread starts
// with the first task. Thread-safe.
class SerialExecutor {
  public:
    SerialExecutor(std::string name, size_t capacity);
    // Stop().
    ~SerialExecutor();
    SerialExecutor(const SerialExecutor&) = delete;
    SerialExecutor& operator=(const SerialExecutor&) = delete;

    // Queues `task`; false once stopped.
    bool Post(std::function<void()> task);
    // Drops the waiting tasks, waits for a running one and ends the thread. From inside a task it
    // lets the thread end after that task instead. Idempotent.
    void Stop();

  private:
    struct State;
    static void Run(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_;  // shared with the thread, which may outlive this object
};

}  // namespace vorx::vcc::app::detail

#endif  // VORX_VCC_APP_SRC_SERIAL_EXECUTOR_H
