#include <gtest/gtest.h>

#include <string>

#include "regex/pattern.h"

namespace {

std::u16string withUnit(std::u16string before, char16_t unit, std::u16string_view after)
{
    return (before += unit) += after;
}

TEST(WideText, APairIsOneCharacter)
{
    std::u16string text = u"a\U0001F600b";
    EXPECT_TRUE(rx::WPattern(u"a.b").matchExact(text).matched());
    rx::MatchResult m = rx::WPattern(u"(.)b").match(text);
    EXPECT_EQ(m.start(1), 1);
    EXPECT_EQ(m.end(1), 3);
    EXPECT_TRUE(rx::WPattern(u"^a\U0001F600+b$").match(u"a\U0001F600\U0001F600b").matched());
}

TEST(WideText, AnUnpairedSurrogateIsACharacterLikeAnyOther)
{
    std::u16string text = withUnit(u"x=", 0xD800, u"y; z=1");
    EXPECT_EQ(rx::WPattern(uR"(z=(\d))").match(text).group(text, 1), u"1");
    EXPECT_EQ(rx::WPattern(u"x=(.*);").match(text).group(text, 1), text.substr(2, 2));
    EXPECT_TRUE(rx::WPattern(u"a.b").matchExact(withUnit(u"a", 0xDC00, u"b")).matched());
    EXPECT_EQ(rx::WPattern(u"b.$").match(withUnit(u"ab", 0xDBFF, u"")).start(0), 1);
    std::u16string path = withUnit(uR"(C:\mail\a)", 0xDE00, u".msg");
    rx::MatchResult split = rx::WPattern(uR"((.*[\\/])(.*)(?:\.)(.*))").matchExact(path);
    EXPECT_EQ(split.group(path, 2), path.substr(8, 2));
    EXPECT_EQ(split.group(path, 3), u"msg");
    // What the matches don't cover comes back as it was.
    EXPECT_EQ(rx::WPattern(u";").replace(text, u","), text.substr(0, 4) + u", z=1");
    // In a pattern, too, it compiles and stands for itself.
    std::u16string pattern = withUnit(u"a", 0xD800, u"");
    EXPECT_TRUE(rx::WPattern(pattern).match(pattern).matched());
    EXPECT_FALSE(rx::WPattern(pattern).match(u"ab").matched());
}

TEST(WideText, AStartOrLengthThatCutsAPair)
{
    std::u16string text = u"\U0001F600\U0001F600";
    rx::WPattern any(u".");
    EXPECT_EQ(any.match(text, rx::npos, 1).end(0), 2);
    EXPECT_EQ(any.match(text, 3).end(0), 2);
    EXPECT_EQ(any.match(text, 3, 2).end(0), 3);
    EXPECT_EQ(any.replace(text, u"-", 1), text.substr(0, 1) + u"--");
}

TEST(WideText, AWalkSurvivesTheTextChangingUnderIt)
{
    std::u16string text;
    for (int i = 0; i < 2000; ++i)
        text += u"word \U0001F600 ";
    text[3] = char16_t(0xDC00);
    rx::WPattern word(u"wor.", rx::Global);
    int count = 0;
    for (rx::MatchResult m = word.match(text); m; m = word.match(text))
        ++count;
    EXPECT_EQ(count, 2000);

    // Changed in place between two searches of one walk: no crash, and the walk ends.
    for (bool dirtyFirst : {false, true}) {
        std::u16string changing = text;
        changing[3] = dirtyFirst ? char16_t(0xDC00) : u'd';
        EXPECT_TRUE(word.match(changing).matched());
        for (size_t i = 10; i < changing.size(); i += 7)
            changing[i] = dirtyFirst ? u'x' : char16_t(0xD800);
        for (int guard = 0; guard < 5000 && word.match(changing); ++guard) {
        }
        EXPECT_EQ(word.position(), 0u);
    }
}

TEST(WideText, RandomSurrogatesNeverStopTheRest)
{
    uint32_t seed = 12345;
    auto next = [&] { return seed = seed * 1103515245u + 12345u, (seed >> 16) & 0x7FFF; };
    const char16_t units[] = {u'a', u'b', u'.', u'\n', 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFFFD, 0x00E9};
    rx::WPattern tail(uR"(END(\d)$)");
    rx::WPattern all(u".*", rx::SingleLine);
    rx::WPattern some(u"[ab]+", rx::Global | rx::IgnoreCase);
    for (int round = 0; round < 300; ++round) {
        std::u16string text;
        for (unsigned n = next() % 40; n > 0; --n)
            text += units[next() % 10];
        text += u"END7";
        ASSERT_EQ(tail.match(text).group(text, 1), u"7");
        ASSERT_EQ(all.matchExact(text).end(0), std::ptrdiff_t(text.size()));
        for (size_t start = 0; start < text.size(); ++start)
            ASSERT_EQ(rx::WPattern(u"7").match(text, rx::npos, std::ptrdiff_t(start)).start(0),
                      std::ptrdiff_t(text.size() - 1));
        for (rx::MatchResult m = some.match(text); m; m = some.match(text))
            ASSERT_LT(m.start(0), m.end(0));
        ASSERT_EQ(some.replace(text, u"$&"), text);
    }
}

}  // namespace
