// Two "hosts" for multi-host tests: network namespaces that the test creates and deletes itself,
// joined by a veth pair whose addresses exist only inside them. Both veth ends are made inside
// the namespaces, so the machine's own interfaces are never touched.
#ifndef TESTS_INTEGRATION_TWO_HOSTS_H
#define TESTS_INTEGRATION_TWO_HOSTS_H

#include <unistd.h>

#include <string>

#include "orx/test/child_process.h"

namespace orx::test {

// Runs a shell command; returns its exit code and puts its output in *output.
inline int Shell(const std::string& command, std::string* output = nullptr) {
    const RunResult run = RunToEnd({"/bin/sh", "-c", command}, {}, std::chrono::seconds(30));
    if (output != nullptr) {
        *output = run.out + run.err;
    }
    return run.exitCode;
}

class TwoHosts {
  public:
    TwoHosts() = default;
    TwoHosts(const TwoHosts&) = delete;
    TwoHosts& operator=(const TwoHosts&) = delete;
    ~TwoHosts() {
        if (createdA_) {
            Shell("ip netns del " + a_);
        }
        if (createdB_) {
            Shell("ip netns del " + b_);
        }
    }

    // Makes namespaces "<prefix>_a_<pid>" and "<prefix>_b_<pid>" with `addressA` and `addressB`
    // (/24) on the two ends of a veth pair. Returns an empty text on success, else why it could
    // not (no root, no `ip`, no namespaces here): the caller skips its test with that reason.
    std::string Create(const std::string& prefix, const std::string& addressA,
                       const std::string& addressB) {
        const std::string suffix = std::to_string(getpid());
        a_ = prefix + "_a_" + suffix;
        b_ = prefix + "_b_" + suffix;
        std::string output;
        if (geteuid() != 0) {
            return "needs root to create network namespaces";
        }
        if (Shell("ip -V", &output) != 0) {
            return "the ip command is not available: " + output;
        }
        if (Shell("ip netns add " + a_, &output) != 0) {
            return "cannot create a network namespace: " + output;
        }
        createdA_ = true;
        if (Shell("ip netns add " + b_, &output) != 0) {
            return "cannot create a second network namespace: " + output;
        }
        createdB_ = true;
        const std::string veth = prefix.substr(0, 4) + std::to_string(getpid() % 100000);
        linkA_ = veth + "a";
        const std::string steps[] = {
            "ip -n " + a_ + " link add " + veth + "a type veth peer name " + veth + "b netns " + b_,
            "ip -n " + a_ + " addr add " + addressA + "/24 dev " + veth + "a",
            "ip -n " + b_ + " addr add " + addressB + "/24 dev " + veth + "b",
            "ip -n " + a_ + " link set lo up",
            "ip -n " + b_ + " link set lo up",
            "ip -n " + a_ + " link set " + veth + "a up",
            "ip -n " + b_ + " link set " + veth + "b up",
        };
        for (const auto& step : steps) {
            if (Shell(step, &output) != 0) {
                return "cannot set up the namespaces (" + step + "): " + output;
            }
        }
        return {};
    }

    const std::string& A() const { return a_; }
    const std::string& B() const { return b_; }
    // Cuts (false) or restores (true) the link between the hosts, at host A's end.
    bool SetLinkUp(bool up) const {
        return Shell("ip -n " + a_ + " link set " + linkA_ + (up ? " up" : " down")) == 0;
    }

  private:
    std::string a_;
    std::string b_;
    std::string linkA_;
    bool createdA_{false};
    bool createdB_{false};
};

}  // namespace orx::test

#endif  // TESTS_INTEGRATION_TWO_HOSTS_H
