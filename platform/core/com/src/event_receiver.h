#ifndef VORX_VCC_COM_SRC_EVENT_RECEIVER_H
#define VORX_VCC_COM_SRC_EVENT_RECEIVER_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "orx/sync/mutex.h"
#include "task_thread.h"
#include "vorx/vcc/driver/driver.h"

namespace vorx::vcc {

// The event side of one proxy: the subscribed events with their caches of unread samples, the
// receive handlers, and the event thread that runs them.
//
// Samples arrive on the driver's client thread (OnSample); a handler is then noticed to run on
// the event thread, once for all samples that arrived before it started. Thread-safe.
class EventReceiver {
  public:
    EventReceiver() = default;
    ~EventReceiver();
    EventReceiver(const EventReceiver&) = delete;
    EventReceiver& operator=(const EventReceiver&) = delete;

    void SetThreadSettings(uint16_t priority, uint16_t queueSize);
    void SetHandler(uint32_t entityId, std::function<void()> handler);

    // Starts keeping samples of `entityId`, at most `cacheSize` (at least 1). False when the
    // entity is kept already.
    bool Add(uint32_t entityId, size_t cacheSize);
    bool IsSubscribed(uint32_t entityId) const;
    // Stops keeping samples of `entityId` and drops the unread ones. False when it was not kept.
    bool Remove(uint32_t entityId);

    void OnSample(const EventSample& sample);
    // Takes at most `maxCount` unread samples of `entityId`, oldest first.
    std::vector<EventSample> Take(uint32_t entityId, size_t maxCount);

    // Stops the event thread: no handler starts afterwards; a running one is waited for unless
    // Stop is called from inside it.
    void Stop();

  private:
    struct Subscription {
        size_t capacity{1};
        std::deque<EventSample> samples;
    };

    // Queues a run of the handler of `entityId` unless one is queued already.
    void NoticeLocked(uint32_t entityId) REQUIRES(mutex_);
    void RunHandler(uint32_t entityId) EXCLUDES(mutex_);

    mutable orx::sync::Mutex mutex_;
    std::map<uint32_t, Subscription> subscriptions_ GUARDED_BY(mutex_);
    std::map<uint32_t, std::shared_ptr<std::function<void()>>> handlers_ GUARDED_BY(mutex_);
    std::set<uint32_t> noticed_ GUARDED_BY(mutex_);  // handler runs queued, not started
    uint16_t priority_ GUARDED_BY(mutex_){0};
    uint16_t queueSize_ GUARDED_BY(mutex_){1024};
    bool stopped_ GUARDED_BY(mutex_){false};
    std::unique_ptr<TaskThread> thread_ GUARDED_BY(mutex_);  // made on the first notice
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_COM_SRC_EVENT_RECEIVER_H
