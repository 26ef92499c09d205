#include "orx/test/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

extern char** environ;

namespace orx::test {
namespace {

// "NAME=value" entries of this process's environment with `changes` applied.
std::vector<std::string> EnvironmentWith(const EnvChanges& changes) {
    std::vector<std::string> entries;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (changes.count(text.substr(0, text.find('='))) == 0) {
            entries.push_back(text);
        }
    }
    for (const auto& [name, value] : changes) {
        if (!value.empty()) {
            entries.push_back(name + "=" + value);
        }
    }
    return entries;
}

// A null-terminated char* array over `texts`, as exec functions take it.
std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

ChildProcess::ChildProcess(Options options) : options_(std::move(options)) {
    if (options_.name.empty() && !options_.argv.empty()) {
        options_.name = options_.argv.front();
    }
    std::vector<std::string> argv = options_.argv;
    if (!options_.netns.empty()) {
        argv.insert(argv.begin(), {"ip", "netns", "exec", options_.netns});
    }
    int pipes[3][2];  // standard input, output, error
    int made = 0;
    while (made < 3 && pipe2(pipes[made], O_CLOEXEC) == 0) {
        ++made;
    }
    if (argv.empty() || made < 3) {
        for (int i = 0; i < made; ++i) {
            close(pipes[i][0]);
            close(pipes[i][1]);
        }
        return;
    }
    // Everything the child needs is prepared before fork: only async-signal-safe calls after it.
    std::vector<std::string> env = EnvironmentWith(options_.env);
    const std::vector<char*> args = Pointers(argv);
    const std::vector<char*> envp = Pointers(env);
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(pipes[0][0], STDIN_FILENO);
        dup2(pipes[1][1], STDOUT_FILENO);
        dup2(pipes[2][1], STDERR_FILENO);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        execvpe(args[0], args.data(), envp.data());
        _exit(127);
    }
    close(pipes[0][0]);
    close(pipes[1][1]);
    close(pipes[2][1]);
    if (pid_ < 0) {
        close(pipes[0][1]);
        close(pipes[1][0]);
        close(pipes[2][0]);
        return;
    }
    stdinFd_ = pipes[0][1];
    reader_ = std::thread([this, out = pipes[1][0], err = pipes[2][0]] { ReadOutput(out, err); });
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0 && !exitStatus_) {
        kill(pid_, SIGKILL);
        WaitForExit(std::chrono::seconds(10));
    }
    if (stdinFd_ >= 0) {
        close(stdinFd_);
    }
    FinishOutput();
}

void ChildProcess::FinishOutput() {
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(2), [this] { return outputClosed_; });
    }
    stopReading_ = true;
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

void ChildProcess::ReadOutput(int out, int err) {
    std::string pending[2];
    pollfd fds[2] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
    // Until both close; after the child's end only a while (something it started may hold them).
    while ((fds[0].fd >= 0 || fds[1].fd >= 0) && !stopReading_) {
        if (poll(fds, 2, 100) < 0 && errno != EINTR) {
            break;
        }
        for (int i = 0; i < 2; ++i) {
            char buffer[4096];
            if (fds[i].fd < 0 || fds[i].revents == 0) {
                continue;
            }
            const ssize_t count = read(fds[i].fd, buffer, sizeof(buffer));
            if (count < 0 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                close(fds[i].fd);
                fds[i].fd = -1;  // poll skips negative descriptors
                continue;
            }
            std::lock_guard<std::mutex> lock(mutex_);
            (i == 0 ? outText_ : errText_).append(buffer, static_cast<size_t>(count));
            pending[i].append(buffer, static_cast<size_t>(count));
            for (size_t newline; (newline = pending[i].find('\n')) != std::string::npos;) {
                lines_.push_back(pending[i].substr(0, newline));
                pending[i].erase(0, newline + 1);
            }
        }
        changed_.notify_all();
    }
    for (const pollfd& fd : fds) {
        if (fd.fd >= 0) {
            close(fd.fd);
        }
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const std::string& rest : pending) {
            if (!rest.empty()) {
                lines_.push_back(rest);
            }
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
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!exitStatus_ && pid_ > 0) {
        int status = 0;
        rusage usage{};
        const pid_t done = wait4(pid_, &status, WNOHANG, &usage);
        if (done == pid_) {
            exitedNormally_ = WIFEXITED(status);
            exitStatus_ = exitedNormally_ ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            const auto micros = [](const timeval& time) {
                return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
            };
            cpu_ = micros(usage.ru_utime) + micros(usage.ru_stime);
        } else if (done < 0 || std::chrono::steady_clock::now() >= deadline) {
            break;
        } else {
            // wait4 has no timeout; the reader thread sees the output close when the child ends.
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait_for(lock, std::chrono::milliseconds(5), [this] { return outputClosed_; });
        }
    }
    return exitStatus_;
}

RunResult RunToEnd(const std::vector<std::string>& argv, const EnvChanges& env,
                   std::chrono::milliseconds limit) {
    const auto start = std::chrono::steady_clock::now();
    ChildProcess child({argv, env, "", ""});
    close(child.stdinFd_);
    child.stdinFd_ = -1;
    RunResult result;
    if (!child.WaitForExit(limit)) {
        child.Signal(SIGKILL);
        child.WaitForExit(std::chrono::seconds(10));
    }
    result.wall = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - start);
    child.FinishOutput();
    result.exitCode = child.exitedNormally_ ? *child.exitStatus_ : -1;
    result.out = child.outText_;
    result.err = child.errText_;
    result.cpu = child.cpu_;
    return result;
}

}  // namespace orx::test
