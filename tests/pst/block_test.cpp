// Blocks: bytes fetched by id and decoded by the file's method, data trees joined, sub-node
// trees built and searched, and damaged blocks ending in their messages or a shorter result.
#include <gtest/gtest.h>

#include "pst_fixture.h"

namespace pst_test {
namespace {

using test_support::buildPropertyList;
using test_support::PstLayoutInfo;

constexpr uint64_t kMessage = 0x200024;
constexpr uint64_t kBodySubnode = 0x8F1;      // a sub-node id with low bits set
constexpr uint64_t kNestedSubnode = 0x8B1;

std::string longText(size_t size)
{
    std::string text;
    for (size_t i = 0; text.size() < size; ++i) text += "line " + std::to_string(i) + "\n";
    return text.substr(0, size);
}

// A message whose property list spans two heap blocks joined by a data tree, with a body kept
// in a sub-node whose data is a data tree of three blocks, under a sub-node tree of two levels.
struct MessageStore {
    std::string bytes;
    PstLayoutInfo where;
    std::string body;
    uint64_t listTreeId = 0;
};

MessageStore buildMessageStore(const Layout& layout)
{
    PstWriter writer(layout.unicode, layout.encryption);
    addStoreNode(writer);
    MessageStore store;
    store.body = longText(9000);
    uint64_t bodyData = writer.addData({store.body.substr(0, 4000), store.body.substr(4000, 4000), store.body.substr(8000)});
    uint64_t nestedData = writer.addBlock("nested");
    uint64_t nestedTree = writer.addSubnodeLeaf({{kNestedSubnode, nestedData}});
    uint64_t leafA = writer.addSubnodeLeaf({{0x8A1, writer.addBlock("first")}, {kBodySubnode, bodyData, nestedTree}});
    uint64_t leafB = writer.addSubnodeLeaf({{0x901, writer.addBlock("second")}});
    uint64_t branch = writer.addSubnodeBranch({{0x8A1, leafA}, {0x901, leafB}});
    std::vector<std::string> heap = buildPropertyList({{0x001A, PT_UNICODE, utf16(u"IPM.Note.Custom")},
                                                       {0x0037, PT_UNICODE, utf16(u"Subject in the first block")},
                                                       {0x1000, PT_UNICODE, {}, static_cast<uint32_t>(kBodySubnode)},
                                                       {0x0E08, PT_LONG, {}, 1234},
                                                       {0x3FFA, PT_STRING8, "Last Sender"}},
                                                      3);
    store.listTreeId = writer.addData(heap);
    writer.addNode(kMessage, store.listTreeId, branch);
    store.bytes = writer.build(&store.where);
    return store;
}

class BlockLayoutTest : public testing::TestWithParam<Layout> {};

TEST_P(BlockLayoutTest, MessageDecodesThroughTreesAndSubnodes)
{
    MessageStore built = buildMessageStore(GetParam());
    // Encoded files don't show their text.
    EXPECT_EQ(built.bytes.find(utf16(u"Subject in")) == std::string::npos, GetParam().encryption != 0);
    OpenedStore store(built.bytes);
    ASSERT_TRUE(store.opened()) << errorText(store.reader());
    auto message = store.node(kMessage);
    ASSERT_FALSE(message->hasError()) << errorText(*message);
    EXPECT_EQ(message->kind(), PST::KindMessage);
    ASSERT_EQ(message->rows().size(), 1u);
    const PST::BlockItem* subject = message->findItem(0x0037);
    ASSERT_NE(subject, nullptr);
    EXPECT_EQ(subject->value, utf16(u"Subject in the first block", true));
    const PST::BlockItem* sender = message->findItem(0x3FFA);
    ASSERT_NE(sender, nullptr);  // in the second heap block
    EXPECT_EQ(sender->value, std::string("Last Sender", 12));
    ASSERT_NE(message->findItem(0x0E08), nullptr);
    EXPECT_EQ(message->findItem(0x0E08)->value, pstBytes(1234, 4));
    const PST::BlockItem* body = message->findItem(0x1000);
    ASSERT_NE(body, nullptr);
    EXPECT_EQ(body->value, built.body + std::string(2, '\0'));

    // The sub-node tree keeps its index level as a visible level.
    ASSERT_NE(message->subnodes(), nullptr);
    EXPECT_TRUE(message->ownsSubnodes());
    EXPECT_EQ(message->subnodes()->childCount(), 2u);
    std::string nested;
    EXPECT_TRUE(message->readSubnode(nested, message->subnodes(), kNestedSubnode));
    EXPECT_EQ(nested, "nested");
    std::string missing = "x";
    EXPECT_FALSE(message->readSubnode(missing, message->subnodes(), 0x12345));
    EXPECT_FALSE(message->readSubnode(missing, nullptr, kBodySubnode));
}

TEST_P(BlockLayoutTest, DataTreeBlocksAreNeverDecoded)
{
    MessageStore built = buildMessageStore(GetParam());
    OpenedStore store(built.bytes);
    auto message = store.node(kMessage);
    std::string tree;
    ASSERT_TRUE(message->readBuffer(tree, built.listTreeId));
    EXPECT_EQ(tree[0], 1);  // stored as it is, whatever the file's method
    EXPECT_EQ(tree[1], 1);
}

INSTANTIATE_TEST_SUITE_P(Layouts, BlockLayoutTest, testing::ValuesIn(kLayouts), layoutName);

TEST(SubnodeTreeTest, DescendantsComeBeforeTheirAncestors)
{
    PST::IndexId2Node root;
    auto* outer = new PST::IndexId2Node(0x671, 100);
    root.appendChild(outer);
    auto* attachment = new PST::IndexId2Node(0x8025, 200);
    root.appendChild(attachment);
    auto* inner = new PST::IndexId2Node(0x671, 300);
    auto* embedded = new PST::IndexId2Node(0x100000671, 400);
    attachment->appendChild(embedded);
    embedded->appendChild(inner);
    EXPECT_EQ(root.find(0x671), outer);  // the first child's subtree holds none, so the child wins
    EXPECT_EQ(attachment->find(0x671), inner);
    EXPECT_EQ(root.find(0x8025), attachment);
    EXPECT_EQ(root.find(0), nullptr);
    EXPECT_EQ(root.childCount(), 2u);
}

// One node built on damaged parts: its failure or its shorter result.
struct BlockDamage {
    const char* name;
    // Builds the node under kMessage; returns the text expected in the block's keeper.
    std::string (*build)(PstWriter& writer);
    size_t subnodeCount;  // children below the sub-node root, where the node has one
};

const BlockDamage kBlockDamages[] = {
    {"TooShortForAHeap", [](PstWriter& w) { w.addNode(kMessage, w.addBlock("\x12\x34\x56")); return std::string("Invalid block size"); }, 0},
    {"NoHeapSignature",
     [](PstWriter& w) { w.addNode(kMessage, w.addBlock(std::string(16, '\x20'))); return std::string("Invalid block type."); },
     0},
    {"DataBlockNotInIndex", [](PstWriter& w) { w.addNode(kMessage, 0x7FFC); return std::string("Can't find index node."); }, 0},
    {"DataBlockPastTheEnd",
     [](PstWriter& w) { w.addNode(kMessage, w.addRawEntry(1 << 30, 200)); return std::string("Can't read buffer data by id."); },
     0},
    {"DataIdZero", [](PstWriter& w) { w.addNode(kMessage, 0); return std::string("Can't parse block, descId = 0."); }, 0},
    {"SubnodeBlockOfAnotherType",
     [](PstWriter& w) {
         w.addNode(kMessage, w.addData(buildPropertyList({{0x0E08, PT_LONG, {}, 1}})), w.addTreeBlock(1, {}, 0));
         return std::string();
     },
     SIZE_MAX},
    {"SubnodeLevelTwo",
     [](PstWriter& w) {
         uint64_t leaf = w.addSubnodeLeaf({{0x8A1, w.addBlock("x")}}, 2);
         w.addNode(kMessage, w.addData(buildPropertyList({{0x0E08, PT_LONG, {}, 1}})), leaf);
         return std::string();
     },
     0},
    {"SubnodeDataNotInIndex",
     [](PstWriter& w) {
         uint64_t leaf = w.addSubnodeLeaf({{0x8A1, 0x7FF0}, {0x8C1, w.addBlock("kept")}});
         w.addNode(kMessage, w.addData(buildPropertyList({{0x0E08, PT_LONG, {}, 1}})), leaf);
         return std::string();
     },
     1},
    {"SubnodeTreeLoopsBack",
     [](PstWriter& w) {
         // A branch whose child is the branch itself: ids are handed out in steps of four.
         uint64_t self = w.addSubnodeBranch({{0x8A1, 0x1E}, {0x8C1, 0x1E}});
         w.addNode(kMessage, w.addData(buildPropertyList({{0x0E08, PT_LONG, {}, 1}})), self);
         return std::string();
     },
     2},
};

TEST(BlockDamageTest, DamagedNodesEndInTheirMessage)
{
    for (bool unicode : {false, true}) {
        for (const BlockDamage& damage : kBlockDamages) {
            SCOPED_TRACE(std::string(damage.name) + (unicode ? " unicode" : " ansi"));
            PstWriter writer(unicode, 1);
            addStoreNode(writer);
            std::string expected = damage.build(writer);
            OpenedStore store(writer.build());
            ASSERT_TRUE(store.opened());
            auto block = store.node(kMessage);
            EXPECT_EQ(errorText(*block), expected);
            if (damage.subnodeCount == SIZE_MAX) {
                EXPECT_EQ(block->subnodes(), nullptr);
                EXPECT_EQ(errorText(store.reader()), "Invalid id2 block type.");
            } else if (block->subnodes()) {
                EXPECT_EQ(block->subnodes()->childCount(), damage.subnodeCount);
            }
        }
    }
}

TEST(BlockDamageTest, DataTreeThatContainsItselfEnds)
{
    for (bool unicode : {false, true}) {
        PstWriter writer(unicode, 0);
        addStoreNode(writer);
        uint64_t heap = writer.addData(buildPropertyList({{0x0E08, PT_LONG, {}, 5}}));
        // Tree blocks get ids 4 apart: the second names itself and the first.
        uint64_t first = writer.addTreeBlock(1, {heap, heap + 6, heap + 10}, 0);
        writer.addTreeBlock(2, {first, heap + 10}, 0);
        writer.addNode(kMessage, heap + 10);
        OpenedStore store(writer.build());
        auto block = store.node(kMessage);
        ASSERT_EQ(block->rows().size(), 1u);
        EXPECT_NE(block->findItem(0x0E08), nullptr);
        std::string joined;
        EXPECT_FALSE(block->readDataTree(heap + 10, joined));
    }
}

TEST(BlockDamageTest, HeapItemBoundsStayInsideTheirBlock)
{
    PstWriter writer(true, 0);
    addStoreNode(writer);
    std::vector<std::string> heap = buildPropertyList({{0x0037, PT_STRING8, "abcdef"}});
    // The last item's end now lies far past the block.
    std::string& data = heap.front();
    const auto* bytes = reinterpret_cast<const uint8_t*>(data.data());
    size_t map = PST::loadU16(bytes);
    test_support::pstPut(data, map + 4 + 2 * PST::loadU16(bytes + map), 0xFFF0, 2);
    writer.addNode(kMessage, writer.addData(heap));
    OpenedStore store(writer.build());
    auto block = store.node(kMessage);
    EXPECT_FALSE(block->hasError() && block->error()->kind() >= 3) << errorText(*block);
    const PST::BlockItem* item = block->findItem(0x0037);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->value.substr(0, 6), "abcdef");
    EXPECT_LE(item->value.size(), data.size());
}

}  // namespace
}  // namespace pst_test
