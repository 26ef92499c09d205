#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "fake_dfx_objects.h"
#include "vorx/vcc/register_dfx_interface.h"
#include "vorx/vcc/reserve_service.h"

namespace vorx::vcc {
namespace {

TEST(RegisterDfxInterfaceTest, KeepsTheLatestObjectAndCountsRegistrations) {
    int tokenA = 0;
    int tokenB = 0;
    const uint32_t configsBefore = RegisterDfxInterface::DfxConfigRegistrationCount();
    const uint32_t clientsBefore = RegisterDfxInterface::OrxMaintaindRegistrationCount();

    const auto config = test::FakeDfxObject<DDSDfxConfigInterface>(tokenA);
    RegisterDfxInterface::RegisterDfxConfigInterface(config);
    EXPECT_EQ(RegisterDfxInterface::GetDfxConfigInterface(), config);
    EXPECT_EQ(RegisterDfxInterface::DfxConfigRegistrationCount(), configsBefore + 1);
    EXPECT_EQ(RegisterDfxInterface::OrxMaintaindRegistrationCount(), clientsBefore);

    // Concurrent registrations (the loader thread and the application at once).
    const auto clientA = test::FakeDfxObject<OrxMaintaindInterface>(tokenA);
    const auto clientB = test::FakeDfxObject<OrxMaintaindInterface>(tokenB);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int n = 0; n < 50; ++n) {
                RegisterDfxInterface::RegisterOrxMaintaindInterface(i % 2 == 0 ? clientA : clientB);
                EXPECT_NE(RegisterDfxInterface::GetOrxMaintaindInterface(), nullptr);
            }
        });
    }
    for (auto& t : threads) {
        t.join();
    }
    EXPECT_EQ(RegisterDfxInterface::OrxMaintaindRegistrationCount(), clientsBefore + 200);
    const auto current = RegisterDfxInterface::GetOrxMaintaindInterface();
    EXPECT_TRUE(current == clientA || current == clientB);

    // A null object clears the slot and does not count.
    RegisterDfxInterface::RegisterOrxMaintaindInterface(nullptr);
    EXPECT_EQ(RegisterDfxInterface::GetOrxMaintaindInterface(), nullptr);
    EXPECT_EQ(RegisterDfxInterface::OrxMaintaindRegistrationCount(), clientsBefore + 200);
    RegisterDfxInterface::RegisterDfxConfigInterface(nullptr);
}

// Registers a client whose release is announced on stderr, then exits.
void ExitWithRegisteredClient() {
    static int token = 0;
    RegisterDfxInterface::RegisterOrxMaintaindInterface(std::shared_ptr<OrxMaintaindInterface>(
        reinterpret_cast<OrxMaintaindInterface*>(&token),
        [](OrxMaintaindInterface*) { std::fputs("client released\n", stderr); }));
    std::exit(0);
}

TEST(RegisterDfxInterfaceTest, LetsGoOfTheClientAtProcessExit) {
    // The plug-in's client sends its offline report from its destructor, which runs only once
    // the registry has dropped its reference too.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(ExitWithRegisteredClient(), testing::ExitedWithCode(0), "client released");
}

TEST(ReserveServiceTest, OnlyTheMaintenanceServicesAreReserved) {
    EXPECT_TRUE(CheckIsReserveServiceId(0xE000));
    EXPECT_TRUE(CheckIsReserveServiceId(0xE001));
    EXPECT_FALSE(CheckIsReserveServiceId(0xE002));
    EXPECT_FALSE(CheckIsReserveServiceId(0xDFFF));
    EXPECT_FALSE(CheckIsReserveServiceId(0));

    EXPECT_TRUE(CheckIsReserveServiceName("MAINTAIND"));
    EXPECT_TRUE(CheckIsReserveServiceName("/velmar/ap/orx/ORXMaintaindAppService"));
    EXPECT_TRUE(CheckIsReserveServiceName("/velmar/ap/orx/ORXMaintaindToolsService"));
    EXPECT_FALSE(CheckIsReserveServiceName("maintaind"));
    EXPECT_FALSE(CheckIsReserveServiceName("/velmar/ap/orx/ORXMaintaindAppService/"));
    EXPECT_FALSE(CheckIsReserveServiceName(""));
}

}  // namespace
}  // namespace vorx::vcc
