#include "liveness/process_probe.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace orx::maintaind::daemon {

namespace {

bool ReadFile(const std::string& path, std::string& out) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return false;
    }
    std::ostringstream text;
    text << file.rdbuf();
    out = text.str();
    return true;
}

// Field 22 (starttime) of a /proc/<pid>/stat line; std::nullopt for a zombie (state Z or X): a
// killed process whose parent has not reaped it yet is gone all the same. The command name
// (field 2) may hold spaces and parentheses, so counting starts after its last ')'.
std::optional<uint64_t> ParseStartTicks(const std::string& stat) {
    const auto close = stat.rfind(')');
    if (close == std::string::npos) {
        return std::nullopt;
    }
    std::istringstream fields(stat.substr(close + 1));
    std::string field;
    if (!(fields >> field) || field == "Z" || field == "X") {
        return std::nullopt;
    }
    // After the state come field 4 ... field 22 (starttime): skip 18, read the 19th.
    for (int i = 0; i < 18; ++i) {
        if (!(fields >> field)) {
            return std::nullopt;
        }
    }
    if (!(fields >> field)) {
        return std::nullopt;
    }
    char* end = nullptr;
    errno = 0;
    const unsigned long long ticks = std::strtoull(field.c_str(), &end, 10);
    if (errno != 0 || end == field.c_str() || *end != '\0') {
        return std::nullopt;
    }
    return static_cast<uint64_t>(ticks);
}

}  // namespace

ProcessProbe::~ProcessProbe() = default;

std::optional<uint64_t> ProcProbe::StartTicks(int32_t pid) const {
    if (pid <= 0) {
        return std::nullopt;
    }
    if (::kill(pid, 0) != 0 && errno == ESRCH) {
        return std::nullopt;
    }
    std::string stat;
    if (!ReadFile("/proc/" + std::to_string(pid) + "/stat", stat)) {
        return std::nullopt;  // gone between the two looks
    }
    return ParseStartTicks(stat);
}

std::string ProcProbe::HostName() const {
    char name[256] = {};
    if (::gethostname(name, sizeof(name) - 1) != 0) {
        return "localhost";
    }
    return name;
}

}  // namespace orx::maintaind::daemon
