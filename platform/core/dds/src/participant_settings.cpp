#include "vorx/driver/dds/participant_settings.h"

#include <cerrno>
#include <cstdlib>

#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/orxConfigParser/config_reader.h"
#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

using ara::kelda::common::log::Log;
using ara::kelda::common::orxConfigParser::ConfigReader;
using ara::kelda::common::orxConfigParser::ParseJsonToGetConfig;

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

void ApplyDdsSection(ParticipantSettings& settings, ConfigReader& reader) {
    if (auto domain = reader.GetUint32("dds.domainId")) {
        if (*domain <= kMaxDomainId) {
            settings.domainId = *domain;
        } else {
            reader.ReportInvalid("dds.domainId", reader.Find("dds.domainId"),
                                 "domain id above " + std::to_string(kMaxDomainId));
        }
    }
    if (auto network = reader.GetString("dds.networkInterface")) {
        if (network->empty()) {
            reader.ReportInvalid("dds.networkInterface", reader.Find("dds.networkInterface"),
                                 "empty interface");
        } else {
            ApplyNetwork(settings, *network);
        }
    }
    if (const nlohmann::json* peers = reader.Find("dds.peers")) {
        bool valid = peers->is_array();
        std::vector<std::string> list;
        if (valid) {
            for (const auto& peer : *peers) {
                if (!peer.is_string() || peer.get_ref<const std::string&>().empty()) {
                    valid = false;
                    break;
                }
                list.push_back(peer.get<std::string>());
            }
        }
        if (valid) {
            settings.peers = std::move(list);
            if (!settings.peers.empty()) {
                settings.allowMulticast = false;
            }
        } else {
            reader.ReportInvalid("dds.peers", peers, "expected an array of addresses");
        }
    }
    if (auto multicast = reader.GetBool("dds.allowMulticast")) {
        settings.allowMulticast = *multicast;
    }
    if (auto maxIndex = reader.GetUint32("dds.maxAutoParticipantIndex")) {
        if (*maxIndex >= 1 && *maxIndex <= 119) {
            settings.maxAutoParticipantIndex = *maxIndex;
        } else {
            reader.ReportInvalid("dds.maxAutoParticipantIndex",
                                 reader.Find("dds.maxAutoParticipantIndex"), "expected 1 to 119");
        }
    }
    if (auto lease = reader.GetUint32("dds.leaseDurationMs")) {
        if (*lease >= 100) {
            settings.leaseDurationMs = *lease;
        } else {
            reader.ReportInvalid("dds.leaseDurationMs", reader.Find("dds.leaseDurationMs"),
                                 "below 100 ms");
        }
    }
    if (auto buffer = reader.GetUint32("dds.receiveBufferBytes")) {
        if (*buffer >= 65536) {
            settings.receiveBufferBytes = *buffer;
        } else {
            reader.ReportInvalid("dds.receiveBufferBytes", reader.Find("dds.receiveBufferBytes"),
                                 "below 65536 bytes");
        }
    }
}

void ApplyEnvironment(ParticipantSettings& settings, const EnvLookup& env) {
    if (!env) {
        return;
    }
    if (auto domain = env("ORX_DDS_DOMAIN"); domain && !domain->empty()) {
        if (auto value = ParseDecimal(*domain, kMaxDomainId)) {
            settings.domainId = *value;
        } else {
            Log::GetLog("CM")->LogError()
                << "[DdsDriver][Invalid environment variable ORX_DDS_DOMAIN][value=" << *domain
                << ", expected 0 to " << kMaxDomainId << "]";
        }
    }
    if (auto uri = env("CYCLONEDDS_URI"); uri && !uri->empty()) {
        settings.cycloneUri = *uri;
    }
}

}  // namespace

bool ParticipantSettings::operator==(const ParticipantSettings& other) const {
    return domainId == other.domainId && networkInterface == other.networkInterface &&
           allowMulticast == other.allowMulticast && peers == other.peers &&
           maxAutoParticipantIndex == other.maxAutoParticipantIndex &&
           leaseDurationMs == other.leaseDurationMs &&
           receiveBufferBytes == other.receiveBufferBytes && cycloneUri == other.cycloneUri;
}

EnvLookup ProcessEnvironment() {
    return [](const std::string& name) -> std::optional<std::string> {
        const char* value = std::getenv(name.c_str());
        if (value == nullptr) {
            return std::nullopt;
        }
        return std::string(value);
    };
}

bool IsLoopback(const std::string& interfaceOrAddress) {
    return interfaceOrAddress == "lo" || interfaceOrAddress == "localhost" ||
           interfaceOrAddress.rfind("127.", 0) == 0;
}

ParticipantSettings LoadParticipantSettings(const nlohmann::json& orxDocument,
                                            const std::string& filePath,
                                            const std::pair<std::string, bool>& networkIp,
                                            const EnvLookup& env) {
    ParticipantSettings settings;
    if (!IsPlaceholderNetwork(networkIp.first)) {
        ApplyNetwork(settings, networkIp.first);
    }
    if (orxDocument.is_object()) {
        ConfigReader reader(orxDocument, filePath);
        ApplyDdsSection(settings, reader);
    }
    ApplyEnvironment(settings, env);
    return settings;
}

ParticipantSettings ProcessParticipantSettings() {
    const auto config = ParseJsonToGetConfig::GetInstance();
    return LoadParticipantSettings(config->Document(), config->FilePath(), config->GetNetworkIp(),
                                   ProcessEnvironment());
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
