#include "background_process.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace orx::orxmaint::test {

BackgroundProcess::BackgroundProcess(const std::vector<std::string>& args,
                                     const std::vector<std::pair<std::string, std::string>>& env,
                                     const std::string& logPath) {
    pid_ = ::fork();
    if (pid_ != 0) {
        return;
    }
    const int log = ::open(logPath.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (log >= 0) {
        ::dup2(log, STDOUT_FILENO);
        ::dup2(log, STDERR_FILENO);
    }
    for (const auto& [name, value] : env) {
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<char*> argv;
    for (const std::string& arg : args) {
        argv.push_back(const_cast<char*>(arg.c_str()));
    }
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(127);
}

BackgroundProcess::~BackgroundProcess() {
    Stop();
}

void BackgroundProcess::Stop() {
    if (pid_ <= 0) {
        return;
    }
    ::kill(pid_, SIGTERM);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    int status = 0;
    while (::waitpid(pid_, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    pid_ = -1;
}

}  // namespace orx::orxmaint::test
