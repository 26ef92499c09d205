#ifndef ORX_TESTS_INTEGRATION_PLUGIN_APP_PROCESS_H
#define ORX_TESTS_INTEGRATION_PLUGIN_APP_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace orx::test::plugin {

// A child process of a test: its standard input is a pipe the test writes commands to; its
// standard output and error are read line by line into memory. Killed (SIGKILL) and reaped by
// the destructor if it still runs.
class AppProcess {
  public:
    struct Options {
        std::vector<std::string> argv;
        std::map<std::string, std::string> env;  // added to (or replacing in) the test's own
        std::string netns;                       // non-empty: run inside this network namespace
        std::string name;                        // for failure messages
    };

    explicit AppProcess(Options options);
    ~AppProcess();
    AppProcess(const AppProcess&) = delete;
    AppProcess& operator=(const AppProcess&) = delete;

    bool Started() const { return pid_ > 0; }
    pid_t Pid() const { return pid_; }
    const std::string& Name() const { return options_.name; }

    // Writes one line to the child's standard input.
    void Send(const std::string& line);
    void Signal(int signal) const;

    // Waits for a line (seen since the start) that `match` accepts, other than the first `skip`
    // matching ones; returns it, or nothing when `timeout` passed first.
    std::optional<std::string> WaitForLine(const std::function<bool(const std::string&)>& match,
                                           std::chrono::milliseconds timeout, size_t skip = 0);
    // The same for lines that contain `part`.
    std::optional<std::string> WaitForText(const std::string& part,
                                           std::chrono::milliseconds timeout, size_t skip = 0);
    std::vector<std::string> Lines() const;
    // Every line so far, for failure messages.
    std::string Output() const;

    // Waits for the child to end; its exit status (128 + signal when killed), or nothing on
    // timeout.
    std::optional<int> WaitForExit(std::chrono::milliseconds timeout);

  private:
    void ReadOutput(int fd);

    Options options_;
    pid_t pid_{-1};
    int stdinFd_{-1};
    std::optional<int> exitStatus_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> lines_;  // guarded by mutex_
    bool outputClosed_{false};        // guarded by mutex_
    std::thread reader_;
};

}  // namespace orx::test::plugin

#endif  // ORX_TESTS_INTEGRATION_PLUGIN_APP_PROCESS_H
