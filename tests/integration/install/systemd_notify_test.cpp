// maintaind as a systemd service, with the test in systemd's place: a datagram socket named in
// NOTIFY_SOCKET, a watchdog interval in WATCHDOG_USEC and a state directory in STATE_DIRECTORY.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "orx/test/child_process.h"
#include "orx/test/temp_dir.h"
#include "orx/test/wait.h"

namespace orx::test {
namespace {

using namespace std::chrono_literals;

// The messages maintaind sends to "systemd", one datagram each.
class NotifySocket {
  public:
    explicit NotifySocket(const std::string& path) : fd_(socket(AF_UNIX, SOCK_DGRAM, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        bound_ = bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
    ~NotifySocket() { close(fd_); }
    bool Bound() const { return bound_; }

    // How many messages so far were `text`.
    size_t Count(const std::string& text) {
        char buffer[512];
        for (ssize_t size; (size = recv(fd_, buffer, sizeof(buffer), MSG_DONTWAIT)) > 0;) {
            received_.emplace_back(buffer, static_cast<size_t>(size));
        }
        size_t count = 0;
        for (const std::string& message : received_) {
            count += message.rfind(text, 0) == 0 ? 1 : 0;
        }
        return count;
    }

  private:
    int fd_;
    bool bound_{false};
    std::vector<std::string> received_;
};

TEST(MaintaindServiceTest, ReadyWhenOfferedFedWatchdogStateDirectoryAndQuickStop) {
    TempDir dir{"orx-service-test"};
    NotifySocket systemd(dir.File("notify"));
    ASSERT_TRUE(systemd.Bound());
    ChildProcess daemon({{std::string(ORX_BIN_DIR) + "/maintaind"},
                         {{"ORX_DDS_DOMAIN", "221"},
                          {"ORX_CONFIG", dir.File("none.json")},
                          {"NOTIFY_SOCKET", dir.File("notify")},
                          {"WATCHDOG_USEC", "200000"},
                          {"STATE_DIRECTORY", dir.Path()}},
                         "",
                         "maintaind"});

    ASSERT_TRUE(WaitFor([&] { return systemd.Count("READY=1") == 1; }, 20s)) << daemon.Output();
    EXPECT_TRUE(daemon.WaitForText("Maintaind started", 1s)) << "ready before the offers";
    EXPECT_TRUE(daemon.WaitForText("file=" + dir.File("maintaind.db"), 1s)) << daemon.Output();
    // Fed at half the interval: several feeds within a few intervals.
    EXPECT_TRUE(WaitFor([&] { return systemd.Count("WATCHDOG=1") >= 3; }, 5s));

    daemon.Signal(SIGTERM);
    EXPECT_EQ(daemon.WaitForExit(2s), 0) << daemon.Output();
    EXPECT_EQ(systemd.Count("STOPPING=1"), 1U);
    EXPECT_TRUE(daemon.WaitForText("Maintaind stopped", 1s)) << daemon.Output();
}

}  // namespace
}  // namespace orx::test
