// Date fields to UTC: which of the three patterns takes a date, what its groups give, and the
// zone text that comes with it.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>

#include "mime/mail_date.h"

namespace {

// Central European time for each test; the old TZ goes back afterwards.
class DateParsing : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (const char* old = std::getenv("TZ")) oldTz_ = old;
        setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    }
    void TearDown() override { oldTz_ ? setenv("TZ", oldTz_->c_str(), 1) : unsetenv("TZ"); }

private:
    std::optional<std::string> oldTz_;
};

TEST_F(DateParsing, PatternsAndTheirGroups)
{
    struct Case {
        std::u16string raw;
        ty::SystemTime utc;  // year, month, day of week, day, hour, minute, second, ms
        std::u16string zone;
    };
    const Case cases[] = {
        {u"Date: Mon, 1 Feb 2010 10:00:00 +0200", {2010, 2, 1, 1, 8, 0, 0, 0}, u"+0200"},
        {u"Fri, 21 Nov 1997 09:55:06 -0600", {1997, 11, 5, 21, 15, 55, 6, 0}, u"-0600"},  // RFC 5322 A.1.1
        {u"Thu, 1 Jan 2009 01:00:00 +0200", {2008, 12, 3, 31, 23, 0, 0, 0}, u"+0200"},
        {u"Fri, 21 Nov 1997 09(comment):   55  :  06 -0600", {1997, 11, 5, 21, 15, 55, 6, 0}, u"-0600"},  // A.6.3
        // A.5 has no seconds: "32" splits into minute 3 and second 2 so that the zone can match.
        {u"Thu,\r\n      13\r\n        Feb\r\n          1969\r\n      23:32\r\n"
         u"               -0330 (Newfoundland Time)",
         {1969, 2, 5, 14, 2, 33, 2, 0}, u"-0330"},
        // Without a zone sign the third pattern reads local time, "GMT" or not.
        {u"1 Feb 2010 10:00:00", {2010, 2, 1, 1, 9, 0, 0, 0}, u""},
        {u"Thu, 1 Jul 2010 10:00:00 GMT", {2010, 7, 4, 1, 8, 0, 0, 0}, u""},
        {u"21 Nov 97 09:55:06 GMT", {97, 11, 4, 21, 8, 55, 6, 0}, u""},  // A.6.2: the year stays 97
        // The first pattern finds "Feb" as weekday, "2010" as day, "10" as month (none: 65535),
        // "0" as year; a time no FILETIME holds stays as written.
        {u"1 Feb 2010 10:00:00 +0200", {0, 65535, 0, 2010, 0, 0, 0, 0}, u"+0200"},
        // Only text with the literal brackets reaches the second pattern.
        {u"[a-zA-Z] [a-zA-Z] 3 2010 10 20 30", {2010, 65535, 0, 3, 10, 20, 30, 0}, u""},
        {u"no date here", {}, u""},
    };
    for (const Case& c : cases) {
        const mcl::MailDate date = mcl::parseMailDate(c.raw);
        EXPECT_EQ(date.time, c.utc) << std::string(c.raw.begin(), c.raw.end());
        EXPECT_EQ(date.zone, c.zone) << std::string(c.raw.begin(), c.raw.end());
    }
}

TEST_F(DateParsing, HostileTextEndsQuickly)
{
    const auto start = std::chrono::steady_clock::now();
    const std::u16string digits(20'000, u'7');
    mcl::parseMailDate(digits + u"+");
    mcl::parseMailDate(std::u16string(20'000, u'-') + digits);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
