// A thread that waits on DDS readers and runs their handlers, plus queued tasks.
#ifndef VORX_DRIVER_DDS_SRC_DISPATCH_THREAD_H
#define VORX_DRIVER_DDS_SRC_DISPATCH_THREAD_H

#include <dds/dds.h>

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include "callback_slot.h"
#include "orx/sync/mutex.h"
#include "vorx/driver/dds/dds_status.h"

namespace vorx {
namespace driver {
namespace dds {

class DispatchThread {
  public:
    using Task = std::function<void()>;

    // Starts the thread with a waitset on `participant`. `name` is the thread
    // name shown by the OS (at most 15 characters are kept). On failure returns
    // nullptr and sets *status.
    static std::unique_ptr<DispatchThread> Start(dds_entity_t participant, const std::string& name,
                                                 DdsStatus* status);
    // Stops and joins the thread (see Stop).
    ~DispatchThread();

    DispatchThread(const DispatchThread&) = delete;
    DispatchThread& operator=(const DispatchThread&) = delete;

    // From now on runs `onData` on this thread whenever `reader` holds samples;
    // `onData` must take them all. Returns a token for Unwatch, or 0 with
    // *status set on failure.
    uint64_t Watch(dds_entity_t reader, Task onData, DdsStatus* status);
    // After it returns `onData` of this token neither runs nor starts again
    // (a call running on another thread is waited for).
    void Unwatch(uint64_t token);

    // Runs `task` on this thread, after the tasks posted before it. Tasks posted
    // after Stop are dropped.
    void Post(Task task);

    bool OnThisThread() const { return std::this_thread::get_id() == threadId_.load(); }

    // Ends the thread: handlers and tasks that have not started are dropped.
    // Called from the thread itself, the thread is detached instead of joined.
    void Stop();

  private:
    struct Watched {
        dds_entity_t condition;
        std::shared_ptr<CallbackSlot<Task>> slot;
    };

    DispatchThread(dds_entity_t waitset, dds_entity_t wakeup);
    void Run();
    void RunTasks();

    const dds_entity_t waitset_;
    const dds_entity_t wakeup_;  // guard condition: tasks queued or stop requested
    std::thread thread_;
    std::atomic<std::thread::id> threadId_{};
    std::atomic<bool> stopping_{false};

    orx::sync::Mutex mutex_;
    std::deque<Task> tasks_ GUARDED_BY(mutex_);
    std::map<uint64_t, Watched> watched_ GUARDED_BY(mutex_);
    uint64_t nextToken_ GUARDED_BY(mutex_){1};
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
