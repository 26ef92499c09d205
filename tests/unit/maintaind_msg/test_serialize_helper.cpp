#include <gtest/gtest.h>

#include <random>
#include <string>

#include "orx/maintaind/config/orx_maintaind_serialize_helper.h"
#include "orx/maintaind/record.h"
#include "vorx/serialize/decoder.h"
#include "vorx/serialize/encoder.h"

namespace {

using orx::maintaind::config::OrxMaintaindSerializeHelper;
using vorx::serialize::SerializationNode;

// The byte layout as the helper's header documents it, written down independently
// so that a change of the real layout shows up here.
struct DocumentedNode {
    std::string name;
    uint8_t byteOrder{0};
    uint8_t lengthFieldSize{0};
    uint8_t typeLengthFieldSize{0};
    bool isTlv{false};
    uint16_t dataId{0};
    uint32_t alignment{0};
    std::vector<DocumentedNode> children;
    ORX_MAINTAIND_RECORD(DocumentedNode, name, byteOrder, lengthFieldSize, typeLengthFieldSize,
                         isTlv, dataId, alignment, children)
};
struct DocumentedTag {
    uint8_t version{0};
    DocumentedNode root;
    ORX_MAINTAIND_RECORD(DocumentedTag, version, root)
};

bool SameTree(const SerializationNode& a, const SerializationNode& b) {
    if (a.name != b.name || a.byteOrder != b.byteOrder || a.lengthFieldSize != b.lengthFieldSize ||
        a.typeLengthFieldSize != b.typeLengthFieldSize || a.isTlv != b.isTlv ||
        a.dataId != b.dataId || a.alignment != b.alignment ||
        a.children.size() != b.children.size()) {
        return false;
    }
    for (size_t i = 0; i < a.children.size(); ++i) {
        if (!SameTree(a.children[i], b.children[i])) {
            return false;
        }
    }
    return true;
}

SerializationNode Leaf(const std::string& name, uint16_t dataId) {
    SerializationNode node;
    node.name = name;
    node.byteOrder = 1U;
    node.lengthFieldSize = 2U;
    node.typeLengthFieldSize = 1U;
    node.isTlv = true;
    node.dataId = dataId;
    node.alignment = 32U;
    return node;
}

SerializationNode MakeTree() {
    SerializationNode root = Leaf("Root", 1U);
    root.isTlv = false;
    SerializationNode inner = Leaf("inner", 2U);
    inner.children.push_back(Leaf("a", 3U));
    inner.children.push_back(Leaf("", 0xFFFFU));
    root.children.push_back(inner);
    root.children.push_back(Leaf("tail", 5U));
    return root;
}

// A chain of `levels` nested nodes, each the only child of the one above.
template <class Node>
void MakeChain(Node& root, size_t levels) {
    Node* node = &root;
    for (size_t level = 1; level < levels; ++level) {
        node->children.resize(1);
        node = &node->children.front();
    }
}

size_t Depth(const SerializationNode& node) {
    size_t deepest = 0;
    for (const SerializationNode& child : node.children) {
        deepest = std::max(deepest, Depth(child));
    }
    return deepest + 1U;
}

TEST(SerializeHelperTest, TreeRoundTripsInTheDocumentedLayout) {
    const SerializationNode tree = MakeTree();
    const std::vector<uint8_t> bytes =
        OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(tree);

    ASSERT_FALSE(bytes.empty());
    EXPECT_EQ(bytes.front(), OrxMaintaindSerializeHelper::kFormatVersion);
    DocumentedTag documented;
    ASSERT_TRUE(vorx::serialize::Decode(bytes, documented).ok());
    EXPECT_EQ(documented.root.name, "Root");
    ASSERT_EQ(documented.root.children.size(), 2U);
    EXPECT_EQ(documented.root.children[0].children[1].dataId, 0xFFFFU);

    SerializationNode parsed;
    ASSERT_TRUE(OrxMaintaindSerializeHelper::ParseSomeipSerializeRawData(bytes, parsed));
    EXPECT_TRUE(SameTree(parsed, tree));

    // A default node (what the core holds when nothing is configured) round-trips too.
    const std::vector<uint8_t> empty =
        OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(SerializationNode{});
    ASSERT_TRUE(OrxMaintaindSerializeHelper::ParseSomeipSerializeRawData(empty, parsed));
    EXPECT_TRUE(SameTree(parsed, SerializationNode{}));
}

TEST(SerializeHelperTest, TreesDeeperThanTheLimitAreCutSoTheyStillParse) {
    const size_t limit = OrxMaintaindSerializeHelper::kMaxTreeDepth;
    SerializationNode atLimit;
    MakeChain(atLimit, limit);
    SerializationNode parsed;
    ASSERT_TRUE(OrxMaintaindSerializeHelper::ParseSomeipSerializeRawData(
        OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(atLimit), parsed));
    EXPECT_EQ(Depth(parsed), limit);

    SerializationNode deep;
    MakeChain(deep, 10U * limit);
    ASSERT_TRUE(OrxMaintaindSerializeHelper::ParseSomeipSerializeRawData(
        OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(deep), parsed));
    EXPECT_EQ(Depth(parsed), limit);
}

TEST(SerializeHelperTest, HostileBytesAreRejectedAndLeaveTheNodeAlone) {
    const std::vector<uint8_t> good =
        OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(MakeTree());
    const SerializationNode before = Leaf("untouched", 9U);
    SerializationNode node = before;
    auto rejected = [&node, &before](const std::vector<uint8_t>& bytes) {
        const bool ok = OrxMaintaindSerializeHelper::ParseSomeipSerializeRawData(bytes, node);
        return !ok && SameTree(node, before);
    };

    EXPECT_TRUE(rejected({}));
    for (size_t size = 1; size < good.size(); ++size) {
        SCOPED_TRACE(size);
        EXPECT_TRUE(rejected(std::vector<uint8_t>(good.begin(), good.begin() + size)));
    }
    std::vector<uint8_t> bytes = good;
    bytes.push_back(0U);
    EXPECT_TRUE(rejected(bytes));  // trailing byte
    bytes = good;
    bytes.front() = 2U;
    EXPECT_TRUE(rejected(bytes));  // unknown version

    // A child count of 0xFFFFFFFF at the end of a leaf root must fail fast, not allocate.
    DocumentedTag leafTag;
    leafTag.version = 1U;
    bytes = vorx::serialize::Encode(leafTag);
    ASSERT_GE(bytes.size(), 4U);
    std::fill(bytes.end() - 4, bytes.end(), 0xFFU);
    EXPECT_TRUE(rejected(bytes));

    // Well-formed bytes that carry a tree one level deeper than allowed.
    DocumentedTag deepTag;
    deepTag.version = 1U;
    MakeChain(deepTag.root, OrxMaintaindSerializeHelper::kMaxTreeDepth + 1U);
    EXPECT_TRUE(rejected(vorx::serialize::Encode(deepTag)));

    // Random damage never crashes; whatever parses must re-encode to a parsable tree.
    std::mt19937 random(7U);
    for (int round = 0; round < 2000; ++round) {
        bytes = good;
        const int flips = 1 + static_cast<int>(random() % 4U);
        for (int flip = 0; flip < flips; ++flip) {
            bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
        }
        SerializationNode out;
        if (OrxMaintaindSerializeHelper::ParseSomeipSerializeRawData(bytes, out)) {
            SerializationNode again;
            EXPECT_TRUE(OrxMaintaindSerializeHelper::ParseSomeipSerializeRawData(
                OrxMaintaindSerializeHelper::ChangeSomeipSerializeConfigToRawData(out), again));
            EXPECT_TRUE(SameTree(out, again));
        }
    }
}

}  // namespace
