// Damaged compound files: each fault fails with its code and a text, stays within the damaged
// part where it can, and never hangs or reads outside the file.
#include <gtest/gtest.h>

#include <string>

#include "foundation/compound_file_signature.h"
#include "foundation/utf.h"
#include "storage/compound_file_writer.h"
#include "storage/storage.h"
#include "support/temp_dir.h"
#include "tree_walk.h"

namespace {

using cfb::CfbLayout;
using cfb::CompoundFileWriter;
using cfb::getU32;
using cfb::putU16;
using cfb::putU32;

constexpr uint32_t kEnd = CompoundFileWriter::kEnd;
constexpr uint32_t kNoStream = 0xFFFFFFFF;

struct Sample {
    std::string bytes;
    CfbLayout layout;
};

// A root with a small and a large stream and two storages, each with streams.
Sample buildSample(uint16_t version = 3)
{
    CompoundFileWriter writer(version);
    writer.root.addStream(u"small", std::string(300, 's'));
    writer.root.addStream(u"large", std::string(5000, 'L'));
    cfb::CfbNode& a = writer.root.addStorage(u"A");
    a.addStream(u"a1", std::string(10, '1'));
    a.addStream(u"a2", std::string(6000, '2'));
    cfb::CfbNode& b = writer.root.addStorage(u"B");
    b.addStream(u"b1", std::string(20, 'b'));
    b.addStorage(u"inner").addStream(u"deep", std::string(30, 'd'));
    Sample sample;
    sample.bytes = writer.build(&sample.layout);
    return sample;
}

uint32_t openCode(const std::string& bytes)
{
    cfb::Storage root;
    return cfb::openStorageMemory(bytes, root);
}

// Opens the root and opens `name` in it as a stream, giving the code of the stream's open.
uint32_t openStreamCode(const std::string& bytes, const std::u16string& name, std::u16string* text = nullptr)
{
    cfb::Storage root;
    uint32_t code = cfb::openStorageMemory(bytes, root);
    if (cfb::failed(code)) return code;
    cfb::Stream stream;
    code = root.openStream(name, stream);
    if (text && root.keeper().hasError()) *text = root.keeper().error()->text();
    return code;
}

uint32_t enumCode(const std::string& bytes, const std::u16string& storage, std::u16string* text = nullptr)
{
    cfb::Storage root;
    uint32_t code = cfb::openStorageMemory(bytes, root);
    if (cfb::failed(code)) return code;
    cfb::Storage child;
    cfb::Storage* target = &root;
    if (!storage.empty()) {
        code = root.openStorage(storage, child);
        if (cfb::failed(code)) return code;
        target = &child;
    }
    cfb::ElementEnumerator children;
    code = target->enumElements(children);
    if (text && target->keeper().hasError()) *text = target->keeper().error()->text();
    return code;
}

TEST(DamagedFile, HeaderFaultsAreRefusedAsTheSignatureTestRefusesThem)
{
    Sample sample = buildSample();
    struct Case {
        size_t offset;
        uint16_t value;
        uint32_t code;
    };
    for (const Case& c : {Case{0x00, 0x0000, cfb::STG_E_FILEALREADYEXISTS},   // signature
                          Case{0x1C, 0xFEFF, cfb::STG_E_INVALIDHEADER},        // byte order
                          Case{0x1A, 4, cfb::STG_E_INVALIDHEADER},             // version 4 with 512-byte sectors
                          Case{0x1E, 12, cfb::STG_E_INVALIDHEADER},            // version 3 with 4096-byte sectors
                          Case{0x20, 7, cfb::STG_E_INVALIDHEADER},             // mini sectors of 128 bytes
                          Case{0x38, 0x2000, cfb::STG_E_INVALIDHEADER}}) {     // cutoff of 8192
        std::string bytes = sample.bytes;
        putU16(bytes, c.offset, c.value);
        EXPECT_FALSE(ty::hasCompoundFileHeader(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
        EXPECT_EQ(openCode(bytes), c.code) << c.offset;
    }
    EXPECT_TRUE(ty::hasCompoundFileHeader(reinterpret_cast<const uint8_t*>(sample.bytes.data()), sample.bytes.size()));
    EXPECT_EQ(openCode(sample.bytes.substr(0, 511)), cfb::STG_E_FILEALREADYEXISTS);
    EXPECT_EQ(openCode("From: someone\r\n\r\nnot a compound file"), cfb::STG_E_FILEALREADYEXISTS);
}

TEST(DamagedFile, MissingFilesAndFoldersGiveTheirCodes)
{
    test_support::TempDir dir;
    cfb::Storage root;
    EXPECT_EQ(cfb::openStorageFile(dir.wide("absent.msg"), root), cfb::STG_E_FILENOTFOUND);
    ASSERT_TRUE(root.keeper().hasError());
    EXPECT_EQ(root.keeper().error()->code(), cfb::STG_E_FILENOTFOUND);
    EXPECT_FALSE(root.isOpen());
    EXPECT_EQ(cfb::openStorageFile(dir.wide("absent/x.msg"), root), cfb::STG_E_FILENOTFOUND);
    EXPECT_EQ(cfb::openStorageFile(dir.wide(""), root), cfb::STG_E_ACCESSDENIED);
}

TEST(DamagedFile, AFatCycleInAStreamFailsThatStreamOnly)
{
    Sample sample = buildSample();
    uint32_t first = sample.layout.startSectors.at(u"large");
    // The stream's second sector leads back to its first.
    putU32(sample.bytes, sample.layout.fatEntryOffset(first + 1), first);
    std::u16string text;
    EXPECT_EQ(openStreamCode(sample.bytes, u"large", &text), cfb::STG_E_DOCFILECORRUPT);
    EXPECT_NE(text.find(u"loops"), std::u16string::npos) << ty::wideToUtf8(text);
    EXPECT_EQ(openStreamCode(sample.bytes, u"small"), cfb::S_OK_CODE);
}

TEST(DamagedFile, ADirectoryChainCycleFailsTheOpen)
{
    CompoundFileWriter writer(3);
    for (int i = 0; i < 12; ++i) writer.root.addStream(u"s" + ty::utf8ToWide(std::to_string(i)), "x");
    CfbLayout layout;
    std::string bytes = writer.build(&layout);
    ASSERT_GE(layout.directorySectors.size(), 3u);
    putU32(bytes, layout.fatEntryOffset(layout.directorySectors[2]), layout.directorySectors[0]);
    EXPECT_EQ(openCode(bytes), cfb::STG_E_DOCFILECORRUPT);
}

TEST(DamagedFile, AMiniFatCycleFailsTheSmallStream)
{
    Sample sample = buildSample();
    uint32_t first = sample.layout.startSectors.at(u"small");  // 300 bytes: five mini sectors
    putU32(sample.bytes, sample.layout.miniFatEntryOffset(first + 3), first + 1);
    EXPECT_EQ(openStreamCode(sample.bytes, u"small"), cfb::STG_E_DOCFILECORRUPT);
    EXPECT_EQ(openStreamCode(sample.bytes, u"large"), cfb::S_OK_CODE);
}

TEST(DamagedFile, ADifatCycleFailsTheOpen)
{
    CompoundFileWriter writer(3);
    writer.root.addStream(u"big", std::string(7600000, 'z'));
    CfbLayout layout;
    std::string bytes = writer.build(&layout);
    ASSERT_EQ(layout.difatSectors.size(), 1u);
    // Claim more FAT sectors than the one DIFAT sector lists, and let it point at itself.
    size_t at = layout.sectorOffset(layout.difatSectors[0]);
    putU32(bytes, at + 508, layout.difatSectors[0]);
    putU32(bytes, 0x2C, getU32(bytes, 0x2C) + 200);
    EXPECT_EQ(openCode(bytes), cfb::STG_E_DOCFILECORRUPT);
}

TEST(DamagedFile, MoreFatSectorsThanTheFileHoldsFailsTheOpen)
{
    Sample sample = buildSample();
    putU32(sample.bytes, 0x2C, 0x7FFFFFFF);
    EXPECT_EQ(openCode(sample.bytes), cfb::STG_E_DOCFILECORRUPT);
}

TEST(DamagedFile, AStreamLargerThanItsChainFails)
{
    Sample sample = buildSample();
    putU32(sample.bytes, sample.layout.entryOffset(u"large") + 0x78, 5000 + 512 * 3);
    std::u16string text;
    EXPECT_EQ(openStreamCode(sample.bytes, u"large", &text), cfb::STG_E_DOCFILECORRUPT);
    EXPECT_NE(text.find(u"short of"), std::u16string::npos) << ty::wideToUtf8(text);
    // A small stream whose size claims more mini sectors than its chain has.
    putU32(sample.bytes, sample.layout.entryOffset(u"small") + 0x78, 4000);
    EXPECT_EQ(openStreamCode(sample.bytes, u"small"), cfb::STG_E_DOCFILECORRUPT);
}

TEST(DamagedFile, AHugeSizeIsRefusedBeforeAnythingIsAllocated)
{
    Sample sample = buildSample(4);
    putU32(sample.bytes, sample.layout.entryOffset(u"large") + 0x7C, 0x7FFFFFFF);
    EXPECT_EQ(openStreamCode(sample.bytes, u"large"), cfb::STG_E_DOCFILECORRUPT);
    // The root's size sets the mini stream's: a huge one spoils the small streams only.
    putU32(sample.bytes, sample.layout.entryOffset(0) + 0x7C, 0x7FFFFFFF);
    EXPECT_EQ(openStreamCode(sample.bytes, u"small"), cfb::STG_E_DOCFILECORRUPT);
}

TEST(DamagedFile, SectorNumbersPastTheEndFail)
{
    Sample sample = buildSample();
    std::string bytes = sample.bytes;
    putU32(bytes, sample.layout.entryOffset(u"large") + 0x74, 0x00FFFFFF);
    EXPECT_EQ(openStreamCode(bytes, u"large"), cfb::STG_E_DOCFILECORRUPT);
    bytes = sample.bytes;
    putU32(bytes, sample.layout.entryOffset(u"small") + 0x74, 0x00FFFFFF);
    EXPECT_EQ(openStreamCode(bytes, u"small"), cfb::STG_E_DOCFILECORRUPT);
    bytes = sample.bytes;
    putU32(bytes, 0x30, 0x00FFFFFF);  // the directory's first sector
    EXPECT_EQ(openCode(bytes), cfb::STG_E_DOCFILECORRUPT);
    bytes = sample.bytes;
    putU32(bytes, 0x4C, 0x00FFFFFF);  // the first FAT sector
    EXPECT_EQ(openCode(bytes), cfb::STG_E_DOCFILECORRUPT);
    bytes = sample.bytes;
    uint32_t first = sample.layout.startSectors.at(u"large");
    putU32(bytes, sample.layout.fatEntryOffset(first), CompoundFileWriter::kFree);
    EXPECT_EQ(openStreamCode(bytes, u"large"), cfb::STG_E_DOCFILECORRUPT);
}

TEST(DamagedFile, ASiblingCycleFailsThatStoragesListingOnly)
{
    Sample sample = buildSample();
    // a2 sorts after a1; a1 is the top of A's tree, so a2's left link back to a1 closes a loop.
    uint32_t a1 = sample.layout.entryIds.at(u"A/a1");
    uint32_t a2 = sample.layout.entryIds.at(u"A/a2");
    size_t top = getU32(sample.bytes, sample.layout.entryOffset(u"A") + 0x4C);
    ASSERT_EQ(top, a1);
    putU32(sample.bytes, sample.layout.entryOffset(a2) + 0x44, a1);
    std::u16string text;
    EXPECT_EQ(enumCode(sample.bytes, u"A", &text), cfb::STG_E_DOCFILECORRUPT);
    EXPECT_NE(text.find(u"reached twice"), std::u16string::npos) << ty::wideToUtf8(text);
    EXPECT_EQ(enumCode(sample.bytes, u"B"), cfb::S_OK_CODE);
    EXPECT_EQ(enumCode(sample.bytes, u""), cfb::S_OK_CODE);
}

TEST(DamagedFile, AChildLinkToAnAncestorIsRefused)
{
    Sample sample = buildSample();
    // B/inner's child becomes the root's top child: walking down would never end.
    uint32_t rootTop = getU32(sample.bytes, sample.layout.entryOffset(0) + 0x4C);
    putU32(sample.bytes, sample.layout.entryOffset(u"B/inner") + 0x4C, rootTop);
    EXPECT_EQ(enumCode(sample.bytes, u""), cfb::S_OK_CODE);
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(sample.bytes, root), cfb::S_OK_CODE);
    storage_test::WalkResult walk = storage_test::walkAll(root);
    EXPECT_EQ(walk.code, cfb::STG_E_DOCFILECORRUPT);
    EXPECT_EQ(walk.streams.count(u"A/a1"), 1u);  // A is listed before B
}

TEST(DamagedFile, LinksOutOfRangeAndUnusedEntriesInATreeAreRefused)
{
    Sample sample = buildSample();
    std::string bytes = sample.bytes;
    putU32(bytes, sample.layout.entryOffset(u"B/b1") + 0x48, 100000);
    std::u16string text;
    EXPECT_EQ(enumCode(bytes, u"B", &text), cfb::STG_E_DOCFILECORRUPT);
    EXPECT_NE(text.find(u"past the directory"), std::u16string::npos) << ty::wideToUtf8(text);
    EXPECT_EQ(enumCode(bytes, u"A"), cfb::S_OK_CODE);

    bytes = sample.bytes;
    bytes[sample.layout.entryOffset(u"B/b1") + 0x42] = 0;  // unused
    EXPECT_EQ(enumCode(bytes, u"B"), cfb::STG_E_DOCFILECORRUPT);
}

TEST(DamagedFile, NamesWithoutTerminatorOrTooLongAreRefused)
{
    Sample sample = buildSample();
    std::string bytes = sample.bytes;
    size_t at = sample.layout.entryOffset(u"A/a1");
    putU16(bytes, at + 2, u'x');  // "a1" with its terminator overwritten; the length still counts 6 bytes
    putU16(bytes, at + 4, u'y');
    std::u16string text;
    EXPECT_EQ(enumCode(bytes, u"A", &text), cfb::STG_E_DOCFILECORRUPT);
    EXPECT_NE(text.find(u"terminator"), std::u16string::npos) << ty::wideToUtf8(text);

    bytes = sample.bytes;
    putU16(bytes, at + 0x40, 66);
    EXPECT_EQ(enumCode(bytes, u"A"), cfb::STG_E_DOCFILECORRUPT);
    bytes = sample.bytes;
    putU16(bytes, at + 0x40, 5);  // odd
    EXPECT_EQ(enumCode(bytes, u"A"), cfb::STG_E_DOCFILECORRUPT);
    // The root's own name is damaged: nothing can be trusted.
    bytes = sample.bytes;
    putU16(bytes, sample.layout.entryOffset(0) + 0x40, 0);
    EXPECT_EQ(openCode(bytes), cfb::STG_E_DOCFILECORRUPT);
}

TEST(DamagedFile, AnEntryReachedFromTwoStoragesBelongsToTheFirstOnly)
{
    Sample sample = buildSample();
    // B's tree top is made A's top too: one of the two storages is refused.
    uint32_t aTop = getU32(sample.bytes, sample.layout.entryOffset(u"A") + 0x4C);
    putU32(sample.bytes, sample.layout.entryOffset(u"B") + 0x4C, aTop);
    uint32_t a = enumCode(sample.bytes, u"A"), b = enumCode(sample.bytes, u"B");
    EXPECT_TRUE((a == cfb::S_OK_CODE) != (b == cfb::S_OK_CODE));
    EXPECT_TRUE(a == cfb::STG_E_DOCFILECORRUPT || b == cfb::STG_E_DOCFILECORRUPT);
}

TEST(DamagedFile, StoragesNestedTooDeepAreNotListed)
{
    // Storages s1/s2/.../s300, each with a stream; the 256th level down can't be listed, so a
    // recursive walk stops there.
    CompoundFileWriter writer(3);
    cfb::CfbNode* level = &writer.root;
    for (int depth = 1; depth <= 300; ++depth) {
        level = &level->addStorage(u"s" + ty::utf8ToWide(std::to_string(depth)));
        level->addStream(u"x", std::string(1, 'x'));
    }
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageMemory(writer.build(), root), cfb::S_OK_CODE);
    storage_test::WalkResult walk = storage_test::walkAll(root);
    EXPECT_EQ(walk.code, cfb::STG_E_DOCFILECORRUPT);
    EXPECT_EQ(walk.streams.size(), 255u);
}

TEST(DamagedFile, EveryTruncationFailsCleanlyOrReadsWhatIsThere)
{
    Sample sample = buildSample();
    for (size_t length = 0; length <= sample.bytes.size(); length += 97) {
        std::string bytes = sample.bytes.substr(0, length);
        cfb::Storage root;
        uint32_t code = cfb::openStorageMemory(bytes, root);
        if (cfb::failed(code)) {
            EXPECT_TRUE(code == cfb::STG_E_FILEALREADYEXISTS || code == cfb::STG_E_DOCFILECORRUPT) << length;
            EXPECT_TRUE(root.keeper().hasError());
            continue;
        }
        storage_test::WalkResult walk = storage_test::walkAll(root);
        EXPECT_TRUE(walk.code == cfb::S_OK_CODE || walk.code == cfb::STG_E_DOCFILECORRUPT) << length;
    }
}

TEST(DamagedFile, ATruncatedFileOnDiskFailsWithoutReadingPastItsEnd)
{
    Sample sample = buildSample();
    test_support::TempDir dir;
    // Cut where the large stream's last sector begins: the directory survives, the stream doesn't.
    uint32_t first = sample.layout.startSectors.at(u"large");
    std::u16string path = dir.write("cut.msg", sample.bytes.substr(0, sample.layout.sectorOffset(first + 9)));
    cfb::Storage root;
    ASSERT_EQ(cfb::openStorageFile(path, root), cfb::S_OK_CODE);
    cfb::Stream stream;
    EXPECT_EQ(root.openStream(u"large", stream), cfb::STG_E_DOCFILECORRUPT);
    EXPECT_EQ(root.openStream(u"small", stream), cfb::S_OK_CODE);
}

}  // namespace
