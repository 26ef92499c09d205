// Runs a helper program as a child process with pipes to its stdin and stdout.
#ifndef ORX_TESTS_INTEGRATION_DDS_CHILD_PROCESS_H
#define ORX_TESTS_INTEGRATION_DDS_CHILD_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace orx::test {

class ChildProcess {
  public:
    // Starts `argv[0]` with `argv` and the current environment, where `env`
    // ("NAME=value" entries) adds or replaces variables. Check Started().
    ChildProcess(const std::vector<std::string>& argv, const std::vector<std::string>& env);
    // Kills (SIGKILL) and reaps the child if it still runs.
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool Started() const { return pid_ > 0; }
    pid_t Pid() const { return pid_; }

    // Writes one line to the child's stdin.
    bool Send(const std::string& line);
    // The next stdout line, or nullopt when none came before `timeout`.
    std::optional<std::string> ReadLine(std::chrono::milliseconds timeout);
    // Reads lines until one starts with `prefix`; returns it, or nullopt on timeout.
    std::optional<std::string> WaitForLine(const std::string& prefix,
                                           std::chrono::milliseconds timeout);
    // Sends `signal` and reaps the child; returns its wait status.
    int Kill(int signal);
    // Waits for the child to end on its own; nullopt when it still runs after `timeout`.
    std::optional<int> Wait(std::chrono::milliseconds timeout);

  private:
    pid_t pid_{-1};
    int toChild_{-1};
    int fromChild_{-1};
    std::string buffered_;
};

}  // namespace orx::test

#endif
