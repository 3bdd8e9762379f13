// The patterns the system's parsers use, compiled as they stand and tried on realistic samples.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "regex/pattern.h"

namespace {

// One wide character for each byte.
std::u16string widen(std::string_view bytes)
{
    std::u16string wide;
    for (char c : bytes)
        wide += char16_t(static_cast<unsigned char>(c));
    return wide;
}

std::string corpusFile(const std::string& name)
{
    std::ifstream in(std::string(PARCELET_CORPUS_DIR) + "/" + name, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

TEST(PatternsInUse, SplitPathBacktracksToTheLastDotAfterASeparator)
{
    static const rx::WPattern path(uR"((.*[\\/])(.*)(?:\.)(.*))", 0);
    struct Case {
        std::u16string text, dir, name, ext;
    } cases[] = {
        {uR"(C:\a.b\c)", uR"(C:\)", u"a", uR"(b\c)"},
        {uR"(C:\mail\a.b.eml)", uR"(C:\mail\)", u"a.b", u"eml"},
        {u"/home/u/x.msg", u"/home/u/", u"x", u"msg"},
        {uR"(C:\mail\.eml)", uR"(C:\mail\)", u"", u"eml"},
    };
    for (const Case& c : cases) {
        rx::MatchResult m = path.matchExact(c.text);
        ASSERT_TRUE(m.matched());
        EXPECT_EQ(m.group(c.text, 1), c.dir);
        EXPECT_EQ(m.group(c.text, 2), c.name);
        EXPECT_EQ(m.group(c.text, 3), c.ext);
    }
    EXPECT_FALSE(path.matchExact(u"x.msg").matched());
    EXPECT_FALSE(path.matchExact(uR"(C:\mail\noext)").matched());
}

// Headers of two real messages: the date's time zone, an encoded word, a parameter, a content charset.
TEST(PatternsInUse, HeadersOfRealMessages)
{
    std::u16string raw = widen(corpusFile("eml/mail__raw_email.eml"));
    ASSERT_FALSE(raw.empty());
    rx::WPattern zone(uR"(\s*Date:\s*\w+\W*?\d+\D*?\w+\W*?\d+\D*?\d+\D*?\d+\D*?\d+\D*([\+\-]\d{4}))", 12);
    EXPECT_EQ(zone.match(raw).group(raw, 1), u"-0600");
    rx::WPattern word(uR"((?:\=\?)([^?]*)(?:\?)(.)(?:\?)([^?]*)(?:\?\=))");
    rx::MatchResult m = word.match(raw);
    EXPECT_EQ(m.group(raw, 1), u"EUC-KR");
    EXPECT_EQ(m.group(raw, 2), u"Q");
    EXPECT_EQ(m.group(raw, 3), u"NOTE:_=C7=D1=B1=B9=B8=BB=B7=CE_=C7=CF=B4=C2_=B0=CD");

    std::string tika = corpusFile("eml/tika__testEML_embedded_xhtml_and_img.eml");
    ASSERT_FALSE(tika.empty());
    std::u16string wide = widen(tika);
    zone.reset();  // Global: it would go on from where the first message's match ended
    EXPECT_EQ(zone.match(wide).group(wide, 1), u"-0800");
    rx::WPattern charset(uR"(\.*charset\s*=\s*[\"\']([^\"\']+)[\"\'].*)", 12);
    EXPECT_EQ(charset.match(wide).group(wide, 1), u"utf-8");
    rx::Pattern filename(std::string("(") + "filename" + R"()(\*\d+)?(\*)?=([^\n\r;]*))");
    m = filename.match(tika);
    EXPECT_FALSE(m.took(2));
    EXPECT_EQ(m.group(tika, 4), "\"testimage.jpeg\"");
    // Its HTML has <meta> tags, but none that declares a charset.
    EXPECT_FALSE(rx::Pattern(R"(\<meta\s+.*content\s*=\s*[\"\'].*charset\s*=\s*[\"\']?([^\"\'\>\s]+)[\"\'].*\>)", 8)
                     .match(tika)
                     .matched());
}

TEST(PatternsInUse, CharsetOfAContentTypeNeedsQuotes)
{
    rx::WPattern charset(uR"(\.*charset\s*=\s*[\"\']([^\"\']+)[\"\'].*)", 12);
    std::u16string single = u"text/plain; CHARSET = 'koi8-r'";
    EXPECT_EQ(charset.match(single).group(single, 1), u"koi8-r");
    EXPECT_FALSE(charset.match(u"text/plain; charset=utf-8").matched());
}

std::u16string quoteForPattern(const std::u16string& text)
{
    static const rx::WPattern special(u"[\\[\\\\^\\$\\.\\|\\?\\*\\+\\(\\)\\{\\}\\#\\ \\\t]", 2);
    return special.replace(text, uR"(\$+)", -1, -1);
}

TEST(PatternsInUse, QuotedNamesAndLinkRewriting)
{
    EXPECT_EQ(quoteForPattern(u"a.b (1)[x]{2}^$|?*+#\t\\.png"),
              uR"(a\.b\ \(1\)\[x]\{2\}\^\$\|\?\*\+\#\)" u"\t" uR"(\\\.png)");

    rx::WPattern byName(uR"(\bsrc\s*=\s*")" + quoteForPattern(u"photo (1).jpg") + u"\"");
    EXPECT_EQ(byName.replace(u"<img width=3 src = \"photo (1).jpg\">", u"src=\"t_file_at0.jpg\""),
              u"<img width=3 src=\"t_file_at0.jpg\">");
    rx::WPattern wanted(uR"(src\s*=\s*")" + std::u16string(u"a.png") + uR"("\s+)", 12);
    EXPECT_TRUE(wanted.match(u"<IMG SRC=\"A.PNG\" >").matched());
    // A link name that enters unquoted may break the pattern: no crash, no match.
    rx::WPattern broken(uR"(src\s*=\s*")" + std::u16string(u"a(1.png") + uR"("\s+)", 12);
    EXPECT_FALSE(broken.valid());
    EXPECT_FALSE(broken.match(u"src=\"a(1.png\" ").matched());

    std::u16string q = quoteForPattern(u"abc");
    rx::WPattern cid(uR"(\bsrc\s*=\s*"?(cid:)?)" + q + u"\"?", 8);
    EXPECT_EQ(cid.replace(u"<img src=cid:abc>", u"src=\"t_file_at0.png\"", -1, -1), u"<img src=\"t_file_at0.png\">");
    EXPECT_EQ(cid.replace(u"<IMG SRC=\"CID:abc\">", u"src=\"x.png\"", -1, -1), u"<IMG src=\"x.png\">");
    rx::WPattern url(uR"(url\s*\(\s*(cid:)?)" + q + uR"(\))", 8);
    EXPECT_EQ(url.replace(u"background: url( cid:abc);", u"url(x.png)", -1, -1), u"background: url(x.png);");
    EXPECT_FALSE(url.match(u"url(cid:abc )").matched());
    EXPECT_EQ(rx::WPattern(uR"(<BASE\s+[^>]*>)", 8).replace(u"<head><base href=\"http://x/\"></head>", u""),
              u"<head></head>");
}

TEST(PatternsInUse, LineBreaksAndAddresses)
{
    EXPECT_EQ(rx::WPattern(u"\\r\\n").replace(u"a\r\nb\r\n", u"<br>"), u"a<br>b<br>");
    rx::WPattern anchored(
        uR"(^[\w-]+(\.[\w-]+)*@([a-z0-9-]+(\.[a-z0-9-]+)*?\.[a-z]{2,6}|(\d{1,3}\.){3}\d{1,3})(:\d{4})?$)");
    EXPECT_TRUE(anchored.match(u"john.doe@mail.example.com").matched());
    EXPECT_TRUE(anchored.match(u"ops@10.0.0.1:2525").matched());
    EXPECT_FALSE(anchored.match(u"John <john@example.com>").matched());
    EXPECT_FALSE(anchored.match(u"john@localhost").matched());
    std::u16string text = u"Call John <John.Doe@Example.ORG> today";
    EXPECT_EQ(rx::WPattern(uR"((?i)\b[A-Z0-9._%+-]+@[A-Z0-9.-]+\.[A-Z]{2,4}\b)").match(text).group(text, 0),
              u"John.Doe@Example.ORG");

    rx::WPattern loose(uR"((.*)[\<\[\"](.*?)[\>\]\"])");
    std::u16string token = u"John Doe <john@example.org>";
    rx::MatchResult m = loose.matchExact(token);
    EXPECT_EQ(m.group(token, 1), u"John Doe ");
    EXPECT_EQ(m.group(token, 2), u"john@example.org");
    EXPECT_FALSE(loose.matchExact(u"John <john@example.org> x").matched());
    EXPECT_EQ(rx::WPattern(uR"(\\\")").replace(uR"("a \"b\" c")", u"\""), u"\"a \"b\" c\"");
}

TEST(PatternsInUse, ParameterPieces)
{
    rx::Pattern param(std::string("(") + "filename" + R"()(\*\d+)?(\*)?=([^\n\r;]*))");
    std::string rest = "attachment; filename*0*=UTF-8''a%20; filename*1*=%62";
    rx::MatchResult m = param.match(rest);
    ASSERT_EQ(m.groups(), 5);
    EXPECT_EQ(m.group(rest, 2), "*0");
    EXPECT_EQ(m.group(rest, 3), "*");
    EXPECT_EQ(m.group(rest, 4), "UTF-8''a%20");
    rest = rest.substr(size_t(m.end(0)) + 2);
    m = param.match(rest);
    EXPECT_EQ(m.group(rest, 2), "*1");
    EXPECT_EQ(m.group(rest, 4), "%62");

    EXPECT_EQ(rx::WPattern(uR"(\\(.))").replace(uR"(a\"b\\c\)", u"$1"), uR"(a"b\c\)");
    rx::Pattern rfc2231(R"((.+)'(.?)'(.+))");
    std::string value = "UTF-8''a%20";
    m = rfc2231.match(value);
    EXPECT_EQ(m.group(value, 1), "UTF-8");
    EXPECT_TRUE(m.took(2));
    EXPECT_EQ(m.group(value, 3), "a%20");
    EXPECT_FALSE(rfc2231.match("iso-8859-1'de'%E4").matched());  // a language of one character at most
}

TEST(PatternsInUse, MailDates)
{
    std::u16string field = rx::WPattern(uR"(\s*Date:\s*)").replace(u"Date: Mon, 1 Feb 2010 10:00:00 +0200", u"");
    EXPECT_EQ(field, u"Mon, 1 Feb 2010 10:00:00 +0200");
    rx::MatchResult m =
        rx::WPattern(uR"((\w+)\W*?(\d+)\D*?(\w+)\W*?(\d+)\D*?(\d+)\D*?(\d+)\D*?(\d+)\D*(([\+\-])(\d\d)(\d\d)))")
            .match(field);
    ASSERT_EQ(m.groups(), 12);
    std::vector<std::u16string> got;
    for (int g = 1; g < m.groups(); ++g)
        got.push_back(m.group(field, g));
    EXPECT_EQ(got, (std::vector<std::u16string>{u"Mon", u"1", u"Feb", u"2010", u"10", u"00", u"00", u"+0200", u"+",
                                                u"02", u"00"}));

    // Escaped brackets demand literal text, so real dates never match.
    rx::WPattern escaped(
        uR"((\[a-zA-Z]+)\W*?(\[a-zA-Z]+)\W*?(\d+)\D*?(\d+)\D*?(\d+)\D*?(\d+)\D*?(\d+)\D*(([\+\-])(\d\d)(\d\d))?)");
    ASSERT_TRUE(escaped.valid()) << escaped.error();
    EXPECT_FALSE(escaped.match(field).matched());
    std::u16string odd = u"[a-zA-Z] [a-zA-Z]]] 1 2 3 4 5";
    EXPECT_EQ(escaped.match(odd).group(odd, 2), u"[a-zA-Z]]]");

    rx::WPattern local(uR"((\d+)\D*?(\w+)\W*?(\d+)\D*?(\d+)\D*?(\d+)\D*?(\d+)\D*(([\+\-])(\d\d)(\d\d))?)");
    std::u16string plain = u"1 Feb 2010 10:00:00";
    m = local.match(plain);
    got.clear();
    for (int g = 1; g <= 6; ++g)
        got.push_back(m.group(plain, g));
    EXPECT_EQ(got, (std::vector<std::u16string>{u"1", u"Feb", u"2010", u"10", u"00", u"00"}));
    EXPECT_FALSE(m.took(7));
    // Given a zone, the greedy \D* takes its sign, and the optional zone then matches nothing.
    std::u16string zoned = u"1 Feb 2010 10:00:00 +0200";
    m = local.match(zoned);
    EXPECT_EQ(m.group(zoned, 4), u"10");
    EXPECT_FALSE(m.took(7));
}

TEST(PatternsInUse, HtmlSourcesAndCharsetDeclarations)
{
    rx::WPattern src(uR"(<[^>]*?src[^=]*?=\"?([^=>\"]+)\"?[^>]*?>)", rx::IgnoreCase | rx::Global);
    std::u16string html = u"<p>Hi</p><IMG SRC=\"cid:image001.png@01D\" width=1><img alt=x src=logo.gif>";
    std::vector<std::u16string> found;
    for (rx::MatchResult m = src.match(html); m; m = src.match(html))
        found.push_back(m.group(html, 1));
    EXPECT_EQ(found, (std::vector<std::u16string>{u"cid:image001.png@01D", u"logo.gif"}));

    const char* meta = R"(\<meta\s+.*content\s*=\s*[\"\'].*charset\s*=\s*[\"\']?([^\"\'\>\s]+)[\"\'].*\>)";
    std::string page = "<html><head>\r\n<meta http-equiv=\"Content-Type\" content=\"text/html; "
                       "charset=windows-1251\">\r\n<title>x</title></head>";
    rx::MatchResult m = rx::Pattern(meta).match(page);
    EXPECT_EQ(m.group(page, 1), "windows-1251");
    page.erase(size_t(m.start(0)), size_t(m.end(0) - m.start(0)));
    EXPECT_EQ(page, "<html><head>\r\n\r\n<title>x</title></head>");
    std::u16string upper = u"<META HTTP-EQUIV='content-type' CONTENT='text/html; CHARSET=koi8-r'>";
    EXPECT_EQ(rx::WPattern(widen(meta), rx::IgnoreCase).match(upper).group(upper, 1), u"koi8-r");
}

TEST(PatternsInUse, RtfFontTable)
{
    std::string rtf = "{\\rtf1\\ansi\\ansicpg1251\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset204 Arial;}"
                      "{\\f1\\froman\\fprq2\\fcharset0 Times New Roman;}{\\f2\\fnil\\fcharset128 MS Gothic;}"
                      "{\\f3\\fnil\\ Odd Font;}}\r\n{\\colortbl ;\\red0\\green0\\blue0;}\r\n"
                      "{\\stylesheet{\\s0 Normal;}}\r\n\\f0\\fs20 Hello\\f123 world\\par }";
    rx::Pattern ansi(R"(\\ansicpg([\d]+))");
    EXPECT_EQ(ansi.match(rtf, 100).group(rtf, 1), "1251");
    EXPECT_FALSE(ansi.match(std::string(100, ' ') + "\\ansicpg932", 100).matched());

    rx::MatchResult m = rx::Pattern(R"(\{\\fonttbl(.+;\})\})", rx::SingleLine).match(rtf);
    std::string table = m.group(rtf, 1);
    // Greedy: the capture runs to the last ";}}" of the document, past the font table.
    EXPECT_EQ(table.substr(0, 9), "{\\f0\\fswi");
    EXPECT_EQ(table.substr(table.size() - 8), "Normal;}");

    auto walk = [&](const char* pattern, int valueGroup) {
        rx::Pattern p(pattern, rx::SingleLine);
        std::vector<std::string> entries;
        for (rx::MatchResult e = p.match(table); e; e = p.match(table, rx::npos, e.end(e.lastGroup())))
            entries.push_back(e.group(table, 1) + "=" + (e.took(valueGroup) ? e.group(table, valueGroup) : "-"));
        return entries;
    };
    // Font 1 has a pitch word before its charset word, and gets no entry.
    EXPECT_EQ(walk(R"(\\f([\d]+)\\([\w]+)\\(fcharset[\d]+)?\s([\w\s])+;)", 3),
              (std::vector<std::string>{"0=fcharset204", "2=fcharset128", "3=-"}));
    EXPECT_EQ(walk(R"(\\f([\d]+)([\\\w\d]+)\s([\w\s]+);)", 3),
              (std::vector<std::string>{"0=Arial", "1=Times New Roman", "2=MS Gothic", "3=Odd Font"}));

    // A font word is read from exactly four bytes: \f123 is font 12.
    std::string_view word(rtf.data() + rtf.find("\\f123"), 4);
    EXPECT_EQ(rx::Pattern(R"(\\f([\d]+))").match(word).group(word, 1), "12");
}

TEST(PatternsInUse, ViewerTexts)
{
    rx::WPattern label(uR"((.*?)\|)", rx::Global);
    std::u16string text = u"Save attachment|Save all|Print";
    std::vector<std::u16string> labels;
    size_t rest = 0;
    for (rx::MatchResult m = label.match(text); m; m = label.match(text)) {
        labels.push_back(m.group(text, 1));
        rest = size_t(m.end(0));
    }
    labels.push_back(text.substr(rest));
    EXPECT_EQ(labels, (std::vector<std::u16string>{u"Save attachment", u"Save all", u"Print"}));

    EXPECT_EQ(rx::WPattern(u"\\n\\r|\\r|\\n").replace(u"a\n\rb\rc\nd\r\ne", u"<br>"), u"a<br>b<br>c<br>d<br><br>e");
    rx::WPattern meta(uR"(<\s*meta\s*>)", rx::IgnoreCase);
    EXPECT_EQ(meta.match(u"<html><META ><body>").start(0), 6);
    EXPECT_FALSE(meta.match(u"<meta charset=x>").matched());
    EXPECT_EQ(rx::WPattern(uR"(<\s*html\s*>)", rx::IgnoreCase).match(u"< HTML>").end(0), 7);
}

}  // namespace
