#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "foundation/charset_table.h"

namespace {

// Every name the table must hold, in its historical order.
const char* const kAllNames[] = {
    "437", "_iso-2022-jp", "_iso-2022-jp$sio", "ansi_x3.4-1968", "ansi_x3.4-1986", "arabic", "ascii", "asmo-708",
    "big5", "chinese", "cn-big5", "cn-gb", "codepage437", "cp1026", "cp1250", "cp1251", "cp1252", "cp1253", "cp1254",
    "cp1255", "cp1256", "cp1257", "cp1258", "cp367", "cp437", "cp500", "cp819", "cp852", "cp866", "cp870", "cp874",
    "cp932", "cp933", "cp936", "cp949", "cp970", "csascii", "csbig5", "cseuckr", "cseucpkdfmtjapanese", "csgb2312",
    "csgb231280", "csiso", "csiso2022jp", "csiso2022kr", "csiso58gb231280", "csisolatin2", "csisolatin4",
    "csisolatin5", "csisolatinarabic", "csisolatincyrillic", "csisolatingreek", "csisolatinhebrew", "cskoi8r",
    "csksc56011987", "cspc8", "csshiftjis", "csunicode11utf7", "cswindows31j", "cyrillic", "dos-720", "dos-862",
    "dos-874", "ebcdic-cp-us", "ecma-114", "ecma-118", "elot_928", "euc-cn", "euc-jp", "euc-kr",
    "extended_unix_code_packed_format_for_japanese", "gb2312", "gb2312-80", "gb231280", "gb_2312-80", "gbk", "greek",
    "greek8", "hebrew", "hz-gb-2312", "ibm367", "ibm437", "ibm737", "ibm775", "ibm819", "ibm850", "ibm852", "ibm857",
    "ibm861", "ibm866", "ibm869", "iso-2022-jp", "iso-2022-kr", "iso-8859-1", "iso-8859-11", "iso-8859-15",
    "iso-8859-2", "iso-8859-3", "iso-8859-4", "iso-8859-5", "iso-8859-6", "iso-8859-7", "iso-8859-8", "iso-8859-8-i",
    "iso-8859-9", "iso-ir-100", "iso-ir-101", "iso-ir-109", "iso-ir-110", "iso-ir-126", "iso-ir-127", "iso-ir-138",
    "iso-ir-144", "iso-ir-148", "iso-ir-149", "iso-ir-58", "iso-ir-6", "iso-ir-6us", "iso646-us", "iso8859-1",
    "iso8859-2", "iso_646.irv:1991", "iso_8859-1", "iso_8859-15", "iso_8859-1:1987", "iso_8859-2", "iso_8859-2:1987",
    "iso_8859-3", "iso_8859-3:1988", "iso_8859-4", "iso_8859-4:1988", "iso_8859-5", "iso_8859-5:1988", "iso_8859-6",
    "iso_8859-6:1987", "iso_8859-7", "iso_8859-7:1987", "iso_8859-8", "iso_8859-8-i", "iso_8859-8:1988",
    "iso_8859-9", "iso_8859-9:1989", "johab", "koi", "koi8", "koi8-r", "koi8-ru", "koi8-u", "koi8r", "korean",
    "ks_c_5601", "ks_c_5601-1987", "ks_c_5601-1989", "ks_c_5601_1987", "ksc5601", "ksc_5601", "l1", "l2", "l3", "l4",
    "l5", "l9", "latin1", "latin2", "latin3", "latin4", "latin5", "latin9", "logical", "macintosh", "ms_kanji",
    "ms949", "shift-jis", "shift_jis", "tis-620", "unicode", "unicode-1-1-utf-7", "unicode-1-1-utf-8",
    "unicode-2-0-utf-8", "unicodefffe", "us", "us-ascii", "utf-16", "utf-7", "utf-8", "visual", "windows-1250",
    "windows-1251", "windows-1252", "windows-1253", "windows-1254", "windows-1255", "windows-1256", "windows-1257",
    "windows-1258", "windows-874", "windows-949", "x-ansi", "x-chinese-cns", "x-chinese-eten", "x-cp1250",
    "x-cp1251", "x-ebcdic-arabic", "x-ebcdic-cp-us-euro", "x-ebcdic-cyrillicrussian",
    "x-ebcdic-cyrillicserbianbulgarian", "x-ebcdic-denmarknorway", "x-ebcdic-denmarknorway-euro",
    "x-ebcdic-finlandsweden", "x-ebcdic-finlandsweden-euro", "x-ebcdic-france", "x-ebcdic-france-euro",
    "x-ebcdic-germany", "x-ebcdic-germany-euro", "x-ebcdic-greek", "x-ebcdic-greekmodern", "x-ebcdic-hebrew",
    "x-ebcdic-icelandic", "x-ebcdic-icelandic-euro", "x-ebcdic-international-euro", "x-ebcdic-italy",
    "x-ebcdic-italy-euro", "x-ebcdic-japaneseandjapaneselatin", "x-ebcdic-japaneseandkana",
    "x-ebcdic-japaneseanduscanada", "x-ebcdic-japanesekatakana", "x-ebcdic-koreanandkoreanextended",
    "x-ebcdic-koreanextended", "x-ebcdic-simplifiedchinese", "x-ebcdic-spain", "x-ebcdic-spain-euro",
    "x-ebcdic-thai", "x-ebcdic-traditionalchinese", "x-ebcdic-turkish", "x-ebcdic-uk", "x-ebcdic-uk-euro", "x-euc",
    "x-euc-cn", "x-euc-jp", "x-europa", "x-ia5", "x-ia5-german", "x-ia5-norwegian", "x-ia5-swedish", "x-iscii-as",
    "x-iscii-be", "x-iscii-de", "x-iscii-gu", "x-iscii-ka", "x-iscii-ma", "x-iscii-or", "x-iscii-pa", "x-iscii-ta",
    "x-iscii-te", "x-mac-arabic", "x-mac-ce", "x-mac-chinesesimp", "x-mac-chinesetrad", "x-mac-cyrillic",
    "x-mac-greek", "x-mac-hebrew", "x-mac-icelandic", "x-mac-japanese", "x-mac-korean", "x-mac-turkish",
    "x-ms-cp932", "x-sjis", "x-unicode-2-0-utf-7", "x-unicode-2-0-utf-8", "x-windows-949", "x-x-big5",
};

// The rows that differ from what the name suggests; they stay as they are.
const std::vector<std::pair<std::vector<const char*>, uint32_t>> kOddRows = {
    {{"ascii", "us-ascii", "ansi_x3.4-1968", "ansi_x3.4-1986", "cp367", "ibm367", "iso646-us", "iso-ir-6", "us",
      "csascii"},
     1252},
    {{"iso-ir-6us"}, 20127},
    {{"iso-8859-1", "iso8859-1", "iso_8859-1", "iso_8859-1:1987", "latin1", "cp819", "ibm819", "iso-ir-100",
      "iso_646.irv:1991"},
     1252},
    {{"l1", "csiso"}, 28591},
    {{"iso-8859-8", "visual"}, 1255},
    {{"iso_8859-8"}, 28598},
    {{"iso-8859-8-i", "logical"}, 38598},
    {{"iso_8859-8-i"}, 1255},
    {{"iso-8859-9", "latin5", "iso_8859-9"}, 1254},
    {{"l5"}, 28599},
    {{"iso-8859-11", "tis-620"}, 874},
    {{"iso-2022-jp"}, 50222},
    {{"_iso-2022-jp", "csiso2022jp"}, 50221},
    {{"_iso-2022-jp$sio"}, 50222},
    {{"cp500"}, 775},
    {{"x-ebcdic-france"}, 1143},
    {{"koi8-u", "koi8-ru"}, 21866},
    {{"gbk", "gb2312", "chinese"}, 936},
    {{"euc-cn", "x-euc-cn"}, 51936},
    {{"hz-gb-2312"}, 52936},
    {{"utf-7", "unicode-1-1-utf-7", "csunicode11utf7", "x-unicode-2-0-utf-7"}, 65000},
    {{"utf-8", "unicode-1-1-utf-8", "unicode-2-0-utf-8", "x-unicode-2-0-utf-8"}, 65001},
    {{"utf-16", "unicode"}, 1200},
    {{"unicodefffe"}, 1201},
};

TEST(CharsetTable, HoldsExactlyTheRequiredNames)
{
    EXPECT_EQ(std::size(kAllNames), 271u);
    EXPECT_EQ(ty::charsetTable().size(), 271u);
    std::set<std::string> distinct;
    for (const char* name : kAllNames) {
        distinct.insert(name);
        EXPECT_NE(ty::codePageForCharset(name), 0u) << name;
        EXPECT_EQ(ty::charsetTable().count(name), 1u) << name;
    }
    EXPECT_EQ(distinct.size(), 271u);
}

TEST(CharsetTable, EveryOddRowHolds)
{
    size_t count = 0;
    for (const auto& [names, codePage] : kOddRows) {
        for (const char* name : names) {
            EXPECT_EQ(ty::codePageForCharset(name), codePage) << name;
            ++count;
        }
    }
    EXPECT_EQ(count, 59u);
}

TEST(CharsetTable, NamesAreLowerCasedBeforeTheLookup)
{
    EXPECT_EQ(ty::codePageForCharset("UTF-8"), 65001u);
    EXPECT_EQ(ty::codePageForCharset("utf-8"), 65001u);
    EXPECT_EQ(ty::codePageForCharset("Utf-8"), 65001u);
    EXPECT_EQ(ty::codePageForCharset("CP1252"), 1252u);
    EXPECT_EQ(ty::codePageForCharset("Shift_JIS"), 932u);
    EXPECT_EQ(ty::codePageForCharset("ISO-2022-JP"), 50222u);
    EXPECT_EQ(ty::codePageForCharset(std::string("KOI8-R")), 20866u);
    EXPECT_EQ(ty::codePageForCharset("X-EBCDIC-GERMANY"), 20273u);
}

TEST(CharsetTable, UnknownNamesGiveZero)
{
    EXPECT_EQ(ty::codePageForCharset("CP0"), 0u);
    EXPECT_EQ(ty::codePageForCharset(""), 0u);
    EXPECT_EQ(ty::codePageForCharset(static_cast<const char*>(nullptr)), 0u);
    EXPECT_EQ(ty::codePageForCharset("utf8"), 0u);
    EXPECT_EQ(ty::codePageForCharset(" utf-8"), 0u);  // no trimming
    EXPECT_EQ(ty::codePageForCharset("gb18030"), 0u);
    EXPECT_EQ(ty::codePageForCharset("windows-1252\0x"), 1252u);  // a C string ends at its NUL
    EXPECT_EQ(ty::codePageForCharset(std::string_view("windows-1252\0x", 14)), 0u);
}

TEST(CharsetTable, CommonWindowsAliases)
{
    EXPECT_EQ(ty::codePageForCharset("big5"), 950u);
    EXPECT_EQ(ty::codePageForCharset("cp866"), 866u);
    EXPECT_EQ(ty::codePageForCharset("dos-720"), 720u);
    EXPECT_EQ(ty::codePageForCharset("euc-jp"), 51932u);
    EXPECT_EQ(ty::codePageForCharset("euc-kr"), 51949u);
    EXPECT_EQ(ty::codePageForCharset("iso-2022-kr"), 50225u);
    EXPECT_EQ(ty::codePageForCharset("johab"), 1361u);
    EXPECT_EQ(ty::codePageForCharset("koi8-r"), 20866u);
    EXPECT_EQ(ty::codePageForCharset("ks_c_5601-1987"), 949u);
    EXPECT_EQ(ty::codePageForCharset("macintosh"), 10000u);
    EXPECT_EQ(ty::codePageForCharset("shift_jis"), 932u);
    EXPECT_EQ(ty::codePageForCharset("x-mac-ce"), 10029u);
    EXPECT_EQ(ty::codePageForCharset("x-ebcdic-germany"), 20273u);
    EXPECT_EQ(ty::codePageForCharset("x-iscii-de"), 57002u);
    EXPECT_EQ(ty::codePageForCharset("x-ia5"), 20105u);
    EXPECT_EQ(ty::codePageForCharset("x-europa"), 29001u);
    EXPECT_EQ(ty::codePageForCharset("x-chinese-cns"), 20000u);
    EXPECT_EQ(ty::codePageForCharset("x-chinese-eten"), 20002u);
    EXPECT_EQ(ty::codePageForCharset("asmo-708"), 708u);
    EXPECT_EQ(ty::codePageForCharset("ecma-114"), 28596u);
    EXPECT_EQ(ty::codePageForCharset("greek8"), 28597u);
    EXPECT_EQ(ty::codePageForCharset("x-ansi"), 1252u);
    EXPECT_EQ(ty::codePageForCharset("x-euc"), 51932u);
    EXPECT_EQ(ty::codePageForCharset("iso-8859-15"), 28605u);
    EXPECT_EQ(ty::codePageForCharset("windows-874"), 874u);
}

// The families whose numbers are easiest to get wrong: the Windows charset database's numbers.
TEST(CharsetTable, FamiliesGiveTheirWindowsNumbers)
{
    const std::vector<std::pair<const char*, uint32_t>> rows = {
        {"iso-8859-2", 28592}, {"iso-8859-3", 28593}, {"iso-8859-4", 28594}, {"iso-8859-5", 28595},
        {"iso-8859-6", 28596}, {"iso-8859-7", 28597}, {"iso_8859-9:1989", 28599}, {"latin9", 28605},
        {"x-iscii-as", 57006}, {"x-iscii-be", 57003}, {"x-iscii-gu", 57010}, {"x-iscii-ka", 57008},
        {"x-iscii-ma", 57009}, {"x-iscii-or", 57007}, {"x-iscii-pa", 57011}, {"x-iscii-ta", 57004},
        {"x-iscii-te", 57005}, {"x-mac-arabic", 10004}, {"x-mac-chinesesimp", 10008},
        {"x-mac-chinesetrad", 10002}, {"x-mac-cyrillic", 10007}, {"x-mac-greek", 10006}, {"x-mac-hebrew", 10005},
        {"x-mac-icelandic", 10079}, {"x-mac-japanese", 10001}, {"x-mac-korean", 10003}, {"x-mac-turkish", 10081},
        {"ebcdic-cp-us", 37}, {"x-ebcdic-arabic", 20420}, {"x-ebcdic-cp-us-euro", 1140},
        {"x-ebcdic-cyrillicrussian", 20880}, {"x-ebcdic-cyrillicserbianbulgarian", 21025},
        {"x-ebcdic-denmarknorway", 20277}, {"x-ebcdic-denmarknorway-euro", 1142}, {"x-ebcdic-finlandsweden", 20278},
        {"x-ebcdic-finlandsweden-euro", 1143}, {"x-ebcdic-france-euro", 1147}, {"x-ebcdic-germany-euro", 1141},
        {"x-ebcdic-greek", 20423}, {"x-ebcdic-greekmodern", 875}, {"x-ebcdic-hebrew", 20424},
        {"x-ebcdic-icelandic", 20871}, {"x-ebcdic-icelandic-euro", 1149}, {"x-ebcdic-international-euro", 1148},
        {"x-ebcdic-italy", 20280}, {"x-ebcdic-italy-euro", 1144}, {"x-ebcdic-japaneseandjapaneselatin", 50939},
        {"x-ebcdic-japaneseandkana", 50930}, {"x-ebcdic-japaneseanduscanada", 50931},
        {"x-ebcdic-japanesekatakana", 20290}, {"x-ebcdic-koreanandkoreanextended", 50933},
        {"x-ebcdic-koreanextended", 20833}, {"x-ebcdic-simplifiedchinese", 50935}, {"x-ebcdic-spain", 20284},
        {"x-ebcdic-spain-euro", 1145}, {"x-ebcdic-thai", 20838}, {"x-ebcdic-traditionalchinese", 50937},
        {"x-ebcdic-turkish", 20905}, {"x-ebcdic-uk", 20285}, {"x-ebcdic-uk-euro", 1146},
        {"x-ia5-german", 20106}, {"x-ia5-norwegian", 20108}, {"x-ia5-swedish", 20107}, {"cspc8", 437},
        {"dos-862", 862}, {"dos-874", 874}, {"ms949", 949}, {"cswindows31j", 932}, {"x-x-big5", 950},
        {"csiso58gb231280", 936}, {"cseucpkdfmtjapanese", 51932}, {"iso-ir-149", 949}, {"csiso2022kr", 50225},
    };
    for (const auto& [name, codePage] : rows) EXPECT_EQ(ty::codePageForCharset(name), codePage) << name;
}

TEST(CharsetForCodePage, GivesPreferredNames)
{
    EXPECT_EQ(ty::charsetForCodePage(1252), "windows-1252");
    EXPECT_EQ(ty::charsetForCodePage(65001), "utf-8");
    EXPECT_EQ(ty::charsetForCodePage(932), "shift_jis");
    EXPECT_EQ(ty::charsetForCodePage(28591), "iso-8859-1");
    EXPECT_EQ(ty::charsetForCodePage(936), "gb2312");
    EXPECT_EQ(ty::charsetForCodePage(949), "ks_c_5601-1987");
    EXPECT_EQ(ty::charsetForCodePage(950), "big5");
    EXPECT_EQ(ty::charsetForCodePage(20866), "koi8-r");
    EXPECT_EQ(ty::charsetForCodePage(50220), "iso-2022-jp");
    EXPECT_EQ(ty::charsetForCodePage(51932), "euc-jp");
    EXPECT_EQ(ty::charsetForCodePage(1200), "utf-16");
    EXPECT_EQ(ty::charsetForCodePage(20127), "us-ascii");
    EXPECT_EQ(ty::charsetForCodePage(54936), "gb18030");
}

TEST(CharsetForCodePage, EmptyForNumbersWithoutAName)
{
    EXPECT_EQ(ty::charsetForCodePage(0), "");
    EXPECT_EQ(ty::charsetForCodePage(1), "");
    EXPECT_EQ(ty::charsetForCodePage(12345), "");
    EXPECT_EQ(ty::charsetForCodePage(0xFFFFFFFF), "");
}

// A name handed out for a number leads back to that number through the table, but for the few
// MIME names that the table's odd rows send to a Windows superset.
TEST(CharsetForCodePage, NamesLeadBackThroughTheTable)
{
    const std::set<uint32_t> supersets = {28591, 20127, 28598, 28599};
    std::set<uint32_t> numbers;
    for (const auto& [name, codePage] : ty::charsetTable()) numbers.insert(codePage);
    for (uint32_t codePage : numbers) {
        std::string name = ty::charsetForCodePage(codePage);
        ASSERT_FALSE(name.empty()) << codePage;
        if (supersets.count(codePage)) continue;
        EXPECT_EQ(ty::codePageForCharset(name), codePage) << name;
    }
    EXPECT_EQ(ty::codePageForCharset(ty::charsetForCodePage(28591)), 1252u);
    EXPECT_EQ(ty::codePageForCharset(ty::charsetForCodePage(20127)), 1252u);
    EXPECT_EQ(ty::codePageForCharset(ty::charsetForCodePage(28598)), 1255u);
    EXPECT_EQ(ty::codePageForCharset(ty::charsetForCodePage(28599)), 1254u);
}

}  // namespace
