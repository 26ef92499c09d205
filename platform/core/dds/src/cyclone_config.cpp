// Renders participant settings as Cyclone DDS XML configuration.
#include <algorithm>
#include <fstream>
#include <string>

#include "vorx/driver/dds/participant_settings.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

std::string XmlEscape(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

// An interface is named by address when it looks like one (digits, dots,
// colons), otherwise by its name ("eth0").
bool LooksLikeAddress(const std::string& text) {
    if (text.empty()) {
        return false;
    }
    for (const char c : text) {
        const bool hex = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        if (!hex && c != '.' && c != ':') {
            return false;
        }
    }
    return text.find('.') != std::string::npos || text.find(':') != std::string::npos;
}

// The most a process may ask for as a socket's receive buffer; 0 when unknown.
uint64_t KernelReceiveBufferLimit() {
    std::ifstream file("/proc/sys/net/core/rmem_max");
    uint64_t bytes = 0;
    return (file >> bytes) ? bytes : 0;
}

// Cyclone refuses to start when it cannot get the minimum it is given, so the
// minimum never exceeds what the kernel grants.
uint64_t ReceiveBufferBytes(const ParticipantSettings& settings) {
    const uint64_t wanted =
        settings.receiveBufferBytes != 0 ? settings.receiveBufferBytes : kDefaultReceiveBufferBytes;
    const uint64_t limit = KernelReceiveBufferLimit();
    return limit == 0 ? 0 : std::min(wanted, limit);
}

}  // namespace

std::string BuildCycloneConfig(const ParticipantSettings& settings) {
    if (!settings.cycloneUri.empty()) {
        return settings.cycloneUri;
    }
    std::string xml = "<CycloneDDS><Domain id=\"any\"><General><Interfaces><NetworkInterface ";
    xml += LooksLikeAddress(settings.networkInterface) ? "address=\"" : "name=\"";
    xml += XmlEscape(settings.networkInterface);
    xml += "\"/></Interfaces><AllowMulticast>";
    xml += settings.allowMulticast ? "true" : "false";
    xml += "</AllowMulticast></General><Discovery><ParticipantIndex>auto</ParticipantIndex>";
    xml += "<MaxAutoParticipantIndex>" + std::to_string(settings.maxAutoParticipantIndex) +
           "</MaxAutoParticipantIndex>";
    if (!settings.peers.empty()) {
        xml += "<Peers>";
        for (const auto& peer : settings.peers) {
            xml += "<Peer address=\"" + XmlEscape(peer) + "\"/>";
        }
        xml += "</Peers>";
    }
    xml += "<LeaseDuration>" + std::to_string(settings.leaseDurationMs) + " ms</LeaseDuration>";
    xml += "</Discovery>";
    if (const uint64_t buffer = ReceiveBufferBytes(settings); buffer != 0) {
        xml += "<Internal><SocketReceiveBufferSize min=\"" + std::to_string(buffer) +
               "B\"/></Internal>";
    }
    xml += "</Domain></CycloneDDS>";
    return xml;
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
