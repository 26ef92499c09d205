// A program the test starts: maintaind or a demo application, with extra environment, its
// output in a file. Killed (SIGKILL) and reaped by the destructor if it still runs.
#ifndef TESTS_INTEGRATION_DAEMON_CHILD_PROCESS_H
#define TESTS_INTEGRATION_DAEMON_CHILD_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orx::maintaind::daemon::itest {

class ChildProcess {
  public:
    // Starts argv[0] with `argv`, the test's environment plus `env`, standard output and error
    // appended to `logFile`.
    ChildProcess(std::vector<std::string> argv, std::map<std::string, std::string> env,
                 std::string logFile);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t Pid() const { return pid_; }
    bool Running();
    void Signal(int signal) const;
    // Waits for the end; the exit status (128 + signal when killed), or nothing on timeout.
    std::optional<int> WaitForExit(std::chrono::milliseconds timeout);
    // Waits until the output holds `text`.
    bool WaitForOutput(const std::string& text, std::chrono::milliseconds timeout) const;
    std::string Output() const;

  private:
    pid_t pid_{-1};
    std::optional<int> status_;
    std::string logFile_;
};

}  // namespace orx::maintaind::daemon::itest

#endif  // TESTS_INTEGRATION_DAEMON_CHILD_PROCESS_H
