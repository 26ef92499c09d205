#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

#include "vorx/vcc/event_controller.h"
#include "wait_for.h"

namespace vorx::vcc {
namespace {

// Like the maintenance client: a process-wide object whose destructor, running during static
// destruction, still schedules a last job on the controller, waits for it and deletes its
// periodic job.
class ExitReporter {
  public:
    ExitReporter() : controller_(EventController::GetInstance()) {
        periodic_ = controller_->NewEvent(
            EventScheduleMode::kCyclic, [] {}, GetCurMonoTime(), 1000000L);
        controller_->InsertEvent(periodic_);
    }
    ~ExitReporter() {
        auto sent = std::make_shared<std::atomic<bool>>(false);
        const EventHandle last = controller_->NewEvent(
            EventScheduleMode::kOneShot, [sent] { sent->store(true); }, GetCurMonoTime(), -1);
        const bool inserted = controller_->InsertEvent(last);
        const bool ran = inserted && test::WaitFor([&] { return sent->load(); });
        controller_->DelEvent(periodic_);
        std::fprintf(stderr, "last report %s\n", ran ? "sent" : "lost");
    }
    static ExitReporter& Get() {
        static ExitReporter reporter;
        return reporter;
    }

  private:
    std::shared_ptr<EventController> controller_;
    EventHandle periodic_ = kInvalidEventHandle;
};

void ExitWithJobsPending() {
    ExitReporter::Get();
    auto controller = EventController::GetInstance();
    for (int i = 0; i < 100; ++i) {
        const EventHandle h = controller->NewEvent(
            EventScheduleMode::kOneShot, [] {}, GetCurMonoTime() + 3600L * 1000000000L, -1);
        controller->InsertEvent(h);
    }
    std::exit(0);
}

TEST(EventControllerExitTest, StaysUsableDuringStaticDestructionWithJobsPending) {
    // A fresh process: the controller's worker must belong to the child.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(ExitWithJobsPending(), testing::ExitedWithCode(0), "last report sent");
}

// Holds what a scheduled report job keeps alive; says when it is let go.
struct KeptAlive {
    ~KeptAlive() { std::fprintf(stderr, "kept object released\n"); }
};

void ExitRightAfterSchedulingAReport() {
    auto controller = EventController::GetInstance();
    auto kept = std::make_shared<KeptAlive>();
    const EventHandle h = controller->NewEvent(
        EventScheduleMode::kOneShot,
        [kept] {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            std::fprintf(stderr, "report sent\n");
        },
        GetCurMonoTime(), -1);
    controller->InsertEvent(h);
    kept.reset();
    std::exit(0);
}

TEST(EventControllerExitTest, RunsDueOneShotJobsBeforeTheProcessEnds) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(ExitRightAfterSchedulingAReport(), testing::ExitedWithCode(0),
                "report sent\nkept object released");
}

TEST(EventControllerExitTest, WaitForDueOneShotJobsIgnoresCyclicAndLaterJobs) {
    EventController controller;
    const EventHandle cyclic = controller.NewEvent(
        EventScheduleMode::kCyclic, [] {}, GetCurMonoTime(), 1000000L);
    controller.InsertEvent(cyclic);
    const EventHandle later = controller.NewEvent(
        EventScheduleMode::kOneShot, [] {}, GetCurMonoTime() + 3600L * 1000000000L, -1);
    controller.InsertEvent(later);
    std::atomic<bool> ran{false};
    const EventHandle now = controller.NewEvent(
        EventScheduleMode::kOneShot,
        [&ran] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            ran = true;
        },
        GetCurMonoTime(), -1);
    controller.InsertEvent(now);
    EXPECT_TRUE(controller.WaitForDueOneShotJobs(std::chrono::seconds(10)));
    EXPECT_TRUE(ran);
    controller.DelEvent(cyclic);
}

}  // namespace
}  // namespace vorx::vcc
