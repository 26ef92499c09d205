#include "event_receiver.h"

#include <algorithm>
#include <utility>

#include "com_log.h"
#include "orx/sync/mutex.h"

namespace vorx::vcc {

EventReceiver::~EventReceiver() {
    Stop();
}

void EventReceiver::SetThreadSettings(uint16_t priority, uint16_t queueSize) {
    orx::sync::MutexLock lock(mutex_);
    priority_ = priority;
    queueSize_ = std::max<uint16_t>(queueSize, 1);
}

void EventReceiver::SetHandler(uint32_t entityId, std::function<void()> handler) {
    orx::sync::MutexLock lock(mutex_);
    handlers_[entityId] = std::make_shared<std::function<void()>>(std::move(handler));
    auto sub = subscriptions_.find(entityId);
    if (sub != subscriptions_.end() && !sub->second.samples.empty()) {
        NoticeLocked(entityId);  // samples came before the handler
    }
}

bool EventReceiver::Add(uint32_t entityId, size_t cacheSize) {
    orx::sync::MutexLock lock(mutex_);
    Subscription subscription;
    subscription.capacity = std::max<size_t>(cacheSize, 1);
    return subscriptions_.emplace(entityId, std::move(subscription)).second;
}

bool EventReceiver::IsSubscribed(uint32_t entityId) const {
    orx::sync::MutexLock lock(mutex_);
    return subscriptions_.count(entityId) != 0;
}

bool EventReceiver::Remove(uint32_t entityId) {
    std::deque<EventSample> dropped;  // released outside the lock
    orx::sync::MutexLock lock(mutex_);
    auto it = subscriptions_.find(entityId);
    if (it == subscriptions_.end()) {
        return false;
    }
    dropped.swap(it->second.samples);
    subscriptions_.erase(it);
    return true;
}

void EventReceiver::OnSample(const EventSample& sample) {
    orx::sync::MutexLock lock(mutex_);
    auto it = subscriptions_.find(sample.entityId);
    if (it == subscriptions_.end()) {
        return;  // unsubscribed while the sample was on its way
    }
    Subscription& subscription = it->second;
    subscription.samples.push_back(sample);
    while (subscription.samples.size() > subscription.capacity) {
        subscription.samples.pop_front();
    }
    NoticeLocked(sample.entityId);
}

std::vector<EventSample> EventReceiver::Take(uint32_t entityId, size_t maxCount) {
    std::vector<EventSample> taken;
    orx::sync::MutexLock lock(mutex_);
    auto it = subscriptions_.find(entityId);
    if (it == subscriptions_.end()) {
        return taken;
    }
    auto& samples = it->second.samples;
    const size_t count = std::min(maxCount, samples.size());
    taken.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        taken.push_back(std::move(samples.front()));
        samples.pop_front();
    }
    return taken;
}

void EventReceiver::Stop() {
    std::unique_ptr<TaskThread> thread;
    {
        orx::sync::MutexLock lock(mutex_);
        stopped_ = true;
        thread = std::move(thread_);
        noticed_.clear();
    }
    thread.reset();  // joins, or lets the thread end by itself when called from a handler
}

void EventReceiver::NoticeLocked(uint32_t entityId) {
    if (stopped_ || handlers_.count(entityId) == 0 || noticed_.count(entityId) != 0) {
        return;
    }
    if (noticed_.size() >= queueSize_) {
        ComLog().LogWarn(Limit("Proxy_EventQueueFull"))
            << "[Proxy][Event thread queue is full, notice dropped][entityId=" << entityId
            << ", queueSize=" << queueSize_ << "]";
        return;
    }
    if (!thread_) {
        thread_ = std::make_unique<TaskThread>("vcc-event");
    }
    noticed_.insert(entityId);
    thread_->Post([this, entityId] { RunHandler(entityId); });
}

void EventReceiver::RunHandler(uint32_t entityId) {
    std::shared_ptr<std::function<void()>> handler;
    {
        orx::sync::MutexLock lock(mutex_);
        noticed_.erase(entityId);  // samples arriving from now on notice again
        if (stopped_) {
            return;
        }
        auto it = handlers_.find(entityId);
        if (it == handlers_.end()) {
            return;
        }
        handler = it->second;
    }
    if (*handler) {
        (*handler)();
    }
}

}  // namespace vorx::vcc
