// The ingest worker: a bounded queue of ingest items and the one thread that hands them, in
// batches, to the IngestPipeline. Many reports that arrive together thus share one transaction.
#pragma once

#include <cstddef>
#include <deque>
#include <thread>

#include "ingest/ingest_item.h"
#include "ingest/ingest_pipeline.h"
#include "orx/sync/mutex.h"

namespace orx::maintaind::daemon {

class IngestQueue {
  public:
    // Items wait in a queue of at most `capacity`; the worker takes up to `maxBatch` at a time.
    IngestQueue(IngestPipeline& pipeline, size_t capacity, size_t maxBatch);
    // Stop().
    ~IngestQueue();
    IngestQueue(const IngestQueue&) = delete;
    IngestQueue& operator=(const IngestQueue&) = delete;

    // Starts the worker thread. Once only.
    void Start();
    // Processes what is queued, then ends the worker. Later pushes are refused. Idempotent.
    void Stop();

    // Queues `item`. False, leaving `item.done` uncalled, when the queue is full or stopped.
    // Any thread.
    bool Push(IngestItem item);
    // Items queued and not yet taken by the worker.
    size_t Pending() const;

  private:
    void Run();

    IngestPipeline& pipeline_;
    const size_t capacity_;
    const size_t maxBatch_;
    mutable orx::sync::Mutex mutex_;
    orx::sync::CondVar wake_;
    std::deque<IngestItem> items_ GUARDED_BY(mutex_);
    bool stopping_ GUARDED_BY(mutex_){false};
    std::thread worker_;
};

}  // namespace orx::maintaind::daemon
