#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>

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

}  // namespace
}  // namespace vorx::vcc
