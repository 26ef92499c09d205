#include "vorx/vcc/process_identity.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace vorx::vcc {

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

std::string ReadHostName() {
    char name[256] = {};
    if (::gethostname(name, sizeof(name) - 1) != 0) {
        return std::string();
    }
    return std::string(name);
}

// Field 22 (starttime) of a /proc/<pid>/stat line; std::nullopt for a zombie (state Z or X).
// The command name (field 2) may hold spaces and parentheses, so counting starts after its
// last ')'.
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
    for (int i = 0; i < 19; ++i) {
        if (!(fields >> field)) {
            return std::nullopt;
        }
    }
    char* end = nullptr;
    errno = 0;
    const unsigned long long ticks = std::strtoull(field.c_str(), &end, 10);
    if (errno != 0 || end == field.c_str() || *end != '\0') {
        return std::nullopt;
    }
    return static_cast<uint64_t>(ticks);
}

std::string ReadHostId() {
    std::string boot;
    if (!ReadFile("/proc/sys/kernel/random/boot_id", boot) || boot.empty()) {
        boot = ReadHostName();
    }
    while (!boot.empty() && (boot.back() == '\n' || boot.back() == ' ')) {
        boot.pop_back();
    }
    struct stat ns {};
    const std::string pidNamespace =
        ::stat("/proc/self/ns/pid", &ns) == 0 ? std::to_string(ns.st_ino) : std::string("0");
    return boot + "/" + pidNamespace;
}

}  // namespace

ProcessIdentity CurrentProcessIdentity() {
    ProcessIdentity self;
    self.hostName = ReadHostName();
    self.hostId = LocalHostId();
    self.pid = static_cast<int32_t>(::getpid());
    self.startTicks = ProcessStartTicks(self.pid).value_or(0);
    return self;
}

const std::string& LocalHostId() {
    // Never destroyed: the plug-in sends its last reports while the process's statics are
    // being destroyed, and the driver compares host ids then.
    static const std::string* const id = new std::string(ReadHostId());
    return *id;
}

std::optional<uint64_t> ProcessStartTicks(int32_t pid) {
    if (pid <= 0) {
        return std::nullopt;
    }
    std::string stat;
    if (!ReadFile("/proc/" + std::to_string(pid) + "/stat", stat)) {
        return std::nullopt;
    }
    return ParseStartTicks(stat);
}

}  // namespace vorx::vcc
