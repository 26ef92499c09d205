#include "demo_support.h"

#include <signal.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <iostream>
#include <mutex>

namespace demo {
namespace {

bool IsFile(const std::string& path) {
    return !path.empty() && ::access(path.c_str(), R_OK) == 0;
}

std::string ExecutableDir(const std::string& argv0) {
    char buffer[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof(buffer) - 1);
    std::string path = length > 0 ? std::string(buffer, static_cast<size_t>(length)) : argv0;
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

sigset_t DemoSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGUSR1);
    return set;
}

}  // namespace

std::string ExampleConfig(const std::string& argv0, const std::string& role) {
    const std::string beside = ExecutableDir(argv0) + "/../../examples/" + role + "/orx.json";
    if (IsFile(beside)) {
        return beside;
    }
    const std::string source = std::string(ORX_DEMO_SOURCE_DIR) + "/" + role + "/orx.json";
    return IsFile(source) ? source : "";
}

void BlockDemoSignals() {
    const sigset_t set = DemoSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

int WaitForSignal(std::chrono::milliseconds timeout) {
    const sigset_t set = DemoSignals();
    const auto ms = timeout.count() < 0 ? 0 : timeout.count();
    timespec wait{static_cast<time_t>(ms / 1000), static_cast<long>(ms % 1000) * 1000000L};
    while (true) {
        const int signal = sigtimedwait(&set, nullptr, &wait);
        if (signal > 0) {
            return signal;
        }
        if (errno != EINTR) {
            return 0;  // EAGAIN: the time passed
        }
    }
}

bool IsStopSignal(int signal) {
    return signal == SIGINT || signal == SIGTERM;
}

void Say(const std::string& line) {
    static std::mutex mutex;
    std::lock_guard<std::mutex> lock(mutex);
    std::cout << line << std::endl;
}

}  // namespace demo
