#ifndef ORX_MAINTAIND_CONFIG_SRC_SERIALIZATION_TREE_RECORD_H
#define ORX_MAINTAIND_CONFIG_SRC_SERIALIZATION_TREE_RECORD_H

// The records behind the serialization-tag bytes: the core's SerializationNode has no
// member list, so it is copied into these mirrors and the shared CDR encoder does the
// rest. Member order is the byte layout documented in orx_maintaind_serialize_helper.h.

#include <cstdint>
#include <string>
#include <vector>

#include "orx/maintaind/record.h"

namespace orx {
namespace maintaind {
namespace config {
namespace detail {

struct SerializationNodeRecord {
    std::string name;
    uint8_t byteOrder{0};
    uint8_t lengthFieldSize{0};
    uint8_t typeLengthFieldSize{0};
    bool isTlv{false};
    uint16_t dataId{0};
    uint32_t alignment{0};
    std::vector<SerializationNodeRecord> children;

    ORX_MAINTAIND_RECORD(SerializationNodeRecord, name, byteOrder, lengthFieldSize,
                         typeLengthFieldSize, isTlv, dataId, alignment, children)
};

struct SerializationTagRecord {
    uint8_t version{0};
    SerializationNodeRecord root;

    ORX_MAINTAIND_RECORD(SerializationTagRecord, version, root)
};

}  // namespace detail
}  // namespace config
}  // namespace maintaind
}  // namespace orx

#endif  // ORX_MAINTAIND_CONFIG_SRC_SERIALIZATION_TREE_RECORD_H
