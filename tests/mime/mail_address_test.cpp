// Address lists: the mailbox grammar on the examples of RFC 5322 appendix A, the split that
// keeps groups whole, the fallbacks for what the grammar can't read, and the loose variant.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "mime/mail_address.h"

namespace {

using mcl::MailAddressList;

struct Case {
    std::u16string text;
    MailAddressList expected;
};

std::string narrow(const std::u16string& text)
{
    return std::string(text.begin(), text.end());
}

TEST(AddressList, Rfc5322AppendixA)
{
    const Case cases[] = {
        // A.1.2
        {u"\"Joe Q. Public\" <john.q.public@example.com>", {{u"Joe Q. Public", u"john.q.public@example.com"}}},
        {u"Mary Smith <mary@x.test>, jdoe@example.org, Who? <one@y.test>",
         {{u"Mary Smith", u"mary@x.test"}, {u"", u"jdoe@example.org"}, {u"Who?", u"one@y.test"}}},
        {u"<boss@nil.test>, \"Giant; \\\"Big\\\" Box\" <sysservices@example.net>",
         {{u"", u"boss@nil.test"}, {u"Giant; \"Big\" Box", u"sysservices@example.net"}}},
        // A.1.3: a group gives its members; an empty one gives nothing, and so the whole text
        // becomes a name.
        {u"A Group:Ed Jones <c@a.test>,joe@where.test,John <jdoe@one.test>;",
         {{u"Ed Jones", u"c@a.test"}, {u"", u"joe@where.test"}, {u"John", u"jdoe@one.test"}}},
        {u"Undisclosed recipients:;", {{u"Undisclosed recipients:;", u""}}},
        // A.5
        {u"Pete(A nice \\) chap) <pete(his account)@silly.test(his host)>", {{u"Pete", u"pete@silly.test"}}},
        {u"A Group(Some people)\r\n     :Chris Jones <c@(Chris's host.)public.example>,\r\n"
         u"         joe@example.org,\r\n"
         u"  John <jdoe@one.test> (my dear friend); (the end of the group)",
         {{u"Chris Jones", u"c@public.example"}, {u"", u"joe@example.org"}, {u"John", u"jdoe@one.test"}}},
        {u"(Empty list)(start)Hidden recipients  :(nobody(that I know))  ;",
         {{u"(Empty list)(start)Hidden recipients  :(nobody(that I know))  ;", u""}}},
        // A.6.1: the route's colon holds the list together; the grammar still reads it as a list.
        {u"Joe Q. Public <john.q.public@example.com>", {{u"Joe Q. Public", u"john.q.public@example.com"}}},
        {u"Mary Smith <@node.test:mary@example.net>, , jdoe@test  . example",
         {{u"Mary Smith", u"mary@example.net"}, {u"", u"jdoe@test.example"}}},
        // A.6.3
        {u"John Doe <jdoe@machine(comment).  example>", {{u"John Doe", u"jdoe@machine.example"}}},
        {u"Mary Smith\r\n  \r\n          <mary@example.net>", {{u"Mary Smith", u"mary@example.net"}}},
    };
    for (const Case& c : cases) EXPECT_EQ(mcl::parseAddressList(c.text, u","), c.expected) << narrow(c.text);
}

TEST(AddressList, ToleranceAndFallbacks)
{
    const Case cases[] = {
        {u"team: a@x, b@y;", {{u"", u"a@x"}, {u"", u"b@y"}}},
        {u"team: <@a.test,@b.test:user@host.test>;", {{u"", u"user@host.test"}}},
        {u"joe@example.org (Joe Bloggs)", {{u"Joe Bloggs", u"joe@example.org"}}},
        {u"\"john smith\"@example.com", {{u"", u"\"john smith\"@example.com"}}},
        {u"<@a.test:user@host.test>", {{u"", u"user@host.test"}}},
        // A route's comma before its colon ends a piece, and neither half is an address.
        {u"<@a.test,@b.test:user@host.test>", {{u"", u"<@a.test"}, {u"", u"@b.test:user@host.test>"}}},
        {u"Mary <mary@[3.4.5.6]>, John <john>, \"Null\" <>",
         {{u"Mary", u"mary@[3.4.5.6]"}, {u"John", u"john"}, {u"Null", u""}}},
        {u"'Jane' <jane@x>, ", {{u"Jane", u"jane@x"}}},
        // What the grammar can't read: an address if it holds "@", a name if not.
        {u"a@x; b@y", {{u"", u"a@x; b@y"}}},
        {u"jo@x <jo@x.org>", {{u"jo@x", u"jo@x.org"}}},
        {std::u16string(u"M\u00FCller\0\0mu@x.org>", 17), {{u"M\u00FCller", u"mu@x.org"}}},
        {u"John Smith, jane@x", {{u"John Smith", u""}, {u"", u"jane@x"}}},
        {u"\"abc, def@x", {{u"", u"\"abc, def@x"}}},
        {u"x@y (open", {{u"", u"x@y (open"}}},
        {u"   ", {}},
    };
    for (const Case& c : cases) EXPECT_EQ(mcl::parseAddressList(c.text, u","), c.expected) << narrow(c.text);
}

TEST(AddressList, LooseVariantSplitsAtEveryDelimiter)
{
    EXPECT_EQ(mcl::parseAddressListLoose(u"Ann Lee <ann@x>; Bob [bob@y]; \"Cy\"; plain@z; Dee;;", u";"),
              (MailAddressList{
                  {u"Ann Lee", u"ann@x"}, {u"Bob", u"bob@y"}, {u"", u"Cy"}, {u"", u"plain@z"}, {u"Dee", u""}}));
}

TEST(AddressList, HostileTextEndsQuickly)
{
    const auto start = std::chrono::steady_clock::now();
    const std::u16string commas(100'000, u',');
    EXPECT_EQ(mcl::parseAddressList(commas, u","), (MailAddressList{{commas, u""}}));
    const std::u16string parens(100'000, u'(');
    EXPECT_EQ(mcl::parseAddressList(parens + u"a@b", u","), (MailAddressList{{u"", parens + u"a@b"}}));
    const std::u16string brackets(100'000, u'<');
    EXPECT_EQ(mcl::parseAddressListLoose(brackets, u";"), (MailAddressList{{brackets, u""}}));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
