#include "child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

extern char** environ;

namespace orx::maintaind::daemon::itest {

ChildProcess::ChildProcess(std::vector<std::string> argv, std::map<std::string, std::string> env,
                           std::string logFile)
    : logFile_(std::move(logFile)) {
    // Everything the child needs is prepared before fork: after it only async-signal-safe calls.
    std::map<std::string, std::string> all;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text(*entry);
        const auto equals = text.find('=');
        if (equals != std::string::npos) {
            all[text.substr(0, equals)] = text.substr(equals + 1);
        }
    }
    for (const auto& [key, value] : env) {
        all[key] = value;
    }
    std::vector<std::string> envText;
    for (const auto& [key, value] : all) {
        envText.push_back(key + "=" + value);
    }
    std::vector<char*> envp;
    for (std::string& text : envText) {
        envp.push_back(text.data());
    }
    envp.push_back(nullptr);
    std::vector<char*> args;
    for (std::string& arg : argv) {
        args.push_back(arg.data());
    }
    args.push_back(nullptr);
    const int out = ::open(logFile_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);

    pid_ = ::fork();
    if (pid_ == 0) {
        ::setpgid(0, 0);
        if (out >= 0) {
            ::dup2(out, STDOUT_FILENO);
            ::dup2(out, STDERR_FILENO);
        }
        ::execve(args[0], args.data(), envp.data());
        ::_exit(127);
    }
    if (out >= 0) {
        ::close(out);
    }
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0 && !status_) {
        ::kill(pid_, SIGKILL);
        WaitForExit(std::chrono::seconds(10));
    }
}

bool ChildProcess::Running() {
    return pid_ > 0 && !WaitForExit(std::chrono::milliseconds(0)).has_value();
}

void ChildProcess::Signal(int signal) const {
    if (pid_ > 0 && !status_) {
        ::kill(pid_, signal);
    }
}

std::optional<int> ChildProcess::WaitForExit(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!status_ && pid_ > 0) {
        int status = 0;
        const pid_t done = ::waitpid(pid_, &status, WNOHANG);
        if (done == pid_) {
            status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
            break;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return status_;
}

std::string ChildProcess::Output() const {
    std::ifstream file(logFile_);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool ChildProcess::WaitForOutput(const std::string& text, std::chrono::milliseconds timeout) const {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (Output().find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

}  // namespace orx::maintaind::daemon::itest
