#include "orx/test/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "environment.h"

namespace orx::test {

ChildProcess::ChildProcess(Options options) : options_(std::move(options)) {
    if (options_.name.empty() && !options_.argv.empty()) {
        options_.name = options_.argv.front();
    }
    std::vector<std::string> argv = options_.argv;
    if (!options_.netns.empty()) {
        argv.insert(argv.begin(), {"ip", "netns", "exec", options_.netns});
    }
    int input[2];
    int output[2];
    if (argv.empty() || pipe2(input, O_CLOEXEC) != 0) {
        return;
    }
    if (pipe2(output, O_CLOEXEC) != 0) {
        close(input[0]);
        close(input[1]);
        return;
    }
    // Everything the child needs is prepared before fork: only async-signal-safe calls after it.
    CStrings args(argv);
    CStrings envp(EnvironmentWith(options_.env));
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // ends with the test, however that ends
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        dup2(output[1], STDERR_FILENO);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        execvpe(args.Get()[0], args.Get(), envp.Get());
        _exit(127);
    }
    close(input[0]);
    close(output[1]);
    if (pid_ < 0) {
        close(input[1]);
        close(output[0]);
        return;
    }
    stdinFd_ = input[1];
    reader_ = std::thread([this, fd = output[0]] { ReadOutput(fd); });
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0 && !exitStatus_) {
        kill(pid_, SIGKILL);
        WaitForExit(std::chrono::seconds(10));
    }
    if (stdinFd_ >= 0) {
        close(stdinFd_);
    }
    if (reader_.joinable()) {
        reader_.join();
    }
}

bool ChildProcess::Send(const std::string& line) {
    const std::string text = line + "\n";
    return stdinFd_ >= 0 &&
           write(stdinFd_, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

void ChildProcess::Signal(int signal) const {
    if (pid_ > 0 && !exitStatus_) {
        kill(pid_, signal);
    }
}

void ChildProcess::ReadOutput(int fd) {
    std::string pending;
    char buffer[4096];
    while (true) {
        const ssize_t count = read(fd, buffer, sizeof(buffer));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        pending.append(buffer, static_cast<size_t>(count));
        size_t newline = 0;
        while ((newline = pending.find('\n')) != std::string::npos) {
            {
                std::lock_guard<std::mutex> lock(mutex_);
                lines_.push_back(pending.substr(0, newline));
            }
            pending.erase(0, newline + 1);
            changed_.notify_all();
        }
    }
    close(fd);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!pending.empty()) {
            lines_.push_back(pending);
        }
        outputClosed_ = true;
    }
    changed_.notify_all();
}

std::optional<std::string> ChildProcess::WaitForLine(
    const std::function<bool(const std::string&)>& match, std::chrono::milliseconds timeout,
    size_t skip) {
    std::unique_lock<std::mutex> lock(mutex_);
    std::optional<std::string> found;
    changed_.wait_for(lock, timeout, [&] {
        size_t seen = 0;
        for (const auto& line : lines_) {
            if (match(line) && seen++ == skip) {
                found = line;
                return true;
            }
        }
        return outputClosed_;
    });
    return found;
}

std::optional<std::string> ChildProcess::WaitForText(const std::string& part,
                                                     std::chrono::milliseconds timeout,
                                                     size_t skip) {
    return WaitForLine(
        [&part](const std::string& line) { return line.find(part) != std::string::npos; }, timeout,
        skip);
}

std::vector<std::string> ChildProcess::Lines() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
}

std::string ChildProcess::Output() const {
    std::string text = "--- output of " + options_.name + " ---\n";
    for (const auto& line : Lines()) {
        text += line.size() > 400 ? line.substr(0, 400) + "..." : line;
        text += "\n";
    }
    return text;
}

std::optional<int> ChildProcess::WaitForExit(std::chrono::milliseconds timeout) {
    if (exitStatus_ || pid_ <= 0) {
        return exitStatus_;
    }
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (true) {
        int status = 0;
        const pid_t done = waitpid(pid_, &status, WNOHANG);
        if (done == pid_) {
            exitStatus_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            return exitStatus_;
        }
        if (done < 0 || std::chrono::steady_clock::now() >= deadline) {
            return std::nullopt;
        }
        // waitpid has no timeout; the reader thread sees the output close when the child ends.
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, std::chrono::milliseconds(20), [this] { return outputClosed_; });
    }
}

}  // namespace orx::test
