#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "environment.h"
#include "orx/test/child_process.h"

namespace orx::test {
namespace {

using Clock = std::chrono::steady_clock;

void ReadAvailable(int fd, std::string& into, bool& open) {
    char buffer[4096];
    const ssize_t got = read(fd, buffer, sizeof(buffer));
    if (got > 0) {
        into.append(buffer, static_cast<size_t>(got));
    } else if (got == 0 || (errno != EINTR && errno != EAGAIN)) {
        open = false;
    }
}

std::chrono::microseconds Micros(const timeval& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
}

}  // namespace

RunResult RunToEnd(const std::vector<std::string>& argv, const EnvChanges& env,
                   std::chrono::milliseconds limit) {
    RunResult result;
    int outPipe[2];
    int errPipe[2];
    if (pipe2(outPipe, O_CLOEXEC) != 0) {
        return result;
    }
    if (pipe2(errPipe, O_CLOEXEC) != 0) {
        close(outPipe[0]);
        close(outPipe[1]);
        return result;
    }
    CStrings args(argv);
    CStrings envp(EnvironmentWith(env));
    const Clock::time_point start = Clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int devNull = open("/dev/null", O_RDONLY);
        dup2(devNull, STDIN_FILENO);
        dup2(outPipe[1], STDOUT_FILENO);
        dup2(errPipe[1], STDERR_FILENO);
        execve(args.Get()[0], args.Get(), envp.Get());
        _exit(127);
    }
    close(outPipe[1]);
    close(errPipe[1]);
    bool outOpen = pid > 0;
    bool errOpen = pid > 0;
    const Clock::time_point deadline = start + limit;
    while ((outOpen || errOpen) && Clock::now() < deadline) {
        pollfd fds[2] = {{outOpen ? outPipe[0] : -1, POLLIN, 0},
                         {errOpen ? errPipe[0] : -1, POLLIN, 0}};
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (poll(fds, 2, static_cast<int>(left.count()) + 1) <= 0) {
            continue;
        }
        if (fds[0].revents != 0) {
            ReadAvailable(outPipe[0], result.out, outOpen);
        }
        if (fds[1].revents != 0) {
            ReadAvailable(errPipe[0], result.err, errOpen);
        }
    }
    close(outPipe[0]);
    close(errPipe[0]);
    if (pid <= 0) {
        return result;
    }
    if (outOpen || errOpen) {
        kill(pid, SIGKILL);
    }
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage);
    result.wall = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);
    result.cpu = Micros(usage.ru_utime) + Micros(usage.ru_stime);
    if (WIFEXITED(status)) {
        result.exitCode = WEXITSTATUS(status);
    }
    return result;
}

}  // namespace orx::test
