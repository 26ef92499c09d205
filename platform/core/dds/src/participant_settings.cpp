#include "vorx/driver/dds/participant_settings.h"

#include <algorithm>

#include "orx/sync/mutex.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

namespace config = ara::kelda::common::orxConfigParser;
using config::ConfigReader;
using config::SettingOrigin;
using config::SettingsReport;

constexpr const char* kDomainVariable = "ORX_DDS_DOMAIN";
constexpr const char* kCycloneVariable = "CYCLONEDDS_URI";

// Names the plug-in uses for "no network configured".
bool IsPlaceholderNetwork(const std::string& network) {
    return network.empty() || network == "UNDEFINED_NETWORK" ||
           network == "BUILTIN_APP_CLIENT_FLAG" || network == "BUILTIN_APP_SERVER_FLAG";
}

// Parses a whole decimal number in [0, max]; nullopt for anything else.
std::optional<uint32_t> ParseDecimal(const std::string& text, uint32_t max) {
    if (text.empty() || text.size() > 10) {
        return std::nullopt;
    }
    uint64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        value = value * 10 + static_cast<uint64_t>(c - '0');
    }
    if (value > max) {
        return std::nullopt;
    }
    return static_cast<uint32_t>(value);
}

void ApplyNetwork(ParticipantSettings& settings, const std::string& network) {
    settings.networkInterface = network;
    if (IsLoopback(network)) {
        settings.peers = {"127.0.0.1"};
        settings.allowMulticast = false;
    } else {
        settings.peers.clear();
        settings.allowMulticast = true;
    }
}

// Reads the "dds" object, recording where each value it takes came from.
class DdsSection {
  public:
    DdsSection(ParticipantSettings& settings, ConfigReader& file, SettingsReport* report)
        : settings_(settings), file_(file), report_(report) {}

    void Read() {
        if (auto domain = Number("dds.domainId", 0, kMaxDomainId)) {
            settings_.domainId = *domain;
        }
        if (auto network = file_.GetString("dds.networkInterface")) {
            if (network->empty()) {
                Refuse("dds.networkInterface", "must name an interface or an address");
            } else {
                ApplyNetwork(settings_, *network);
                Took("dds.networkInterface");
            }
        }
        if (auto peers = file_.Get<std::vector<std::string>>("dds.peers")) {
            if (std::find(peers->begin(), peers->end(), "") != peers->end()) {
                Refuse("dds.peers", "must be a list of addresses");
            } else {
                settings_.peers = std::move(*peers);
                if (!settings_.peers.empty()) {
                    settings_.allowMulticast = false;
                }
                Took("dds.peers");
            }
        }
        if (auto multicast = file_.GetBool("dds.allowMulticast")) {
            settings_.allowMulticast = *multicast;
            Took("dds.allowMulticast");
        }
        if (auto index = Number("dds.maxAutoParticipantIndex", 1, 119)) {
            settings_.maxAutoParticipantIndex = *index;
        }
        if (auto lease = Number("dds.leaseDurationMs", 100, UINT32_MAX)) {
            settings_.leaseDurationMs = *lease;
        }
        if (auto buffer = Number("dds.receiveBufferBytes", 65536, UINT32_MAX)) {
            settings_.receiveBufferBytes = *buffer;
        }
    }

  private:
    // An integer from `min` to `max`, or nullopt (refused when present).
    std::optional<uint32_t> Number(const std::string& key, uint32_t min, uint32_t max) {
        const nlohmann::json* value = file_.Find(key);
        uint64_t number = 0;
        std::string reason;
        if (value == nullptr) {
            return std::nullopt;
        }
        if (!config::ToUnsignedIn(*value, min, max, number, reason)) {
            Refuse(key, reason);
            return std::nullopt;
        }
        Took(key);
        return static_cast<uint32_t>(number);
    }
    void Refuse(const std::string& key, const std::string& reason) {
        file_.ReportInvalid(key, file_.Find(key), reason);
    }
    void Took(const std::string& key) {
        if (report_ != nullptr) {
            report_->origins[key] = file_.OriginOf(key);
        }
    }

    ParticipantSettings& settings_;
    ConfigReader& file_;
    SettingsReport* report_;
};

void ApplyEnvironment(ParticipantSettings& settings, const EnvLookup& env, SettingsReport* report) {
    if (auto domain = config::NonEmpty(env, kDomainVariable)) {
        if (auto value = ParseDecimal(*domain, kMaxDomainId)) {
            settings.domainId = *value;
            if (report != nullptr) {
                report->origins["dds.domainId"] = SettingOrigin::Environment(kDomainVariable);
            }
        } else {
            config::RefuseEnvironmentValue(
                kDomainVariable, *domain,
                "must be an integer from 0 to " + std::to_string(kMaxDomainId), report);
        }
    }
    if (auto uri = config::NonEmpty(env, kCycloneVariable)) {
        settings.cycloneUri = *uri;
        if (report != nullptr) {
            report->origins[kCycloneVariable] = SettingOrigin::Environment(kCycloneVariable);
        }
    }
}

// The settings handed to the process's DDS driver, or read from the environment for it.
struct ProcessSlot {
    orx::sync::Mutex mutex;
    std::optional<ParticipantSettings> settings GUARDED_BY(mutex);
};

ProcessSlot& Slot() {
    static auto* const slot = new ProcessSlot();  // never destroyed: used at process exit
    return *slot;
}

}  // namespace

bool ParticipantSettings::operator==(const ParticipantSettings& other) const {
    return domainId == other.domainId && networkInterface == other.networkInterface &&
           allowMulticast == other.allowMulticast && peers == other.peers &&
           maxAutoParticipantIndex == other.maxAutoParticipantIndex &&
           leaseDurationMs == other.leaseDurationMs &&
           receiveBufferBytes == other.receiveBufferBytes && cycloneUri == other.cycloneUri;
}

bool IsLoopback(const std::string& interfaceOrAddress) {
    return interfaceOrAddress == "lo" || interfaceOrAddress == "localhost" ||
           interfaceOrAddress.rfind("127.", 0) == 0;
}

ParticipantSettings LoadParticipantSettings(ConfigReader* file,
                                            const std::pair<std::string, bool>& maintenanceNetwork,
                                            const EnvLookup& env, SettingsReport* report) {
    ParticipantSettings settings;
    if (!IsPlaceholderNetwork(maintenanceNetwork.first)) {
        ApplyNetwork(settings, maintenanceNetwork.first);
        if (report != nullptr && file != nullptr) {
            report->origins["dds.networkInterface"] =
                SettingOrigin::File(file->FilePath(), "maintenance.network.address");
        }
    }
    if (file != nullptr) {
        DdsSection(settings, *file, report).Read();
    }
    ApplyEnvironment(settings, env, report);
    return settings;
}

void SetProcessParticipantSettings(const ParticipantSettings& settings) {
    ProcessSlot& slot = Slot();
    orx::sync::MutexLock lock(slot.mutex);
    slot.settings = settings;
}

ParticipantSettings ProcessParticipantSettings() {
    ProcessSlot& slot = Slot();
    orx::sync::MutexLock lock(slot.mutex);
    if (!slot.settings) {
        slot.settings = LoadParticipantSettings(nullptr, {"", false}, ProcessEnvironment());
    }
    return *slot.settings;
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
