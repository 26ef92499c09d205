#include "child_run.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace orx::orxmaint::test {

namespace {

using Clock = std::chrono::steady_clock;

void ReadAvailable(int fd, std::string& into, bool& open) {
    char buffer[4096];
    const ssize_t got = ::read(fd, buffer, sizeof(buffer));
    if (got > 0) {
        into.append(buffer, static_cast<size_t>(got));
    } else if (got == 0 || (errno != EINTR && errno != EAGAIN)) {
        open = false;
    }
}

}  // namespace

ChildResult RunChild(const std::vector<std::string>& args,
                     const std::vector<std::pair<std::string, std::string>>& env,
                     std::chrono::milliseconds limit) {
    ChildResult result;
    int outPipe[2];
    int errPipe[2];
    if (::pipe2(outPipe, O_CLOEXEC) != 0 || ::pipe2(errPipe, O_CLOEXEC) != 0) {
        return result;
    }
    const Clock::time_point start = Clock::now();
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(outPipe[1], STDOUT_FILENO);
        ::dup2(errPipe[1], STDERR_FILENO);
        for (const auto& [name, value] : env) {
            if (value.empty()) {
                ::unsetenv(name.c_str());
            } else {
                ::setenv(name.c_str(), value.c_str(), 1);
            }
        }
        std::vector<char*> argv;
        for (const std::string& arg : args) {
            argv.push_back(const_cast<char*>(arg.c_str()));
        }
        argv.push_back(nullptr);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    bool outOpen = true;
    bool errOpen = true;
    const Clock::time_point deadline = start + limit;
    while ((outOpen || errOpen) && Clock::now() < deadline) {
        struct pollfd fds[2] = {{outOpen ? outPipe[0] : -1, POLLIN, 0},
                                {errOpen ? errPipe[0] : -1, POLLIN, 0}};
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (::poll(fds, 2, static_cast<int>(left.count()) + 1) <= 0) {
            continue;
        }
        if (fds[0].revents != 0) {
            ReadAvailable(outPipe[0], result.out, outOpen);
        }
        if (fds[1].revents != 0) {
            ReadAvailable(errPipe[0], result.err, errOpen);
        }
    }
    if (outOpen || errOpen) {
        ::kill(pid, SIGKILL);
    }
    int status = 0;
    struct rusage usage {};
    ::wait4(pid, &status, 0, &usage);
    result.took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    const auto micros = [](const timeval& t) {
        return std::chrono::seconds(t.tv_sec) + std::chrono::microseconds(t.tv_usec);
    };
    result.cpu = micros(usage.ru_utime) + micros(usage.ru_stime);
    ::close(outPipe[0]);
    ::close(errPipe[0]);
    if (WIFEXITED(status)) {
        result.exitCode = WEXITSTATUS(status);
    }
    return result;
}

}  // namespace orx::orxmaint::test
