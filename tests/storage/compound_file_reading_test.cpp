// Reading well-formed compound files built by the test writer: the tree, the streams on both
// sides of the mini stream cutoff, the DIFAT, version 4, and the stream operations.
#include <gtest/gtest.h>

#include <string>

#include "foundation/binary_reader.h"
#include "foundation/compound_file_signature.h"
#include "foundation/utf.h"
#include "storage/compound_file_writer.h"
#include "storage/storage.h"
#include "support/temp_dir.h"
#include "tree_walk.h"

namespace {

using cfb::CfbLayout;
using cfb::CompoundFileWriter;

// Bytes that differ from sector to sector and from stream to stream.
std::string pattern(size_t size, uint32_t seed)
{
    std::string bytes(size, '\0');
    uint32_t state = seed * 2654435761u + 1;
    for (char& c : bytes) {
        state = state * 1103515245u + 12345u;
        c = static_cast<char>(state >> 16);
    }
    return bytes;
}

// A message-like tree three storages deep, with streams of 0, 1, 63, 64, 65, 4095 bytes (mini
// stream) and 4096, 5000, 70000 bytes (normal sectors).
void fillSampleTree(cfb::CfbNode& root)
{
    root.addStream(u"__properties_version1.0", pattern(32 + 16 * 5, 1));
    root.addStream(u"__substg1.0_0037001F", pattern(63, 2));
    root.addStream(u"__substg1.0_1000001F", pattern(4095, 3));
    root.addStream(u"__substg1.0_10090102", pattern(4096, 4));
    root.addStream(u"empty", "");
    cfb::CfbNode& recipient = root.addStorage(u"__recip_version1.0_#00000000");
    recipient.addStream(u"__substg1.0_3001001F", pattern(64, 5));
    cfb::CfbNode& attachment = root.addStorage(u"__attach_version1.0_#00000000");
    attachment.classId[0] = 0x0B;
    attachment.classId[15] = 0x46;
    attachment.addStream(u"__substg1.0_37010102", pattern(70000, 6));
    cfb::CfbNode& embedded = attachment.addStorage(u"__substg1.0_3701000D");
    embedded.addStream(u"__substg1.0_0037001F", pattern(65, 7));
    embedded.addStream(u"__substg1.0_37010102", pattern(5000, 8));
    embedded.addStorage(u"__recip_version1.0_#00000000").addStream(u"one", pattern(1, 9));
}

void expectSampleTree(const std::string& bytes)
{
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(bytes, root), cfb::S_OK_CODE);
    storage_test::WalkResult walk = storage_test::walkAll(root);
    ASSERT_EQ(walk.code, cfb::S_OK_CODE);
    EXPECT_EQ(walk.streams.size(), 10u);
    EXPECT_EQ(walk.streams[u"__substg1.0_0037001F"], pattern(63, 2));
    EXPECT_EQ(walk.streams[u"__substg1.0_1000001F"], pattern(4095, 3));
    EXPECT_EQ(walk.streams[u"__substg1.0_10090102"], pattern(4096, 4));
    EXPECT_EQ(walk.streams[u"empty"], "");
    EXPECT_EQ(walk.streams[u"__recip_version1.0_#00000000/__substg1.0_3001001F"], pattern(64, 5));
    EXPECT_EQ(walk.streams[u"__attach_version1.0_#00000000/__substg1.0_37010102"], pattern(70000, 6));
    EXPECT_EQ(walk.streams[u"__attach_version1.0_#00000000/__substg1.0_3701000D/__substg1.0_0037001F"], pattern(65, 7));
    EXPECT_EQ(walk.streams[u"__attach_version1.0_#00000000/__substg1.0_3701000D/__substg1.0_37010102"],
              pattern(5000, 8));
    EXPECT_EQ(walk.streams[u"__attach_version1.0_#00000000/__substg1.0_3701000D/__recip_version1.0_#00000000/one"],
              pattern(1, 9));
}

TEST(CompoundFileReading, WalksNestedStoragesAndStreamsOnBothSidesOfTheCutoff)
{
    CompoundFileWriter writer(3);
    fillSampleTree(writer.root);
    expectSampleTree(writer.build());
}

TEST(CompoundFileReading, FollowsChainsThatAreNotContiguous)
{
    CompoundFileWriter writer(3);
    writer.interleave = true;
    fillSampleTree(writer.root);
    CfbLayout layout;
    std::string bytes = writer.build(&layout);
    uint32_t first = layout.startSectors.at(u"__attach_version1.0_#00000000/__substg1.0_37010102");
    ASSERT_NE(cfb::getU32(bytes, layout.fatEntryOffset(first)), first + 1);
    expectSampleTree(bytes);
}

TEST(CompoundFileReading, ReadsVersion4WithItsLargeSectors)
{
    CompoundFileWriter writer(4);
    writer.interleave = true;
    fillSampleTree(writer.root);
    std::string bytes = writer.build();
    ASSERT_TRUE(ty::hasCompoundFileHeader(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
    expectSampleTree(bytes);
}

TEST(CompoundFileReading, Version4KeepsTheSizesHighHalf)
{
    // A size of 2^32 + 5 can't be backed by this small file, so a reader that keeps the high
    // half must refuse the stream; one that dropped it would read 5 bytes.
    CompoundFileWriter writer(4);
    writer.root.addStream(u"big", pattern(5000, 1));
    CfbLayout layout;
    std::string bytes = writer.build(&layout);
    cfb::putU32(bytes, layout.entryOffset(u"big") + 0x7C, 1);
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(bytes, root), cfb::S_OK_CODE);
    cfb::Stream stream;
    EXPECT_EQ(root.openStream(u"big", stream), cfb::STG_E_DOCFILECORRUPT);
}

TEST(CompoundFileReading, Version3IgnoresTheSizesHighHalf)
{
    CompoundFileWriter writer(3);
    writer.sizeHighBits = 0xDEADBEEF;
    writer.root.addStream(u"small", pattern(100, 1));
    writer.root.addStream(u"large", pattern(9000, 2));
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(writer.build(), root), cfb::S_OK_CODE);
    storage_test::WalkResult walk = storage_test::walkAll(root);
    ASSERT_EQ(walk.code, cfb::S_OK_CODE);
    EXPECT_EQ(walk.streams[u"small"], pattern(100, 1));
    EXPECT_EQ(walk.streams[u"large"], pattern(9000, 2));
}

TEST(CompoundFileReading, FollowsTheDifatBeyondTheHeadersEntries)
{
    // 109 FAT sectors of 128 entries cover 13952 sectors (about 7 MB); a larger file needs
    // DIFAT sectors, and the stream's tail lies in sectors only they reach.
    CompoundFileWriter writer(3);
    const std::string big = pattern(7600000, 11);
    writer.root.addStream(u"big", big);
    writer.root.addStream(u"small", pattern(10, 12));
    CfbLayout layout;
    std::string bytes = writer.build(&layout);
    ASSERT_GT(layout.fatSectors.size(), 109u);
    ASSERT_EQ(layout.difatSectors.size(), 1u);

    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(std::move(bytes), root), cfb::S_OK_CODE);
    cfb::Stream stream;
    ASSERT_EQ(root.openStream(u"big", stream), cfb::S_OK_CODE);
    EXPECT_EQ(stream.size(), big.size());
    std::string all(big.size(), '\0');
    uint64_t done = 0;
    ASSERT_EQ(stream.read(all.data(), all.size(), done), cfb::S_OK_CODE);
    EXPECT_EQ(done, big.size());
    EXPECT_TRUE(all == big);
}

TEST(CompoundFileReading, OpensAFileByPathAndReadsOnDemand)
{
    CompoundFileWriter writer(3);
    fillSampleTree(writer.root);
    test_support::TempDir dir;
    std::u16string path = dir.write("sample.msg", writer.build());
    EXPECT_TRUE(ty::isCompoundFile(path));
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageFile(path, root), cfb::S_OK_CODE);
    storage_test::WalkResult walk = storage_test::walkAll(root);
    ASSERT_EQ(walk.code, cfb::S_OK_CODE);
    EXPECT_EQ(walk.streams[u"__attach_version1.0_#00000000/__substg1.0_37010102"], pattern(70000, 6));
}

TEST(CompoundFileReading, StatAndEnumerationGiveNameTypeSizeAndClass)
{
    CompoundFileWriter writer(3);
    fillSampleTree(writer.root);
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(writer.build(), root), cfb::S_OK_CODE);
    cfb::ElementInfo info;
    ASSERT_EQ(root.stat(info), cfb::S_OK_CODE);
    EXPECT_EQ(info.name, u"Root Entry");
    EXPECT_EQ(info.type, cfb::ElementStorage);

    cfb::ElementEnumerator children;
    ASSERT_EQ(root.enumElements(children), cfb::S_OK_CODE);
    EXPECT_EQ(children.count(), 7u);
    bool sawAttachment = false, sawRtf = false;
    while (children.next(info) == cfb::S_OK_CODE) {
        if (info.name == u"__attach_version1.0_#00000000") {
            sawAttachment = true;
            EXPECT_EQ(info.type, cfb::ElementStorage);
            EXPECT_EQ(info.size, 0u);
            EXPECT_EQ(info.classId[0], 0x0B);
            EXPECT_EQ(info.classId[15], 0x46);
        }
        if (info.name == u"__substg1.0_10090102") {
            sawRtf = true;
            EXPECT_EQ(info.type, cfb::ElementStream);
            EXPECT_EQ(info.size, 4096u);
        }
    }
    EXPECT_TRUE(sawAttachment && sawRtf);
    EXPECT_EQ(children.next(info), cfb::S_FALSE_CODE);
    children.reset();
    EXPECT_EQ(children.next(info), cfb::S_OK_CODE);

    cfb::Stream stream;
    ASSERT_EQ(root.openStream(u"__substg1.0_0037001F", stream), cfb::S_OK_CODE);
    ASSERT_EQ(stream.stat(info), cfb::S_OK_CODE);
    EXPECT_EQ(info.name, u"__substg1.0_0037001F");
    EXPECT_EQ(info.type, cfb::ElementStream);
    EXPECT_EQ(info.size, 63u);
}

TEST(CompoundFileReading, OpensChildrenByNameWhateverTheCaseAndOnlyOfTheRightKind)
{
    CompoundFileWriter writer(3);
    fillSampleTree(writer.root);
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(writer.build(), root), cfb::S_OK_CODE);
    cfb::Stream stream;
    EXPECT_EQ(root.openStream(u"__SUBSTG1.0_0037001f", stream), cfb::S_OK_CODE);
    EXPECT_EQ(stream.size(), 63u);
    EXPECT_EQ(root.openStream(u"__recip_version1.0_#00000000", stream), cfb::STG_E_FILENOTFOUND);
    ASSERT_TRUE(root.keeper().hasError());
    EXPECT_EQ(root.keeper().error()->code(), cfb::STG_E_FILENOTFOUND);
    cfb::Storage child;
    EXPECT_EQ(root.openStorage(u"__substg1.0_0037001F", child), cfb::STG_E_FILENOTFOUND);
    EXPECT_EQ(root.openStorage(u"missing", child), cfb::STG_E_FILENOTFOUND);
    EXPECT_EQ(root.openStorage(u"__ATTACH_version1.0_#00000000", child), cfb::S_OK_CODE);
    EXPECT_FALSE(root.keeper().hasError());
}

TEST(CompoundFileReading, ReadsAtAnyOffsetAndSeeksFromEachOrigin)
{
    CompoundFileWriter writer(3);
    writer.interleave = true;
    const std::string small = pattern(3000, 21), large = pattern(20000, 22);
    writer.root.addStream(u"small", small);
    writer.root.addStream(u"large", large);
    writer.root.addStream(u"other", pattern(9000, 23));
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(writer.build(), root), cfb::S_OK_CODE);
    for (const auto& [name, data] : {std::pair{u"small", small}, std::pair{u"large", large}}) {
        cfb::Stream stream;
        ASSERT_EQ(root.openStream(name, stream), cfb::S_OK_CODE);
        // Pieces that start and end inside sectors and cross several of them.
        for (uint64_t offset : {0ul, 1ul, 63ul, 64ul, 500ul, 511ul, 512ul, 1000ul, 2999ul}) {
            for (uint64_t length : {1ul, 2ul, 64ul, 513ul, 1500ul}) {
                uint64_t position = 0, done = 0;
                ASSERT_EQ(stream.seek(static_cast<int64_t>(offset), ty::SeekBegin, position), cfb::S_OK_CODE);
                std::string piece(length, '\0');
                ASSERT_EQ(stream.read(piece.data(), length, done), cfb::S_OK_CODE);
                uint64_t expected = std::min<uint64_t>(length, data.size() - offset);
                ASSERT_EQ(done, expected);
                EXPECT_EQ(piece.substr(0, done), data.substr(offset, expected)) << offset << " " << length;
            }
        }
        uint64_t position = 0, done = 0;
        ASSERT_EQ(stream.seek(-10, ty::SeekEnd, position), cfb::S_OK_CODE);
        EXPECT_EQ(position, data.size() - 10);
        ASSERT_EQ(stream.seek(-5, ty::SeekCurrent, position), cfb::S_OK_CODE);
        EXPECT_EQ(position, data.size() - 15);
        char tail[32];
        ASSERT_EQ(stream.read(tail, sizeof tail, done), cfb::S_OK_CODE);
        EXPECT_EQ(std::string(tail, done), data.substr(data.size() - 15));
        // Past the end is allowed and reads nothing; before the start is refused.
        ASSERT_EQ(stream.seek(100, ty::SeekEnd, position), cfb::S_OK_CODE);
        ASSERT_EQ(stream.read(tail, sizeof tail, done), cfb::S_OK_CODE);
        EXPECT_EQ(done, 0u);
        EXPECT_EQ(stream.seek(-1, ty::SeekBegin, position), cfb::STG_E_INVALIDFUNCTION);
        EXPECT_EQ(position, data.size() + 100);
    }
}

TEST(CompoundFileReading, StreamServesTheStreamFamily)
{
    CompoundFileWriter writer(3);
    std::string data = pattern(40, 31);
    data[0] = 0x34;
    data[1] = 0x12;
    writer.root.addStream(u"values", data);
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(writer.build(), root), cfb::S_OK_CODE);
    cfb::Stream stream;
    ASSERT_EQ(root.openStream(u"values", stream), cfb::S_OK_CODE);
    ty::IOS& ios = stream;
    ty::BinaryReader reader(ios);
    uint16_t first = 0;
    EXPECT_EQ(reader.readUInt16(first), 2);
    EXPECT_EQ(first, 0x1234);
    EXPECT_EQ(ios._getPosition(), 2);
    EXPECT_EQ(ios.getSize(), 40);
    EXPECT_EQ(ios._seek(8, ty::SeekCurrent), 10);
    std::string all;
    EXPECT_EQ(ios.readAll(all), 30);  // asks for the whole size, gets what is left
    EXPECT_EQ(all, data.substr(10));
    EXPECT_TRUE(ios.isEnd());
    EXPECT_EQ(ios._seek(-1, ty::SeekBegin), -1);
    ASSERT_TRUE(ios.keeper().hasError());
    EXPECT_EQ(ios.keeper().error()->code(), cfb::STG_E_INVALIDFUNCTION);
}

TEST(CompoundFileReading, ClosedObjectsAnswerInvalidHandle)
{
    cfb::Storage storage;
    cfb::ElementEnumerator children;
    EXPECT_EQ(storage.enumElements(children), cfb::STG_E_INVALIDHANDLE);
    cfb::Stream stream;
    char byte;
    uint64_t done = 7;
    EXPECT_EQ(stream.read(&byte, 1, done), cfb::STG_E_INVALIDHANDLE);
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(stream._read(&byte, 1), -1);
}

}  // namespace
