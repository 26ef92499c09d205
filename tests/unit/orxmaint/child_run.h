// Runs a program to its end, capturing what it prints, for tests and benchmarks of the orxmaint
// binary.
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace orx::orxmaint::test {

struct ChildResult {
    int exitCode = -1;  // -1 when it did not exit normally (killed at the deadline, crashed)
    std::string out;
    std::string err;
    std::chrono::microseconds took{0};  // wall time from start to exit
    std::chrono::microseconds cpu{0};   // the child's user and system time
};

// Runs `args` (args[0] is the program path) with the current environment plus `env` (name,
// value; an empty value removes the variable). Kills the child if it runs past `limit`.
ChildResult RunChild(const std::vector<std::string>& args,
                     const std::vector<std::pair<std::string, std::string>>& env,
                     std::chrono::milliseconds limit);

}  // namespace orx::orxmaint::test
