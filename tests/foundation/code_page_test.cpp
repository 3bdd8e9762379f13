#include <gtest/gtest.h>

#include <clocale>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "foundation/charset_table.h"
#include "foundation/code_page.h"

using namespace std::string_literals;

namespace {

// Sets LC_CTYPE for one test and puts the old one back.
class CtypeLocale {
public:
    explicit CtypeLocale(const char* name)
    {
        const char* old = std::setlocale(LC_CTYPE, nullptr);
        saved_ = old ? old : "C";
        ok_ = std::setlocale(LC_CTYPE, name) != nullptr;
    }
    ~CtypeLocale() { std::setlocale(LC_CTYPE, saved_.c_str()); }
    bool ok() const { return ok_; }

private:
    std::string saved_;
    bool ok_;
};

std::u16string decode(uint32_t codePage, const std::string& bytes)
{
    return ty::bytesToWide(bytes.data(), bytes.size(), codePage, true);
}

std::u16string viaCharset(const char* charset, const std::string& bytes, bool useDefault)
{
    std::u16string out = u"unchanged";
    ty::convertToWide(out, bytes.data(), bytes.size(), charset, useDefault);
    return out;
}

// ---- names, flags and the system code page -----------------------------------------------------------------

TEST(ConvertToWide, Utf8InAnyCase)
{
    for (const char* name : {"UTF-8", "utf-8", "Utf-8"}) {
        EXPECT_EQ(viaCharset(name, "a\xC3\xA9\xE2\x82\xAC", false), u"a\u00E9\u20AC") << name;
    }
}

TEST(ConvertToWide, Cp1252ThroughItsRow)
{
    EXPECT_EQ(viaCharset("CP1252", "\x80\xE9", false), u"\u20AC\u00E9");
}

TEST(ConvertToWide, UsAsciiDecodesByWindows1252)
{
    // A byte above 127 gives a Western letter, not a replacement.
    EXPECT_EQ(viaCharset("us-ascii", "caf\xE9", false), u"caf\u00E9");
    EXPECT_EQ(viaCharset("iso-8859-1", "\x80", false), u"\u20AC");
}

TEST(ConvertToWide, Cp0WithTheFlagClearIsEmpty)
{
    EXPECT_EQ(viaCharset("CP0", "plain", false), u"");
    EXPECT_EQ(viaCharset(nullptr, "plain", false), u"");
}

TEST(ConvertToWide, Cp0WithTheFlagSetDecodesByTheSystemCodePage)
{
    {
        CtypeLocale locale("C");
        ASSERT_TRUE(locale.ok());
        EXPECT_EQ(viaCharset("CP0", "caf\xE9\x80", true), u"caf\u00E9\u20AC");
        EXPECT_EQ(viaCharset(nullptr, "caf\xE9", true), u"caf\u00E9");
    }
    CtypeLocale locale("C.UTF-8");
    if (!locale.ok()) GTEST_SKIP() << "no C.UTF-8 locale";
    EXPECT_EQ(viaCharset("CP0", "caf\xC3\xA9", true), u"caf\u00E9");
}

TEST(ConvertToWide, UnknownNameWithTheFlagClearIsEmptyEvenForAscii)
{
    EXPECT_EQ(viaCharset("no-such-charset", "plain ascii", false), u"");
    EXPECT_EQ(viaCharset("utf8", "plain ascii", false), u"");
}

TEST(ConvertToWide, UnknownNameWithTheFlagSetUsesTheSystemCodePage)
{
    CtypeLocale locale("C");
    ASSERT_TRUE(locale.ok());
    EXPECT_EQ(viaCharset("no-such-charset", "plain \xE9", true), u"plain \u00E9");
}

TEST(ConvertToWide, KnownNameWhoseCodePageCannotBeConvertedIsEmpty)
{
    // "x-europa" is in the table (29001), but no engine has the table.
    EXPECT_EQ(viaCharset("x-europa", "plain", true), u"");
    EXPECT_EQ(viaCharset("x-mac-japanese", "plain", false), u"");
}

TEST(ConvertToWide, EmptyInput)
{
    EXPECT_EQ(viaCharset("utf-8", "", false), u"");
    std::u16string out = u"x";
    ty::convertToWide(out, nullptr, 0, "utf-8", true);
    EXPECT_EQ(out, u"");
}

// ---- the system code page -----------------------------------------------------------------------

TEST(SystemCodePage, CAndPosixAre1252)
{
    {
        CtypeLocale locale("C");
        ASSERT_TRUE(locale.ok());
        EXPECT_EQ(ty::systemAnsiCodePage(), 1252u);
    }
    CtypeLocale locale("POSIX");
    ASSERT_TRUE(locale.ok());
    EXPECT_EQ(ty::systemAnsiCodePage(), 1252u);
}

TEST(SystemCodePage, FollowsTheCodesetOfTheLocale)
{
    CtypeLocale locale("C.UTF-8");
    if (!locale.ok()) GTEST_SKIP() << "no C.UTF-8 locale";
    EXPECT_EQ(ty::systemAnsiCodePage(), 65001u);
    EXPECT_EQ(ty::resolveCodePage(0), 65001u);
    EXPECT_EQ(ty::resolveCodePage(3), 65001u);
    EXPECT_EQ(ty::resolveCodePage(1), 65001u);
    EXPECT_EQ(ty::resolveCodePage(2), 10000u);
}

TEST(SystemCodePage, PseudoCodePagesUnderTheCLocale)
{
    CtypeLocale locale("C");
    ASSERT_TRUE(locale.ok());
    EXPECT_EQ(ty::resolveCodePage(0), 1252u);
    EXPECT_EQ(ty::resolveCodePage(1), 437u);
    EXPECT_EQ(ty::resolveCodePage(2), 10000u);
    EXPECT_EQ(ty::resolveCodePage(3), 1252u);
    EXPECT_EQ(ty::resolveCodePage(1251), 1251u);
    EXPECT_EQ(decode(1, "\x80"), u"\u00C7");  // OEM 437
    EXPECT_EQ(decode(2, "\x8A"), u"\u00E4");  // Mac Roman
    EXPECT_EQ(decode(3, "\x80"), u"\u20AC");
}

TEST(BytesToWide, CodePageZeroFollowsTheFlag)
{
    CtypeLocale locale("C");
    ASSERT_TRUE(locale.ok());
    std::string bytes = "A\xE9";
    EXPECT_EQ(ty::bytesToWide(bytes.data(), bytes.size(), 0, false), u"");
    EXPECT_EQ(ty::bytesToWide(bytes.data(), bytes.size(), 0, true), u"A\u00E9");
    // The flag matters for code page 0 only.
    EXPECT_EQ(ty::bytesToWide(bytes.data(), bytes.size(), 1252, false), u"A\u00E9");
}

// ---- one known sample for every code page of the table -------------------------------------------

struct Sample {
    uint32_t codePage;
    std::string bytes;
    std::u16string text;
    bool roundTrip = true;  // wideToBytes(text) gives the bytes back
};

// Expected code points from the published code page tables.
const std::vector<Sample>& samples()
{
    static const std::vector<Sample> list = {
        {37, "\xC1\x4A\x81", u"A\u00A2a"},
        {437, "\x80\xE1\xB0", u"\u00C7\u00DF\u2591"},
        {500, "\xC1\x4A\x5A", u"A[]"},
        {708, "\xC7\xE1", u"\u0627\u0641"},
        {720, "\x82\x98", u"\u00E9\u0621"},
        {737, "\x80\x98", u"\u0391\u03B1"},
        {775, "\x80\x8F", u"\u0106\u00C5"},
        {850, "\x80\xD5", u"\u00C7\u0131"},
        {852, "\x85\x9F", u"\u016F\u010D"},
        {855, "\x80\xB5", u"\u0452\u0445"},
        {857, "\x8D\x98", u"\u0131\u0130"},
        {858, "\x80\xD5", u"\u00C7\u20AC"},
        {860, "\x84\x86", u"\u00E3\u00C1"},
        {861, "\x8B\x8C", u"\u00D0\u00F0"},
        {862, "\x80\x9A", u"\u05D0\u05EA"},
        {863, "\x84\x86", u"\u00C2\u00B6"},
        {864, "\x80\xB1", u"\u00B0\u0661"},
        {865, "\x9B\x9D", u"\u00F8\u00D8"},
        {866, "\x80\xE0", u"\u0410\u0440"},
        {869, "\xA4\xD6", u"\u0391\u03B1"},
        {870, "\xC1\x81", u"Aa"},
        {874, "\xA1\x80", u"\u0E01\u20AC"},
        {875, "\x41\xC1", u"\u0391A"},
        {932, "\x82\xA0\x83\x41\xB1", u"\u3042\u30A2\uFF71"},
        {933, "\xC1\x81", u"Aa"},
        {936, "\xC4\xE3\x81\x40", u"\u4F60\u4E02"},
        {949, "\xB0\xA1\x81\x41", u"\uAC00\uAC02"},
        {950, "\xA4\x40\xA4\x48", u"\u4E00\u4EBA"},
        {970, "\xB0\xA1", u"\uAC00"},
        {1026, "\xC1\x81", u"Aa"},
        {1047, "\xC1\xAD\xBD", u"A[]"},
        {1140, "\xC1\x9F", u"A\u20AC"},
        {1141, "\x4A\x9F", u"\u00C4\u20AC"},
        {1142, "\x7B\x5A", u"\u00C6\u20AC"},
        {1143, "\x7B\x5A", u"\u00C4\u20AC"},
        {1144, "\xC1\x9F", u"A\u20AC"},
        {1145, "\x7B\x9F", u"\u00D1\u20AC"},
        {1146, "\x5B\x9F", u"\u00A3\u20AC"},
        {1147, "\xC1\x9F", u"A\u20AC"},
        {1148, "\x4A\x9F", u"[\u20AC"},
        {1149, "\xC1\x9F", u"A\u20AC"},
        {1200, "A\0\x42\x30"s, u"A\u3042"},
        {1201, "\0A\x30\x42"s, u"A\u3042"},
        {1250, "\x8A\xB9", u"\u0160\u0105"},
        {1251, "\xC0\xFF", u"\u0410\u044F"},
        {1252, "\x80\xE9", u"\u20AC\u00E9"},
        {1253, "\xC1\xE1", u"\u0391\u03B1"},
        {1254, "\xD0\xFD", u"\u011E\u0131"},
        {1255, "\xE0\xFA", u"\u05D0\u05EA"},
        {1256, "\xC7\x81", u"\u0627\u067E"},
        {1257, "\xC0\xE0", u"\u0104\u0105"},
        {1258, "\xC3\xD2", u"\u0102\u0309"},
        {1361, "\x88\x61", u"\uAC00"},
        {10000, "\x8A\x80", u"\u00E4\u00C4"},
        {10006, "\xA1\xE1", u"\u0393\u03B1"},
        {10007, "\x80\xE0", u"\u0410\u0430"},
        {10017, "\x80\xE0", u"\u0410\u0430"},
        {10029, "\x80\x81", u"\u00C4\u0100"},
        {10081, "\xDA\x8A", u"\u011E\u00E4"},
        {12000, "A\0\0\0\x42\x30\0\0"s, u"A\u3042"},
        {12001, "\0\0\0A\0\0\x30\x42"s, u"A\u3042"},
        {20002, "\xA4\x40", u"\u4E00"},
        {20106, "\x5B\x7E", u"\u00C4\u00DF"},
        {20107, "\x5B\x5D", u"\u00C4\u00C5"},
        {20108, "\x5B\x5C", u"\u00C6\u00D8"},
        {20127, "A~", u"A~"},
        {20261, "A\xC2" "e", u"A\u00E9"},
        {20269, "A\xC2" "e", u"A\u00E9"},
        {20273, "\x4A\xC1", u"\u00C4A"},
        {20277, "\x7B\x5B", u"\u00C6\u00C5"},
        {20278, "\x7B\x5B", u"\u00C4\u00C5"},
        {20280, "\xC1\x81", u"Aa"},
        {20284, "\x7B\xC1", u"\u00D1A"},
        {20285, "\x5B\xC1", u"\u00A3A"},
        {20290, "\xC1\x81", u"A\uFF71"},
        {20297, "\xC1\x81", u"Aa"},
        {20420, "\xC1\xF1", u"A1"},
        {20423, "\x41\xC1", u"\u0391A"},
        {20424, "\x41\xC1", u"\u05D0A"},
        {20838, "\x42\xC1", u"\u0E01A"},
        {20866, "\xE1\xC1", u"\u0410\u0430"},
        {20871, "\xC1\x81", u"Aa"},
        {20880, "\xC1\xF1", u"A1"},
        {20905, "\xC1\xF1", u"A1"},
        {20932, "\xA4\xA2", u"\u3042"},
        {20936, "\xC4\xE3", u"\u4F60"},
        {20949, "\xB0\xA1", u"\uAC00"},
        {21025, "\xC1\xF1", u"A1"},
        {21866, "\xA4\xE1", u"\u0454\u0410"},
        {28591, "\xE9\x80", u"\u00E9\u0080"},
        {28592, "\xA1\xB1", u"\u0104\u0105"},
        {28593, "\xA1\xB1", u"\u0126\u0127"},
        {28594, "\xA1\xA2", u"\u0104\u0138"},
        {28595, "\xB0\xD0", u"\u0410\u0430"},
        {28596, "\xC7\xE1", u"\u0627\u0641"},
        {28597, "\xC1\xE1", u"\u0391\u03B1"},
        {28598, "\xE0\xFA", u"\u05D0\u05EA"},
        {28599, "\xD0\xFD", u"\u011E\u0131"},
        {28600, "\xA1\xBD", u"\u0104\u2015"},
        {28601, "\xA1\xFB", u"\u0E01\u0E5B"},
        {28603, "\xC0\xE0", u"\u0104\u0105"},
        {28604, "\xA1\xA4", u"\u1E02\u010A"},
        {28605, "\xA4\xBC", u"\u20AC\u0152"},
        {28606, "\xA1\xA4", u"\u0104\u20AC"},
        {38598, "\xE0\xFA", u"\u05D0\u05EA"},
        {50220, "\x1B$B$\"\x1B(B", u"\u3042"},
        {50221, "\x1B$B$\"\x1B(B", u"\u3042"},
        {50222, "\x1B$B$\"\x1B(B", u"\u3042"},
        {50225, "\x1B$)C\x0E" "0!\x0F", u"\uAC00"},
        {50227, "\x1B$)A\x0E" "Dc\x0F", u"\u4F60"},
        {50930, "\xC1", u"A", false},
        {50931, "\xC1\x81", u"Aa"},
        {50933, "\xC1\x81", u"Aa"},
        {50935, "\xC1\x81", u"Aa"},
        {50937, "\xC1\x81", u"Aa"},
        {50939, "\xC1\x81", u"Aa"},
        {51932, "\xA4\xA2", u"\u3042"},
        {51936, "\xC4\xE3", u"\u4F60"},
        {51949, "\xB0\xA1", u"\uAC00"},
        {52936, "~{Dc~}", u"\u4F60"},
        {54936, "\x81\x30\x81\x30\xC4\xE3", u"\u0080\u4F60"},
        {57002, "\xA4", u"\u0905"},
        {57003, "\xA4", u"\u0985"},
        {57004, "\xA4", u"\u0B85"},
        {57005, "\xA4", u"\u0C05"},
        {57006, "\xA4", u"\u0985"},
        {57007, "\xA4", u"\u0B05"},
        {57008, "\xA4", u"\u0C85"},
        {57009, "\xA4", u"\u0D05"},
        {57010, "\xA4", u"\u0A85"},
        {57011, "\xA4", u"\u0A05"},
        {65000, "A+MEI-", u"A\u3042"},
        {65001, "A\xE3\x81\x82", u"A\u3042"},
    };
    return list;
}

TEST(CodePageSamples, EveryCodePageOfTheTableHasASample)
{
    std::set<uint32_t> sampled;
    for (const Sample& sample : samples()) sampled.insert(sample.codePage);
    for (uint32_t codePage : ty::supportedCodePages()) EXPECT_TRUE(sampled.count(codePage)) << codePage;
    EXPECT_EQ(sampled.size(), ty::supportedCodePages().size());
}

TEST(CodePageSamples, EachDecodesToItsText)
{
    for (const Sample& sample : samples()) {
        EXPECT_TRUE(ty::isCodePageSupported(sample.codePage)) << sample.codePage;
        EXPECT_EQ(decode(sample.codePage, sample.bytes), sample.text) << "code page " << sample.codePage;
    }
}

TEST(CodePageSamples, EachEncodesBack)
{
    for (const Sample& sample : samples()) {
        if (!sample.roundTrip) continue;
        EXPECT_EQ(ty::wideToBytes(sample.text, sample.codePage), sample.bytes) << "code page " << sample.codePage;
    }
}

TEST(CodePageSamples, PrintableAsciiRoundTripsInEveryAsciiBasedCodePage)
{
    std::string ascii;
    for (char c = 0x20; c < 0x7F; ++c) ascii += c;
    std::u16string wide(ascii.begin(), ascii.end());
    const std::set<uint32_t> notAscii = {37,    500,   870,   875,   933,   1026,  1047,  1140,  1141,  1142,
                                         1143,  1144,  1145,  1146,  1147,  1148,  1149,  1200,  1201,  12000,
                                         12001, 20106, 20107, 20108, 20261, 20269, 20273, 20277, 20278, 20280,
                                         20284, 20285, 20290, 20297, 20420, 20423, 20424, 20838, 20871, 20880,
                                         20905, 21025, 50220, 50221, 50222, 50225, 50227, 50930, 50931, 50933,
                                         50935, 50937, 50939, 52936, 65000, 864,   1361,  10079, 10017};
    for (uint32_t codePage : ty::supportedCodePages()) {
        if (notAscii.count(codePage)) continue;
        EXPECT_EQ(decode(codePage, ascii), wide) << codePage;
        EXPECT_EQ(ty::wideToBytes(wide, codePage), ascii) << codePage;
    }
}

// ---- real messages ---------------------------------------------------------------------------

// The 8-bit body of a one-part message from the corpus and the charset its header names.
bool readBody(const std::string& file, std::string& charset, std::string& body)
{
    std::ifstream in(std::string(PARCELET_CORPUS_DIR) + "/eml/" + file, std::ios::binary);
    std::string message((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    size_t end = message.find("\r\n\r\n");
    size_t skip = 4;
    if (end == std::string::npos) {
        end = message.find("\n\n");
        skip = 2;
    }
    size_t at = message.find("charset=");
    if (end == std::string::npos || at == std::string::npos || at > end) return false;
    at += 8;
    if (message[at] == '"') ++at;
    charset = message.substr(at, message.find_first_of("\"\r\n;", at) - at);
    body = message.substr(end + skip);
    return true;
}

TEST(CorpusMessages, BodiesDecodeByTheirDeclaredCharset)
{
    struct Case {
        const char* file;
        const char* charset;
        std::u16string start;
    };
    const Case cases[] = {
        {"mail__japanese_shift_jis.eml", "Shift_JIS",
         u"\u3042\u3044\u3046\u3048\u304A\r\n\r\n\u3053\u306E\u30E1\u30FC\u30EB\u306F\u30C6\u30B9\u30C8\u7528"
         u"\u306E\u30E1\u30FC\u30EB\u3067\u3059\u3002\r\n\r\n\u4ECA\u5F8C\u3068\u3082\u3088\u308D\u3057\u304F"
         u"\u304A\u9858\u3044\u7533\u3057\u4E0A\u3052\u307E\u3059\uFF01"},
        {"mail__ks_c_5601-1987.eml", "ks_c_5601-1987", u"\uC2A4\uD2F0\uD574\r\n"},
        {"mail__japanese_iso_2022.eml", "iso-2022-jp", u"\u3059\u307F\u307E\u305B\u3093\u3002\r\n"},
        {"mimekit__japanese.eml", "ISO-2022-JP",
         u"Let's see if both subject and body works fine...\n\n\u65E5\u672C\u8A9E\u304C\n\u6B63\u5E38\u306B\n"
         u"\u9001\u308C\u3066\u3044\u308B\u304B\n\u30C6\u30B9\u30C8."},
    };
    for (const Case& c : cases) {
        std::string charset, body;
        ASSERT_TRUE(readBody(c.file, charset, body)) << c.file;
        EXPECT_EQ(charset, c.charset) << c.file;
        std::u16string text;
        ty::convertToWide(text, body.data(), body.size(), charset.c_str(), false);
        EXPECT_EQ(text.substr(0, c.start.size()), c.start) << c.file;
        EXPECT_EQ(text.find(u'\uFFFD'), std::u16string::npos) << c.file;
    }
}

// ---- Windows' tables -----------------------------------------------------------------------------

TEST(WindowsTables, Windows1252UnassignedBytesAreC1Controls)
{
    EXPECT_EQ(decode(1252, "\x81\x8D\x8F\x90\x9D"), u"\u0081\u008D\u008F\u0090\u009D");
    EXPECT_EQ(ty::wideToBytes(u"\u0081\u008D\u008F\u0090\u009D", 1252), "\x81\x8D\x8F\x90\x9D");
}

TEST(WindowsTables, EveryByteOfWindows1252Decodes)
{
    std::string all;
    for (int b = 0; b < 256; ++b) all += static_cast<char>(b);
    std::u16string wide = decode(1252, all);
    ASSERT_EQ(wide.size(), 256u);
    EXPECT_EQ(wide[0x80], u'\u20AC');
    EXPECT_EQ(wide[0x9F], u'\u0178');
    for (int b = 0xA0; b < 256; ++b) EXPECT_EQ(wide[b], static_cast<char16_t>(b));
    EXPECT_EQ(ty::wideToBytes(wide, 1252), all);
}

TEST(WindowsTables, UnassignedBytesMapAsWindowsDoes)
{
    EXPECT_EQ(decode(1250, "\x81\x83\x88\x90\x98"), u"\u0081\u0083\u0088\u0090\u0098");
    EXPECT_EQ(decode(1251, "\x98"), u"\u0098");
    EXPECT_EQ(decode(1253, "\xD2\xFF"), u"\uF8FA\uF8FB");
    EXPECT_EQ(decode(1255, "\xCA\xD9\xDF\xFB\xFC\xFF"), u"\u05BA\uF88D\uF893\uF894\uF895\uF896");
    EXPECT_EQ(decode(1257, "\xA1\xA5"), u"\uF8FC\uF8FD");
    EXPECT_EQ(decode(874, "\xDB\xFC"), u"\uF8C1\uF8C5");
    EXPECT_EQ(decode(720, "\x80\x81\x84\x86\x8D\x8E\x8F\x90"), u"\u0080\u0081\u0084\u0086\u008D\u008E\u008F\u0090");
    EXPECT_EQ(decode(852, "\xAA"), u"\u00AC");
    EXPECT_EQ(decode(932, "\x80\xA0\xFD\xFE\xFF"), u"\u0080\uF8F0\uF8F1\uF8F2\uF8F3");
    EXPECT_EQ(decode(936, "\x80"), u"\u20AC");
    // And back.
    EXPECT_EQ(ty::wideToBytes(u"\uF8FA\uF8FB", 1253), "\xD2\xFF");
    EXPECT_EQ(ty::wideToBytes(u"\u05BA\uF896", 1255), "\xCA\xFF");
    EXPECT_EQ(ty::wideToBytes(u"\u00AC", 852), "\xAA");
    EXPECT_EQ(ty::wideToBytes(u"\u0080\uF8F0\uF8F3", 932), "\x80\xA0\xFF");
}

TEST(WindowsTables, UsAsciiCodePageClearsTheTopBit)
{
    EXPECT_EQ(decode(20127, "A\xE9\xC1"), u"AiA");
    EXPECT_EQ(decode(20106, "\xDB"), u"\u00C4");
}

// ---- invalid input -------------------------------------------------------------------------------

TEST(Substitution, InvalidUtf8InTheMiddleIsReplacedNotCut)
{
    EXPECT_EQ(decode(65001, "ab\xFF" "cd"), u"ab\uFFFDcd");
    EXPECT_EQ(decode(65001, "ab\xC3(cd"), u"ab\uFFFD(cd");
    EXPECT_EQ(decode(65001, "a\xE2\x82" "b"), u"a\uFFFDb");
    EXPECT_EQ(decode(65001, "a\xED\xA0\x80" "b"), u"a\uFFFD\uFFFD\uFFFDb");  // an encoded surrogate
    EXPECT_EQ(decode(65001, "a\xE2\x82"), u"a\uFFFD");                       // cut at the end
}

TEST(Substitution, InvalidShiftJisInTheMiddleIsReplacedNotCut)
{
    // 0x85 0x40 is a lead byte with a trail byte the table does not assign: katakana middle dot.
    EXPECT_EQ(decode(932, "a\x85\x40" "b\x82\xA0"), u"a\u30FBb\u3042");
    // A lead byte before a byte that cannot trail: the ASCII byte is kept.
    EXPECT_EQ(decode(932, "a\x82" " b"), u"a\u30FB b");
    // A lead byte at the very end.
    EXPECT_EQ(decode(932, "ab\x82"), u"ab\u30FB");
}

TEST(Substitution, OtherTablesUseAQuestionMark)
{
    EXPECT_EQ(decode(936, "a\x81\x20" "b"), u"a? b");
    EXPECT_EQ(decode(28596, "\xC7\xA1\xE1"), u"\u0627?\u0641");
    EXPECT_EQ(decode(1361, "a\xFF" "b"), u"a?b");  // through iconv
}

TEST(Substitution, OddLengthUtf16)
{
    EXPECT_EQ(decode(1200, "A\0B"s), u"A\uFFFD");
    EXPECT_EQ(decode(1200, "\x3D\xD8" "A\0"s), u"\uFFFD" "A");  // an unpaired surrogate
}

TEST(EmbeddedNul, IsConvertedNotATerminator)
{
    EXPECT_EQ(decode(1252, "a\0b\0"s), u"a\0b\0"s);
    EXPECT_EQ(decode(65001, "a\0\xC3\xA9"s), u"a\0\u00E9"s);
    EXPECT_EQ(decode(932, "\0\x82\xA0"s), u"\0\u3042"s);
    EXPECT_EQ(decode(1361, "a\0b"s), u"a\0b"s);
    EXPECT_EQ(viaCharset("utf-8", "x\0y"s, false), u"x\0y"s);
    EXPECT_EQ(ty::wideToBytes(u"a\0b"s, 1252), "a\0b"s);
    EXPECT_EQ(ty::wideToBytes(u"a\0b"s, 20106), "a\0b"s);
}

TEST(Bounds, NothingOutsideTheCountIsRead)
{
    // The bytes after the count are poison; the result must not show them.
    std::string buffer = "ab\xC3\xA9XYZ";
    EXPECT_EQ(ty::bytesToWide(buffer.data(), 3, 65001, true), u"ab\uFFFD");
    EXPECT_EQ(ty::bytesToWide(buffer.data(), 2, 1252, true), u"ab");
    std::string sjis = "\x82\xA0\x82\xA0";
    EXPECT_EQ(ty::bytesToWide(sjis.data(), 3, 932, true), u"\u3042\u30FB");
    std::string johab = "\x88\x61\x88\x61";
    EXPECT_EQ(ty::bytesToWide(johab.data(), 3, 1361, true), u"\uAC00?");
}

// ---- code pages without a table ------------------------------------------------------------------

TEST(Unmappable, EveryListedCodePageGivesEmptyOutput)
{
    ASSERT_FALSE(ty::unmappableCodePages().empty());
    for (uint32_t codePage : ty::unmappableCodePages()) {
        EXPECT_FALSE(ty::isCodePageSupported(codePage)) << codePage;
        EXPECT_EQ(decode(codePage, "plain ascii"), u"") << codePage;
        EXPECT_EQ(ty::wideToBytes(u"plain ascii", codePage), "") << codePage;
        std::u16string out = u"x";
        EXPECT_FALSE(ty::convertCodePageToWide(codePage, "abc", 3, out)) << codePage;
        EXPECT_EQ(out, u"") << codePage;
    }
}

TEST(Unmappable, NumbersThatAreNoCodePageGiveEmptyOutput)
{
    for (uint32_t codePage : {4u, 99u, 1234u, 65002u, 0xFFFFFFFFu}) {
        EXPECT_EQ(decode(codePage, "abc"), u"") << codePage;
        EXPECT_EQ(ty::wideToBytes(u"abc", codePage), "") << codePage;
    }
}

TEST(Unmappable, EveryCodePageOfTheNameTableIsConvertedOrListed)
{
    std::set<uint32_t> unmappable(ty::unmappableCodePages().begin(), ty::unmappableCodePages().end());
    for (const auto& [name, codePage] : ty::charsetTable()) {
        bool supported = ty::isCodePageSupported(codePage);
        EXPECT_NE(supported, unmappable.count(codePage) == 1) << name << " " << codePage;
    }
    // And the two lists do not meet.
    for (uint32_t codePage : ty::supportedCodePages()) EXPECT_EQ(unmappable.count(codePage), 0u) << codePage;
}

TEST(Unmappable, CommonWindowsCodePagesAreAllConverted)
{
    for (uint32_t codePage : {437u,   850u,   852u,   866u,   874u,   932u,   936u,   949u,   950u,   1200u,  1201u,
                              1250u,  1251u,  1252u,  1253u,  1254u,  1255u,  1256u,  1257u,  1258u,  10000u, 10006u,
                              10007u, 10029u, 10017u, 10081u, 20127u, 20866u, 21866u, 28591u, 28592u, 28593u, 28594u,
                              28595u, 28596u, 28597u, 28598u, 28599u, 28603u, 28605u, 50220u, 50221u, 50222u, 50225u,
                              51932u, 51936u, 51949u, 52936u, 54936u, 65000u, 65001u, 37u,    500u,   875u,   1026u,
                              1047u,  1140u,  1149u,  20273u, 20880u, 57002u, 57011u}) {
        EXPECT_TRUE(ty::isCodePageSupported(codePage)) << codePage;
    }
}

// ---- wide to bytes -------------------------------------------------------------------------------

TEST(WideToBytes, UnmappableCharactersBecomeTheDefaultCharacter)
{
    EXPECT_EQ(ty::wideToBytes(u"a\u3042b", 1252), "a?b");
    EXPECT_EQ(ty::wideToBytes(u"a\u3042b", 28591), "a?b");
    EXPECT_EQ(ty::wideToBytes(u"\u4E02", 932), "?");
    EXPECT_EQ(ty::wideToBytes(u"A\u3042", 37), "\xC1\x6F");    // EBCDIC's "?"
    EXPECT_EQ(ty::wideToBytes(u"A\u3042", 20880), "\xC1\x6F");  // through iconv
    EXPECT_EQ(ty::wideToBytes(u"a\U0001F600b", 1361), "a?b");   // one "?" for a surrogate pair
    EXPECT_EQ(ty::wideToBytes(u"a\U0001F600b", 1252), "a?b");
}

TEST(WideToBytes, LoneSurrogatesInUtf8BecomeTheReplacementCharacter)
{
    EXPECT_EQ(ty::wideToBytes(u"a\xD800" "b", 65001), "a\xEF\xBF\xBD" "b");
    EXPECT_EQ(ty::wideToBytes(u"a\xDC00", 65001), "a\xEF\xBF\xBD");
    EXPECT_EQ(ty::wideToBytes(u"\U0001F600", 65001), "\xF0\x9F\x98\x80");
}

TEST(WideToBytes, UnicodeForms)
{
    EXPECT_EQ(ty::wideToBytes(u"A\u3042", 1200), "A\0\x42\x30"s);
    EXPECT_EQ(ty::wideToBytes(u"A\u3042", 1201), "\0A\x30\x42"s);
    EXPECT_EQ(ty::wideToBytes(u"A\u3042", 65000), "A+MEI-");
    EXPECT_EQ(ty::wideToBytes(u"", 65001), "");
}

TEST(WideToBytes, CodePageZeroIsTheSystemCodePage)
{
    CtypeLocale locale("C");
    ASSERT_TRUE(locale.ok());
    EXPECT_EQ(ty::wideToBytes(u"caf\u00E9\u20AC", 0), "caf\xE9\x80");
}

TEST(WideToBytes, CappedOutputEndsAtACharacterBoundary)
{
    EXPECT_EQ(ty::wideToBytes(u"a\u00E9", 65001, 2), "a");
    EXPECT_EQ(ty::wideToBytes(u"a\u00E9", 65001, 3), "a\xC3\xA9");
    EXPECT_EQ(ty::wideToBytes(u"\u3042a", 932, 1), "");
    EXPECT_EQ(ty::wideToBytes(u"\u3042a", 932, 2), "\x82\xA0");
    EXPECT_EQ(ty::wideToBytes(u"abcdef", 1252, 3), "abc");
    EXPECT_EQ(ty::wideToBytes(u"\uAC00\uAC00", 1361, 3), "\x88\x61");  // through iconv
    EXPECT_EQ(ty::wideToBytes(u"abc", 1252, 0), "");
}

// ---- larger texts --------------------------------------------------------------------------------

TEST(LargeText, ConvertsInOnePieceWhateverTheGrowth)
{
    std::u16string wide;
    for (int i = 0; i < 100000; ++i) wide += static_cast<char16_t>(0x4E00 + i % 20000);
    // Three bytes a character: the output grows past its first estimate.
    std::string utf8 = ty::wideToBytes(wide, 65001);
    EXPECT_EQ(utf8.size(), wide.size() * 3);
    EXPECT_EQ(decode(65001, utf8), wide);
    std::string gb = ty::wideToBytes(wide, 54936);
    EXPECT_EQ(decode(54936, gb), wide);
    std::u16string kana;
    for (int i = 0; i < 20000; ++i) kana += static_cast<char16_t>(i % 7 ? 0x3041 + i % 83 : u'a' + i % 26);
    std::string jis = ty::wideToBytes(kana, 50222);
    EXPECT_TRUE(decode(50222, jis) == kana);
    std::string big(1 << 20, 'x');
    big[12345] = '\xE9';
    std::u16string decoded = decode(1252, big);
    ASSERT_EQ(decoded.size(), big.size());
    EXPECT_EQ(decoded[12345], u'\u00E9');
}

TEST(LargeText, Utf7ExpandsWhenEncoding)
{
    std::u16string wide(5000, u'\u00E9');
    std::string utf7 = ty::wideToBytes(wide, 65000);
    EXPECT_GT(utf7.size(), wide.size() * 2);
    EXPECT_EQ(decode(65000, utf7), wide);
}

TEST(Threads, EachThreadHasItsOwnConverters)
{
    std::vector<std::thread> threads;
    std::vector<int> failures(4, 0);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &failures] {
            for (int i = 0; i < 200; ++i) {
                if (decode(932, "\x82\xA0") != u"\u3042") ++failures[t];
                if (decode(50222, "\x1B$B$\"\x1B(B" "a") != u"\u3042a") ++failures[t];
                if (ty::wideToBytes(u"\u00E9", 1252) != "\xE9") ++failures[t];
                if (decode(1361, "\x88\x61") != u"\uAC00") ++failures[t];
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (int count : failures) EXPECT_EQ(count, 0);
}

TEST(ConvertCodePageToWide, ReportsWhetherTheCodePageConverts)
{
    std::u16string out;
    EXPECT_TRUE(ty::convertCodePageToWide(1251, "\xC0", 1, out));
    EXPECT_EQ(out, u"\u0410");
    EXPECT_TRUE(ty::convertCodePageToWide(65001, "", 0, out));
    EXPECT_EQ(out, u"");
    std::u16string stale(3, u'x');
    EXPECT_FALSE(ty::convertCodePageToWide(29001, "abc", 3, stale));
    EXPECT_EQ(stale, u"");
}

TEST(StatefulCodePages, StartFreshOnEveryCall)
{
    // A conversion left in the two-byte state must not spoil the next one.
    EXPECT_EQ(decode(50222, "\x1B$B$\""), u"\u3042");
    EXPECT_EQ(decode(50222, "$\""), u"$\"");
    EXPECT_EQ(decode(52936, "~{Dc"), u"\u4F60");
    EXPECT_EQ(decode(52936, "Dc"), u"Dc");
    EXPECT_EQ(decode(65000, "+MEI"), u"\u3042");
    EXPECT_EQ(decode(65000, "abc"), u"abc");
}

TEST(StatefulCodePages, EncodeTheSameWayEveryTime)
{
    struct Case {
        uint32_t codePage;
        std::u16string text;
    };
    const Case cases[] = {
        {50220, u"\u3042a\u4E00"}, {50221, u"\u3042a\u4E00"}, {50222, u"\u3042a\uFF71"},
        {50225, u"\uAC00a\uAC01"}, {50227, u"\u4F60a\u597D"}, {52936, u"\u4F60a\u597D"},
        {65000, u"\u00E9a\u3042"}, {57002, u"\u0905a\u0906"}, {1201, u"\u3042a"},
    };
    for (const Case& c : cases) {
        for (const std::u16string& text : {c.text, u"a" + c.text, c.text + u"a", u"ab"s}) {
            std::string first = ty::wideToBytes(text, c.codePage);
            std::string second = ty::wideToBytes(text, c.codePage);
            EXPECT_EQ(first, second) << c.codePage;
            EXPECT_EQ(decode(c.codePage, first), text) << c.codePage;
        }
    }
    EXPECT_EQ(ty::wideToBytes(u"ab", 50225), ty::wideToBytes(u"ab", 50225));
}

TEST(StatefulCodePages, HzTextEndsInAsciiMode)
{
    EXPECT_EQ(ty::wideToBytes(u"\u4F60a", 52936), "~{Dc~}a");
    EXPECT_EQ(ty::wideToBytes(u"a\u4F60", 52936), "a~{Dc~}");
    EXPECT_EQ(ty::wideToBytes(u"a~b", 52936), "a~~b");
    EXPECT_EQ(ty::wideToBytes(u"\u4F60\u4F60", 52936, 8), "~{DcDc~}");
    EXPECT_EQ(ty::wideToBytes(u"\u4F60\u4F60", 52936, 6), "~{Dc~}");
    EXPECT_EQ(decode(52936, ty::wideToBytes(u"\u4F60\u597D", 52936) + "x"), u"\u4F60\u597Dx");
}

TEST(StatefulCodePages, IsciiWritesNoAttributeForItsOwnScript)
{
    EXPECT_EQ(ty::wideToBytes(u"\u0905\u0906", 57002), "\xA4\xA5");
    EXPECT_EQ(ty::wideToBytes(u"\u0985", 57003), "\xA4");
    // Another script than the code page's own keeps its attribute sequence.
    std::string bengali = ty::wideToBytes(u"\u0985", 57002);
    ASSERT_GE(bengali.size(), 3u);
    EXPECT_EQ(bengali.substr(0, 2), "\xEF\x43");
    EXPECT_EQ(decode(57002, bengali), u"\u0985");
}

TEST(StatefulCodePages, Iso2022JpVariantsReadEveryForm)
{
    const std::string forms = "\x1B$B$\"\x1B(B" "a\x1B(I" "1\x1B(B" "b\x0E" "1\x0F" "c\x1B$(D" "\"/\x1B(B";
    const std::u16string text = u"\u3042a\uFF71b\uFF71c\u02D8";
    for (uint32_t codePage : {50220u, 50221u, 50222u}) EXPECT_EQ(decode(codePage, forms), text) << codePage;
    // 50220 and 50221 write half-width katakana full-width; 50222 keeps them with SO/SI.
    EXPECT_EQ(decode(50220, ty::wideToBytes(u"\uFF71", 50220)), u"\u30A2");
    EXPECT_EQ(decode(50222, ty::wideToBytes(u"\uFF71", 50222)), u"\uFF71");
}

}  // namespace
