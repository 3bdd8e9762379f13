// Property lists and tables: values by type, cells and their presence bits, row ids, the
// object rule, what an item tells of its block, the name-to-id map, and attachment trees.
#include <gtest/gtest.h>

#include "pst_fixture.h"

namespace pst_test {
namespace {

using test_support::buildPropertyList;
using test_support::buildTable;
using test_support::PstTable;

constexpr uint64_t kNode = 0x200024;

std::unique_ptr<OpenedStore> storeWith(const std::vector<std::string>& heap, bool unicode = true, uint64_t subnodes = 0,
                                       PstWriter* given = nullptr)
{
    PstWriter local(unicode, 1);
    PstWriter& writer = given ? *given : local;
    addStoreNode(writer);
    writer.addNode(kNode, writer.addData(heap), subnodes);
    return std::make_unique<OpenedStore>(writer.build());
}

TEST(PropertyListTest, ValuesByType)
{
    auto store = storeWith(buildPropertyList({
        {0x0E08, PT_LONG, {}, 0x01020304},
        {0x0E1B, PT_BOOLEAN, {}, 1},
        {0x0037, PT_UNICODE, utf16(u"Hi")},
        {0x0070, PT_STRING8, "Topic"},
        {0x0071, PT_STRING8, ""},  // a string of length 0 reads as absent
        {0x0039, PT_SYSTIME, pstBytes(0x01D2000000000000, 8)},
        {0x0FF9, PT_BINARY, "\x01\x02\x03"},
        {0x0006, 6, pstBytes(5, 8)},  // a type this reader doesn't take
    }));
    auto block = store->node(kNode);
    EXPECT_EQ(block->findItem(0x0E08)->value, pstBytes(0x01020304, 4));
    EXPECT_EQ(block->findItem(0x0E08)->type, PT_LONG);
    EXPECT_EQ(block->findItem(0x0E1B)->value, pstBytes(1, 4));  // a boolean keeps 4 bytes
    EXPECT_EQ(block->findItem(0x0037)->value, utf16(u"Hi", true));
    EXPECT_EQ(block->findItem(0x0070)->value, std::string("Topic", 6));
    EXPECT_EQ(block->findItem(0x0071), nullptr);
    EXPECT_EQ(block->findItem(0x0039)->value, pstBytes(0x01D2000000000000, 8));
    EXPECT_EQ(block->findItem(0x0FF9)->value, "\x01\x02\x03");
    EXPECT_EQ(block->findItem(0x0006), nullptr);
    EXPECT_EQ(errorText(*block), "Unknown ref type");
    EXPECT_EQ(block->findItem(0x0E08, 1), nullptr);
}

TEST(PropertyListTest, HeadersOnlyKeepsTheShortList)
{
    PstWriter writer(false, 2);
    auto store = storeWith(buildPropertyList({{0x0037, PT_STRING8, "Subject"},
                                              {0x1000, PT_STRING8, "Body"},
                                              {0x3705, PT_LONG, {}, 1}}),
                           false, 0, &writer);
    store->reader().setHeadersOnly(1);
    auto block = store->node(kNode);
    EXPECT_NE(block->findItem(0x0037), nullptr);
    EXPECT_EQ(block->findItem(0x1000), nullptr);
    EXPECT_EQ(block->findItem(0x3705), nullptr);
    EXPECT_EQ(block->kind(), PST::KindUnknown);  // skipped items don't classify
}

struct KindCase {
    const char* name;
    std::vector<PstProperty> properties;
    uint32_t kind;
};

TEST(PropertyListTest, LastMatchingItemGivesTheKind)
{
    const KindCase cases[] = {
        {"Store", {{0x35E0, PT_BINARY, std::string(24, '\0')}}, PST::KindStore},
        {"Folder", {{0x3602, PT_LONG, {}, 3}}, PST::KindFolder},
        {"Contact", {{0x001A, PT_UNICODE, utf16(u"IPM.Contact")}}, PST::KindMessage},
        {"MeetingNarrow", {{0x001A, PT_STRING8, "IPM.Schedule.Meeting.Request"}}, PST::KindMessage},
        {"Post", {{0x001A, PT_UNICODE, utf16(u"IPM.Post")}}, PST::KindUnknown},
        {"ClassAsBinary", {{0x001A, PT_BINARY, "IPM.Note"}}, PST::KindUnknown},
        {"Attachment", {{0x001A, PT_UNICODE, utf16(u"IPM.Note")}, {0x3705, PT_LONG, {}, 1}}, PST::KindAttachment},
    };
    for (const KindCase& c : cases) {
        SCOPED_TRACE(c.name);
        auto store = storeWith(buildPropertyList(c.properties));
        EXPECT_EQ(store->node(kNode)->kind(), c.kind);
    }
}

TEST(PropertyListTest, ObjectResolvesItsSubnodeOrKeepsItsId)
{
    for (bool present : {true, false}) {
        PstWriter writer(true, 1);
        uint64_t subnodes = writer.addSubnodeLeaf({{0x8045, writer.addBlock("embedded bytes")}});
        uint32_t named = present ? 0x8045 : 0x8065;
        auto store = storeWith(buildPropertyList({{0x3701, PT_OBJECT, pstBytes(named, 4) + pstBytes(14, 4)}}), true,
                               subnodes, &writer);
        auto block = store->node(kNode);
        const PST::BlockItem* data = block->findItem(0x3701);
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(data->value, present ? "embedded bytes" : "");
        EXPECT_EQ(data->type, present ? PT_OBJECT : named);
    }
}

PstTable sampleTable(bool unicode)
{
    PstTable table;
    table.wideLayout = unicode;
    table.columns = {{0x67F20003, 4}, {0x0037001F, 4}, {0x00390040, 8}, {0x0E1B000B, 1}, {0x00060006, 8}};
    table.rowIds = {0x10, 0x20, 0, 0x40};  // the walk stops at the row id of 0
    table.cells = {
        {{0, pstBytes(0x10, 4)}, {2, pstBytes(0x1122334455667788, 8)}, {3, "\x01"}, {4, pstBytes(1, 8)}},
        {{0, pstBytes(0x20, 4)}},
        {{0, pstBytes(0x40, 4)}, {3, std::string(1, '\0')}},
    };
    table.heapCells = {{{1, utf16(u"First")}}, {}, {{1, utf16(u"Third")}}};
    return table;
}

class TableTest : public testing::TestWithParam<bool> {};

TEST_P(TableTest, RowsFromCellsAndPresenceBits)
{
    auto store = storeWith(buildTable(sampleTable(GetParam())), GetParam());
    auto table = store->node(kNode);
    ASSERT_EQ(table->rowIds().size(), 2u);
    EXPECT_EQ(table->rowIds()[0].rowId, 0x10u);
    EXPECT_EQ(table->rowIds()[1].rowId, 0x20u);
    EXPECT_EQ(table->rowIds()[1].rowIndex, 1u);
    ASSERT_EQ(table->rows().size(), 3u);
    EXPECT_EQ(table->findItem(0x0037, 0)->value, utf16(u"First", true));
    EXPECT_EQ(table->findItem(0x0039, 0)->value, pstBytes(0x1122334455667788, 8));  // 8 bytes kept inline
    EXPECT_EQ(table->findItem(0x0E1B, 0)->value, pstBytes(1, 4));
    EXPECT_EQ(table->findItem(0x0006, 0), nullptr);  // a cell of an unknown type is dropped alone
    EXPECT_EQ(errorText(*table), "Unknown ref type");
    EXPECT_EQ(table->rows()[1].size(), 1u);  // only the row id is present
    EXPECT_EQ(table->findItem(0x67F2, 2)->value, pstBytes(0x40, 4));
    EXPECT_EQ(table->findItem(0x0037, 2)->value, utf16(u"Third", true));
}

TEST_P(TableTest, FolderTablesGiveRowIdsOnly)
{
    auto store = storeWith(buildTable(sampleTable(GetParam())), GetParam());
    auto table = store->node(kNode, PST::KindFolder);
    EXPECT_FALSE(table->hasError());
    EXPECT_EQ(table->rowIds().size(), 2u);
    EXPECT_TRUE(table->rows().empty());
}

TEST_P(TableTest, TableWithoutRowIndexIsEmpty)
{
    PstTable empty = sampleTable(GetParam());
    empty.emptyIndex = true;
    auto store = storeWith(buildTable(empty), GetParam());
    auto table = store->node(kNode);
    EXPECT_FALSE(table->hasError());
    EXPECT_TRUE(table->rowIds().empty());
    EXPECT_TRUE(table->rows().empty());
}

INSTANTIATE_TEST_SUITE_P(Layouts, TableTest, testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Unicode" : "Ansi"; });

TEST(NameMapTest, StringAndNumericNames)
{
    PstWriter writer(true, 1);
    addStoreNode(writer);
    std::string strings = pstBytes(8, 4) + utf16(u"Keys");
    std::string guids = std::string("0123456789ABCDEF");
    std::string entries = pstBytes(0, 4) + pstBytes(1, 2) + pstBytes(0, 2)            // string at 0
                          + pstBytes(0x8501, 4) + pstBytes(1 << 1, 2) + pstBytes(1, 2)  // PS_MAPI
                          + pstBytes(0x10, 4) + pstBytes(0, 2) + pstBytes(2, 2)         // GUID index 0
                          + pstBytes(0x20, 4) + pstBytes(3 << 1, 2) + pstBytes(3, 2)    // first GUID of the stream
                          + pstBytes(500, 4) + pstBytes(1, 2) + pstBytes(4, 2);         // string past the end
    writer.addNode(PST::NID_NAME_TO_ID_MAP, writer.addData(buildPropertyList({{0x0001, PT_LONG, {}, 251},
                                                                              {0x0002, PT_BINARY, guids},
                                                                              {0x0003, PT_BINARY, entries},
                                                                              {0x0004, PT_BINARY, strings}})));
    OpenedStore store(writer.build());
    ASSERT_TRUE(store.opened());
    const PST::NameMap& map = store.reader().nameMap();
    ASSERT_EQ(map.size(), 5u);
    EXPECT_EQ(map.find(0x8000)->second.kind, PST::NamedProperty::String);
    EXPECT_EQ(map.find(0x8000)->second.payload, utf16(u"Keys"));
    const std::string mapi("\x28\x03\x02\x00\x00\x00\x00\x00\xC0\x00\x00\x00\x00\x00\x00\x46", 16);
    EXPECT_EQ(map.find(0x8001)->second.payload, mapi + pstBytes(0x8501, 4));
    EXPECT_EQ(map.find(0x8002)->second.payload, std::string(16, '\0') + pstBytes(0x10, 4));
    EXPECT_EQ(map.find(0x8003)->second.payload, guids + pstBytes(0x20, 4));
    EXPECT_EQ(map.find(0x8004)->second.payload, "");
    EXPECT_EQ(store.reader().nameEntryStream(), entries);
}

TEST(NameMapTest, FileWithoutMapOpensWithAnEmptyOne)
{
    PstWriter writer(false, 0);
    addStoreNode(writer);
    OpenedStore store(writer.build());
    EXPECT_TRUE(store.opened());
    EXPECT_TRUE(store.reader().nameMap().empty());
}

TEST(AttachmentTreeTest, AttachmentsRecipientsAndEmbeddedMessage)
{
    for (bool unicode : {false, true}) {
        SCOPED_TRACE(unicode ? "unicode" : "ansi");
        PstWriter writer(unicode, 1);
        addStoreNode(writer);
        PstTable attachments;
        attachments.wideLayout = unicode;
        attachments.columns = {{0x67F20003, 4}, {0x37050003, 4}};
        attachments.rowIds = {0x8025, 0x8065};
        attachments.cells = {{{0, pstBytes(0x8025, 4)}, {1, pstBytes(5, 4)}}, {{0, pstBytes(0x8065, 4)}, {1, pstBytes(1, 4)}}};
        PstTable recipients;
        recipients.wideLayout = unicode;
        recipients.columns = {{0x67F20003, 4}, {0x3001001F, 4}};
        recipients.rowIds = {1, 2};
        recipients.cells = {{{0, pstBytes(1, 4)}}, {{0, pstBytes(2, 4)}}};
        recipients.heapCells = {{{1, utf16(u"Ann")}}, {{1, utf16(u"Bob")}}};
        uint64_t embedded = writer.addData(buildPropertyList({{0x001A, PT_UNICODE, utf16(u"IPM.Note")},
                                                               {0x0037, PT_UNICODE, utf16(u"Inner")}}));
        uint64_t attachmentSubnodes = writer.addSubnodeLeaf({{0x8045, embedded}});
        uint64_t embeddedAttachment = writer.addData(buildPropertyList(
            {{0x3705, PT_LONG, {}, 5}, {0x3701, PT_OBJECT, pstBytes(0x8045, 4) + pstBytes(100, 4)}}));
        uint64_t plainAttachment = writer.addData(buildPropertyList({{0x3705, PT_LONG, {}, 1},
                                                                     {0x3701, PT_BINARY, "file bytes"}}));
        uint64_t subnodes = writer.addSubnodeLeaf({{0x671, writer.addData(buildTable(attachments))},
                                                   {0x692, writer.addData(buildTable(recipients))},
                                                   {0x8025, embeddedAttachment, attachmentSubnodes},
                                                   {0x8065, plainAttachment}});
        writer.addNode(kNode, writer.addData(buildPropertyList({{0x001A, PT_UNICODE, utf16(u"IPM.Note")}})), subnodes);
        OpenedStore store(writer.build());
        auto message = store.node(kNode);
        auto tree = message->getAttachmentTree();
        ASSERT_NE(tree, nullptr);
        ASSERT_EQ(tree->childCount(), 2u);
        PST::TreeNode* first = tree->firstChild();
        EXPECT_EQ(first->block()->kind(), PST::KindAttachment);
        ASSERT_NE(first->firstChild(), nullptr);
        EXPECT_EQ(first->firstChild()->block()->findItem(0x0037)->value, utf16(u"Inner", true));
        EXPECT_EQ(first->next()->firstChild(), nullptr);
        EXPECT_EQ(first->next()->block()->findItem(0x3701)->value, "file bytes");

        auto people = message->getRecipientTree();
        ASSERT_NE(people, nullptr);
        ASSERT_EQ(people->block()->rows().size(), 2u);
        EXPECT_EQ(people->block()->findItem(0x3001, 1)->value, utf16(u"Bob", true));
        EXPECT_EQ(people->block()->kind(), PST::KindRecipient);
    }
}

}  // namespace
}  // namespace pst_test
