#include "ingest/ingest_queue.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "orx/sync/mutex.h"

namespace orx::maintaind::daemon {

IngestQueue::IngestQueue(IngestPipeline& pipeline, size_t capacity, size_t maxBatch)
    : pipeline_(pipeline), capacity_(capacity), maxBatch_(maxBatch == 0 ? 1 : maxBatch) {}

IngestQueue::~IngestQueue() {
    Stop();
}

void IngestQueue::Start() {
    worker_ = std::thread([this] { Run(); });
}

void IngestQueue::Stop() {
    {
        orx::sync::MutexLock lock(mutex_);
        stopping_ = true;
    }
    wake_.NotifyAll();
    if (worker_.joinable()) {
        worker_.join();
    }
}

bool IngestQueue::Push(IngestItem item) {
    {
        orx::sync::MutexLock lock(mutex_);
        if (stopping_ || items_.size() >= capacity_) {
            return false;
        }
        items_.push_back(std::move(item));
    }
    wake_.NotifyOne();
    return true;
}

size_t IngestQueue::Pending() const {
    orx::sync::MutexLock lock(mutex_);
    return items_.size();
}

void IngestQueue::Run() {
    std::vector<IngestItem> batch;
    for (;;) {
        {
            orx::sync::MutexLock lock(mutex_);
            wake_.Wait(mutex_, [this]() REQUIRES(mutex_) { return stopping_ || !items_.empty(); });
            if (items_.empty()) {
                return;  // stopping, and everything queued is done
            }
            const size_t take = std::min(items_.size(), maxBatch_);
            batch.clear();
            for (size_t i = 0; i < take; ++i) {
                batch.push_back(std::move(items_.front()));
                items_.pop_front();
            }
        }
        pipeline_.Process(batch);
    }
}

}  // namespace orx::maintaind::daemon
