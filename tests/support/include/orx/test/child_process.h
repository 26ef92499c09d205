// Programs that tests and benchmarks start: kept running and talked to (ChildProcess), or run to
// their end and timed (RunToEnd).
#ifndef ORX_TEST_CHILD_PROCESS_H
#define ORX_TEST_CHILD_PROCESS_H

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace orx::test {

// The test's own environment with `changes` applied: a name with a value is set, a name with an
// empty value is removed.
using EnvChanges = std::map<std::string, std::string>;

// What a program run to its end left behind.
struct RunResult {
    int exitCode = -1;  // -1 when it did not exit normally (killed at the limit, crashed)
    std::string out;
    std::string err;
    std::chrono::microseconds wall{0};  // from start to exit
    std::chrono::microseconds cpu{0};   // the child's user and system time
};

// A running child process. Its standard input is a pipe the test writes lines to; its standard
// output and error are read, one line at a time, into memory by a thread of this object. It ends
// when the test ends (SIGKILL on the test's death); the destructor kills (SIGKILL) and reaps it
// if it still runs. Not thread-safe, except that the output may be read while the child writes.
class ChildProcess {
  public:
    struct Options {
        std::vector<std::string> argv;  // argv[0]: a path, or a program name looked up in PATH
        EnvChanges env;
        std::string netns;  // not empty: run inside this network namespace (`ip netns exec`)
        std::string name;   // for failure messages; argv[0] when empty
    };

    explicit ChildProcess(Options options);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // False when the child could not be started (no pipes, no fork).
    bool Started() const { return pid_ > 0; }
    pid_t Pid() const { return pid_; }

    // Writes one line to the child's standard input; false when it could not.
    bool Send(const std::string& line);
    // Sends `signal` unless the child has been reaped.
    void Signal(int signal) const;

    // Waits for a line, among all seen since the start, that `match` accepts, skipping the first
    // `skip` that it accepts; the line, or nothing when `timeout` passed or the output closed.
    std::optional<std::string> WaitForLine(const std::function<bool(const std::string&)>& match,
                                           std::chrono::milliseconds timeout, size_t skip = 0);
    // The same for a line that contains `part`.
    std::optional<std::string> WaitForText(const std::string& part,
                                           std::chrono::milliseconds timeout, size_t skip = 0);
    std::vector<std::string> Lines() const;
    // Every line so far under a heading with the name, for failure messages.
    std::string Output() const;

    // Waits for the end: the exit status (128 + signal when killed), or nothing on timeout.
    std::optional<int> WaitForExit(std::chrono::milliseconds timeout);

  private:
    friend RunResult RunToEnd(const std::vector<std::string>&, const EnvChanges&,
                              std::chrono::milliseconds);
    void ReadOutput(int out, int err);
    // Lets the reader take the rest of the output, then ends it.
    void FinishOutput();

    Options options_;
    pid_t pid_{-1};
    int stdinFd_{-1};
    std::optional<int> exitStatus_;
    bool exitedNormally_{false};
    std::chrono::microseconds cpu_{0};
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> lines_;  // guarded by mutex_
    std::string outText_;             // guarded by mutex_
    std::string errText_;             // guarded by mutex_
    bool outputClosed_{false};        // guarded by mutex_
    std::atomic<bool> stopReading_{false};
    std::thread reader_;
};

// Runs `argv` with the environment changed by `env`, standard input closed. Kills the child when
// it runs past `limit`.
RunResult RunToEnd(const std::vector<std::string>& argv, const EnvChanges& env,
                   std::chrono::milliseconds limit);

}  // namespace orx::test

#endif  // ORX_TEST_CHILD_PROCESS_H
