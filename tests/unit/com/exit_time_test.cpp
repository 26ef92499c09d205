// The core must carry a last request and its reply while the process is being torn down: the
// maintenance client sends its offline report from a destructor that runs at static destruction.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "com_test_util.h"
#include "orx/maintaind/types.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/skeleton.h"

namespace vorx::vcc::test {
namespace {

using orx::maintaind::AppRegisterInfo;
using orx::maintaind::ReturnCode;

// Like the maintenance client: owns a proxy and sends one request from its destructor.
class LastWords {
  public:
    LastWords() {
        server_.RegisterMethod<ReturnCode, AppRegisterInfo>(
            1, [](const AppRegisterInfo& info, Responder<ReturnCode> responder) {
                responder.Reply(ReturnCode{static_cast<uint8_t>(info.kind + 1)});
            });
        server_.OfferService();
        FoundLists found;
        const FindServiceHandle search = Proxy::StartFindService(found.Handler(), TestService());
        found.WaitForSize(1);
        Proxy::StopFindService(search);
        proxy_ = std::make_shared<Proxy>(found.All().back()[0]);
        auto info = std::make_shared<api::types::MethodInfo>();
        info->SetEntityId(1);
        method_ = proxy_->InitializeMethodProxy<ReturnCode>(info);
    }

    ~LastWords() {
        AppRegisterInfo offline;
        offline.kind = 41;
        auto future = method_->Request(offline);
        if (future.wait_for(std::chrono::milliseconds(300)) == ara::core::future_status::ready) {
            std::fprintf(stderr, "offline report answered with %d\n", future.get().code);
        } else {
            std::fprintf(stderr, "offline report timed out\n");
        }
    }

  private:
    Skeleton server_{TestService()};
    std::shared_ptr<Proxy> proxy_;
    std::shared_ptr<MethodProxyImpl<ReturnCode>> method_;
};

TEST(ExitTimeTest, RequestFromAStaticDestructorStillGetsItsReply) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            static LastWords lastWords;
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "offline report answered with 42");
}

}  // namespace
}  // namespace vorx::vcc::test
