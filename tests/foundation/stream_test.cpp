#include <gtest/gtest.h>

#include "foundation/binary_reader.h"
#include "foundation/stream.h"
#include "foundation/utf.h"
#include "support/temp_dir.h"

namespace {

TEST(Buffer, ReadsAreClampedToWhatIsLeftWithoutError)
{
    const char data[] = "0123456789";
    ty::Buffer buffer(data, 10);
    char out[16] = {};
    EXPECT_EQ(buffer._seek(6, ty::SeekBegin), 6);
    EXPECT_EQ(buffer._read(out, 10), 4);
    EXPECT_STREQ(out, "6789");
    EXPECT_FALSE(buffer.keeper().hasError());
    EXPECT_TRUE(buffer.isEnd());
    EXPECT_EQ(buffer._read(out, 1), 0);
}

TEST(Buffer, BorrowedBlockWritesOnlyWhatFits)
{
    char data[4] = {'a', 'b', 'c', 'd'};
    ty::Buffer buffer(data, 4);
    buffer._seek(2, ty::SeekBegin);
    EXPECT_EQ(buffer._write("XYZ", 3), 2);
    EXPECT_EQ(std::string(data, 4), "abXY");
    EXPECT_EQ(buffer.getSize(), 4);
}

TEST(Buffer, OwnedBlockGrowsOnWriteAndKeepsContent)
{
    ty::Buffer buffer;
    buffer.setSize(2);
    EXPECT_EQ(buffer._write("hello", 5), 5);
    EXPECT_EQ(buffer.getSize(), 5);
    EXPECT_EQ(buffer._write("!", 1), 1);
    std::string all;
    EXPECT_EQ(buffer.readAll(all), 0);  // readAll reads from the position, which is at the end
    buffer._seek(0, ty::SeekBegin);
    EXPECT_EQ(buffer.readAll(all), 6);
    EXPECT_EQ(all, "hello!");
}

TEST(Buffer, SeekFromTheEndShortensTheBlock)
{
    const char data[] = "0123456789";
    ty::Buffer buffer(data, 10);
    EXPECT_EQ(buffer._seek(3, ty::SeekEnd), 7);
    EXPECT_EQ(buffer.getSize(), 7);
    EXPECT_EQ(buffer._getPosition(), 7);
    EXPECT_EQ(buffer._seek(0, ty::SeekEnd), 7);  // zero only moves to the end
    EXPECT_EQ(buffer._seek(-5, ty::SeekEnd), 7);  // never grows past the block
}

TEST(Buffer, SeeksClampToTheBlockAndOtherOriginsOnlyClamp)
{
    const char data[] = "0123456789";
    ty::Buffer buffer(data, 10);
    EXPECT_EQ(buffer._seek(-1, ty::SeekCurrent), 0);
    EXPECT_EQ(buffer._seek(25, ty::SeekBegin), 10);
    EXPECT_EQ(buffer._seek(INT64_MAX, ty::SeekCurrent), 10);
    EXPECT_EQ(buffer._seek(4, ty::SeekBegin), 4);
    EXPECT_EQ(buffer._seek(100, 7), 4);
}

TEST(Buffer, SetSizeKeepsTheSmallerPositionAndCopiesTheSmallerSize)
{
    const char data[] = "0123456789";
    ty::Buffer buffer(data, 10);
    buffer._seek(8, ty::SeekBegin);
    EXPECT_EQ(buffer.setSize(5), 5);
    EXPECT_EQ(buffer._getPosition(), 5);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.data()), 5), "01234");
    EXPECT_EQ(std::string(data, 10), "0123456789");  // the borrowed block is left alone
}

TEST(Stream, ReadAllInTheMiddleAsksForTheWholeSizeAndGetsTheRest)
{
    const char data[] = "abcdef";
    ty::Buffer buffer(data, 6);
    buffer._seek(2, ty::SeekBegin);
    std::string out;
    EXPECT_EQ(buffer.readAll(out), 4);
    EXPECT_EQ(out, "cdef");
}

TEST(BinaryReader, ReadsLittleEndianNumbersAndReportsShortReads)
{
    const unsigned char data[] = {0x78, 0x9F, 0x3E, 0x22, 0x01, 0x00, 0xFF};
    ty::Buffer buffer(data, sizeof data);
    ty::BinaryReader reader(buffer);
    uint32_t signature = 0;
    uint16_t word = 0;
    uint32_t tooLong = 0;
    EXPECT_EQ(reader.readUInt32(signature), 4);
    EXPECT_EQ(signature, 0x223E9F78u);
    EXPECT_EQ(reader.readUInt16(word), 2);
    EXPECT_EQ(word, 1);
    EXPECT_EQ(reader.readUInt32(tooLong), 1);
}

TEST(BinaryReader, ReadStringTakesWhatIsLeftInWholeCharacters)
{
    const char data[] = "xa\0b\0c";  // one byte to skip, then "ab" and an odd byte
    ty::Buffer buffer(data, 6);
    buffer._seek(1, ty::SeekBegin);
    ty::BinaryReader reader(buffer);
    std::u16string text;
    EXPECT_EQ(reader.readString(text), 4);
    EXPECT_EQ(text, u"ab");
}

class FileTest : public ::testing::Test {
protected:
    std::u16string path(const char* name) const { return dir_.wide(name); }

    test_support::TempDir dir_;
};

TEST_F(FileTest, OpenMissingFileReportsTheSystemError)
{
    ty::File file;
    EXPECT_FALSE(file.open(path("missing.eml"), ty::FileRead, ty::OpenExisting));
    ASSERT_TRUE(file.keeper().hasError());
    EXPECT_EQ(file.keeper().error()->code(), 2u);
    EXPECT_EQ(file.keeper().error()->kind(), 2u);
    EXPECT_EQ(file.keeper().error()->source(), u"ty::File::open");
    EXPECT_EQ(file.keeper().error()->text(), u"No such file or directory");
    EXPECT_FALSE(file.isOpen());
}

TEST_F(FileTest, AppendDispositionCreatesANewFileAndStandsAtItsEnd)
{
    ty::File file;
    ASSERT_TRUE(file.open(path("log.txt"), ty::FileWrite, ty::OpenAlwaysAppend));
    EXPECT_EQ(file._getPosition(), 0);
    EXPECT_EQ(file.writeAll("abc"), 3);
    file.close();
    ASSERT_TRUE(file.open(path("log.txt"), ty::FileReadWrite, ty::OpenAlwaysAppend));
    EXPECT_EQ(file._getPosition(), 3);
    EXPECT_EQ(file.getSize(), 3);
    EXPECT_EQ(file._getPosition(), 3);  // getSize puts the position back
}

TEST_F(FileTest, DispositionsFollowTheWindowsRules)
{
    ty::File file;
    EXPECT_FALSE(file.open(path("a"), ty::FileRead, ty::OpenExisting));
    ASSERT_TRUE(file.open(path("a"), ty::FileWrite, ty::CreateNew));
    file.writeAll("12345");
    file.close();
    EXPECT_FALSE(file.open(path("a"), ty::FileWrite, ty::CreateNew));
    EXPECT_EQ(file.keeper().error()->code(), static_cast<uint32_t>(EEXIST));
    EXPECT_FALSE(file.open(path("a"), ty::FileRead, ty::TruncateExisting));  // truncation needs write access
    EXPECT_FALSE(file.open(path("a"), ty::FileRead, 9));
    ASSERT_TRUE(file.open(path("a"), ty::FileRead, ty::OpenAlways));
    std::string all;
    EXPECT_EQ(file.readAll(all), 5);
    ASSERT_TRUE(file.open(path("a"), ty::FileReadWrite, ty::CreateAlways));
    EXPECT_EQ(file.getSize(), 0);
}

TEST_F(FileTest, ReadingAWriteOnlyFileFailsWithSource)
{
    ty::File file;
    ASSERT_TRUE(file.open(path("w"), ty::FileWrite, ty::CreateAlways));
    char byte;
    EXPECT_EQ(file._read(&byte, 1), -1);
    EXPECT_EQ(file.keeper().error()->source(), u"ty::File::_read");
    EXPECT_EQ(file._write("x", 1), 1);
    EXPECT_FALSE(file.keeper().hasError());  // each operation starts clean
}

TEST_F(FileTest, SeekOriginsMapOntoTheFile)
{
    ty::File file;
    ASSERT_TRUE(file.open(path("s"), ty::FileReadWrite, ty::CreateAlways));
    file.writeAll("0123456789");
    EXPECT_EQ(file._seek(3, ty::SeekBegin), 3);
    EXPECT_EQ(file._seek(2, ty::SeekCurrent), 5);
    EXPECT_EQ(file._seek(-1, ty::SeekEnd), 9);
    EXPECT_EQ(file._seek(-20, ty::SeekBegin), -1);
    EXPECT_EQ(file.keeper().error()->source(), u"ty::File::_seek");
}

}  // namespace
