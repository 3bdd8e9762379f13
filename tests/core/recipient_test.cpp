#include <gtest/gtest.h>

#include "core/mail_property.h"
#include "core/recipient.h"

namespace {

using mcl::MailProperties;
using mcl::Recipients;

TEST(RecipientText, StripAndShow)
{
    EXPECT_EQ(mcl::stripAddress(u"  <a@b.c>  "), u"a@b.c");
    EXPECT_EQ(mcl::stripAddress(u"\"<a@b>\""), u"a@b");
    EXPECT_EQ(mcl::stripAddress(u"<\"a@b\">"), u"\"a@b\"");
    EXPECT_EQ(mcl::stripAddress(u"\"\""), u"\"\"");
    EXPECT_EQ(mcl::stripAddress(u"(x)"), u"x");
    EXPECT_EQ(mcl::recipientText(u"Ann\tLee\r\nX", u"a\nb", AddressSMTP, false), u"Ann\tLee  X <a\nb>");
    EXPECT_EQ(mcl::recipientText(u"Ann", u"/o=Org/cn=ann", AddressExchange, false), u"Ann");
    EXPECT_EQ(mcl::recipientText(u"", u"/o=Org/cn=ann", AddressExchange, false), u"/o=Org/cn=ann");
    EXPECT_EQ(mcl::recipientText(u"a@b", u"a@b", AddressSMTP, false), u"a@b");
    EXPECT_EQ(mcl::recipientText(u" 'Ann' ", u"<a@b>", AddressSMTP, true), u"Ann <a@b>");
    EXPECT_EQ(mcl::addressTypeFromText(u"EX"), AddressExchange);
    EXPECT_EQ(mcl::addressTypeFromText(u"SMTP"), AddressSMTP);
    EXPECT_EQ(mcl::addressTypeFromText(u"smtp"), AddressUnknown);
    EXPECT_EQ(mcl::addressTypeFromText(u"EXSMTP"), AddressExchange);
}

class Distribution : public ::testing::Test {
protected:
    void addRecipient(const std::u16string& name, const std::u16string& address)
    {
        uint32_t row = table.addProperty(mcl::kRecipientRow, 0, u"Recipient")->id();
        table.addProperty(0x3001001F, row, u"", name);
        table.addProperty(0x3003001F, row, u"", address);
        table.addProperty(0x3002001F, row, u"", u"SMTP");
    }
    std::u16string list(const Recipients& r) { return r.toString(u';'); }
    void distribute(const std::u16string* delimiters) { mcl::distributeRecipients(table, delimiters, to, cc, bcc); }

    MailProperties table;
    Recipients to, cc, bcc;
    const std::u16string semicolon = u";";
};

TEST_F(Distribution, RowWithoutAnyDisplayListLandsInTo)
{
    addRecipient(u"Ann", u"ann@x.org");
    distribute(&semicolon);
    EXPECT_EQ(list(to), u"Ann <ann@x.org>");
    EXPECT_TRUE(cc.empty());
}

TEST_F(Distribution, SameRowNamedOnToAndCcBecomesTwoObjects)
{
    addRecipient(u"Ann", u"ann@x.org");
    addRecipient(u"Bob", u"bob@x.org");
    table.addProperty(0x0E04001F, 0, u"", u"Ann <ann@x.org>");
    table.addProperty(0x0E03001F, 0, u"", u"Ann <ann@x.org>;Bob <bob@x.org>");
    distribute(&semicolon);
    EXPECT_EQ(list(to), u"Ann <ann@x.org>");
    EXPECT_EQ(list(cc), u"Ann <ann@x.org>; Bob <bob@x.org>");
    EXPECT_NE(to.at(0), cc.at(0));
}

TEST_F(Distribution, IdenticalRowsPreferTheFreeOne)
{
    addRecipient(u"Ann", u"ann@x.org");
    addRecipient(u"Ann", u"ann@x.org");
    table.addProperty(0x0E04001F, 0, u"", u"Ann ann@x.org");
    table.addProperty(0x0E03001F, 0, u"", u"Ann ann@x.org");
    distribute(&semicolon);
    ASSERT_EQ(to.count(), 1u);
    ASSERT_EQ(cc.count(), 1u);
    EXPECT_EQ(to.at(0)->getParent(), &to);
    EXPECT_EQ(cc.at(0)->getParent(), &cc);
}

TEST_F(Distribution, NamesOnlyMatchInTheLoosePass)
{
    addRecipient(u"Ann", u"ann@x.org");
    addRecipient(u"Bob", u"bob@x.org");
    addRecipient(u"Cy", u"cy@x.org");
    table.addProperty(0x0E04001F, 0, u"", u"Bob");
    table.addProperty(0x0E02001F, 0, u"", u"Cy");
    distribute(&semicolon);
    EXPECT_EQ(list(to), u"Bob <bob@x.org>; Ann <ann@x.org>");
    EXPECT_EQ(list(bcc), u"Cy <cy@x.org>");
}

TEST_F(Distribution, DelimitersComeFromTheReaderAndMissingOnesMatchNothing)
{
    addRecipient(u"Ann", u"ann@x.org");
    addRecipient(u"Bob", u"bob@x.org");
    table.addProperty(0x0E03001F, 0, u"", u"Ann, Bob");
    const std::u16string comma = u",";
    distribute(&comma);
    EXPECT_EQ(list(cc), u"Ann <ann@x.org>; Bob <bob@x.org>");

    Recipients to2, cc2, bcc2;
    mcl::distributeRecipients(table, nullptr, to2, cc2, bcc2);
    EXPECT_EQ(to2.count(), 2u);
    EXPECT_TRUE(cc2.empty());
}

TEST_F(Distribution, RunsOnlyIntoEmptyLists)
{
    addRecipient(u"Ann", u"ann@x.org");
    to.add(new mcl::Recipient(u"Zed", u"z@x.org", AddressSMTP), false);
    distribute(&semicolon);
    EXPECT_EQ(list(to), u"Zed <z@x.org>");
}

}  // namespace
