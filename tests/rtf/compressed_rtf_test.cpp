// Decompression of compressed RTF: the published examples, the header checks, the damaged
// streams and the bounds on what a header may claim.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "rtf/compressed_rtf.h"

namespace {

using mcl::decompressRtf;

std::string le32(uint32_t value)
{
    std::string bytes(4, '\0');
    for (int i = 0; i < 4; ++i) bytes[i] = char(value >> (8 * i));
    return bytes;
}

// A container whose compressed size agrees with its length.
std::string container(uint32_t magic, uint32_t rawSize, const std::string& payload, uint32_t crc = 0)
{
    return le32(uint32_t(payload.size() + 12)) + le32(rawSize) + le32(magic) + le32(crc) + payload;
}

std::string lzfu(uint32_t rawSize, const std::string& payload) { return container(mcl::kCompressedRtfMagic, rawSize, payload); }
std::string mela(uint32_t rawSize, const std::string& payload) { return container(mcl::kUncompressedRtfMagic, rawSize, payload); }

std::string bytes(std::initializer_list<unsigned> values)
{
    std::string out;
    for (unsigned v : values) out += char(v);
    return out;
}

// [MS-OXRTFCP] 3.1.1, the compressed form of "{\rtf1\ansi\ansicpg1252\pard hello world}" CR LF.
const std::string kSimpleExample = bytes({
    0x2d, 0x00, 0x00, 0x00, 0x2b, 0x00, 0x00, 0x00, 0x4c, 0x5a, 0x46, 0x75, 0xf1, 0xc5, 0xc7, 0xa7,
    0x03, 0x00, 0x0a, 0x00, 0x72, 0x63, 0x70, 0x67, 0x31, 0x32, 0x35, 0x42, 0x32, 0x0a, 0xf3, 0x20,
    0x68, 0x65, 0x6c, 0x09, 0x00, 0x20, 0x62, 0x77, 0x05, 0xb0, 0x6c, 0x64, 0x7d, 0x0a, 0x80, 0x0f,
    0xa0,
});

// [MS-OXRTFCP] 3.1.2, "{\rtf1 WXYZWXYZWXYZWXYZWXYZ}": a reference that overlaps its own output.
const std::string kCrossingExample = bytes({
    0x1a, 0x00, 0x00, 0x00, 0x1c, 0x00, 0x00, 0x00, 0x4c, 0x5a, 0x46, 0x75, 0xe2, 0xd4, 0x4b, 0x51,
    0x41, 0x00, 0x04, 0x20, 0x57, 0x58, 0x59, 0x5a, 0x0d, 0x6e, 0x7d, 0x01, 0x0e, 0xb0,
});

TEST(CompressedRtfDictionary, HoldsLineFeedBeforeCarriageReturn)
{
    std::string_view dictionary = mcl::compressedRtfDictionary();
    ASSERT_EQ(dictionary.size(), 207u);
    // [MS-OXRTFCP] places CR at 168 and LF at 169; the streams read here were written against the
    // swapped pair.
    EXPECT_EQ(dictionary.substr(140, 28), "{\\colortbl\\red0\\green0\\blue0");
    EXPECT_EQ(dictionary[168], '\n');
    EXPECT_EQ(dictionary[169], '\r');
    EXPECT_EQ(dictionary.substr(175), "\\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx");
}

TEST(CompressedRtfExamples, SimpleExampleEndsWithTheDictionaryLineEnd)
{
    // The final CR LF of the example is a reference to dictionary offset 168, which yields the
    // dictionary's LF CR.
    EXPECT_EQ(decompressRtf(kSimpleExample), "{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\n\r");
}

TEST(CompressedRtfExamples, ReferenceCrossingTheWritePosition)
{
    EXPECT_EQ(decompressRtf(kCrossingExample), "{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}");
}

TEST(CompressedRtfExamples, CrcIsNotChecked)
{
    std::string damagedCrc = kCrossingExample;
    damagedCrc[12] = char(~damagedCrc[12]);
    EXPECT_EQ(decompressRtf(damagedCrc), "{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}");
}

TEST(CompressedRtfHeader, ShortInputIsEmpty)
{
    EXPECT_EQ(decompressRtf(kSimpleExample.substr(0, 15)), "");
    EXPECT_EQ(decompressRtf(""), "");
}

TEST(CompressedRtfHeader, CompressedSizeMustMatchTheLength)
{
    EXPECT_EQ(decompressRtf(kSimpleExample + "x"), "");
    EXPECT_EQ(decompressRtf(kSimpleExample.substr(0, kSimpleExample.size() - 1)), "");
}

TEST(CompressedRtfHeader, UnknownMagicIsEmpty)
{
    std::string other = kSimpleExample;
    other[8] = 'l';
    EXPECT_EQ(decompressRtf(other), "");
}

TEST(CompressedRtfStored, PayloadComesBackAsItStands)
{
    // The CRC of stored content is meant to be 0; any value is accepted.
    std::string stored = container(mcl::kUncompressedRtfMagic, 10, "{\\rtf1 hi}", 0xDEADBEEF);
    EXPECT_EQ(decompressRtf(stored), "{\\rtf1 hi}");
}

TEST(CompressedRtfStored, ShorterPayloadLeavesZeros)
{
    EXPECT_EQ(decompressRtf(mela(6, "abc")), std::string("abc\0\0\0", 6));
}

TEST(CompressedRtfStored, LongerPayloadThanRawSizeIsFatal)
{
    EXPECT_THROW(decompressRtf(mela(2, "abc")), std::out_of_range);
}

TEST(CompressedRtfTokens, StreamEndingOnALiteralLeavesZeros)
{
    // One control byte of literals, three of them present.
    EXPECT_EQ(decompressRtf(lzfu(10, bytes({0x00, 'a', 'b', 'c'}))), std::string("abc\0\0\0\0\0\0\0", 10));
}

TEST(CompressedRtfTokens, ZeroRawSizeReadsNoToken)
{
    EXPECT_EQ(decompressRtf(lzfu(0, "")), "");
    EXPECT_EQ(decompressRtf(lzfu(0, bytes({0xFF}))), "");
}

TEST(CompressedRtfTokens, DensestStreamFillsItsRawSize)
{
    // Eight references of 17 bytes to dictionary offset 0: 17 payload bytes for 136 raw bytes.
    std::string payload = bytes({0xFF});
    for (int i = 0; i < 8; ++i) payload += bytes({0x00, 0x0F});
    std::string expected;
    for (int i = 0; i < 8; ++i) expected += "{\\rtf1\\ansi\\mac\\d";
    EXPECT_EQ(decompressRtf(lzfu(136, payload)), expected);
}

TEST(CompressedRtfTokens, ReferenceBeyondTheFirstWindowReadsOneWindowBack)
{
    // 4000 literals take the write position to 4207. Offset 300 lies past 4207 - 4096 = 111 in
    // the current window, so it reads 4096 back: buffer position 300, output byte 93.
    std::string payload;
    std::string expected;
    for (int i = 0; i < 4000; ++i) {
        if (i % 8 == 0) payload += char(0);
        payload += char(i % 251);
        expected += char(i % 251);
    }
    payload += bytes({0x01, 0x12, 0xC0});  // control, then offset 0x12C, length 2
    expected += bytes({93, 94});
    EXPECT_EQ(decompressRtf(lzfu(4002, payload)), expected);
}

TEST(CompressedRtfDamage, ErrorDocumentIsExact)
{
    std::string expected =
        "{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang1033{\\fonttbl{\\f0\\fnil\\fprq1";
    expected += '\x0C';
    expected += "charset0 Courier New;}{\\f1\\fswiss\\fcharset0 Arial;}}\\viewkind4\\pard\\f0\\fs20 "
                "<<ERROR:DATACORRUPTION\\cf0\\f1\\par}";
    EXPECT_EQ(mcl::corruptRtfDocument(), expected);
}

TEST(CompressedRtfDamage, ReferenceToTheWritePositionInTheFirstWindow)
{
    // pos is 207 = 0x0CF; a reference with that offset is the end marker, met before the end.
    EXPECT_EQ(decompressRtf(lzfu(20, bytes({0x01, 0x0C, 0xF0}))), mcl::corruptRtfDocument());
    // The same after a few literals: pos 209, offset 0x0D1.
    EXPECT_EQ(decompressRtf(lzfu(20, bytes({0x04, 'a', 'b', 0x0D, 0x10}))), mcl::corruptRtfDocument());
}

TEST(CompressedRtfDamage, ReferenceRunningPastTheEnd)
{
    // Four bytes of dictionary for a raw size of three: the first three were good, all is lost.
    EXPECT_EQ(decompressRtf(lzfu(3, bytes({0x01, 0x00, 0x02}))), mcl::corruptRtfDocument());
    EXPECT_EQ(decompressRtf(lzfu(4, bytes({0x01, 0x00, 0x02}))), "{\\rt");
}

TEST(CompressedRtfDamage, MissingControlByteIsFatal)
{
    std::string eightLiterals = bytes({0x00}) + "abcdefgh";
    EXPECT_THROW(decompressRtf(lzfu(20, eightLiterals)), std::out_of_range);
}

TEST(CompressedRtfDamage, ReferenceCutShortIsFatal)
{
    EXPECT_THROW(decompressRtf(lzfu(8, bytes({0x01}))), std::out_of_range);
    EXPECT_THROW(decompressRtf(lzfu(8, bytes({0x01, 0x00}))), std::out_of_range);
}

TEST(CompressedRtfBounds, RawSizeBeyondAnyExpansionIsDamage)
{
    // Three payload bytes can give at most 25 raw bytes; four gigabytes are not allocated.
    EXPECT_EQ(decompressRtf(lzfu(0xFFFFFFFF, bytes({0x00, 'a', 'b'}))), mcl::corruptRtfDocument());
    EXPECT_EQ(decompressRtf(lzfu(26, bytes({0x00, 'a', 'b'}))), mcl::corruptRtfDocument());
    EXPECT_EQ(decompressRtf(lzfu(25, bytes({0x00, 'a', 'b'}))).size(), 25u);
    EXPECT_EQ(decompressRtf(mela(0xFFFFFFFF, "abc")), mcl::corruptRtfDocument());
}

}  // namespace
