// Quoted-printable decoding against RFC 2045 section 6.7 and hand-worked cases of the soft break
// and the room.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "mime/quoted_printable.h"

namespace {

std::string decode(const std::string& text, size_t room)
{
    std::string out(room, '#');
    size_t length = room;
    EXPECT_EQ(decodeQuotedPrintable(text.data(), text.size(), out.data(), &length), 1);
    out.resize(length);
    return out;
}

TEST(QuotedPrintable, DecodesAsTheRfcSays)
{
    const std::pair<std::string, std::string> cases[] = {
        {"a=3Db", "a=b"},
        {"caf=C3=A9", "caf\xc3\xa9"},
        {"caf=c3=a9", "caf\xc3\xa9"},         // either case
        {"abc=\r\ndef", "abcdef"},            // soft break
        {"abc=\ndef", "abcdef"},
        {"abc=\r\n\r\ndef", "abcdef"},        // which swallows every line break after it
        {"=\r\n\r\n", ""},
        {"a\r\nb", "a\r\nb"},                 // hard breaks stay
        {"a=XYb", "a=XYb"},                   // an "=" that escapes nothing stays
        {"a=4g", "a=4g"},
        {"a=", "a="},
        {"a_b=5F", "a_b_"},                   // "_" is no blank here
    };
    for (const auto& [text, plain] : cases) EXPECT_EQ(decode(text, text.size() + 1), plain) << text;
}

TEST(QuotedPrintable, StopsWhereTheRoomEndsAndTerminatesWhenItCan)
{
    EXPECT_EQ(decode("abcdef", 3), "abc");
    EXPECT_EQ(decode("=41=42=43", 2), "AB");
    std::string out(4, '#');
    size_t length = 4;
    ASSERT_EQ(decodeQuotedPrintable("a=41", 4, out.data(), &length), 1);
    EXPECT_EQ(out, std::string("aA\0#", 4));
}

TEST(QuotedPrintable, RefusesNullArgumentsAndZeroSizes)
{
    char out[8];
    size_t room = sizeof out, none = 0;
    EXPECT_EQ(decodeQuotedPrintable(nullptr, 3, out, &room), 0);
    EXPECT_EQ(decodeQuotedPrintable("abc", 3, nullptr, &room), 0);
    EXPECT_EQ(decodeQuotedPrintable("abc", 3, out, nullptr), 0);
    EXPECT_EQ(decodeQuotedPrintable("abc", 0, out, &room), 0);
    EXPECT_EQ(decodeQuotedPrintable("abc", 3, out, &none), 0);
}

}  // namespace
