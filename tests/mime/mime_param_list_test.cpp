// The name=value list reader on parameter texts and on the rest of its format.
#include <gtest/gtest.h>

#include <string>

#include "mime/mime_param_list.h"

namespace {

std::string valueOf(const std::string& text, const std::string& key, char delimiter = ';', size_t capacity = 1024,
                    const std::string& section = "")
{
    CMimeParamList list(delimiter);
    list.parse(text.data(), text.size());
    std::string out = "<stale>";
    return list.getValue(section, key, out, capacity) ? out : "<none>";
}

TEST(MimeParamList, Values)
{
    struct Case {
        std::string text, key, value;  // value "<none>" when getValue fails
        char delimiter = ';';
    };
    const Case cases[] = {
        {"; charset=\"utf-8\"; name=a.pdf;\r\n\tboundary=\"=_b\"", "boundary", "=_b"},
        {"; charset=\"utf-8\"; name=a.pdf", "CHARSET", "utf-8"},   // keys ignore case
        {"charset=a; Charset=b", "charset", "b"},                    // a later entry replaces
        {"charset =x", "charset", "<none>"},                         // the blank is part of the key
        {"boundary=\"a;b\"", "boundary", "a"},                       // quotes don't hide the delimiter
        {"name=a%20b", "name", "a b"},
        {"name=\"a%20b\"", "name", "a%20b"},                         // escapes only outside quotes
        {"name=100%%", "name", "100%"},
        {"n%61me=a\"b\"c", "name", "abc"},
        {"charset=", "charset", "<none>"},
        {"charset=\"\"", "charset", "<none>"},
        {"name=>>x", "name", ">x"},
        {"3:charset=x", "charset", "x"},                             // typed: only 0 and 3 are read
        {"1:charset=x", "charset", "<none>"},
        {"1x=a:b", "1x", "a:b"},                                     // the colon comes after the "="
        {"charset=#5", "charset", ""},                               // a bare number has no text
        {"charset=#0", "charset", "<none>"},
        {"; ;charset=x", "charset", "x"},                            // comments
        {"attachment; filename=\"x.txt\"", "filename", "<none>", '\r'},
        {"attachment; filename=\"x.txt\"", "attachment; filename", "x.txt", '\r'},
        {"filename=\"x; y.txt\"", "filename", "x; y.txt", '\r'},
        {std::string(1023, 'k') + "=x", std::string(1023, 'k'), "x"},
        {std::string(1024, 'k') + "=x", std::string(1023, 'k'), "<none>"},  // cut key, no "=" after it
    };
    for (const Case& c : cases) EXPECT_EQ(valueOf(c.text, c.key, c.delimiter), c.value) << c.text;
}

TEST(MimeParamList, Sections)
{
    std::string text = "a=1; [Extra]; a=2; b=3; [extra]; b=4";
    EXPECT_EQ(valueOf(text, "a"), "1");
    EXPECT_EQ(valueOf(text, "b"), "<none>");
    EXPECT_EQ(valueOf(text, "a", ';', 1024, "EXTRA"), "2");
    EXPECT_EQ(valueOf(text, "b", ';', 1024, "extra"), "4");
}

TEST(MimeParamList, CapacityRule)
{
    EXPECT_EQ(valueOf("name=" + std::string(1023, 'v'), "name").size(), 1023u);
    EXPECT_EQ(valueOf("name=" + std::string(5000, 'v'), "name").size(), 1024u);
    EXPECT_EQ(valueOf("name=abcdef", "name", ';', 4), "abcd");
}

TEST(MimeParamList, RefusesNullOrEmptyText)
{
    CMimeParamList list(';');
    EXPECT_EQ(list.parse(nullptr, 3), 0);
    EXPECT_EQ(list.parse("a=b", 0), 0);
    EXPECT_EQ(list.parse("a=b", 3), 1);
}

}  // namespace
