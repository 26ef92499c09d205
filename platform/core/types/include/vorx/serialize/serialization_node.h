#ifndef VORX_SERIALIZE_SERIALIZATION_NODE_H
#define VORX_SERIALIZE_SERIALIZATION_NODE_H

#include <cstdint>
#include <string>
#include <vector>

namespace vorx {
namespace serialize {

// SOME/IP serialization settings of one data element, as a tree that follows
// the data type: the node of a struct has one child per member.
struct SerializationNode {
    std::string name;                // member or type name
    uint8_t byteOrder{0};            // 0 big endian, 1 little endian
    uint8_t lengthFieldSize{4};      // bytes of the length field of dynamic data: 0, 1, 2 or 4
    uint8_t typeLengthFieldSize{0};  // bytes of a union's type field
    bool isTlv{false};               // tag-length-value encoding of members
    uint16_t dataId{0};              // TLV data id of this member
    uint32_t alignment{0};           // padding alignment in bits, 0 for none
    std::vector<SerializationNode> children;
};

}  // namespace serialize
}  // namespace vorx

#endif
