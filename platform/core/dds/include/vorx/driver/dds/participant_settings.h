#ifndef VORX_DRIVER_DDS_PARTICIPANT_SETTINGS_H
#define VORX_DRIVER_DDS_PARTICIPANT_SETTINGS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ara/kelda/common/orxConfigParser/config_reader.h"
#include "ara/kelda/common/orxConfigParser/setting.h"
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

using EnvLookup = ara::kelda::common::orxConfigParser::EnvLookup;
using ara::kelda::common::orxConfigParser::ProcessEnvironment;

// Builds the settings from their sources, each overriding the one before:
//   1. the defaults above;
//   2. the maintenance network of orx.json (`maintenanceNetwork`, the address of
//      ParseJsonToGetConfig::GetNetworkIp(); empty or one of the plug-in's
//      placeholders means none);
//   3. the "dds" object of orx.json, read through `file` (may be null):
//      "domainId", "networkInterface", "peers", "allowMulticast",
//      "maxAutoParticipantIndex", "leaseDurationMs", "receiveBufferBytes";
//   4. `env`: ORX_DDS_DOMAIN (domain id), CYCLONEDDS_URI (Cyclone's own
//      configuration, replacing the network settings).
// A configured non-loopback interface drops the loopback peer; without peers of
// its own it turns multicast on unless "allowMulticast" says otherwise.
// A bad value (wrong type, out of range) is refused with one error line naming
// the file and key (or the variable); the earlier value stays. Where each value
// came from ("dds.<key>", "CYCLONEDDS_URI") and every refused value go to
// `report` (may be null). Never throws.
VCC_EXPORT ParticipantSettings LoadParticipantSettings(
    ara::kelda::common::orxConfigParser::ConfigReader* file,
    const std::pair<std::string, bool>& maintenanceNetwork, const EnvLookup& env,
    ara::kelda::common::orxConfigParser::SettingsReport* report = nullptr);

// Hands the process's DDS driver (DdsDriver::GetShared) its settings. The
// process's start-up does this once, before the driver is made; later calls
// reach only a driver made afterwards. Thread-safe.
VCC_EXPORT void SetProcessParticipantSettings(const ParticipantSettings& settings);

// The settings of the process's DDS driver: those handed over, else, in a
// process that hands over none (tests, small tools), the defaults with the
// process environment over them, read once. Thread-safe.
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
