// Records what a DDS driver hands to its callbacks, for tests that wait on it.
#ifndef ORX_TESTS_INTEGRATION_DDS_DRIVER_RECORDER_H
#define ORX_TESTS_INTEGRATION_DDS_DRIVER_RECORDER_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "vorx/vcc/driver/driver.h"

namespace orx::test {

// Everything one search or client saw, guarded by one mutex; WaitFor blocks
// until a condition on it holds or the deadline passes.
class DriverRecorder {
  public:
    struct Seen {
        std::vector<vorx::vcc::ServiceHandleContainer> lists;  // every find callback
        std::vector<vorx::vcc::MethodReply> replies;
        std::vector<vorx::vcc::EventSample> samples;
        int lost{0};
    };

    vorx::vcc::FindCallback FindCallback() {
        return [this](const vorx::vcc::ServiceHandleContainer& handles) {
            Update([&](Seen& seen) { seen.lists.push_back(handles); });
        };
    }

    vorx::vcc::ClientCallbacks ClientCallbacks() {
        vorx::vcc::ClientCallbacks callbacks;
        callbacks.onReply = [this](const vorx::vcc::MethodReply& reply) {
            Update([&](Seen& seen) { seen.replies.push_back(reply); });
        };
        callbacks.onEvent = [this](const vorx::vcc::EventSample& sample) {
            Update([&](Seen& seen) { seen.samples.push_back(sample); });
        };
        callbacks.onServiceLost = [this] { Update([](Seen& seen) { ++seen.lost; }); };
        return callbacks;
    }

    // True when `condition` held before `timeout` ran out.
    bool WaitFor(const std::function<bool(const Seen&)>& condition,
                 std::chrono::milliseconds timeout) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, timeout, [&] { return condition(seen_); });
    }

    Seen Snapshot() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return seen_;
    }

    // The last list a search delivered (empty before the first).
    vorx::vcc::ServiceHandleContainer CurrentList() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return seen_.lists.empty() ? vorx::vcc::ServiceHandleContainer() : seen_.lists.back();
    }

    static bool HasList(const Seen& seen, size_t size) {
        return !seen.lists.empty() && seen.lists.back().size() == size;
    }

  private:
    template <class F>
    void Update(F&& change) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            change(seen_);
        }
        changed_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    Seen seen_;
};

}  // namespace orx::test

#endif
