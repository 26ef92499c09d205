#ifndef ORX_MAINTAIND_CONFIG_ORX_MAINTAIND_SERIALIZE_HELPER_H
#define ORX_MAINTAIND_CONFIG_ORX_MAINTAIND_SERIALIZE_HELPER_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orx/maintaind/config/export.h"
#include "vorx/serialize/serialization_node.h"

namespace orx {
namespace maintaind {
namespace config {

// Turns the core's SOME/IP serialization tree into the bytes that the records carry
// (SomeipEventInfo::serializeTag, SomeipMethodInfo::requestSerializeTag and
// replySerializeTag), and back for the daemon and the tool.
//
// Byte layout, format version 1: the CDR encoding (little-endian, each primitive
// aligned to its size from the first byte) of
//
//   uint8  version               always 1; a reader rejects any other value
//   node   root
//
// where a node is, in this order:
//
//   string name                  uint32 length with the NUL, the bytes, NUL
//   uint8  byteOrder
//   uint8  lengthFieldSize
//   uint8  typeLengthFieldSize
//   bool   isTlv
//   uint16 dataId
//   uint32 alignment
//   uint32 child count, then each child as a node
//
// A leaf node with a short name takes about 24 to 32 bytes.
class MAINTAIND_MSG_EXPORT OrxMaintaindSerializeHelper {
  public:
    // Version written in the first byte.
    static constexpr uint8_t kFormatVersion = 1U;
    // Deepest tree the bytes can carry: the root is level 1. Deeper levels are
    // rarely meaningful and would let hostile bytes drive the parser's recursion.
    static constexpr size_t kMaxTreeDepth = 32U;

    // Encodes `node` in the layout above. Never fails. Children below level
    // kMaxTreeDepth are left out, so every result parses again.
    static std::vector<uint8_t> ChangeSomeipSerializeConfigToRawData(
        const vorx::serialize::SerializationNode& node);

    // Decodes bytes made by ChangeSomeipSerializeConfigToRawData. The bytes are
    // treated as hostile. Returns true and replaces `node` on success; returns false
    // and leaves `node` unchanged on an unknown version, truncated or malformed bytes,
    // trailing bytes, or a tree deeper than kMaxTreeDepth. Empty bytes are invalid.
    static bool ParseSomeipSerializeRawData(const std::vector<uint8_t>& bytes,
                                            vorx::serialize::SerializationNode& node);
};

}  // namespace config
}  // namespace maintaind
}  // namespace orx

#endif  // ORX_MAINTAIND_CONFIG_ORX_MAINTAIND_SERIALIZE_HELPER_H
