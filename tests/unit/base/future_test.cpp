#include "ara/core/future.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include "ara/com/com_error_domain.h"
#include "ara/core/exception.h"
#include "ara/core/promise.h"
#include "ara/kelda/common/log/testing.h"
#include "orx/test/wait.h"

namespace ara::core {
namespace {

using ara::com::ComErrc;
using ara::kelda::common::log::LogLevel;
using ara::kelda::common::log::ScopedCaptureSink;
using namespace std::chrono_literals;

// Runs `body` and returns the std::future_errc it threw (or a default code if none).
template <typename Body>
std::error_code FutureErrorOf(Body body) {
    try {
        body();
    } catch (const std::future_error& e) {
        return e.code();
    }
    return {};
}

TEST(FutureTest, ValueAndErrorCompletedFromAnotherThread) {
    Promise<std::string> promise;
    Future<std::string> future = promise.get_future();
    std::atomic<bool> go{false};
    std::thread producer([&] {
        orx::test::WaitFor([&] { return go.load(); });
        promise.set_value("reply");
    });
    EXPECT_FALSE(future.is_ready());
    go = true;
    Result<std::string> result = future.GetResult();  // blocks until the producer sets it
    producer.join();
    ASSERT_TRUE(result.HasValue());
    EXPECT_EQ(result.Value(), "reply");
    EXPECT_FALSE(future.valid()) << "the outcome can be taken once";

    Promise<int> failing;
    Future<int> failed = failing.get_future();
    std::thread errorSetter(
        [&] { failing.SetError(ara::com::MakeErrorCode(ComErrc::kNetworkBindingFailure)); });
    errorSetter.join();
    EXPECT_EQ(failed.wait_for(1s), future_status::ready);
    try {
        failed.get();
        FAIL() << "get() of an error result must throw";
    } catch (const Exception& e) {
        EXPECT_EQ(e.Error(), ErrorCode(ComErrc::kNetworkBindingFailure));
        EXPECT_STREQ(e.what(), "kNetworkBindingFailure");
    }

    Promise<void> done;
    Future<void> voidFuture = done.get_future();
    done.set_value();
    EXPECT_TRUE(voidFuture.GetResult().HasValue());
}

TEST(FutureTest, WaitsTimeOutUntilTheOutcomeArrives) {
    Promise<int> promise;
    Future<int> future = promise.get_future();
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(future.wait_for(20ms), future_status::timeout);
    EXPECT_GE(std::chrono::steady_clock::now() - before, 20ms);
    EXPECT_EQ(future.wait_until(std::chrono::system_clock::now() + 10ms), future_status::timeout);
    promise.set_value(7);
    EXPECT_EQ(future.wait_until(std::chrono::system_clock::now() + 10ms), future_status::ready);
    EXPECT_EQ(future.wait_for(0ms), future_status::ready);
    EXPECT_EQ(future.get(), 7);
}

TEST(FutureTest, InvalidFuturePrintsTheNoticeAndReportsTimeout) {
    Future<int> invalid;
    testing::internal::CaptureStdout();
    EXPECT_EQ(invalid.wait_for(1ms), future_status::timeout);
    EXPECT_EQ(invalid.wait_until(std::chrono::system_clock::now() + 1ms), future_status::timeout);
    const std::string notice =
        "[CORETYPE Future]: Error, Invlid future_status of Future, rerutn default value: "
        "timeout\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), notice + notice);
    EXPECT_FALSE(invalid.is_ready());
}

TEST(FutureTest, MisuseThrowsTheStandardFutureErrors) {
    Future<int> invalid;
    EXPECT_EQ(FutureErrorOf([&] { invalid.GetResult(); }), std::future_errc::no_state);
    EXPECT_EQ(FutureErrorOf([&] { invalid.then([](Future<int>) {}); }), std::future_errc::no_state);

    Promise<int> promise;
    Future<int> future = promise.get_future();
    EXPECT_EQ(FutureErrorOf([&] { promise.get_future(); }),
              std::future_errc::future_already_retrieved);
    promise.set_value(1);
    EXPECT_EQ(FutureErrorOf([&] { promise.set_value(2); }),
              std::future_errc::promise_already_satisfied);
    EXPECT_EQ(FutureErrorOf([&] { promise.SetError(ErrorCode(ComErrc::kServiceNotAvailable)); }),
              std::future_errc::promise_already_satisfied);
    EXPECT_EQ(future.get(), 1) << "the first value stays";

    Promise<int> moved;
    Promise<int> target = std::move(moved);
    EXPECT_EQ(FutureErrorOf([&] { moved.set_value(3); }), std::future_errc::no_state);

    Future<int> orphan;
    {
        Promise<int> dying;
        orphan = dying.get_future();
    }
    EXPECT_TRUE(orphan.is_ready());
    EXPECT_EQ(FutureErrorOf([&] { orphan.GetResult(); }), std::future_errc::broken_promise);
}

TEST(FutureTest, ThenRunsOnTheCompletingThreadOrAtOnceWhenReady) {
    // Not ready yet: the continuation runs on the thread that sets the value.
    Promise<int> promise;
    std::thread::id ranOn;
    Future<int> doubled = promise.get_future().then([&](Future<int> f) {
        ranOn = std::this_thread::get_id();
        return f.get() * 2;
    });
    std::thread::id setterId;
    std::thread setter([&] {
        setterId = std::this_thread::get_id();
        promise.set_value(21);
    });
    setter.join();
    EXPECT_EQ(ranOn, setterId);
    EXPECT_EQ(doubled.get(), 42);

    // Ready already: it runs at once, on the caller, before then() returns.
    Promise<int> ready;
    ready.set_value(5);
    bool ran = false;
    Future<void> after = ready.get_future().then([&](Future<int> f) {
        ran = true;
        ranOn = std::this_thread::get_id();
        EXPECT_EQ(f.get(), 5);
    });
    EXPECT_TRUE(ran);
    EXPECT_EQ(ranOn, std::this_thread::get_id());
    EXPECT_TRUE(after.is_ready());
}

TEST(FutureTest, ThenChainsResultsErrorsAndInnerFutures) {
    Promise<int> promise;
    Promise<std::string> inner;
    Future<std::string> chained = promise.get_future()
                                      .then([](Future<int> f) -> Result<int> {
                                          Result<int> r = f.GetResult();
                                          if (!r) {
                                              return Result<int>::FromError(r.Error());
                                          }
                                          return r.Value() + 1;
                                      })
                                      .then([&](Future<int> f) {
                                          EXPECT_EQ(f.get(), 11);
                                          return inner.get_future();  // completes when `inner` does
                                      });
    promise.set_value(10);
    EXPECT_FALSE(chained.is_ready());
    inner.set_value("done");
    EXPECT_EQ(chained.get(), "done");

    // An error passes through a Result-returning continuation unchanged.
    Promise<int> failing;
    Future<int> relayed = failing.get_future().then([](Future<int> f) { return f.GetResult(); });
    failing.SetError(ErrorCode(ComErrc::kServiceNotOffered));
    Result<int> result = relayed.GetResult();
    ASSERT_FALSE(result.HasValue());
    EXPECT_EQ(result.Error().Message(), "kServiceNotOffered");

    // A broken promise reaches the continuation as a future that throws broken_promise.
    std::error_code seen;
    Future<void> afterBroken;
    {
        Promise<int> dying;
        afterBroken = dying.get_future().then(
            [&](Future<int> f) { seen = FutureErrorOf([&] { f.GetResult(); }); });
    }
    EXPECT_EQ(seen, std::future_errc::broken_promise);
    EXPECT_TRUE(afterBroken.GetResult().HasValue());
}

TEST(FutureTest, ThrowingContinuationBreaksItsFutureAndSparesTheCompletingThread) {
    ScopedCaptureSink sink;
    Promise<int> promise;
    Future<int> next = promise.get_future().then(
        [](Future<int>) -> int { throw std::runtime_error("bad reply"); });
    EXPECT_NO_THROW(promise.set_value(1));
    EXPECT_EQ(FutureErrorOf([&] { next.GetResult(); }), std::future_errc::broken_promise);
    EXPECT_EQ(sink->CountContaining(LogLevel::kError, "bad reply"), 1U) << sink->Dump();
}

}  // namespace
}  // namespace ara::core
