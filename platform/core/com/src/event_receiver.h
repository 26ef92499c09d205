#ifndef VORX_VCC_COM_SRC_EVENT_RECEIVER_H
#define VORX_VCC_COM_SRC_EVENT_RECEIVER_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

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

    // Queues a run of the handler of `entityId` unless one is queued already. REQUIRES: mutex_.
    void NoticeLocked(uint32_t entityId);
    void RunHandler(uint32_t entityId);

    mutable std::mutex mutex_;
    std::map<uint32_t, Subscription> subscriptions_;                       // guarded by mutex_
    std::map<uint32_t, std::shared_ptr<std::function<void()>>> handlers_;  // guarded by mutex_
    std::set<uint32_t> noticed_;          // guarded by mutex_: handler runs queued, not started
    uint16_t priority_{0};                // guarded by mutex_
    uint16_t queueSize_{1024};            // guarded by mutex_
    bool stopped_{false};                 // guarded by mutex_
    std::unique_ptr<TaskThread> thread_;  // guarded by mutex_; made on the first notice
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_COM_SRC_EVENT_RECEIVER_H
