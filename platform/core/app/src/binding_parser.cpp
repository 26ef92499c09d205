#include "binding_parser.h"

#include <set>
#include <vector>

namespace vorx::vcc::app::detail {
namespace {

using config::AsUnsigned;
using config::Choices;
using config::ToChoice;
using driver::dds::DiscoveryFilter;
using driver::dds::DurabilityKind;
using driver::dds::HistoryKind;
using driver::dds::ParticipantQos;
using driver::dds::ReliabilityKind;

// Serialization trees deeper than this are refused: the file is read with recursion.
constexpr int kMaxTreeDepth = 16;

const Choices<DurabilityKind> kDurability = {{"volatile", DurabilityKind::VOLATILE},
                                             {"transientLocal", DurabilityKind::TRANSIENT_LOCAL},
                                             {"transient", DurabilityKind::TRANSIENT},
                                             {"persistent", DurabilityKind::PERSISTENT}};
const Choices<HistoryKind> kHistory = {{"keepLast", HistoryKind::KEEP_LAST},
                                       {"keepAll", HistoryKind::KEEP_ALL}};
const Choices<ReliabilityKind> kReliability = {{"reliable", ReliabilityKind::RELIABLE},
                                               {"bestEffort", ReliabilityKind::BEST_EFFORT}};
const Choices<uint8_t> kMethodDurability = {{"volatile", 0}, {"transientLocal", 1}};
const Choices<uint8_t> kDdsMode = {{"data", 0}, {"service", 1}};
const Choices<uint8_t> kSerializeType = {{"someip", 0}, {"cdr", 1}, {"raw", 2}};
const Choices<uint8_t> kByteOrder = {{"big", 0}, {"little", 1}};
const Choices<api::types::E2EXf_DataIDMode> kDataIdMode = {
    {"both", api::types::E2EXf_DataIDMode::E2E_DATAID_BOTH},
    {"alt", api::types::E2EXf_DataIDMode::E2E_DATAID_ALT},
    {"low", api::types::E2EXf_DataIDMode::E2E_DATAID_LOW},
    {"nibble", api::types::E2EXf_DataIDMode::E2E_DATAID_NIBBLE}};

// Transport choices: a list of "udp", "tcp", "shm".
bool ToTransportQos(const nlohmann::json& value, std::set<uint8_t>& out, std::string& reason) {
    const Choices<uint8_t> names = {{"udp", 1}, {"tcp", 2}, {"shm", 3}};
    if (!value.is_array()) {
        reason = "must be a list of \"udp\", \"tcp\", \"shm\"";
        return false;
    }
    std::set<uint8_t> result;
    for (const auto& element : value) {
        uint8_t choice = 0;
        if (!ToChoice(element, names, choice, reason)) {
            reason = "every element " + reason;
            return false;
        }
        result.insert(choice);
    }
    out = std::move(result);
    return true;
}

void ReadTransportQos(EntityScope& scope, std::set<uint8_t>& out) {
    const nlohmann::json* value = scope.Find("transportQos");
    if (value == nullptr) {
        return;
    }
    std::string reason;
    if (!ToTransportQos(*value, out, reason)) {
        scope.Ignore("transportQos", value, reason);
    }
}

void ReadOptionalTransportQos(EntityScope& scope, std::optional<std::set<uint8_t>>& out) {
    if (!scope.Has("transportQos")) {
        return;
    }
    std::set<uint8_t> qos;
    const nlohmann::json* value = scope.Find("transportQos");
    std::string reason;
    if (!ToTransportQos(*value, qos, reason)) {
        scope.Ignore("transportQos", value, reason);
        return;
    }
    out = std::move(qos);
}

void ReadNetwork(EntityScope& scope, std::pair<std::string, bool>& out) {
    std::string address;
    if (scope.Optional("network", address) && !address.empty()) {
        out = {address, false};
        scope.Optional("networkFlag", out.second);
    }
}

void ReadDiscoveryFilter(EntityScope& scope, const std::string& name, DiscoveryFilter& out) {
    auto filter = scope.Child(name);
    if (!filter) {
        return;
    }
    filter->Optional("text", out.filterText);
    filter->Optional("class", out.filterClass);
}

void ReadParticipantQos(EntityScope& scope, ParticipantQos& out) {
    auto qos = scope.Child("participantQos");
    if (!qos) {
        return;
    }
    out.isSet = true;
    qos->Optional("announceInitialMs", out.announceInitialMs);
    qos->Optional("announcePeriodMs", out.announcePeriodMs);
    qos->Optional("leaseDurationMs", out.leaseDurationMs);
    qos->Optional("responseDelayMs", out.responseDelayMs);
}

bool ToProfile(const nlohmann::json& value, api::types::E2EXf_Profile& out, std::string& reason) {
    using api::types::E2EXf_Profile;
    static const std::set<uint64_t> kKnown = {1, 2, 4, 5, 6, 7, 11, 22, 41, 44};
    if (value.is_string() && value.get<std::string>() == "4m") {
        out = E2EXf_Profile::PROFILE_4M;
        return true;
    }
    uint64_t number = 0;
    if (AsUnsigned(value, number) && kKnown.count(number) != 0) {
        out = static_cast<E2EXf_Profile>(number);
        return true;
    }
    reason = "must be one of 1, 2, 4, 5, 6, 7, 11, 22, 44, \"4m\"";
    return false;
}

// Length field sizes of the SOME/IP serializer: 0, 1, 2 or 4 bytes.
void ReadFieldSize(EntityScope& scope, const char* key, uint8_t& out) {
    uint8_t size = 0;
    if (!scope.Optional(key, size)) {
        return;
    }
    if (size == 0 || size == 1 || size == 2 || size == 4) {
        out = size;
        return;
    }
    scope.Ignore(key, scope.Find(key), "must be 0, 1, 2 or 4");
}

void ParseTree(EntityScope& scope, serialize::SerializationNode& out, int depth) {
    scope.Optional("name", out.name);
    scope.OptionalChoice("byteOrder", kByteOrder, out.byteOrder);
    ReadFieldSize(scope, "lengthFieldSize", out.lengthFieldSize);
    ReadFieldSize(scope, "typeLengthFieldSize", out.typeLengthFieldSize);
    scope.Optional("tlv", out.isTlv);
    scope.Optional("dataId", out.dataId);
    scope.Optional("alignment", out.alignment);
    if (!scope.Has("children")) {
        return;
    }
    if (depth >= kMaxTreeDepth) {
        scope.Ignore("children", scope.Find("children"),
                     "nested deeper than " + std::to_string(kMaxTreeDepth) + " levels");
        return;
    }
    for (auto& child : scope.Elements("children", "serialization setting")) {
        serialize::SerializationNode node;
        ParseTree(child, node, depth + 1);
        out.children.push_back(std::move(node));
    }
}

void ParsePdu(EntityScope& scope, driver::someip::PduConfig& out) {
    scope.Optional("name", out.pduName);
    scope.Optional("length", out.pduLength);
    scope.Optional("dynamicLength", out.isDynamicLength);
    for (auto& signal : scope.Elements("signals", "signal")) {
        driver::someip::IsignalConfig config;
        signal.Optional("name", config.signalName);
        signal.Optional("type", config.signalType);
        signal.Optional("bigEndian", config.isBigEndian);
        signal.Optional("startPosition", config.startPosition);
        signal.Optional("length", config.signalLength);
        signal.Optional("initValue", config.initValue);
        out.isignals.push_back(std::move(config));
    }
}

}  // namespace

void ParseDdsServiceBinding(EntityScope& scope, DdsServiceBinding& out) {
    scope.Optional("domainId", out.domainId);
    ReadNetwork(scope, out.network);
    ReadTransportQos(scope, out.transportQos);
    scope.Optional("resourceAttributes", out.resourceAttributes);
    ReadParticipantQos(scope, out.participantQos);
    ReadDiscoveryFilter(scope, "discoveryFilter", out.discoveryFilter);
    scope.OptionalChoice("ddsMode", kDdsMode, out.ddsMode);
}

void ParseSomeipServiceBinding(EntityScope& scope, SomeipServiceBinding& out) {
    scope.Optional("majorVersion", out.majorVersion);
    scope.Optional("minorVersion", out.minorVersion);
    ReadNetwork(scope, out.network);
    scope.Optional("port", out.port);
    scope.Optional("reliable", out.reliable);
    ReadTransportQos(scope, out.transportQos);
}

void ParseDdsEventBinding(EntityScope& scope, DdsEventBinding& out) {
    scope.Optional("topic", out.topic);
    scope.Optional("historyDepth", out.historyDepth);
    scope.Optional("queueSize", out.queueSize);
    scope.OptionalChoice("durability", kDurability, out.durability);
    scope.OptionalChoice("history", kHistory, out.history);
    scope.OptionalChoice("reliability", kReliability, out.reliability);
    ReadOptionalTransportQos(scope, out.transportQos);
    scope.Optional("fragSize", out.fragSize);
    scope.Optional("listenQueueSize", out.listenQueueSize);
    ReadDiscoveryFilter(scope, "pubDiscoveryFilter", out.pubDiscoveryFilter);
    ReadDiscoveryFilter(scope, "subDiscoveryFilter", out.subDiscoveryFilter);
}

void ParseSomeipEventBinding(EntityScope& scope, SomeipEventBinding& out) {
    scope.Required("eventId", out.eventId);
    scope.Optional("eventGroupIds", out.eventGroupIds);
    scope.Optional("udpTtl", out.udpTtl);
    bool reliable = false;
    if (scope.Optional("reliable", reliable)) {
        out.reliable = reliable;
    }
    ReadOptionalTransportQos(scope, out.transportQos);
    ParseSerializationTree(scope, "serialization", out.serialization);
    if (auto pdu = scope.Child("pdu")) {
        ParsePdu(*pdu, out.pdu);
    }
}

void ParseDdsMethodBinding(EntityScope& scope, DdsMethodBinding& out) {
    scope.Optional("requestTopic", out.requestTopic);
    scope.Optional("replyTopic", out.replyTopic);
    scope.Optional("requestDataType", out.requestDataTypeName);
    scope.Optional("replyDataType", out.replyDataTypeName);
    scope.Optional("requestQueueSize", out.requestQueueSize);
    scope.Optional("replyQueueSize", out.replyQueueSize);
    scope.Optional("requestHistoryDepth", out.requestHistoryDepth);
    scope.Optional("replyHistoryDepth", out.replyHistoryDepth);
    scope.OptionalChoice("requestDurability", kMethodDurability, out.requestDurability);
    scope.OptionalChoice("replyDurability", kMethodDurability, out.replyDurability);
    const Choices<uint8_t> history = {{"keepLast", 0}, {"keepAll", 1}};
    scope.OptionalChoice("requestHistory", history, out.requestHistory);
    scope.OptionalChoice("replyHistory", history, out.replyHistory);
    scope.OptionalChoice("reliability", kReliability, out.reliability);
    ReadOptionalTransportQos(scope, out.transportQos);
    scope.Optional("fragSize", out.fragSize);
    scope.Optional("listenQueueSize", out.listenQueueSize);
    ReadDiscoveryFilter(scope, "discoveryFilter", out.discoveryFilter);
}

void ParseSomeipMethodBinding(EntityScope& scope, SomeipMethodBinding& out) {
    scope.Required("methodId", out.methodId);
    bool reliable = false;
    if (scope.Optional("reliable", reliable)) {
        out.reliable = reliable;
    }
    ReadOptionalTransportQos(scope, out.transportQos);
    ParseSerializationTree(scope, "requestSerialization", out.requestSerialization);
    ParseSerializationTree(scope, "replySerialization", out.replySerialization);
}

std::shared_ptr<api::types::E2EXfConfig> ParseE2E(EntityScope& scope) {
    auto config = std::make_shared<api::types::E2EXfConfig>();
    const nlohmann::json* profile = scope.Find("profile");
    std::string reason;
    if (profile == nullptr) {
        scope.Fail("profile", nullptr, "missing");
    } else if (!ToProfile(*profile, config->profile, reason)) {
        scope.Fail("profile", profile, reason);
    }
    config->isE2EEnabled = true;
    config->isCheckEnabled = true;
    scope.Optional("dataIds", config->dataIdList);
    scope.Optional("enabled", config->isE2EEnabled);
    scope.Optional("disableCheck", config->isDisableE2ECheck);
    scope.Optional("checkEnabled", config->isCheckEnabled);
    scope.Optional("dataLength", config->dataLength);
    scope.Optional("maxDataLength", config->maxDataLength);
    scope.Optional("counterOffset", config->counterOffset);
    scope.Optional("crcOffset", config->crcOffset);
    scope.OptionalChoice("dataIdMode", kDataIdMode, config->dataIdMode);
    scope.Optional("maxDeltaCounter", config->maxDeltaCounter);
    if (auto machine = scope.Child("stateMachine")) {
        machine->Optional("maxErrorStateInit", config->maxErrorStateInit);
        machine->Optional("minOkStateInit", config->minOkStateInit);
        machine->Optional("windowSizeInit", config->windowSizeInit);
        machine->Optional("maxErrorStateValid", config->maxErrorStateValid);
        machine->Optional("minOkStateValid", config->minOkStateValid);
        machine->Optional("windowSizeValid", config->windowSizeValid);
        machine->Optional("maxErrorStateInvalid", config->maxErrorStateInvalid);
        machine->Optional("minOkStateInvalid", config->minOkStateInvalid);
        machine->Optional("windowSizeInvalid", config->windowSizeInvalid);
    }
    return config;
}

void ParseSerializeSetting(EntityScope& parent, const std::string& name,
                           api::types::SerializeSetting& out) {
    auto setting = parent.Child(name);
    if (!setting) {
        return;
    }
    setting->OptionalChoice("type", kSerializeType, out.serializeType);
    setting->Optional("config", out.serializeConfigText);
}

void ParseSerializationTree(EntityScope& parent, const std::string& name,
                            serialize::SerializationNode& out) {
    if (auto tree = parent.Child(name)) {
        ParseTree(*tree, out, 0);
    }
}

}  // namespace vorx::vcc::app::detail
