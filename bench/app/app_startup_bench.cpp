// What the DFX plug-in adds to an application's start-up: time and memory of starting the
// runtime and offering the demo radar's service, with the plug-in and without it.
//
//   app_startup_bench [runs]
//
// Every run is a fresh process (the plug-in loads once per process): the benchmark starts itself
// with "--child with|without", alternating, and reports the medians. A child measures from just
// before the Runtime is made until its service is offered: wall time, CPU time of the whole
// process, and the growth of its resident memory. Everything stays on loopback, on DDS domain 231
// unless ORX_DDS_DOMAIN says otherwise; no maintenance daemon runs, so the plug-in's reports wait
// in its caches, as in an application that starts before the daemon.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "vorx/vcc/app/runtime.h"

namespace {

struct Sample {
    double runtimeMs{0};  // wall time of the Runtime's constructor (with the plug-in's start)
    double wallMs{0};     // wall time until the service is offered
    double cpuMs{0};
    long rssKib{0};
};

long ResidentKib() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::strtol(line.c_str() + 6, nullptr, 10);
        }
    }
    return 0;
}

double CpuMs() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000.0 +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000.0;
}

double MsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

int RunChild(bool withPlugin) {
    vorx::vcc::app::Runtime::Options options;
    options.configPath = ORX_BENCH_RADAR_CONFIG;
    options.pluginPath = ORX_BENCH_PLUGIN_PATH;
    options.loadPlugin = withPlugin;
    const long rssBefore = ResidentKib();
    const double cpuBefore = CpuMs();
    const auto start = std::chrono::steady_clock::now();
    vorx::vcc::app::Runtime runtime(options);
    const double runtimeMs = MsSince(start);
    auto radar = runtime.Provide("/demo/RadarService");
    if (!radar || !radar->Offer() || runtime.MaintenanceEnabled() != withPlugin) {
        std::cerr << "the radar could not be offered as asked\n";
        return 1;
    }
    const double wallMs = MsSince(start);
    std::cout << "RESULT " << runtimeMs << " " << wallMs << " " << (CpuMs() - cpuBefore) << " "
              << (ResidentKib() - rssBefore) << std::endl;
    std::_Exit(0);  // skip the exit-time reports: only the start-up is measured
}

bool RunOnce(const char* self, bool withPlugin, Sample& sample) {
    int output[2];
    if (pipe(output) != 0) {
        return false;
    }
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(output[1], STDOUT_FILENO);
        close(output[0]);
        close(output[1]);
        execl(self, self, "--child", withPlugin ? "with" : "without", nullptr);
        _exit(127);
    }
    close(output[1]);
    std::string text;
    char buffer[512];
    ssize_t count = 0;
    while ((count = read(output[0], buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<size_t>(count));
    }
    close(output[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    const size_t at = text.find("RESULT ");
    if (at == std::string::npos) {
        return false;
    }
    std::istringstream words(text.substr(at + 7));
    words >> sample.runtimeMs >> sample.wallMs >> sample.cpuMs >> sample.rssKib;
    return static_cast<bool>(words);
}

template <class T>
T Median(std::vector<T> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double Least(const std::vector<double>& values) {
    return *std::min_element(values.begin(), values.end());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string(argv[1]) == "--child") {
        return RunChild(std::string(argv[2]) == "with");
    }
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 41;
    ::setenv("ORX_DDS_DOMAIN", "231", 0);
    ::setenv("ORX_LOG_LEVEL", "error", 0);
    std::vector<double> runtime[2];
    std::vector<double> wall[2];
    std::vector<double> cpu[2];
    std::vector<long> rss[2];
    for (int run = 0; run < runs; ++run) {
        for (int with = 0; with < 2; ++with) {
            Sample sample;
            if (!RunOnce(argv[0], with == 1, sample)) {
                std::cerr << "run " << run << " failed\n";
                return 1;
            }
            runtime[with].push_back(sample.runtimeMs);
            wall[with].push_back(sample.wallMs);
            cpu[with].push_back(sample.cpuMs);
            rss[with].push_back(sample.rssKib);
        }
    }
    std::printf(
        "start-up until the service is offered, median of %d runs each "
        "(least wall time in brackets)\n",
        runs);
    std::printf("%-16s %18s %10s %10s\n", "", "wall ms", "CPU ms", "RSS KiB");
    const char* names[2] = {"without plug-in", "with plug-in"};
    for (int with = 0; with < 2; ++with) {
        std::printf("%-16s %9.2f (%6.2f) %10.2f %10ld\n", names[with], Median(wall[with]),
                    Least(wall[with]), Median(cpu[with]), Median(rss[with]));
    }
    std::printf("%-16s %9.2f (%6.2f) %10.2f %10ld\n", "plug-in adds",
                Median(wall[1]) - Median(wall[0]), Least(wall[1]) - Least(wall[0]),
                Median(cpu[1]) - Median(cpu[0]), Median(rss[1]) - Median(rss[0]));
    std::printf(
        "Runtime constructor alone (median wall ms): %.2f without, %.2f with the plug-in "
        "(which starts DDS there for its service search)\n",
        Median(runtime[0]), Median(runtime[1]));
    return 0;
}
