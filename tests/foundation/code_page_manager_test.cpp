#include <gtest/gtest.h>

#include <clocale>
#include <memory>
#include <string>
#include <vector>

#include "foundation/code_page.h"
#include "foundation/code_page_manager.h"
#include "foundation/log.h"

using namespace std::string_literals;

namespace {

struct CapturingWriter : wh::Writer {
    explicit CapturingWriter(std::vector<ty::LogRecord>* out) : records(out) {}
    void write(const ty::LogRecord& record) override { records->push_back(record); }
    std::vector<ty::LogRecord>* records;
};

class ManagerLogTest : public ::testing::Test {
protected:
    void SetUp() override { ty::Logger::instance().addWriter(std::make_unique<CapturingWriter>(&records)); }
    void TearDown() override { ty::Logger::instance().setLogFile(u""); }
    std::vector<ty::LogRecord> records;
};

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

bool failingProbe(std::u16string& failure)
{
    failure = u"Class not registered";
    return false;
}

int probeCalls = 0;
bool countingProbe(std::u16string&)
{
    ++probeCalls;
    return true;
}

// ---- the alias table -----------------------------------------------------------------------------

TEST(AliasTable, APairMakesAClassAndAKnownStringJoinsIt)
{
    ty::AliasTable table;
    table.add("A", "B");
    table.add("C", "B");
    table.add("D", "E");
    EXPECT_TRUE(table.same("A", "C"));
    EXPECT_TRUE(table.same("b", "c"));  // without regard to case
    EXPECT_FALSE(table.same("A", "D"));
    EXPECT_FALSE(table.same("A", "Z"));
    EXPECT_EQ(table.classOf("a"), (std::vector<std::string>{"A", "B", "C"}));
    EXPECT_EQ(table.size(), 5u);
    EXPECT_EQ(table.classCount(), 2u);
    // Two known strings of two classes join the classes.
    table.add("E", "A");
    EXPECT_TRUE(table.same("D", "C"));
    EXPECT_EQ(table.classCount(), 1u);
    EXPECT_EQ(table.classOf("D"), (std::vector<std::string>{"A", "B", "C", "D", "E"}));
}

TEST(AliasTable, APairOfOneStringIsAClassOfOne)
{
    ty::AliasTable table;
    table.add("SHIFT_JIS", "SHIFT_JIS");
    EXPECT_EQ(table.size(), 1u);
    EXPECT_EQ(table.classOf("shift_jis"), std::vector<std::string>{"SHIFT_JIS"});
    EXPECT_TRUE(table.same("SHIFT_JIS", "SHIFT_JIS"));
    EXPECT_TRUE(table.classOf("unknown").empty());
    EXPECT_FALSE(table.contains("unknown"));
    table.clear();
    EXPECT_EQ(table.size(), 0u);
    EXPECT_EQ(table.classCount(), 0u);
}

// ---- the manager ---------------------------------------------------------------------------------

TEST(CodePageManager, IsOneObjectForTheProcess)
{
    EXPECT_EQ(&ty::CodePageManager::instance(), &ty::CodePageManager::instance());
    EXPECT_TRUE(ty::CodePageManager::instance()._init());
    EXPECT_FALSE(ty::CodePageManager::instance().hasError());
}

TEST(CodePageManager, InitFillsTheAliasTableWithThe32Pairs)
{
    ty::CodePageManager manager;
    EXPECT_EQ(manager.aliases().size(), 0u);
    ASSERT_TRUE(manager._init());
    const ty::AliasTable& aliases = manager.aliases();
    // 15 FCHARSET names, 14 CP names, 14 WINDOWS- names, ISO-8859-15 and SHIFT_JIS.
    EXPECT_EQ(aliases.size(), 45u);
    EXPECT_EQ(aliases.classCount(), 14u);
    using Names = std::vector<std::string>;
    EXPECT_EQ(aliases.classOf("CP1252"), (Names{"CP1252", "FCHARSET0", "ISO-8859-15", "WINDOWS-1252"}));
    EXPECT_EQ(aliases.classOf("CP932"), (Names{"CP932", "FCHARSET128", "SHIFT_JIS", "WINDOWS-932"}));
    EXPECT_EQ(aliases.classOf("CP950"), (Names{"CP950", "FCHARSET130", "FCHARSET136", "WINDOWS-950"}));
    EXPECT_EQ(aliases.classOf("FCHARSET222"), (Names{"CP874", "FCHARSET222", "WINDOWS-874"}));
    EXPECT_TRUE(aliases.same("FCHARSET163", "WINDOWS-1258"));
    EXPECT_TRUE(aliases.same("FCHARSET186", "CP1257"));
    EXPECT_FALSE(aliases.same("CP936", "CP949"));
    EXPECT_FALSE(aliases.same("ISO-8859-15", "CP1250"));
    // A second _init adds nothing.
    EXPECT_TRUE(manager._init());
    EXPECT_EQ(aliases.size(), 45u);
}

TEST_F(ManagerLogTest, InitTracesItsScopeOnTheFirstCallOnly)
{
    ty::CodePageManager manager;
    ASSERT_TRUE(manager._init());
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].scope, "ty::CodePageManager::_init");
    EXPECT_EQ(records[0].text, ">>>");
    EXPECT_EQ(records[1].text, "<<<");
    std::u16string out;
    manager.convertToUnicode(1252, "a", 1, out);
    manager._init();
    EXPECT_EQ(records.size(), 2u);
}

TEST(CodePageManager, InitRunsTheProbeUntilTheServiceIsReady)
{
    probeCalls = 0;
    ty::CodePageManager manager(countingProbe);
    EXPECT_TRUE(manager._init());
    EXPECT_TRUE(manager._init());
    std::u16string out;
    manager.convertToUnicode(1252, "a", 1, out);
    EXPECT_EQ(probeCalls, 1);
    EXPECT_TRUE(manager.serviceReady());
}

TEST(CodePageManager, AFailedServiceIsRecordedAndLeavesTheOutputAsItWas)
{
    ty::CodePageManager manager(failingProbe);
    EXPECT_FALSE(manager._init());
    ASSERT_TRUE(manager.hasError());
    EXPECT_EQ(manager.error()->source(), u"ty::CodePageManager::_init");
    EXPECT_EQ(manager.error()->text(), u"Class not registered");
    EXPECT_EQ(manager.error()->kind(), 3u);
    EXPECT_EQ(manager.error()->code(), 0x80004005u);
    EXPECT_EQ(manager.aliases().size(), 0u);

    std::u16string wide = u"as it was";
    manager.convertToUnicode(1252, "abc", 3, wide);
    EXPECT_EQ(wide, u"as it was");
    std::string narrow = "as it was";
    manager.convertFromUnicode(1252, u"abc", 6, narrow);
    EXPECT_EQ(narrow, "as it was");

    // The C runtime's road does not need the service.
    CtypeLocale locale("C");
    ASSERT_TRUE(locale.ok());
    manager.convertToUnicode(-1, "caf\xE9", 4, wide);
    EXPECT_EQ(wide, u"caf\u00E9");
    manager.convertFromUnicode(-1, u"caf\u00E9", 8, narrow);
    EXPECT_EQ(narrow, "caf\xE9");
}

TEST(CodePageManager, ConvertsToUnicodeByNumber)
{
    ty::CodePageManager manager;
    std::u16string out = u"old";
    manager.convertToUnicode(1251, "\xCF\xF0\xE8\xE2\xE5\xF2", 6, out);
    EXPECT_EQ(out, u"\u041F\u0440\u0438\u0432\u0435\u0442");
    manager.convertToUnicode(65001, "a\0\xC3\xA9", 4, out);
    EXPECT_EQ(out, u"a\0\u00E9"s);
    manager.convertToUnicode(932, "\x82\xA0", 2, out);
    EXPECT_EQ(out, u"\u3042");
    // A code page that cannot be converted gives an empty output.
    out = u"old";
    manager.convertToUnicode(29001, "abc", 3, out);
    EXPECT_EQ(out, u"");
    out = u"old";
    manager.convertToUnicode(12345, "abc", 3, out);
    EXPECT_EQ(out, u"");
}

TEST(CodePageManager, CodePageZeroIsTheSystemCodePage)
{
    CtypeLocale locale("C");
    ASSERT_TRUE(locale.ok());
    ty::CodePageManager manager;
    std::u16string out;
    manager.convertToUnicode(0, "\x80", 1, out);
    EXPECT_EQ(out, u"\u20AC");
}

TEST(CodePageManager, NegativeCodePageIsTheProcessLocale)
{
    ty::CodePageManager manager;
    std::u16string out;
    {
        CtypeLocale locale("C");
        ASSERT_TRUE(locale.ok());
        manager.convertToUnicode(-1, "caf\xE9", 4, out);
        EXPECT_EQ(out, u"caf\u00E9");
    }
    CtypeLocale locale("C.UTF-8");
    if (!locale.ok()) GTEST_SKIP() << "no C.UTF-8 locale";
    manager.convertToUnicode(-1, "caf\xC3\xA9", 5, out);
    EXPECT_EQ(out, u"caf\u00E9");
    std::string narrow;
    manager.convertFromUnicode(-1, u"caf\u00E9", 8, narrow);
    EXPECT_EQ(narrow, "caf");  // sized to half the length: 4 bytes, the two of "é" don't fit
    manager.convertFromUnicode(-7, u"ca\u00E9", 6, narrow);
    EXPECT_EQ(narrow, "ca");
}

TEST(CodePageManager, FromUnicodeIsSizedToHalfTheByteLength)
{
    ty::CodePageManager manager;
    std::string out;
    manager.convertFromUnicode(1252, u"caf\u00E9", 8, out);
    EXPECT_EQ(out, "caf\xE9");
    // The length counts bytes of wide text: 4 bytes are two characters.
    manager.convertFromUnicode(1252, u"abcdef", 4, out);
    EXPECT_EQ(out, "ab");
    // Multi-byte output is cut at a character boundary within the size.
    manager.convertFromUnicode(65001, u"a\u00E9", 4, out);
    EXPECT_EQ(out, "a");
    manager.convertFromUnicode(932, u"\u3042\u3044", 4, out);
    EXPECT_EQ(out, "\x82\xA0");
    manager.convertFromUnicode(1252, u"a\u3042b", 6, out);
    EXPECT_EQ(out, "a?b");
    manager.convertFromUnicode(1252, nullptr, 6, out);
    EXPECT_EQ(out, "");
    out = "old";
    manager.convertFromUnicode(29001, u"abc", 6, out);
    EXPECT_EQ(out, "");
}

TEST(CodePageManager, RoundTripsThroughTheManager)
{
    ty::CodePageManager manager;
    const std::u16string text = u"\u041F\u0440\u0438\u0432\u0435\u0442";
    for (int32_t codePage : {1251, 866, 20866, 28595, 10007}) {
        std::string bytes;
        manager.convertFromUnicode(codePage, text.data(), text.size() * 2, bytes);
        EXPECT_EQ(bytes.size(), text.size()) << codePage;
        std::u16string back;
        manager.convertToUnicode(codePage, bytes.data(), bytes.size(), back);
        EXPECT_EQ(back, text) << codePage;
    }
}

}  // namespace
