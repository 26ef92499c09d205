#ifndef ORX_TEST_SRC_DELAYED_RUNNER_H
#define ORX_TEST_SRC_DELAYED_RUNNER_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace orx::test {

// Runs tasks at given times on one thread of its own. The destructor drops tasks not yet due
// and joins the thread.
class DelayedRunner {
  public:
    using Clock = std::chrono::steady_clock;

    DelayedRunner();
    ~DelayedRunner();
    DelayedRunner(const DelayedRunner&) = delete;
    DelayedRunner& operator=(const DelayedRunner&) = delete;

    void RunAt(Clock::time_point due, std::function<void()> task);

  private:
    void Loop();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::map<std::pair<Clock::time_point, uint64_t>, std::function<void()>> tasks_;  // guarded
    uint64_t nextSeq_{0};                                                            // guarded
    bool stopping_{false};                                                           // guarded
    std::thread thread_;
};

}  // namespace orx::test

#endif  // ORX_TEST_SRC_DELAYED_RUNNER_H
