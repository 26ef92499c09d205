#include "app_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace orx::test::plugin {

AppProcess::AppProcess(Options options) : options_(std::move(options)) {
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
    std::vector<char*> args;
    for (auto& arg : argv) {
        args.push_back(arg.data());
    }
    args.push_back(nullptr);
    std::map<std::string, std::string> env;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const size_t equals = text.find('=');
        env[text.substr(0, equals)] = equals == std::string::npos ? "" : text.substr(equals + 1);
    }
    for (const auto& [key, value] : options_.env) {
        env[key] = value;
    }
    std::vector<std::string> envText;
    for (const auto& [key, value] : env) {
        envText.push_back(key + "=" + value);
    }
    std::vector<char*> envp;
    for (auto& entry : envText) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);

    pid_ = fork();
    if (pid_ == 0) {
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        dup2(output[1], STDERR_FILENO);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        execvpe(args[0], args.data(), envp.data());
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

AppProcess::~AppProcess() {
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

void AppProcess::Send(const std::string& line) {
    const std::string text = line + "\n";
    if (stdinFd_ >= 0) {
        const ssize_t written = write(stdinFd_, text.data(), text.size());
        (void)written;
    }
}

void AppProcess::Signal(int signal) const {
    if (pid_ > 0 && !exitStatus_) {
        kill(pid_, signal);
    }
}

void AppProcess::ReadOutput(int fd) {
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

std::optional<std::string> AppProcess::WaitForLine(
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

std::optional<std::string> AppProcess::WaitForText(const std::string& part,
                                                   std::chrono::milliseconds timeout, size_t skip) {
    return WaitForLine(
        [&part](const std::string& line) { return line.find(part) != std::string::npos; }, timeout,
        skip);
}

std::vector<std::string> AppProcess::Lines() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
}

std::string AppProcess::Output() const {
    std::string text = "--- output of " + options_.name + " ---\n";
    for (const auto& line : Lines()) {
        text += line.size() > 400 ? line.substr(0, 400) + "..." : line;
        text += "\n";
    }
    return text;
}

std::optional<int> AppProcess::WaitForExit(std::chrono::milliseconds timeout) {
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

}  // namespace orx::test::plugin
