// The ingest worker: a bounded queue of ingest items and the one thread that hands them, in
// batches, to the IngestPipeline. Many reports that arrive together thus share one transaction.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>

#include "ingest/ingest_item.h"
#include "ingest/ingest_pipeline.h"

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
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<IngestItem> items_;  // guarded by mutex_
    bool stopping_{false};          // guarded by mutex_
    std::thread worker_;
};

}  // namespace orx::maintaind::daemon
