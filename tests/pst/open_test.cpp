// Opening a file: the header checks in their order, the layout chosen by the format byte, the
// size check that opens and leaves its message, and the adapters' width rules.
#include <gtest/gtest.h>

#include "foundation/stream.h"
#include "pst/format_adapter32.h"
#include "pst/format_adapter64.h"
#include "pst_fixture.h"

namespace pst_test {
namespace {

std::string storeBytes(bool unicode)
{
    PstWriter writer(unicode, 0);
    addStoreNode(writer);
    return writer.build();
}

struct VersionCase {
    uint16_t version;
    bool unicode;
    int formatNumber;  // 0: refused
};

class VersionTest : public testing::TestWithParam<VersionCase> {};

TEST_P(VersionTest, FormatByteChoosesTheLayout)
{
    PstWriter writer(GetParam().unicode, 0);
    addStoreNode(writer);
    writer.version = GetParam().version;
    OpenedStore store(writer.build());
    if (GetParam().formatNumber == 0) {
        EXPECT_FALSE(store.opened());
        EXPECT_EQ(errorText(store.reader()), "Unknown PST index type. File may be corrupted or have unsupported format.");
        EXPECT_EQ(store.reader().error()->kind(), 4u);
        EXPECT_EQ(store.reader().error()->code(), static_cast<uint32_t>(-5));
        return;
    }
    ASSERT_TRUE(store.opened()) << errorText(store.reader());
    EXPECT_EQ(store.reader().adapter()->formatNumber(), GetParam().formatNumber);
    EXPECT_NE(store.reader().descIndex()->find(PST::NID_MESSAGE_STORE), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Versions, VersionTest,
                         testing::Values(VersionCase{14, false, 1}, VersionCase{15, false, 1}, VersionCase{23, true, 2},
                                         VersionCase{0x0117, true, 2}, VersionCase{16, true, 0},
                                         VersionCase{22, true, 0}, VersionCase{36, true, 0}));

TEST(OpenTest, FourKilobytePageOstIsRefused)
{
    PST::Reader reader;
    EXPECT_FALSE(reader.open(ty::utf8ToWide(PARCELET_CORPUS_DIR "/big/pstextractor-npm__ost2013-4k.ost")));
    EXPECT_EQ(errorText(reader), "Unknown PST index type. File may be corrupted or have unsupported format.");
}

TEST(OpenTest, BadSignatureAndMissingFileFail)
{
    std::string bytes = storeBytes(true);
    bytes[0] = 'X';
    OpenedStore store(bytes);
    EXPECT_FALSE(store.opened());
    EXPECT_EQ(errorText(store.reader()), "PST signature invalid, corrupt file or unknown file format.");

    PST::Reader reader;
    EXPECT_FALSE(reader.open(u"/nonexistent/folder/store.pst"));
    EXPECT_TRUE(reader.hasError());
}

TEST(OpenTest, SizeMismatchOpensAndKeepsItsMessage)
{
    for (bool unicode : {false, true}) {
        PstWriter writer(unicode, 0);
        addStoreNode(writer);
        writer.fileSizeAdjust = 3;  // as if the file had lost its last three bytes
        OpenedStore store(writer.build());
        ASSERT_TRUE(store.opened());
        EXPECT_EQ(errorText(store.reader()), "Got invalid file size from header. File may be corrupted or have unsupported format.");
        EXPECT_EQ(store.reader().error()->kind(), 4u);
        EXPECT_EQ(store.reader().fileSize(), store.reader().openedFileSize() + 3);
        EXPECT_NE(store.reader().descIndex()->find(PST::NID_MESSAGE_STORE), nullptr);
    }
}

TEST(OpenTest, SecondOpenReplacesTheFirstFile)
{
    test_support::TempDir dir;
    PstWriter ansi(false, 1);
    addStoreNode(ansi);
    PstWriter wide(true, 2);
    addStoreNode(wide);
    wide.addNode(PST::NID_ROOT_FOLDER, wide.addData(test_support::buildPropertyList({{0x3602, PT_LONG, {}, 7}})));
    PST::Reader reader;
    ASSERT_TRUE(reader.open(dir.write("a.pst", ansi.build())));
    EXPECT_EQ(reader.adapter()->formatNumber(), 1);
    EXPECT_EQ(reader.descIndex()->find(PST::NID_ROOT_FOLDER), nullptr);
    ASSERT_TRUE(reader.open(dir.write("b.pst", wide.build())));
    EXPECT_EQ(reader.adapter()->formatNumber(), 2);
    EXPECT_EQ(reader.encryptionMethod(), 2);
    EXPECT_NE(reader.descIndex()->find(PST::NID_ROOT_FOLDER), nullptr);
}

TEST(OpenTest, StoreNodeAndCreateNode)
{
    OpenedStore store(storeBytes(false));
    ASSERT_TRUE(store.opened());
    auto storeNode = store.reader().getStore();
    ASSERT_NE(storeNode, nullptr);
    ASSERT_NE(storeNode->block(), nullptr);
    EXPECT_EQ(storeNode->block()->kind(), PST::KindStore);
    EXPECT_EQ(store.reader().createNode(0x1234), nullptr);
    auto node = store.reader().createNode(PST::NID_MESSAGE_STORE);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->nodeId(), PST::NID_MESSAGE_STORE);
}

// The 32-bit layout widens by zero extension, except readAt, which extends the sign of a value
// that starts as all ones.
TEST(FormatAdapterTest, WideningRules)
{
    PST::FormatAdapter32 narrow;
    PST::FormatAdapter64 wide;
    std::string bytes = pstBytes(0x80000010, 4) + pstBytes(0x7FFFFFFF, 4) + "\x12\x34";
    ty::Buffer source(bytes.data(), static_cast<int64_t>(bytes.size()));
    EXPECT_EQ(narrow.readAt(source, 0), -static_cast<int64_t>(0x7FFFFFF0));
    EXPECT_EQ(narrow.readAt(source, 4), 0x7FFFFFFF);
    EXPECT_EQ(narrow.readAt(source, 8), static_cast<int64_t>(0xFFFFFFFFFFFF3412));
    EXPECT_EQ(narrow.readAt(source, 100), -1);
    EXPECT_EQ(wide.readAt(source, 0), static_cast<int64_t>(0x7FFFFFFF80000010));

    source._seek(0, ty::SeekBegin);
    uint64_t id = 0;
    EXPECT_EQ(narrow.readId(source, id), 4);
    EXPECT_EQ(id, 0x80000010u);

    std::string leaf = pstBytes(1, 4) + pstBytes(2, 4);  // 8 of 12 bytes
    ty::Buffer shortLeaf(leaf.data(), static_cast<int64_t>(leaf.size()));
    PST::SubnodeLeafEntry entry{9, 9, 9};
    EXPECT_EQ(narrow.readSubnodeLeafEntry(shortLeaf, entry), 8);
    EXPECT_EQ(entry.nodeId + entry.dataId + entry.subnodeId, 0u);

    const PST::Layout& a = narrow.layout();
    const PST::Layout& u = wide.layout();
    EXPECT_EQ(a.pageEntryLimit, 41u);
    EXPECT_EQ(u.pageEntryLimit, 20u);
    EXPECT_EQ(a.encryptionField, 461u);
    EXPECT_EQ(u.encryptionField, 513u);
}

}  // namespace
}  // namespace pst_test
