#ifndef TESTS_UNIT_BASE_TEST_CONFIG_H
#define TESTS_UNIT_BASE_TEST_CONFIG_H

#include <string>

namespace vorx::vcc::test {

inline constexpr const char* kTestAppName = "base-test-app";

// Writes `json` to a file in a folder of the test process, removed at its exit; returns its path.
std::string WriteConfigFile(const std::string& name, const std::string& json);

// Makes ORX_CONFIG name a file with `json`, for a process whose configuration has not been read
// yet (a death-test child).
void UseConfig(const std::string& name, const std::string& json);

}  // namespace vorx::vcc::test

#endif  // TESTS_UNIT_BASE_TEST_CONFIG_H
