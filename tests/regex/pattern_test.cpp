#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "regex/pattern.h"
#include "regex/pattern_cache.h"

namespace {

TEST(Pattern, GroupsByIndexInBothWidths)
{
    std::string text = "--aab--";
    rx::MatchResult m = rx::Pattern(R"((a+)(x)?(b+))").match(text);
    ASSERT_TRUE(m.matched());
    EXPECT_EQ(m.groups(), 4);
    EXPECT_EQ(m.start(0), 2);
    EXPECT_EQ(m.end(0), 5);
    EXPECT_EQ(m.group(text, 1), "aa");
    EXPECT_EQ(m.start(2), -1);
    EXPECT_EQ(m.end(2), -1);
    EXPECT_EQ(m.group(text, 2), "");
    EXPECT_EQ(m.group(text, 3), "b");
    EXPECT_EQ(m.group(text, 9), "");
    EXPECT_EQ(m.lastGroup(), 3);

    std::u16string wide = u"--aab--";
    rx::MatchResult w = rx::WPattern(uR"((a+)(x)?(b+))").match(wide);
    EXPECT_EQ(w.groups(), 4);
    EXPECT_EQ(w.group(wide, 1), u"aa");
    EXPECT_FALSE(w.took(2));

    rx::MatchResult none = rx::Pattern("z").match(text);
    EXPECT_FALSE(none.matched());
    EXPECT_EQ(none.groups(), 0);
    EXPECT_EQ(none.lastGroup(), -1);

    std::string many;
    for (int i = 0; i < 20; ++i)
        many += "(.)";
    std::string letters = "abcdefghijklmnopqrstuvwxyz";
    rx::MatchResult big = rx::Pattern(many).match(letters);
    ASSERT_EQ(big.groups(), 21);
    EXPECT_EQ(rx::MatchResult(big).group(letters, 20), "t");
}

TEST(Pattern, LengthStartAndLookBehind)
{
    std::string locale = "en_US.1252";
    EXPECT_EQ(rx::Pattern(R"((?<=\.).*)").match(locale).group(locale, 0), "1252");
    std::u16string wlocale = u"en_US.1252";
    EXPECT_EQ(rx::WPattern(uR"((?<=\.).*)").match(wlocale).group(wlocale, 0), u"1252");
    EXPECT_FALSE(rx::Pattern(R"((?<=\.).*)").match("C").matched());

    rx::Pattern digits(R"(\d+)");
    EXPECT_FALSE(digits.match("abc123", 3).matched());
    EXPECT_EQ(digits.match("abc123", 5).end(0), 5);
    rx::MatchResult m = digits.match("12 34", rx::npos, 1);
    EXPECT_EQ(m.start(0), 1);
    EXPECT_EQ(m.end(0), 2);
    EXPECT_FALSE(digits.match("12", rx::npos, 5).matched());
    // Look-behind sees the text before the start.
    EXPECT_EQ(rx::Pattern("(?<=a)b").match("ab", rx::npos, 1).start(0), 1);
}

TEST(Pattern, MatchExactWantsTheWholeText)
{
    rx::Pattern digits(R"(\d+)");
    EXPECT_TRUE(digits.match("x12y").matched());
    EXPECT_FALSE(digits.matchExact("x12y").matched());
    EXPECT_FALSE(digits.matchExact("12y").matched());
    EXPECT_FALSE(digits.matchExact("x12").matched());
    EXPECT_EQ(digits.matchExact("12").end(0), 2);

    // A reluctant repeat stretches to the end rather than fail.
    std::u16string text = u"axbx";
    rx::WPattern lazy(uR"((.*?)x)");
    EXPECT_EQ(lazy.match(text).group(text, 1), u"a");
    EXPECT_EQ(lazy.matchExact(text).group(text, 1), u"axb");

    rx::Pattern global(R"(\d)", rx::Global);
    EXPECT_EQ(global.match("1 2").start(0), 0);
    EXPECT_TRUE(global.matchExact("7").matched());
    EXPECT_EQ(global.match("1 2").start(0), 2);
}

TEST(Pattern, GlobalContinuesFromTheLastMatch)
{
    rx::WPattern p(uR"(\d+)", rx::Global);
    std::u16string text = u"a1 b22 c333";
    std::vector<std::u16string> found;
    for (rx::MatchResult m = p.match(text); m; m = p.match(text))
        found.push_back(m.group(text, 0));
    EXPECT_EQ(found, (std::vector<std::u16string>{u"1", u"22", u"333"}));
    EXPECT_EQ(p.position(), 0u);  // a miss starts over
    EXPECT_EQ(p.match(text, rx::npos, 5).group(text, 0), u"2");
    EXPECT_EQ(p.match(text).group(text, 0), u"333");

    rx::Pattern plain(R"(\d+)");
    EXPECT_EQ(plain.match("a1 b22").start(0), 1);
    EXPECT_EQ(plain.match("a1 b22").start(0), 1);
}

TEST(Pattern, GlobalEmptyMatchesMoveOn)
{
    rx::Pattern p("x*", rx::Global);
    std::string text = "axb";
    std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>> found;
    for (rx::MatchResult m = p.match(text); m && found.size() < 10; m = p.match(text))
        found.emplace_back(m.start(0), m.end(0));
    // As Perl: "" at 0, "x" at 1, "" at 2, "" at 3.
    EXPECT_EQ(found, (std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>>{{0, 0}, {1, 2}, {2, 2}, {3, 3}}));

    rx::WPattern empty(u"", rx::Global);
    std::u16string emoji = u"\U0001F600a";
    std::vector<std::ptrdiff_t> starts;
    for (rx::MatchResult m = empty.match(emoji); m && starts.size() < 10; m = empty.match(emoji))
        starts.push_back(m.start(0));
    EXPECT_EQ(starts, (std::vector<std::ptrdiff_t>{0, 2, 3}));  // never inside the pair
}

TEST(Pattern, Modes)
{
    EXPECT_TRUE(rx::Pattern("charset", rx::IgnoreCase).match("CharSet=x").matched());
    EXPECT_FALSE(rx::Pattern("charset").match("CharSet=x").matched());
    EXPECT_TRUE(rx::Pattern("(?i)charset").match("CHARSET").matched());
    // Wide text folds case by Unicode; narrow text is bytes and folds ASCII only.
    EXPECT_TRUE(rx::WPattern(u"\u0444\u0430\u0439\u043b \u00e9", rx::IgnoreCase).match(u"\u0424\u0410\u0419\u041b \u00c9").matched());
    EXPECT_FALSE(rx::Pattern("\xe9", rx::IgnoreCase).match("\xc9").matched());

    std::string lines = "one\ntwo\nthree";
    EXPECT_FALSE(rx::Pattern("^two$").match(lines).matched());
    EXPECT_EQ(rx::Pattern("^two$", rx::MultiLine).match(lines).start(0), 4);
    EXPECT_FALSE(rx::Pattern("one.two").match(lines).matched());
    EXPECT_TRUE(rx::Pattern("one.two", rx::SingleLine).match(lines).matched());
    EXPECT_EQ(rx::Pattern("o.*", rx::SingleLine).match(lines).end(0), 13);
    EXPECT_TRUE(rx::WPattern(u"a.b").match(u"a\rb").matched());  // only LF ends a line
}

TEST(Pattern, InvalidPatternNeverMatchesAndLeavesTextAlone)
{
    for (unsigned flags : {0u, 4u, 8u}) {
        rx::Pattern p("a(b", flags);
        EXPECT_FALSE(p.valid());
        EXPECT_NE(p.error().find("missing closing parenthesis"), std::string::npos) << p.error();
        EXPECT_EQ(p.errorOffset(), 3);
        EXPECT_FALSE(p.match("a(b ab").matched());
        EXPECT_FALSE(p.matchExact("ab").matched());
        EXPECT_EQ(p.replace("ab", "x"), "ab");
    }
    rx::WPattern range(u"[z-a]");
    EXPECT_FALSE(range.valid());
    EXPECT_EQ(range.replace(u"abc", u"x"), u"abc");

    rx::Pattern rtl("a", rx::RightToLeft);
    EXPECT_FALSE(rtl.valid());
    EXPECT_NE(rtl.error().find("right-to-left"), std::string::npos);
    EXPECT_FALSE(rtl.match("a").matched());

    rx::Pattern fine("a");
    EXPECT_EQ(fine.error(), "");
    EXPECT_EQ(fine.errorOffset(), -1);
}

TEST(PatternCache, ARepeatedPatternIsCompiledOnce)
{
    const std::u16string pattern = u"cache-test-(\\d+)";
    rx::CacheStats before = rx::cacheStats();
    rx::WPattern first(pattern, rx::IgnoreCase);
    EXPECT_EQ(rx::cacheStats().compiles, before.compiles + 1);
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(rx::WPattern(pattern, rx::IgnoreCase).match(u"CACHE-TEST-5").matched());
    rx::WPattern global(pattern, rx::IgnoreCase | rx::Global);  // Global is no compile option
    rx::CacheStats after = rx::cacheStats();
    EXPECT_EQ(after.compiles, before.compiles + 1);
    EXPECT_EQ(after.hits, before.hits + 6);

    // Other flags, or the other width, are other entries.
    EXPECT_FALSE(rx::WPattern(pattern).match(u"CACHE-TEST-5").matched());
    EXPECT_TRUE(rx::Pattern("cache-test-(\\d+)", rx::IgnoreCase).match("CACHE-TEST-5").matched());
    EXPECT_EQ(rx::cacheStats().compiles, after.compiles + 2);

    // A pattern that does not compile is remembered with its error.
    rx::Pattern bad("cache-test-(");
    uint64_t compiles = rx::cacheStats().compiles;
    EXPECT_EQ(rx::Pattern("cache-test-(").error(), bad.error());
    EXPECT_EQ(rx::cacheStats().compiles, compiles);
}

TEST(PatternCache, StaysSmallAndKeepsTheRecentlyUsed)
{
    rx::Pattern kept("kept-pattern");
    for (int i = 0; i < 200; ++i) {
        rx::Pattern filler("filler-" + std::to_string(i));
        if (i % 8 == 0)
            rx::Pattern touch("kept-pattern");
    }
    EXPECT_LE(rx::cacheStats().entries, 64u);
    uint64_t compiles = rx::cacheStats().compiles;
    rx::Pattern again("kept-pattern");
    EXPECT_EQ(rx::cacheStats().compiles, compiles);
    rx::Pattern evicted("filler-0");
    EXPECT_EQ(rx::cacheStats().compiles, compiles + 1);
    // An object outlives its entry: the code is shared, not owned by the cache.
    rx::clearCache();
    EXPECT_EQ(rx::cacheStats().entries, 0u);
    EXPECT_TRUE(kept.match("a kept-pattern").matched());
}

TEST(Pattern, AStaticPatternServesEveryThread)
{
    static const rx::WPattern shared(uR"((\d+)-(\d+))");
    std::vector<std::thread> threads;
    std::vector<int> good(4, 0);
    for (size_t t = 0; t < 4; ++t)
        threads.emplace_back([t, &good] {
            for (size_t i = 0; i < 500; ++i) {
                std::u16string s = u"x" + std::u16string(t + 1, u'7') + u"-" + std::u16string(i % 5 + 1, u'3');
                rx::MatchResult m = shared.match(s);
                if (m.group(s, 1).size() == t + 1 && m.group(s, 2).size() == i % 5 + 1 &&
                    rx::WPattern(u"x(7+)").replace(s, u"$1") == s.substr(1))
                    ++good[t];
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, (std::vector<int>{500, 500, 500, 500}));
}

}  // namespace
