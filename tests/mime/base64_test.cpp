// Base-64 against the RFC 4648 section 10 vectors (the alphabet of RFC 2045) and hand-computed
// line breaks, sizes and decoder counts.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "mime/base64.h"

namespace {

std::string encode(const std::string& data, size_t room = 1024)
{
    std::string out(room, '#');
    out.resize(CBase64::encode(out.data(), room, data.data(), data.size()));
    return out;
}

struct Decoded {
    std::string bytes;  // as counted
    std::string room;   // the whole output buffer
    size_t consumed;
    uint32_t padding = 99;
};

Decoded decode(const std::string& text)
{
    Decoded d;
    d.room.assign(text.size() * 3 / 4 + 1, '\0');
    size_t length = text.size(), outLength = 99;
    EXPECT_EQ(CBase64::decode(text.data(), length, d.room.data(), outLength, &d.padding), 1);
    d.bytes = d.room.substr(0, outLength);
    d.consumed = length;
    return d;
}

const std::string kLine(76, 'A');  // 57 zero bytes

TEST(Base64, Rfc4648VectorsBothWays)
{
    const std::pair<std::string, std::string> vectors[] = {
        {"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},         {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}, {"\xfb\xff\xbf", "+/+/"}};
    for (const auto& [plain, text] : vectors) {
        EXPECT_EQ(encode(plain), text);
        EXPECT_EQ(decode(text).bytes, plain);
    }
}

TEST(Base64Encode, SingleLineFeedAfterEvery76CharactersWhileRoomLasts)
{
    EXPECT_EQ(encode(std::string(57, '\0')), kLine + "\n");
    EXPECT_EQ(encode(std::string(58, '\0')), kLine + "\nAA==");
    EXPECT_EQ(encode(std::string(114, '\0')), kLine + "\n" + kLine + "\n");
    // With two bytes of room left after a line, no break.
    EXPECT_EQ(encode(std::string(57, '\0'), 78), kLine);
    EXPECT_EQ(encode(std::string(57, '\0'), 79), kLine + "\n");
}

TEST(Base64Encode, StopsAtTheRoomAndAddsAnUncountedNul)
{
    EXPECT_EQ(encode("foobar", 5), "Zm9vY");
    EXPECT_EQ(encode("f", 3), "Zg=");
    std::string out(5, '#');
    EXPECT_EQ(CBase64::encode(out.data(), 5, "foo", 3), 4u);
    EXPECT_EQ(out, std::string("Zm9v\0", 5));
}

TEST(Base64Encode, EncodedLengthFormulaAndItsMargin)
{
    // size * 8 / 6, plus 2 for a remainder of 1 and 1 for a remainder of 2, plus 2 per 76.
    const std::pair<size_t, size_t> sizes[] = {{0, 0}, {1, 3}, {2, 3}, {3, 4}, {4, 7}, {57, 78}, {114, 156}};
    for (const auto& [size, length] : sizes) EXPECT_EQ(CBase64::encodedLength(size), length) << size;
    for (size_t size = 0; size < 400; ++size)
        EXPECT_LE(encode(std::string(size, 'x'), 4096).size(), CBase64::encodedLength(size) + 4) << size;
}

TEST(Base64Decode, SkipsEverythingOutsideTheAlphabet)
{
    EXPECT_EQ(decode("Zm9v\r\nYm Fy\t").bytes, "foobar");
    EXPECT_EQ(decode("Zm*9v!Ym\xc3\xa9" "Fy").bytes, "foobar");
    // "@" is the one slip of the table: it reads as "A".
    EXPECT_EQ(decode("Q@==").bytes, "@");
}

TEST(Base64Decode, CountsArePublishedPerGroupAndAtPadding)
{
    Decoded padded = decode("Zg==Zm9v");
    EXPECT_EQ(padded.bytes, "f");
    EXPECT_EQ(padded.consumed, 3u);  // up to and including the "="
    EXPECT_EQ(padded.padding, 1u);

    // "Zm8=" stops inside its group, and still counts both bytes.
    EXPECT_EQ(decode("Zm8=").bytes, "fo");

    // An unpadded short group at the end is written but not counted.
    Decoded tail = decode("Zm9vYg");
    EXPECT_EQ(tail.bytes, "foo");
    EXPECT_EQ(tail.room[3], 'b');
    EXPECT_EQ(tail.consumed, 4u);
    EXPECT_EQ(tail.padding, 0u);
}

TEST(Base64, RoundTripOfEveryByteValue)
{
    std::string data;
    for (int i = 0; i < 256; ++i) data += char(i);
    std::string text = encode(data);
    EXPECT_EQ(text.size(), 344u + 4);  // 86 groups and 4 breaks
    EXPECT_EQ(text.find('\n'), 76u);
    EXPECT_EQ(decode(text).bytes, data);
}

}  // namespace
