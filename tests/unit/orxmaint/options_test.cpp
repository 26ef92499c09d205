#include "cli/options.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace orx::orxmaint {
namespace {

struct Parsed {
    std::optional<int> exitCode;
    Options options;
    std::string out;
    std::string err;
};

Parsed Parse(std::vector<const char*> args) {
    args.insert(args.begin(), "orxmaint");
    Parsed parsed;
    std::ostringstream out;
    std::ostringstream err;
    parsed.exitCode =
        ParseCommandLine(static_cast<int>(args.size()), args.data(), parsed.options, out, err);
    parsed.out = out.str();
    parsed.err = err.str();
    return parsed;
}

TEST(OptionsTest, SelectsEachCommand) {
    const std::pair<std::vector<const char*>, Command> cases[] = {
        {{"nodes"}, Command::kNodes},
        {{"events"}, Command::kEvents},
        {{"methods"}, Command::kMethods},
        {{"fields"}, Command::kFields},
        {{"e2e"}, Command::kE2E},
        {{"types"}, Command::kTypes},
        {{"latency", "status"}, Command::kLatencyStatus},
        {{"latency", "enable", "RadarObjects"}, Command::kLatencyEnable},
        {{"latency", "disable", "RadarObjects"}, Command::kLatencyDisable},
        {{"latency", "results"}, Command::kLatencyResults},
        {{"timeouts"}, Command::kTimeouts},
        {{"status"}, Command::kStatus},
    };
    for (const auto& [args, command] : cases) {
        const Parsed parsed = Parse(args);
        EXPECT_FALSE(parsed.exitCode) << args.front() << ": " << parsed.err;
        EXPECT_EQ(parsed.options.command, command) << args.front();
    }
}

TEST(OptionsTest, TakesGlobalOptionsBeforeOrAfterTheCommandAndFiltersOnTheCommand) {
    const Parsed before =
        Parse({"--json", "--timeout-ms", "300", "--instance-id", "7", "--domain", "42", "events",
               "--app", "radar", "--service", "0x1234", "--side", "sub", "--online"});
    ASSERT_FALSE(before.exitCode) << before.err;
    EXPECT_TRUE(before.options.json);
    EXPECT_EQ(before.options.timeoutMs, 300U);
    EXPECT_EQ(before.options.instanceId, "7");
    EXPECT_EQ(before.options.domain, 42U);
    EXPECT_EQ(before.options.app, "radar");
    EXPECT_EQ(before.options.service, "0x1234");
    EXPECT_EQ(before.options.side, "sub");
    EXPECT_TRUE(before.options.onlineOnly);

    const Parsed after =
        Parse({"latency", "results", "--watch", "--json", "--full", "--timeout-ms", "50", "-v"});
    ASSERT_FALSE(after.exitCode) << after.err;
    EXPECT_TRUE(after.options.watch);
    EXPECT_TRUE(after.options.json);
    EXPECT_TRUE(after.options.full);
    EXPECT_TRUE(after.options.verbose);
    EXPECT_EQ(after.options.timeoutMs, 50U);

    const Parsed defaults = Parse({"nodes"});
    EXPECT_EQ(defaults.options.timeoutMs, kDefaultTimeoutMs);
    EXPECT_FALSE(defaults.options.domain);
    EXPECT_EQ(defaults.options.instanceId, "");

    const Parsed named = Parse({"latency", "enable", "/demo/RadarService/Objects", "--app", "a"});
    EXPECT_EQ(named.options.name, "/demo/RadarService/Objects");
    EXPECT_EQ(named.options.app, "a");
    EXPECT_EQ(Parse({"types", "demo::ObjectList"}).options.name, "demo::ObjectList");
}

TEST(OptionsTest, UsageErrorsEndWithCodeTwoAndSayWhatIsWrong) {
    const std::vector<std::vector<const char*>> bad = {
        {},                                  // no command
        {"frobnicate"},                      // unknown command
        {"latency"},                         // latency without what
        {"latency", "enable"},               // missing EVENT
        {"events", "--service", "0x10000"},  // service id out of range
        {"events", "--service", "12ab"},     // neither number nor path
        {"events", "--service", "0x"},       // no digits
        {"events", "--service", "99999999999999999999"},
        {"events", "--side", "both"},         // side not pub or sub
        {"nodes", "--timeout-ms", "0"},       // no time at all
        {"nodes", "--timeout-ms", "soon"},    // not a number
        {"nodes", "--domain", "233"},         // beyond Cyclone's port mapping
        {"nodes", "--instance-id", "65536"},  // beyond 16 bits
        {"nodes", "--instance-id", "one"},    // not a number
        {"nodes", "--full"},                  // --full without --json
        {"status", "--app", "radar"},         // status takes no filter
        {"nodes", "extra"},                   // stray argument
    };
    for (const auto& args : bad) {
        const Parsed parsed = Parse(args);
        const std::string what = args.empty() ? "(none)" : args.back();
        ASSERT_TRUE(parsed.exitCode) << what;
        EXPECT_EQ(*parsed.exitCode, 2) << what;
        EXPECT_NE(parsed.err, "") << what;
    }
    EXPECT_NE(Parse({"events", "--service", "0x10000"}).err.find("0x10000"), std::string::npos);
}

TEST(OptionsTest, HelpIsPrintedToStandardOutputAndEndsWithCodeZero) {
    const Parsed top = Parse({"--help"});
    ASSERT_TRUE(top.exitCode);
    EXPECT_EQ(*top.exitCode, 0);
    EXPECT_NE(top.out.find("latency"), std::string::npos);
    EXPECT_NE(top.out.find("--timeout-ms"), std::string::npos);

    const Parsed sub = Parse({"latency", "enable", "--help"});
    ASSERT_TRUE(sub.exitCode);
    EXPECT_EQ(*sub.exitCode, 0);
    EXPECT_NE(sub.out.find("EVENT"), std::string::npos);
}

}  // namespace
}  // namespace orx::orxmaint
