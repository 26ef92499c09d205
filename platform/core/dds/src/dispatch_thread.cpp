#include "dispatch_thread.h"

#include <pthread.h>

#include <vector>

#include "orx/sync/mutex.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {
constexpr dds_attach_t kWakeupArg = 0;
constexpr size_t kMaxTriggers = 32;
}  // namespace

std::unique_ptr<DispatchThread> DispatchThread::Start(dds_entity_t participant,
                                                      const std::string& name, DdsStatus* status) {
    const dds_entity_t waitset = dds_create_waitset(participant);
    *status = TranslateReturnCode(waitset, "create the waitset of thread " + name);
    if (waitset < 0) {
        return nullptr;
    }
    const dds_entity_t wakeup = dds_create_guardcondition(participant);
    *status = TranslateReturnCode(wakeup, "create the guard condition of thread " + name);
    if (wakeup < 0) {
        dds_delete(waitset);
        return nullptr;
    }
    const dds_return_t rc = dds_waitset_attach(waitset, wakeup, kWakeupArg);
    *status = TranslateReturnCode(rc, "attach the guard condition of thread " + name);
    if (rc < 0) {
        dds_delete(wakeup);
        dds_delete(waitset);
        return nullptr;
    }
    std::unique_ptr<DispatchThread> dispatcher(new DispatchThread(waitset, wakeup));
    dispatcher->thread_ = std::thread([raw = dispatcher.get()] { raw->Run(); });
    pthread_setname_np(dispatcher->thread_.native_handle(), name.substr(0, 15).c_str());
    return dispatcher;
}

DispatchThread::DispatchThread(dds_entity_t waitset, dds_entity_t wakeup)
    : waitset_(waitset), wakeup_(wakeup) {}

DispatchThread::~DispatchThread() {
    Stop();
    dds_delete(waitset_);
    dds_delete(wakeup_);
}

uint64_t DispatchThread::Watch(dds_entity_t reader, Task onData, DdsStatus* status) {
    const dds_entity_t condition = dds_create_readcondition(reader, DDS_ANY_STATE);
    *status = TranslateReturnCode(condition, "create a read condition");
    if (condition < 0) {
        return 0;
    }
    orx::sync::MutexLock lock(mutex_);
    const uint64_t token = nextToken_++;
    watched_.emplace(token,
                     Watched{condition, std::make_shared<CallbackSlot<Task>>(std::move(onData))});
    const dds_return_t rc =
        dds_waitset_attach(waitset_, condition, static_cast<dds_attach_t>(token));
    *status = TranslateReturnCode(rc, "attach a reader to the waitset");
    if (rc < 0) {
        watched_.erase(token);
        dds_delete(condition);
        return 0;
    }
    return token;
}

void DispatchThread::Unwatch(uint64_t token) {
    std::shared_ptr<CallbackSlot<Task>> slot;
    dds_entity_t condition = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        auto found = watched_.find(token);
        if (found == watched_.end()) {
            return;
        }
        slot = found->second.slot;
        condition = found->second.condition;
        watched_.erase(found);
    }
    slot->Close();
    dds_waitset_detach(waitset_, condition);
    dds_delete(condition);
}

void DispatchThread::Post(Task task) {
    {
        orx::sync::MutexLock lock(mutex_);
        if (stopping_.load()) {
            return;
        }
        tasks_.push_back(std::move(task));
    }
    dds_set_guardcondition(wakeup_, true);
}

void DispatchThread::Stop() {
    if (stopping_.exchange(true)) {
        return;
    }
    dds_set_guardcondition(wakeup_, true);
    if (!thread_.joinable()) {
        return;
    }
    if (OnThisThread()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

void DispatchThread::Run() {
    threadId_.store(std::this_thread::get_id());
    std::vector<dds_attach_t> triggered(kMaxTriggers);
    while (!stopping_.load()) {
        const dds_return_t count =
            dds_waitset_wait(waitset_, triggered.data(), triggered.size(), DDS_INFINITY);
        if (count < 0) {
            // The waitset is gone: nothing left to wait for.
            return;
        }
        for (dds_return_t i = 0; i < count && !stopping_.load(); ++i) {
            if (triggered[static_cast<size_t>(i)] == kWakeupArg) {
                RunTasks();
                continue;
            }
            std::shared_ptr<CallbackSlot<Task>> slot;
            {
                orx::sync::MutexLock lock(mutex_);
                auto found =
                    watched_.find(static_cast<uint64_t>(triggered[static_cast<size_t>(i)]));
                if (found != watched_.end()) {
                    slot = found->second.slot;
                }
            }
            if (slot) {
                slot->Invoke();
            }
        }
    }
}

void DispatchThread::RunTasks() {
    bool triggered = false;
    dds_take_guardcondition(wakeup_, &triggered);
    for (;;) {
        Task task;
        {
            orx::sync::MutexLock lock(mutex_);
            if (tasks_.empty() || stopping_.load()) {
                return;
            }
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
