#ifndef VORX_DRIVER_DDS_PARTICIPANT_SETTINGS_H
#define VORX_DRIVER_DDS_PARTICIPANT_SETTINGS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "vorx/vcc/export.h"

namespace vorx {
namespace driver {
namespace dds {

// How this process joins DDS. The defaults keep every packet on the loopback
// interface: no multicast, the only unicast peer is 127.0.0.1, and the
// participant index is picked automatically so that many processes on one host
// get their own ports.
struct VCC_EXPORT ParticipantSettings {
    uint32_t domainId{0};
    // Interface address (or interface name) DDS binds to.
    std::string networkInterface{"127.0.0.1"};
    bool allowMulticast{false};
    // Unicast discovery peers (addresses, optionally "address:port").
    std::vector<std::string> peers{"127.0.0.1"};
    // Highest automatic participant index: one index per process on a host.
    uint32_t maxAutoParticipantIndex{63};
    // A peer that stays silent this long is dropped with all its offers, so a
    // crashed process is noticed within this time.
    uint32_t leaseDurationMs{3000};
    // Receive buffer of the UDP sockets, in bytes. Large answers (the tools' lists run to
    // megabytes) arrive as a burst of fragments; a small buffer drops the tail and the writer
    // only repairs it after its next heartbeat, some 200 ms later. 0: as large as the kernel
    // allows (net.core.rmem_max), at most kDefaultReceiveBufferBytes.
    uint32_t receiveBufferBytes{0};
    // Non-empty: Cyclone's configuration comes from here as it stands (the
    // content of CYCLONEDDS_URI: a file:// URI or inline XML) and the network
    // fields above are not used.
    std::string cycloneUri;

    bool operator==(const ParticipantSettings& other) const;
};

// The receive buffer asked for when ParticipantSettings::receiveBufferBytes is 0.
constexpr uint32_t kDefaultReceiveBufferBytes = 4U * 1024U * 1024U;

// Highest domain id whose ports Cyclone can compute with its default port
// mapping.
constexpr uint32_t kMaxDomainId = 232;

// Reads an environment variable; std::nullopt when unset.
using EnvLookup = std::function<std::optional<std::string>(const std::string& name)>;

// The process environment (::getenv).
VCC_EXPORT EnvLookup ProcessEnvironment();

// Builds the settings from their sources, each overriding the one before:
//   1. the defaults above;
//   2. the maintenance network of orx.json (`networkIp`, the address from
//      ParseJsonToGetConfig::GetNetworkIp(); empty means none);
//   3. the "dds" object of orx.json (`orxDocument`): "domainId",
//      "networkInterface", "peers", "allowMulticast", "maxAutoParticipantIndex",
//      "leaseDurationMs", "receiveBufferBytes";
//   4. the environment: ORX_DDS_DOMAIN (domain id), CYCLONEDDS_URI (Cyclone's
//      own configuration, replacing the network settings).
// A configured non-loopback interface drops the loopback peer; without peers of
// its own it turns multicast on unless "allowMulticast" says otherwise.
// A bad value (wrong type, out of range) is reported by one error line on the
// "CM" logger naming `filePath` (or the variable) and the key, and is ignored.
// Never throws.
VCC_EXPORT ParticipantSettings
LoadParticipantSettings(const nlohmann::json& orxDocument, const std::string& filePath,
                        const std::pair<std::string, bool>& networkIp, const EnvLookup& env);

// The settings of this process: orx.json through ParseJsonToGetConfig and the
// process environment.
VCC_EXPORT ParticipantSettings ProcessParticipantSettings();

// The text handed to Cyclone when the domain is created: `cycloneUri` when set,
// else an XML configuration holding the interface, multicast switch, peers,
// participant index range, lease duration and socket receive buffer (never more
// than net.core.rmem_max, so that Cyclone can always have it).
VCC_EXPORT std::string BuildCycloneConfig(const ParticipantSettings& settings);

// True for 127.0.0.0/8 addresses, "localhost" and the loopback interface name "lo".
VCC_EXPORT bool IsLoopback(const std::string& interfaceOrAddress);

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif  // VORX_DRIVER_DDS_PARTICIPANT_SETTINGS_H
