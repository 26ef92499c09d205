// The enumerations of the maintenance records: this header is the interface definition that the
// plug-in, the maintenance daemon and the command-line tool share. The numeric values are part of
// the wire format; never renumber an enumerator, only add new ones.
//
// On the wire every enumeration below takes exactly one byte. All of them have a one-byte
// underlying type except DriverType, which is 16 bits wide in memory (the method and latency code
// handle it as a 16-bit value) and is narrowed to one byte by the encoders; values above 255 are
// therefore not representable on the wire. Decoders accept any byte, known enumerator or not.
#pragma once

#include <cstdint>

namespace orx::maintaind {

// Binding of an entity; key of the per-binding maps. Not the core's own numbering, which is
// 0 PROLOC, 1 DDS, 2 SOMEIP: converters translate between the two.
enum class DriverType : uint16_t {
    DDS = 0,
    SOMEIP = 1,
    PROLOC = 2,
};

// Tells the encoders to write DriverType as one byte. Declared only: it is looked up by argument
// dependent lookup in unevaluated context, and its return type is the wire type.
uint8_t WireTypeOf(DriverType);

// Kind of subscriber listener reported for an application (key of AppRegisterInfo::listenerParams).
enum class ListenerType : uint8_t {
    SAMPLE_TIMEOUT = 0,
};

// DDS durability QoS of a reader or writer.
enum class DurabilityQos : uint8_t {
    VOLATILE = 0,
    TRANSIENT_LOCAL = 1,
    TRANSIENT = 2,
    PERSISTENT = 3,
};

// DDS history QoS kind.
enum class HistoryQos : uint8_t {
    KEEP_LAST = 0,
    KEEP_ALL = 1,
};

// DDS reliability QoS kind.
enum class ReliabilityKind : uint8_t {
    BEST_EFFORT = 0,
    RELIABLE = 1,
};

// One transport choice of a DDS entity; records carry a vector of them.
enum class TransportQos : uint8_t {
    INVALID = 0,
    UDP = 1,
    TCP = 2,
    SHM = 3,
};

// E2E protection profile. The values follow the AUTOSAR profile numbers; PROFILE_4M is the
// profile 4 variant "4m".
enum class E2EProfile : uint8_t {
    NONE = 0,
    PROFILE_04 = 4,
    PROFILE_05 = 5,
    PROFILE_06 = 6,
    PROFILE_07 = 7,
    PROFILE_11 = 11,
    PROFILE_22 = 22,
    PROFILE_4M = 41,
    PROFILE_44 = 44,
};

// How the E2E data ID enters the CRC.
enum class E2EDataIDMode : uint8_t {
    BOTH = 0,
    ALT = 1,
    LOWER_12 = 2,
    NIBBLE = 3,
};

// Latency-analysis mode ordered by the daemon. Note the core's own analysis mode has the opposite
// sense (1 enables there); the latency client translates.
enum class LatencyMode : uint8_t {
    ENABLE = 0,
    DISABLE = 1,
};

// Values of AppRegisterInfo::kind (a plain uint8 there): which nested record a registration
// report is about. Latency reports and sample-timeout reports leave the kind at its default (0)
// and are told from event reports by what they carry (latencyInfo, listenerParams).
enum class ReportKind : uint8_t {
    EVENT = 0,
    METHOD = 1,
    FIELD = 2,
    E2E_AND_NODE = 3,
};

// Names of the enumerators, for logs and tools. An unknown value yields "UNKNOWN".
constexpr const char* ToString(DriverType value) {
    switch (value) {
        case DriverType::DDS:
            return "DDS";
        case DriverType::SOMEIP:
            return "SOMEIP";
        case DriverType::PROLOC:
            return "PROLOC";
    }
    return "UNKNOWN";
}

constexpr const char* ToString(ListenerType value) {
    switch (value) {
        case ListenerType::SAMPLE_TIMEOUT:
            return "SAMPLE_TIMEOUT";
    }
    return "UNKNOWN";
}

constexpr const char* ToString(DurabilityQos value) {
    switch (value) {
        case DurabilityQos::VOLATILE:
            return "VOLATILE";
        case DurabilityQos::TRANSIENT_LOCAL:
            return "TRANSIENT_LOCAL";
        case DurabilityQos::TRANSIENT:
            return "TRANSIENT";
        case DurabilityQos::PERSISTENT:
            return "PERSISTENT";
    }
    return "UNKNOWN";
}

constexpr const char* ToString(HistoryQos value) {
    switch (value) {
        case HistoryQos::KEEP_LAST:
            return "KEEP_LAST";
        case HistoryQos::KEEP_ALL:
            return "KEEP_ALL";
    }
    return "UNKNOWN";
}

constexpr const char* ToString(ReliabilityKind value) {
    switch (value) {
        case ReliabilityKind::BEST_EFFORT:
            return "BEST_EFFORT";
        case ReliabilityKind::RELIABLE:
            return "RELIABLE";
    }
    return "UNKNOWN";
}

constexpr const char* ToString(TransportQos value) {
    switch (value) {
        case TransportQos::INVALID:
            return "INVALID";
        case TransportQos::UDP:
            return "UDP";
        case TransportQos::TCP:
            return "TCP";
        case TransportQos::SHM:
            return "SHM";
    }
    return "UNKNOWN";
}

constexpr const char* ToString(E2EProfile value) {
    switch (value) {
        case E2EProfile::NONE:
            return "NONE";
        case E2EProfile::PROFILE_04:
            return "PROFILE_04";
        case E2EProfile::PROFILE_05:
            return "PROFILE_05";
        case E2EProfile::PROFILE_06:
            return "PROFILE_06";
        case E2EProfile::PROFILE_07:
            return "PROFILE_07";
        case E2EProfile::PROFILE_11:
            return "PROFILE_11";
        case E2EProfile::PROFILE_22:
            return "PROFILE_22";
        case E2EProfile::PROFILE_4M:
            return "PROFILE_4M";
        case E2EProfile::PROFILE_44:
            return "PROFILE_44";
    }
    return "UNKNOWN";
}

constexpr const char* ToString(E2EDataIDMode value) {
    switch (value) {
        case E2EDataIDMode::BOTH:
            return "BOTH";
        case E2EDataIDMode::ALT:
            return "ALT";
        case E2EDataIDMode::LOWER_12:
            return "LOWER_12";
        case E2EDataIDMode::NIBBLE:
            return "NIBBLE";
    }
    return "UNKNOWN";
}

constexpr const char* ToString(ReportKind value) {
    switch (value) {
        case ReportKind::EVENT:
            return "EVENT";
        case ReportKind::METHOD:
            return "METHOD";
        case ReportKind::FIELD:
            return "FIELD";
        case ReportKind::E2E_AND_NODE:
            return "E2E_AND_NODE";
    }
    return "UNKNOWN";
}

constexpr const char* ToString(LatencyMode value) {
    switch (value) {
        case LatencyMode::ENABLE:
            return "ENABLE";
        case LatencyMode::DISABLE:
            return "DISABLE";
    }
    return "UNKNOWN";
}

}  // namespace orx::maintaind
