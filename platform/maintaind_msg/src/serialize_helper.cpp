#include <utility>

#include "orx/maintaind/config/orx_maintaind_serialize_helper.h"
#include "serialization_tree_record.h"
#include "vorx/serialize/decoder.h"
#include "vorx/serialize/encoder.h"

namespace orx {
namespace maintaind {
namespace config {

namespace {

using detail::SerializationNodeRecord;
using detail::SerializationTagRecord;
using vorx::serialize::SerializationNode;

constexpr size_t kMaxTreeDepth = OrxMaintaindSerializeHelper::kMaxTreeDepth;

// `level` is the level of `in`, the root being 1.
void CopyToRecord(const SerializationNode& in, size_t level, SerializationNodeRecord& out) {
    out.name = in.name;
    out.byteOrder = in.byteOrder;
    out.lengthFieldSize = in.lengthFieldSize;
    out.typeLengthFieldSize = in.typeLengthFieldSize;
    out.isTlv = in.isTlv;
    out.dataId = in.dataId;
    out.alignment = in.alignment;
    if (level >= kMaxTreeDepth) {
        return;
    }
    out.children.resize(in.children.size());
    for (size_t i = 0; i < in.children.size(); ++i) {
        CopyToRecord(in.children[i], level + 1U, out.children[i]);
    }
}

// Moves the decoded tree over; false when it is deeper than the bytes may carry.
bool MoveToNode(SerializationNodeRecord& in, size_t level, SerializationNode& out) {
    if (level > kMaxTreeDepth) {
        return false;
    }
    out.name = std::move(in.name);
    out.byteOrder = in.byteOrder;
    out.lengthFieldSize = in.lengthFieldSize;
    out.typeLengthFieldSize = in.typeLengthFieldSize;
    out.isTlv = in.isTlv;
    out.dataId = in.dataId;
    out.alignment = in.alignment;
    out.children.resize(in.children.size());
    for (size_t i = 0; i < in.children.size(); ++i) {
        if (!MoveToNode(in.children[i], level + 1U, out.children[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::vector<uint8_t> OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(
    const SerializationNode& node) {
    SerializationTagRecord tag;
    tag.version = kFormatVersion;
    CopyToRecord(node, 1U, tag.root);
    return vorx::serialize::Encode(tag);
}

bool OrxMaintaindSerializeHelper::ParseSomeipSerializeRawData(const std::vector<uint8_t>& bytes,
                                                              SerializationNode& node) {
    // The version byte comes first whatever the layout behind it, so an unknown
    // version is refused before anything else is read.
    if (bytes.empty() || bytes.front() != kFormatVersion) {
        return false;
    }
    vorx::serialize::DecodeLimits limits;
    // Each tree level is a record nested in a sequence, two decoder levels. The
    // decoder gets a little room beyond that; the tree's own depth is checked
    // exactly while moving it over.
    limits.maxDepth = static_cast<uint32_t>(2U * kMaxTreeDepth + 3U);
    SerializationTagRecord tag;
    if (!vorx::serialize::Decode(bytes, tag, limits).ok()) {
        return false;
    }
    SerializationNode parsed;
    if (!MoveToNode(tag.root, 1U, parsed)) {
        return false;
    }
    node = std::move(parsed);
    return true;
}

}  // namespace config
}  // namespace maintaind
}  // namespace orx
