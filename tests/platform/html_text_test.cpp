#include <gtest/gtest.h>

#include "platform/html_text.h"

namespace {

using platform::htmlToText;

TEST(HtmlToText, BlocksBreakLinesAndSpaceFolds)
{
    EXPECT_EQ(htmlToText(u"<html><head><title>T</title><style>p{}</style></head>"
                         u"<body><p>Hello   <b>big</b>\n world</p><p>Second</p>line<br>next</body></html>"),
              u"Hello big world\n\nSecond\n\nline\nnext");
    EXPECT_EQ(htmlToText(u"<div>a</div><div>b</div><script>x()</script>"), u"a\nb");
}

TEST(HtmlToText, PreformattedTextAndTables)
{
    EXPECT_EQ(htmlToText(u"<pre>a  b\n c</pre>"), u"a  b\n c");
    EXPECT_EQ(htmlToText(u"<table><tr><td>1</td><td>2</td></tr><tr><th>3</th><td>4</td></tr></table>"),
              u"1\t2\n3\t4");
}

TEST(HtmlToText, EntitiesAndNonAsciiText)
{
    EXPECT_EQ(htmlToText(u"<p>caf&eacute; &amp; \u0436 &#x20AC;</p>"), u"caf\u00E9 & \u0436 \u20AC");
}

TEST(HtmlToText, BrokenOrEmptyInputGivesWhatCanBeRead)
{
    EXPECT_EQ(htmlToText(u""), u"");
    EXPECT_EQ(htmlToText(u"<p>open <b>never closed"), u"open never closed");
    EXPECT_EQ(htmlToText(u"plain text, no tags"), u"plain text, no tags");
    std::u16string deep;
    for (int i = 0; i < 5000; ++i) deep += u"<div>";
    deep += u"x";
    EXPECT_NO_THROW(htmlToText(deep));
}

}  // namespace
