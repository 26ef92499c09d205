#include "child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

extern char** environ;

namespace orx::test {

ChildProcess::ChildProcess(const std::vector<std::string>& argv,
                           const std::vector<std::string>& env) {
    int in[2];
    int out[2];
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) {
        return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);

    std::vector<char*> args;
    for (const auto& arg : argv) {
        args.push_back(const_cast<char*>(arg.c_str()));
    }
    args.push_back(nullptr);
    // The inherited environment without the names `env` sets, then `env`.
    auto nameOf = [](const std::string& entry) { return entry.substr(0, entry.find('=')); };
    std::vector<std::string> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string inherited(*entry);
        bool replaced = false;
        for (const auto& own : env) {
            replaced = replaced || nameOf(own) == nameOf(inherited);
        }
        if (!replaced) {
            environment.push_back(inherited);
        }
    }
    environment.insert(environment.end(), env.begin(), env.end());
    std::vector<char*> envp;
    for (auto& entry : environment) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);

    pid_t pid = -1;
    const int rc = posix_spawn(&pid, args[0], &actions, nullptr, args.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    if (rc != 0) {
        close(in[1]);
        close(out[0]);
        return;
    }
    pid_ = pid;
    toChild_ = in[1];
    fromChild_ = out[0];
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0) {
        Kill(SIGKILL);
    }
    if (toChild_ >= 0) {
        close(toChild_);
    }
    if (fromChild_ >= 0) {
        close(fromChild_);
    }
}

bool ChildProcess::Send(const std::string& line) {
    const std::string text = line + "\n";
    return write(toChild_, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

std::optional<std::string> ChildProcess::ReadLine(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        const auto newline = buffered_.find('\n');
        if (newline != std::string::npos) {
            std::string line = buffered_.substr(0, newline);
            buffered_.erase(0, newline + 1);
            return line;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || fromChild_ < 0) {
            return std::nullopt;
        }
        pollfd entry{fromChild_, POLLIN, 0};
        const int ready = poll(&entry, 1, static_cast<int>(left.count()));
        if (ready < 0 && errno == EINTR) {
            continue;
        }
        if (ready <= 0) {
            return std::nullopt;
        }
        char chunk[512];
        const ssize_t got = read(fromChild_, chunk, sizeof(chunk));
        if (got <= 0) {
            close(fromChild_);
            fromChild_ = -1;
            continue;
        }
        buffered_.append(chunk, static_cast<size_t>(got));
    }
}

std::optional<std::string> ChildProcess::WaitForLine(const std::string& prefix,
                                                     std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return std::nullopt;
        }
        auto line = ReadLine(left);
        if (!line) {
            return std::nullopt;
        }
        if (line->rfind(prefix, 0) == 0) {
            return line;
        }
    }
}

int ChildProcess::Kill(int signal) {
    int status = 0;
    if (pid_ > 0) {
        kill(pid_, signal);
        waitpid(pid_, &status, 0);
        pid_ = -1;
    }
    return status;
}

std::optional<int> ChildProcess::Wait(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (pid_ > 0) {
        int status = 0;
        const pid_t done = waitpid(pid_, &status, WNOHANG);
        if (done == pid_) {
            pid_ = -1;
            return status;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return std::nullopt;
        }
        // Polling a child's exit: waitpid has no timeout of its own.
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return std::nullopt;
}

}  // namespace orx::test
