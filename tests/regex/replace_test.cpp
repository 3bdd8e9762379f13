#include <gtest/gtest.h>

#include <string>

#include "regex/pattern.h"

namespace {

TEST(Replace, EveryTemplateToken)
{
    rx::Pattern p(R"((?<word>b)(c)?(x)?)");
    auto r = [&](const char* replacement) { return p.replace("abcd", replacement); };
    EXPECT_EQ(r("[$$]"), "a[$]d");
    EXPECT_EQ(r("[$&]"), "a[bc]d");
    EXPECT_EQ(r("[$`]"), "a[a]d");
    EXPECT_EQ(r("[$']"), "a[d]d");
    EXPECT_EQ(r("[$_]"), "a[abcd]d");
    EXPECT_EQ(r("[$+]"), "a[c]d");  // group 3 took no part: the highest that did is 2
    EXPECT_EQ(r("[$0|$1|$2|$3]"), "a[bc|b|c|]d");
    EXPECT_EQ(r("[${word}|${2}|${02}]"), "a[b|c|c]d");
    // Numbers beyond the groups and unknown names stay as written.
    EXPECT_EQ(r("[$4|$9|${4}|${99999999999}|${nope}|${}]"), "a[$4|$9|${4}|${99999999999}|${nope}|${}]d");
    // `$` and one digit make the token.
    EXPECT_EQ(r("[$12]"), "a[b2]d");
    // Anything else stands for itself.
    EXPECT_EQ(r("[$x|$|${word|${a\nb}]$"), "a[$x|$|${word|${a\nb}]$d");
    EXPECT_EQ(r("$$1"), "a$1d");
    EXPECT_EQ(r(""), "ad");

    rx::WPattern w(uR"((?<word>b)(c)?)");
    EXPECT_EQ(w.replace(u"abcd", u"<$2$1|${word}|$&|$`|$'|$_|$+|$$>"), u"a<cb|b|bc|a|d|abcd|c|$>d");
}

TEST(Replace, DollarPlusWithAndWithoutGroups)
{
    EXPECT_EQ(rx::Pattern("[.*]").replace("a.b*c", R"(\$+)"), R"(a\.b\*c)");
    EXPECT_EQ(rx::WPattern(u"[.*]").replace(u"a.b*c", uR"(\$+)"), uR"(a\.b\*c)");
    EXPECT_EQ(rx::Pattern("(x)|(y)|z").replace("xyz", "[$+]"), "[x][y][z]");
}

TEST(Replace, StartAndCount)
{
    rx::Pattern p("a");
    EXPECT_EQ(p.replace("aaaa", "b"), "bbbb");
    EXPECT_EQ(p.replace("aaaa", "b", -1, 2), "bbaa");
    EXPECT_EQ(p.replace("aaaa", "b", 1, -1), "abbb");
    EXPECT_EQ(p.replace("aaaa", "b", 1, 2), "abba");
    EXPECT_EQ(p.replace("aaaa", "b", -1, 0), "aaaa");
    EXPECT_EQ(p.replace("aaaa", "b", 99, -1), "aaaa");
    EXPECT_EQ(p.replace("", "b"), "");
    // Text before the start still counts for look-behind and for $`.
    EXPECT_EQ(rx::Pattern("(?<=a)a").replace("aaa", "[$`]", 1), "a[a][aa]");
}

TEST(Replace, EmptyMatchesAsPerl)
{
    EXPECT_EQ(rx::Pattern("x*").replace("abc", "-"), "-a-b-c-");
    EXPECT_EQ(rx::Pattern("x*").replace("axb", "-"), "-a--b-");
    EXPECT_EQ(rx::Pattern("x*").replace("", "-"), "-");
    EXPECT_EQ(rx::Pattern("^").replace("ab\ncd", ">"), ">ab\ncd");
    EXPECT_EQ(rx::Pattern("^", rx::MultiLine).replace("ab\ncd", ">"), ">ab\n>cd");
    EXPECT_EQ(rx::WPattern(u"").replace(u"\U0001F600", u"|"), u"|\U0001F600|");
}

}  // namespace
