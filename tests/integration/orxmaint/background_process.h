// A program the test runs beside itself (maintaind, an example application) and stops at the end.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace orx::orxmaint::test {

class BackgroundProcess {
  public:
    // Starts `args` (args[0] is the program path) with the current environment plus `env`, its
    // output appended to `logPath`.
    BackgroundProcess(const std::vector<std::string>& args,
                      const std::vector<std::pair<std::string, std::string>>& env,
                      const std::string& logPath);
    // Stop().
    ~BackgroundProcess();
    BackgroundProcess(const BackgroundProcess&) = delete;
    BackgroundProcess& operator=(const BackgroundProcess&) = delete;

    bool Started() const { return pid_ > 0; }
    // SIGTERM, then SIGKILL if it has not ended within 5 s. Idempotent.
    void Stop();

  private:
    pid_t pid_ = -1;
};

}  // namespace orx::orxmaint::test
