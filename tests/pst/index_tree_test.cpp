// The two index trees: lookups through pages of several levels built on first need, and the
// checks that refuse a damaged page while the rest of the tree stays reachable.
#include <gtest/gtest.h>

#include <vector>

#include "pst_fixture.h"

namespace pst_test {
namespace {

using test_support::PstLayoutInfo;
using test_support::pstPut;

constexpr size_t kFanout = 3;  // pages of three entries: 40 nodes make four levels

struct Store {
    std::string bytes;
    PstLayoutInfo where;
    std::vector<uint64_t> nodeIds;
    std::vector<uint64_t> blockIds;
};

Store buildStore(bool unicode, bool withStoreNode = true)
{
    PstWriter writer(unicode, 0, kFanout);
    Store store;
    if (withStoreNode) {
        addStoreNode(writer);
        store.nodeIds.push_back(PST::NID_MESSAGE_STORE);
    }
    for (uint64_t i = 0; i < 40; ++i) {
        uint64_t nodeId = 0x200024 + 32 * i;
        uint64_t blockId = writer.addData(test_support::buildPropertyList({{0x0E08, PT_LONG, {}, static_cast<uint32_t>(i)}}));
        writer.addNode(nodeId, blockId);
        store.nodeIds.push_back(nodeId);
        store.blockIds.push_back(blockId);
    }
    store.bytes = writer.build(&store.where);
    return store;
}

size_t nodeEntrySize(bool unicode) { return unicode ? 32 : 16; }
size_t pageIdOffset() { return 504; }

class IndexTreeTest : public testing::TestWithParam<bool> {};

TEST_P(IndexTreeTest, EveryKeyIsFoundThroughAllLevels)
{
    Store built = buildStore(GetParam());
    ASSERT_GE(built.where.nodePages.size(), 3u);
    OpenedStore store(built.bytes);
    ASSERT_TRUE(store.opened()) << errorText(store.reader());
    for (uint64_t nodeId : built.nodeIds) {
        const auto* node = store.reader().descIndex()->find(nodeId);
        ASSERT_NE(node, nullptr) << nodeId;
        EXPECT_EQ(node->id, nodeId);
        EXPECT_EQ(store.reader().descIndex()->find(nodeId ^ 1), nullptr);  // node ids are never masked
    }
    for (uint64_t blockId : built.blockIds) {
        const auto* block = store.reader().index()->find(blockId);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(block->offset, built.where.blockOffsets.at(blockId));
        EXPECT_EQ(store.reader().index()->find(blockId | 1), block);  // bit 0 isn't part of a block id
    }
    EXPECT_EQ(store.reader().descIndex()->find(0x200024 + 32 * 40), nullptr);
}

template <class Page>
size_t countBuilt(const Page& page)
{
    size_t built = page.built();
    for (auto* child = page.firstChild(); child; child = child->next()) built += countBuilt(*child);
    return built;
}

// Opening reads the roots, and the one path that the lookup of the name-to-id map takes.
TEST_P(IndexTreeTest, OpenBuildsNoMoreThanOnePath)
{
    Store built = buildStore(GetParam());
    OpenedStore store(built.bytes);
    ASSERT_TRUE(store.opened());
    EXPECT_EQ(countBuilt(store.reader().index()->root()), 1u);
    EXPECT_LE(countBuilt(store.reader().descIndex()->root()), built.where.nodePages.size());
    store.reader().descIndex()->find(built.nodeIds.back());
    EXPECT_LE(countBuilt(store.reader().descIndex()->root()), 2 * built.where.nodePages.size());
}

// Damage to one page of the node tree: the keys below it are lost, the others stay.
struct PageDamage {
    const char* name;
    void (*apply)(std::string& bytes, const Store& store, bool unicode);
    bool storeNodeLost;  // the damaged page lies on the path to the first key
};

const PageDamage kDamages[] = {
    {"CountAboveLimit",
     [](std::string& bytes, const Store& s, bool unicode) {
         bytes[s.where.nodePages[0][1] + (unicode ? 488 : 496)] = static_cast<char>(unicode ? 21 : 42);
     },
     false},
    {"BackLinkOfAnotherPage",
     [](std::string& bytes, const Store& s, bool unicode) {
         pstPut(bytes, s.where.nodePages[0][1] + pageIdOffset(), 0x4444, unicode ? 8 : 4);
     },
     false},
    {"ChildIsItsOwnAncestor",
     [](std::string& bytes, const Store& s, bool unicode) {
         // The second entry of the root now leads back to the root page itself.
         int width = unicode ? 8 : 4;
         size_t root = s.where.nodeRootOffset;
         pstPut(bytes, root + 3 * width + width, PST::loadLittleEndian<uint64_t>(reinterpret_cast<const uint8_t*>(bytes.data() + root + 504)) & (unicode ? ~0ull : 0xFFFFFFFFull), width);
         pstPut(bytes, root + 3 * width + 2 * width, root, width);
     },
     false},
    {"PageOffsetPastTheEnd",
     [](std::string& bytes, const Store& s, bool unicode) {
         int width = unicode ? 8 : 4;
         pstPut(bytes, s.where.nodeRootOffset + 3 * width + 2 * width, bytes.size() + 4096, width);
     },
     false},
};

TEST_P(IndexTreeTest, DamagedPageLosesOnlyItsKeys)
{
    const bool unicode = GetParam();
    for (const PageDamage& damage : kDamages) {
        SCOPED_TRACE(damage.name);
        Store built = buildStore(unicode);
        damage.apply(built.bytes, built, unicode);
        OpenedStore store(built.bytes);
        ASSERT_TRUE(store.opened()) << errorText(store.reader());
        size_t found = 0;
        for (uint64_t nodeId : built.nodeIds) found += store.reader().descIndex()->find(nodeId) != nullptr;
        EXPECT_GT(found, 0u);
        EXPECT_LT(found, built.nodeIds.size());
        EXPECT_EQ(store.reader().descIndex()->find(PST::NID_MESSAGE_STORE) != nullptr, !damage.storeNodeLost);
    }
}

TEST_P(IndexTreeTest, LeafEntryOutOfOrderIsDropped)
{
    const bool unicode = GetParam();
    Store built = buildStore(unicode);
    // The middle entry of the second leaf now sorts below the first.
    size_t leaf = built.where.nodePages[0][1];
    uint64_t first = PST::loadLittleEndian<uint32_t>(reinterpret_cast<const uint8_t*>(built.bytes.data() + leaf));
    uint64_t middle = PST::loadLittleEndian<uint32_t>(reinterpret_cast<const uint8_t*>(built.bytes.data() + leaf + nodeEntrySize(unicode)));
    uint64_t last = PST::loadLittleEndian<uint32_t>(reinterpret_cast<const uint8_t*>(built.bytes.data() + leaf + 2 * nodeEntrySize(unicode)));
    pstPut(built.bytes, leaf + nodeEntrySize(unicode), first - 1, unicode ? 8 : 4);
    OpenedStore store(built.bytes);
    EXPECT_NE(store.reader().descIndex()->find(first), nullptr);
    EXPECT_EQ(store.reader().descIndex()->find(middle), nullptr);
    EXPECT_EQ(store.reader().descIndex()->find(first - 1), nullptr);
    EXPECT_NE(store.reader().descIndex()->find(last), nullptr);
}

TEST_P(IndexTreeTest, NodeTreeNotStartingWithTheStoreNodeFindsNothing)
{
    OpenedStore store(buildStore(GetParam(), false).bytes);
    ASSERT_TRUE(store.opened());
    EXPECT_EQ(errorText(store.reader().descIndex()->root().keeper()),
              "Invalid table first entry data. File may be corrupted.");
    EXPECT_EQ(store.reader().descIndex()->find(0x200024), nullptr);
    EXPECT_EQ(store.reader().getStore(), nullptr);
    EXPECT_EQ(errorText(store.reader()), "No NID_MESSAGE_STORE node. File may be corrupted.");
}

TEST_P(IndexTreeTest, LeafWithTheHighestCountStillBuilds)
{
    const bool unicode = GetParam();
    Store built = buildStore(unicode);
    size_t leaf = built.where.nodePages[0][1];
    built.bytes[leaf + (unicode ? 488 : 496)] = static_cast<char>(unicode ? 20 : 41);
    uint64_t first = PST::loadLittleEndian<uint32_t>(reinterpret_cast<const uint8_t*>(built.bytes.data() + leaf));
    OpenedStore store(built.bytes);
    EXPECT_NE(store.reader().descIndex()->find(first), nullptr);
}

template <class Page>
size_t countPages(const Page& page)
{
    size_t pages = 1;
    for (auto* child = page.firstChild(); child; child = child->next()) pages += countPages(*child);
    return pages;
}

// A page that fails after appending some children is not read again at each lookup (found by
// fuzzing: each retry appended its children once more, and lookups slowed down without end).
TEST_P(IndexTreeTest, FailedPageIsNotBuiltAgain)
{
    const bool unicode = GetParam();
    Store built = buildStore(unicode);
    ASSERT_GE(built.where.nodePages.size(), 3u);
    // The last entry of the first page above the leaves now sorts below its neighbour.
    size_t page = built.where.nodePages[1][0];
    int width = unicode ? 8 : 4;
    pstPut(built.bytes, page + 2 * 3 * width, 0x22, width);
    OpenedStore store(built.bytes);
    PST::DescIndex& index = *store.reader().descIndex();
    for (uint64_t nodeId : built.nodeIds) index.find(nodeId);
    const size_t pages = countPages(index.root());
    for (int i = 0; i < 50; ++i)
        for (uint64_t nodeId : built.nodeIds) index.find(nodeId);
    EXPECT_EQ(countPages(index.root()), pages);
    EXPECT_NE(index.find(built.nodeIds[1]), nullptr);  // appended before the bad entry
    EXPECT_NE(index.find(built.nodeIds.back()), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Layouts, IndexTreeTest, testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Unicode" : "Ansi"; });

}  // namespace
}  // namespace pst_test
