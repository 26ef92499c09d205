// Dispatch delay and throughput of the event controller.
//
//   bench_event_controller [seconds] [jobs-per-second]      (defaults: 3 s, 10000 jobs/s)
//
// "timed": one-shot jobs inserted 5 ms before their start, one every 1/rate s; the delay is
// the time the job began to run minus its start time (the worker sleeps until each start).
// "immediate": the same rate of jobs whose start is "now" at insertion (wake-up latency).
// "burst": as many jobs as possible inserted at once; jobs per second through the worker.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "vorx/vcc/event_controller.h"

namespace {

using vorx::vcc::EventController;
using vorx::vcc::EventScheduleMode;
using vorx::vcc::GetCurMonoTime;

struct Stats {
    double p50Us;
    double p99Us;
    double maxUs;
    double jobsPerSecond;
    long lateInserts;  // timed jobs the producer inserted only after their start
};

double Percentile(std::vector<long>& v, double q) {
    const size_t i = std::min(v.size() - 1, static_cast<size_t>(q * static_cast<double>(v.size())));
    std::nth_element(v.begin(), v.begin() + static_cast<long>(i), v.end());
    return static_cast<double>(v[i]) / 1000.0;
}

// Schedules `total` jobs at `rate` per second, `lead` ns ahead of their start (0: start = now),
// and measures each job's dispatch delay.
Stats SteadyLoad(EventController& controller, long total, long rate, long lead) {
    std::vector<long> delays(static_cast<size_t>(total), 0);
    std::atomic<long> done{0};
    const long interval = 1000000000L / rate;
    const long begin = GetCurMonoTime() + 5000000L;
    long next = 0;
    long lateInserts = 0;
    while (next < total) {
        // Every millisecond, schedule the jobs that are due `lead` from now.
        const long now = GetCurMonoTime();
        const long horizon = now - begin + lead;
        for (; next < total && next * interval <= horizon; ++next) {
            const long insertAt = GetCurMonoTime();
            const long start = lead > 0 ? begin + next * interval : insertAt;
            // A producer that a busy machine delayed may insert a job after its start; count
            // from the moment the controller knew the job, not from the missed start.
            const long due = std::max(start, insertAt);
            lateInserts += start < insertAt ? 1 : 0;
            long* slot = &delays[static_cast<size_t>(next)];
            const auto h = controller.NewEvent(
                EventScheduleMode::kOneShot,
                [slot, due, &done] {
                    *slot = GetCurMonoTime() - due;
                    done.fetch_add(1, std::memory_order_release);
                },
                start, -1);
            controller.InsertEvent(h);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(lead > 0 ? 1000 : 100));
    }
    const long deadline = GetCurMonoTime() + 10000000000L;
    while (done.load(std::memory_order_acquire) < total && GetCurMonoTime() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const double seconds = static_cast<double>(GetCurMonoTime() - begin) / 1e9;
    Stats s{};
    s.jobsPerSecond = static_cast<double>(done.load()) / seconds;
    s.maxUs = static_cast<double>(*std::max_element(delays.begin(), delays.end())) / 1000.0;
    s.p50Us = Percentile(delays, 0.50);
    s.p99Us = Percentile(delays, 0.99);
    s.lateInserts = lateInserts;
    return s;
}

double Burst(EventController& controller, long total) {
    std::atomic<long> done{0};
    const long begin = GetCurMonoTime();
    for (long i = 0; i < total; ++i) {
        const auto h = controller.NewEvent(
            EventScheduleMode::kOneShot, [&done] { done.fetch_add(1, std::memory_order_release); },
            GetCurMonoTime(), -1);
        controller.InsertEvent(h);
    }
    while (done.load(std::memory_order_acquire) < total) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return static_cast<double>(total) / (static_cast<double>(GetCurMonoTime() - begin) / 1e9);
}

void Print(const char* name, long rate, const Stats& s) {
    std::printf(
        "%-9s rate=%ld/s  delay p50=%.1f us  p99=%.1f us  max=%.1f us  done=%.0f jobs/s"
        "  (late inserts %ld)\n",
        name, rate, s.p50Us, s.p99Us, s.maxUs, s.jobsPerSecond, s.lateInserts);
}

}  // namespace

int main(int argc, char** argv) {
    const long seconds = argc > 1 ? std::atol(argv[1]) : 3;
    const long rate = argc > 2 ? std::atol(argv[2]) : 10000;
    if (seconds <= 0 || rate <= 0 || rate > 1000000) {
        std::fprintf(stderr, "usage: %s [seconds] [jobs-per-second]\n", argv[0]);
        return 2;
    }
    const auto controller = EventController::GetInstance();
    const long total = seconds * rate;
    Print("timed", rate, SteadyLoad(*controller, total, rate, 5000000L));
    Print("immediate", rate, SteadyLoad(*controller, total, rate, 0));
    std::printf("burst     %.0f jobs/s (200000 one-shot jobs due at once)\n",
                Burst(*controller, 200000));
    return 0;
}
