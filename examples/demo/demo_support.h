#ifndef ORX_EXAMPLES_DEMO_DEMO_SUPPORT_H
#define ORX_EXAMPLES_DEMO_DEMO_SUPPORT_H

#include <chrono>
#include <string>

// What both demo applications need besides the core: their files and their signals.
namespace demo {

// The example's orx.json for `role` ("radar", "fusion"): examples/<role>/orx.json found from the
// executable (build/bin/orx-demo sits two levels below the source tree), else in the source tree
// the demo was built from. "" when neither exists.
std::string ExampleConfig(const std::string& argv0, const std::string& role);

// SIGINT and SIGTERM end the demo, SIGUSR1 is the radar's pause switch. They are blocked in
// every thread (call before anything starts a thread) and taken with WaitForSignal.
void BlockDemoSignals();
// Waits up to `timeout` for one of them; returns its number, or 0 when the time passed.
int WaitForSignal(std::chrono::milliseconds timeout);
bool IsStopSignal(int signal);

// Prints one line to standard output at once (the demos are read by people and by tests).
void Say(const std::string& line);

}  // namespace demo

#endif  // ORX_EXAMPLES_DEMO_DEMO_SUPPORT_H
