// Taking HTML out of HTML-wrapping RTF: the words the scan knows, in their order, the runs it
// suppresses, the charsets it decodes by, and the encapsulation example of [MS-OXRTFEX].
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "rtf/rtf_to_html.h"

namespace {

std::u16string html(const std::string& rtf)
{
    std::u16string out;
    mcl::rtfToHtml(rtf, out);
    return out;
}

// A document whose content starts with a tag, so that the words under test are scanned.
std::u16string content(const std::string& text)
{
    return html("{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 {\\*\\htmltag <x>}" + text + "}");
}

TEST(RtfToHtmlFrame, NothingBeforeTheFirstTagComesOut)
{
    EXPECT_EQ(html("{\\rtf1\\fromhtml1 text \\par more}"), u"");
    EXPECT_EQ(html("{\\rtf1\\fromhtml1 dropped{\\*\\htmltag64}kept}"), u"kept");
}

TEST(RtfToHtmlFrame, AppendsToTheOutput)
{
    std::u16string out = u"before:";
    mcl::rtfToHtml("{\\*\\htmltag <b>}", out);
    EXPECT_EQ(out, u"before:<b>");
}

TEST(RtfToHtmlFrame, TagNumberAndOneBlankAreSkipped)
{
    EXPECT_EQ(html("{\\*\\htmltag84  <p>}"), u" <p>");
}

TEST(RtfToHtmlFrame, LineEndsInTheRtfAreDropped)
{
    EXPECT_EQ(content("a\r\nb\nc\rd"), u"<x>abcd");
}

TEST(RtfToHtmlWords, ParagraphAndLineBreaks)
{
    EXPECT_EQ(content("a\\par b\\line c\\pard d"), u"<x>a\r\nb\r\ncd");
    // "\par" wins over the longer word and leaves the rest of it as text.
    EXPECT_EQ(content("\\pararsid123 x"), u"<x>\r\narsid123 x");
}

TEST(RtfToHtmlWords, TabIsFourBlanks)
{
    EXPECT_EQ(content("\\tab x"), u"<x>    x");
}

TEST(RtfToHtmlWords, SkippedWords)
{
    EXPECT_EQ(content("\\li360 a\\fi-360 b\\lang1033 c\\plain d\\protect e"), u"<x>abcde");
}

TEST(RtfToHtmlWords, LongerWordsLeaveTheirRest)
{
    EXPECT_EQ(content("\\langfe1033 x"), u"<x>fe1033 x");
    EXPECT_EQ(content("\\fcs1 x"), u"<x>cs1 x");
    EXPECT_EQ(content("\\ulnone x"), u"<x>lnone x");
}

TEST(RtfToHtmlWords, FontNumberOfThreeDigitsKeepsTwo)
{
    EXPECT_EQ(content("\\f123x"), u"<x>3x");
}

TEST(RtfToHtmlWords, EscapedSymbols)
{
    EXPECT_EQ(content("\\{\\}\\\\"), u"<x>{}\\");
}

TEST(RtfToHtmlWords, UnknownWordsAreSkippedWithOneBlank)
{
    EXPECT_EQ(content("\\cf1\\highlight2  x"), u"<x> x");
    EXPECT_EQ(content("\\cf-1 x"), u"<x>-1 x");
    EXPECT_EQ(content("\\*\\cs5 x"), u"<x>*x");
}

TEST(RtfToHtmlWords, BraceAfterAnUnknownWordIsText)
{
    // No group is opened, so the bold word finds no group to change.
    EXPECT_EQ(html("{\\*\\htmltag x}\\qc{\\b y"), u"x{ y");
}

TEST(RtfToHtmlWords, DroppedToTheClosingBrace)
{
    EXPECT_EQ(content("{\\rtlch dropped} a{\\pntext 1.\\tab}b"), u"<x> ab");
    // Seven bytes for a six-letter word: a brace right after it is passed over.
    EXPECT_EQ(content("{\\ltrch}x}y"), u"<x>y");
}

TEST(RtfToHtmlUnicode, OneCharacterAndOneByteAfterIt)
{
    EXPECT_EQ(content("a\\u8217?b"), u"<x>a\u2019b");
    EXPECT_EQ(content("\\u8217 ?"), u"<x>\u2019?");
    EXPECT_EQ(content("\\u8217\\'92x"), u"<x>\u2019'92x");
}

TEST(RtfToHtmlUnicode, NegativeValueIsText)
{
    EXPECT_EQ(content("\\u-10179?"), u"<x>-10179?");
}

TEST(RtfToHtmlUnicode, ValueIsCutToSixteenBits)
{
    EXPECT_EQ(content("\\u65601?"), u"<x>A");  // 65601 = 0x10041
}

TEST(RtfToHtmlFormatting, BoldAndItalicWords)
{
    EXPECT_EQ(content("{\\b b\\b0 c}"), u"<x><B> b</B> c");
    EXPECT_EQ(content("{\\i i}"), u"<x><I> i</I>");
    EXPECT_EQ(content("{\\b1 x\\bin y}"), u"<x> x y");
}

TEST(RtfToHtmlFormatting, FontSize)
{
    EXPECT_EQ(content("{\\fs24 a}"), u"<x><FONT style=\"font-size:12.0pt;\">  a</FONT>");
}

TEST(RtfToHtmlFormatting, GroupOpenedBeforeTheFirstTagCloses)
{
    EXPECT_EQ(html("{\\rtf1{\\*\\htmltag a}\\b x}"), u"a<B> x</B>");
}

TEST(RtfToHtmlSuppressed, RunUpToHtmlrtf0IsDropped)
{
    EXPECT_EQ(content("\\htmlrtf \\b bold\\par\\htmlrtf0 text"), u"<x>text");
    EXPECT_EQ(content("{\\htmlrtf \\b \\htmlrtf0 t}"), u"<x>t");
}

TEST(RtfToHtmlSuppressed, Htmlrtf0MetFirstStartsARun)
{
    EXPECT_EQ(content("\\htmlrtf0 b\\htmlrtf0 c"), u"<x>c");
}

TEST(RtfToHtmlSuppressed, RunWithoutEndReachesTheEnd)
{
    EXPECT_EQ(html("{\\*\\htmltag a}\\htmlrtf 0123456789abcdef"), u"a");
}

TEST(RtfToHtmlSuppressed, FontWordsInARunStillSelect)
{
    const std::string document =
        "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1{\\fonttbl{\\f1\\fnil\\fcharset204 Arial;}}"
        "{\\*\\htmltag x}\\htmlrtf \\f1 \\htmlrtf0 \\'e9}";
    EXPECT_EQ(html(document), u"x\u0439");  // 0xE9 in code page 1251
}

TEST(RtfToHtmlSuppressed, MhtmltagGroupIsSkippedAndStaysOpen)
{
    EXPECT_EQ(html("{\\*\\htmltag a}{\\*\\mhtmltag84 cid:x}b"), u"ab");
    // The group's record is not closed, so the bold word has a group to change.
    EXPECT_EQ(html("{\\*\\htmltag a}{\\*\\mhtmltag x}\\b y"), u"a<B> y");
}

TEST(RtfToHtmlCharsets, EscapesDecodeByTheDefaultCharset)
{
    EXPECT_EQ(content("\\'e9\\'E9"), u"<x>\u00e9\u00e9");
    EXPECT_EQ(html("{\\rtf1\\ansi\\ansicpg1251 {\\*\\htmltag \\'e9}}"), u"\u0439");
}

TEST(RtfToHtmlCharsets, HexDigitsAreNotValidated)
{
    // 'z' counts 35: (35 << 4 | 35) & 0xFF is 0x33.
    EXPECT_EQ(content("\\'zz"), u"<x>3");
}

TEST(RtfToHtmlCharsets, ShiftJisPairDecodesAsOneCharacter)
{
    EXPECT_EQ(html("{\\rtf1\\ansi\\ansicpg932\\fromhtml1 {\\*\\htmltag \\'82\\'a0}}"), u"\u3042");
}

TEST(RtfToHtmlCharsets, FontCharsetWinsOverTheDefault)
{
    const std::string document =
        "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1{\\fonttbl{\\f1\\fnil\\fcharset128 MS Gothic;}}"
        "{\\*\\htmltag \\f1\\'82\\'a0}\\'e9}";
    // Inside the tag group font 1 is Shift-JIS; after it the default is back.
    EXPECT_EQ(html(document), u"\u3042\u00e9");
}

TEST(RtfToHtmlCharsets, PairSplitAcrossEscapeAndTextIsNotJoined)
{
    std::u16string out = html("{\\rtf1\\ansi\\ansicpg932 {\\*\\htmltag \\'82\xa0}}");
    EXPECT_EQ(out.find(u'\u3042'), std::u16string::npos);
}

TEST(RtfToHtmlRobustness, EveryPrefixOfADocument)
{
    const std::string document =
        "{\\rtf1\\ansi\\ansicpg932\\fromhtml1{\\fonttbl{\\f1\\fnil\\fcharset128 G;}}{\\*\\htmltag <p>}"
        "\\htmlrtf {\\f1 x}\\htmlrtf0 \\'82\\'a0\\u8217?\\b\\fs24\\f1{\\*\\mhtmltag1 {y}}\\pntext\\'4}";
    // Each prefix in a block of its own size, so that a read past its end is caught.
    for (size_t length = 0; length <= document.size(); ++length) {
        std::unique_ptr<char[]> prefix(new char[length]);
        std::copy_n(document.data(), length, prefix.get());
        std::u16string out;
        mcl::rtfToHtml(std::string_view(prefix.get(), length), out);
    }
}

TEST(RtfToHtmlExample, EncapsulationExampleOfMsOxrtfex)
{
    // [MS-OXRTFEX] 3.1, with CR LF line ends. The scan gives the source HTML back, with the
    // RTF's own paragraph marks as CR LF. "\uc1", met after the first tag, is read as "\u" and
    // leaves "c1"; "\deftab360 \f0\fs24" is one run of unknown words, and the line end after it
    // is the byte that run emits.
    const std::string rtf =
        "{\\rtf1\\ANSI\\ansicpg1251\\fromhtml1 \\deff0\r\n"
        "{\\fonttbl {\\f0\\fmodern Courier New;}{\\f1\\fswiss Arial;}{\\f2\\fswiss\\fcharset0 Arial;}}\r\n"
        "{\\colortbl\\red0\\green0\\blue0;\\red0\\green0\\blue255;} \r\n"
        "{\\*\\htmltag64}\r\n"
        "\\uc1\\pard\\plain\\deftab360 \\f0\\fs24\r\n"
        "{\\*\\htmltag <HTML><head>\\par\r\n"
        "<style>\\par\r\n"
        "<!--\\par\r\n"
        " /* Style Definitions */\\par\r\n"
        " p.MsoNormal, li.MsoNormal \\{font-family:Arial;\\}\\par\r\n"
        "-->\\par\r\n"
        "</style>\\par\r\n"
        "\\tab <!-- This is a HTML comment.\\par\r\n"
        "There is a horizontal tab (%x09) character before the comment, \\par\r\n"
        "and some new lines inside the comment. -->\\par\r\n"
        "</head>\\par\r\n"
        "<body>\\par\r\n"
        "<p\\par\r\n"
        "class=\"MsoNormal\">}\r\n"
        "{\\htmlrtf \\f1 \\htmlrtf0 Note the line break inside a P tag. {\\*\\htmltag <b>}{\\htmlrtf \\b \\htmlrtf0 "
        "This is a bold text{\\*\\htmltag </b>}} \\htmlrtf\\par\\htmlrtf0}\r\n"
        "\\htmlrtf \\par \\htmlrtf0\r\n"
        "{\\*\\htmltag </p>\\par\r\n"
        "<p class=\"MsoNormal\">\\par}\r\n"
        "{\\htmlrtf \\f1 \\htmlrtf0 This is a normal text with a character references:\r\n"
        "{\\*\\htmltag &nbsp;}\\htmlrtf \\'a0\\htmlrtf0  {\\*\\htmltag &lt;}\\htmlrtf <\\htmlrtf0  {\\*\\htmltag "
        "&uml;}\\htmlrtf {\\f2\\'a8}\\htmlrtf0{\\*\\htmltag <br>\\par}\\htmlrtf\\line\\htmlrtf0\r\n"
        "characters which have special meaning in RTF: \\{\\}\\\\{\\*\\htmltag <br>\\par}\\htmlrtf\\line\\htmlrtf0"
        "\\htmlrtf\\par\\htmlrtf0}\r\n"
        "{\\*\\htmltag </p>\\par\r\n"
        "<ol>\\par\r\n"
        "    <li class=\"MsoNormal\">}{\\htmlrtf {{\\*\\pn\\pnlvlbody\\pndec\\pnstart1\\pnindent360{\\pntxta.}}"
        "\\li360\\fi-360{\\pntext 1.\\tab} \\f1 \\htmlrtf0 This is a list item}\\htmlrtf\\par\\htmlrtf0}\r\n"
        "{\\*\\htmltag \\par\r\n"
        "</ol>\\par\r\n"
        "</body>\\par\r\n"
        "</HTML>\\par }}";
    const std::u16string expected =
        u"c1\r<HTML><head>\r\n"
        u"<style>\r\n"
        u"<!--\r\n"
        u" /* Style Definitions */\r\n"
        u" p.MsoNormal, li.MsoNormal {font-family:Arial;}\r\n"
        u"-->\r\n"
        u"</style>\r\n"
        u"    <!-- This is a HTML comment.\r\n"
        u"There is a horizontal tab (%x09) character before the comment, \r\n"
        u"and some new lines inside the comment. -->\r\n"
        u"</head>\r\n"
        u"<body>\r\n"
        u"<p\r\n"
        u"class=\"MsoNormal\">Note the line break inside a P tag. <b>This is a bold text</b> </p>\r\n"
        u"<p class=\"MsoNormal\">\r\n"
        u"This is a normal text with a character references:&nbsp; &lt; &uml;<br>\r\n"
        u"characters which have special meaning in RTF: {}\\<br>\r\n"
        u"</p>\r\n"
        u"<ol>\r\n"
        u"    <li class=\"MsoNormal\">This is a list item\r\n"
        u"</ol>\r\n"
        u"</body>\r\n"
        u"</HTML>\r\n";
    EXPECT_EQ(html(rtf), expected);
}

}  // namespace
