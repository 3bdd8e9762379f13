#include <gtest/gtest.h>

#include "foundation/text.h"

namespace {

struct SplitCase {
    std::u16string path, dir, name, ext;
    bool matched;
};

TEST(SplitPath, LastDotAfterASeparatorAndBacktracking)
{
    const SplitCase cases[] = {
        {u"C:\\mail\\a.b.eml", u"C:\\mail\\", u"a.b", u"eml", true},
        {u"C:\\a.b\\c", u"C:\\", u"a", u"b\\c", true},
        {u"/home/u/x.msg", u"/home/u/", u"x", u"msg", true},
        {u"/home/u/.eml", u"/home/u/", u"", u"eml", true},
        {u"/home/u/x.", u"/home/u/", u"x", u"", true},
        {u"x.msg", u"", u"", u"", false},
        {u"C:\\mail\\noext", u"", u"", u"", false},
    };
    for (const SplitCase& c : cases) {
        std::u16string dir, name, ext;
        EXPECT_EQ(ty::splitPath(c.path, dir, name, ext), c.matched);
        EXPECT_EQ(dir, c.dir);
        EXPECT_EQ(name, c.name);
        EXPECT_EQ(ext, c.ext);
    }
}

TEST(JoinPath, BackslashUnlessAlreadySeparated)
{
    EXPECT_EQ(ty::joinPath(u"\\", u"Inbox"), u"\\Inbox");
    EXPECT_EQ(ty::joinPath(u"", u"Inbox"), u"Inbox");
    EXPECT_EQ(ty::joinPath(u"\\Inbox", u"Sub"), u"\\Inbox\\Sub");
    EXPECT_EQ(ty::joinPath(u"/tmp/", u"a"), u"/tmp/a");
}

TEST(SplitTokens, EmptyTokensOnlyOnRequestAndNoTrailingEmpty)
{
    std::vector<std::u16string> list;
    EXPECT_EQ(ty::splitTokens(u"\\a\\\\b", u"\\/", list, false), 2u);
    EXPECT_EQ(list, (std::vector<std::u16string>{u"a", u"b"}));
    list.clear();
    EXPECT_EQ(ty::splitTokens(u";a;;b;", u";", list, true), 4u);
    EXPECT_EQ(list, (std::vector<std::u16string>{u"", u"a", u"", u"b"}));
    list = {u"kept"};
    EXPECT_EQ(ty::splitTokens(u"x", u";", list, true), 2u);  // the count is the list's
}

TEST(ReplaceAll, PatternAndTemplate)
{
    std::u16string text = u"a.b.c";
    EXPECT_EQ(ty::replaceAll(text, uR"(\.)", u"$$", 0), u"a$b$c");
    EXPECT_EQ(text, u"a$b$c");
    text = u"Name: x";
    EXPECT_EQ(ty::replaceAll(text, u"name", u"[$&]", 8), u"[Name]: x");
}

TEST(WidenBytes, OneCharacterPerByte)
{
    EXPECT_EQ(ty::widenBytes(std::string("a\xE9\0b", 4)), std::u16string(u"a\u00E9\0b", 4));
}

}  // namespace
