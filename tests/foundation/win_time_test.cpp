// Expected values come from the calendar, worked out by hand (days counted from 1601-01-01, a
// Monday, or 1970-01-01, a Thursday), or from constants that Wine's time tests check against
// Windows itself; none were produced by the code under test.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>

#include "foundation/win_time.h"
#include "support/system_time.h"

namespace {

using ty::SystemTime;

using test_support::makeTime;

void expectTime(const std::optional<SystemTime>& actual, const SystemTime& expected)
{
    ASSERT_TRUE(actual.has_value());
    EXPECT_EQ(actual->wYear, expected.wYear);
    EXPECT_EQ(actual->wMonth, expected.wMonth);
    EXPECT_EQ(actual->wDayOfWeek, expected.wDayOfWeek);
    EXPECT_EQ(actual->wDay, expected.wDay);
    EXPECT_EQ(actual->wHour, expected.wHour);
    EXPECT_EQ(actual->wMinute, expected.wMinute);
    EXPECT_EQ(actual->wSecond, expected.wSecond);
    EXPECT_EQ(actual->wMilliseconds, expected.wMilliseconds);
}

// Days of the week: 0 Sunday ... 6 Saturday.
constexpr int kSunday = 0, kMonday = 1, kTuesday = 2, kWednesday = 3, kThursday = 4, kFriday = 5;

TEST(SystemTimeLayout, IsTheSixteenByteWindowsStructure)
{
    static_assert(sizeof(SystemTime) == 16);
    static_assert(offsetof(SystemTime, wYear) == 0);
    static_assert(offsetof(SystemTime, wMonth) == 2);
    static_assert(offsetof(SystemTime, wDayOfWeek) == 4);
    static_assert(offsetof(SystemTime, wDay) == 6);
    static_assert(offsetof(SystemTime, wHour) == 8);
    static_assert(offsetof(SystemTime, wMinute) == 10);
    static_assert(offsetof(SystemTime, wSecond) == 12);
    static_assert(offsetof(SystemTime, wMilliseconds) == 14);

    // The bytes of a PT_SYSTIME value: 2024-01-05 (Friday) 13:07:09.250, little-endian words.
    const unsigned char bytes[16] = {0xE8, 0x07, 1, 0, 5, 0, 5, 0, 13, 0, 7, 0, 9, 0, 0xFA, 0};
    SystemTime time;
    std::memcpy(&time, bytes, sizeof time);
    EXPECT_EQ(time, makeTime(2024, 1, 5, 13, 7, 9, 250, kFriday));
    unsigned char back[16];
    std::memcpy(back, &time, sizeof back);
    EXPECT_EQ(std::memcmp(back, bytes, 16), 0);
}

TEST(FileTimeToSystemTime, ZeroIsTheFirstOf1601AMonday)
{
    expectTime(ty::fileTimeToSystemTime(0), makeTime(1601, 1, 1, 0, 0, 0, 0, kMonday));
}

TEST(FileTimeToSystemTime, UnixEpochIsAThursday)
{
    // 369 years from 1601 with 89 leap days: 134774 days, 11644473600 seconds.
    EXPECT_EQ(ty::kFileTimeUnixEpoch, 134774ULL * 86400 * 10'000'000);
    expectTime(ty::fileTimeToSystemTime(116444736000000000ULL), makeTime(1970, 1, 1, 0, 0, 0, 0, kThursday));
    expectTime(ty::fileTimeToSystemTime(116444736010000000ULL), makeTime(1970, 1, 1, 0, 0, 1, 0, kThursday));
}

TEST(FileTimeToSystemTime, ValuesThatWindowsConfirms)
{
    // The constants of Wine's conversion tests, which run on Windows.
    expectTime(ty::fileTimeToSystemTime(0x01A8E79FE1D58000ULL), makeTime(1980, 1, 1, 0, 0, 0, 0, kTuesday));
    expectTime(ty::fileTimeToSystemTime(0x01C1F107B82B6000ULL), makeTime(2002, 5, 1, 12, 0, 0, 0, kWednesday));
    expectTime(ty::fileTimeToSystemTime(0x01C2349B580716B0ULL), makeTime(2002, 7, 26, 11, 55, 32, 123, kFriday));
}

TEST(FileTimeToSystemTime, LeapDays)
{
    // 2000-02-29: 10957 days from 1970 to 2000, then 59 more; 951782400 Unix seconds.
    expectTime(ty::fileTimeToSystemTime(125962560000000000ULL), makeTime(2000, 2, 29, 0, 0, 0, 0, kTuesday));
    expectTime(ty::fileTimeToSystemTime(125963424000000000ULL), makeTime(2000, 3, 1, 0, 0, 0, 0, kWednesday));
    // 1900 is no leap year: 109207 days from 1601 to 1900-01-01 (a Monday), and 59 more to March 1.
    expectTime(ty::fileTimeToSystemTime(94404960000000000ULL), makeTime(1900, 2, 28, 0, 0, 0, 0, kWednesday));
    expectTime(ty::fileTimeToSystemTime(94405824000000000ULL), makeTime(1900, 3, 1, 0, 0, 0, 0, kThursday));
    // The last tick of 2000-02-29.
    expectTime(ty::fileTimeToSystemTime(125963424000000000ULL - 1), makeTime(2000, 2, 29, 23, 59, 59, 999, kTuesday));
}

TEST(FileTimeToSystemTime, TicksBelowAMillisecondAreDropped)
{
    expectTime(ty::fileTimeToSystemTime(116444736000009999ULL), makeTime(1970, 1, 1, 0, 0, 0, 0, kThursday));
    expectTime(ty::fileTimeToSystemTime(116444736000010000ULL), makeTime(1970, 1, 1, 0, 0, 0, 1, kThursday));
}

TEST(FileTimeToSystemTime, RefusesValuesFromTheSignBitUp)
{
    // 0x7FFF...: 922337203685 seconds and 477 ms; 10675199 days and 10085 seconds.
    expectTime(ty::fileTimeToSystemTime(0x7FFFFFFFFFFFFFFFULL), makeTime(30828, 9, 14, 2, 48, 5, 477, kThursday));
    EXPECT_FALSE(ty::fileTimeToSystemTime(0x8000000000000000ULL).has_value());
    EXPECT_FALSE(ty::fileTimeToSystemTime(0xFFFFFFFFFFFFFFFFULL).has_value());
}

TEST(SystemTimeToFileTime, KnownValues)
{
    EXPECT_EQ(ty::systemTimeToFileTime(makeTime(1601, 1, 1)), 0ULL);
    EXPECT_EQ(ty::systemTimeToFileTime(makeTime(1970, 1, 1)), 116444736000000000ULL);
    EXPECT_EQ(ty::systemTimeToFileTime(makeTime(2002, 7, 26, 11, 55, 32, 123)), 0x01C2349B580716B0ULL);
    EXPECT_EQ(ty::systemTimeToFileTime(makeTime(2000, 2, 29)), 125962560000000000ULL);
    EXPECT_EQ(ty::systemTimeToFileTime(makeTime(1900, 3, 1)), 94405824000000000ULL);
}

TEST(SystemTimeToFileTime, IgnoresTheDayOfTheWeek)
{
    // 1970-01-01 was a Thursday; a wrong or impossible day of the week changes nothing.
    EXPECT_EQ(ty::systemTimeToFileTime(makeTime(1970, 1, 1, 0, 0, 0, 0, kSunday)), 116444736000000000ULL);
    EXPECT_EQ(ty::systemTimeToFileTime(makeTime(1970, 1, 1, 0, 0, 0, 0, 45612)), 116444736000000000ULL);
}

TEST(SystemTimeToFileTime, RefusesInvalidDates)
{
    const SystemTime invalid[] = {
        makeTime(2024, 0, 1),                  // month 0
        makeTime(2024, 13, 1),                 // month 13
        makeTime(2024, 1, 0),                  // day 0
        makeTime(2024, 1, 32),                 // January has 31 days
        makeTime(2024, 4, 31),                 // April has 30
        makeTime(2024, 2, 30),                 // February of a leap year has 29
        makeTime(2023, 2, 29),                 // 2023 is no leap year
        makeTime(1900, 2, 29),                 // nor 1900
        makeTime(2024, 1, 5, 24, 0, 0),        // hour 24
        makeTime(2024, 1, 5, 23, 60, 0),       // minute 60
        makeTime(2024, 1, 5, 23, 59, 60),      // second 60
        makeTime(2024, 1, 5, 23, 59, 59, 1000),
        makeTime(1600, 12, 31, 23, 59, 59, 999),  // before FILETIME zero
        makeTime(30828, 1, 1),                 // past the documented range
        makeTime(0x0202, 0x0202, 0x0202, 0x0202, 0x0202, 0x0202, 0x0202, 0x0202),
    };
    for (const SystemTime& time : invalid) {
        EXPECT_FALSE(ty::systemTimeToFileTime(time).has_value())
            << time.wYear << "-" << time.wMonth << "-" << time.wDay << " " << time.wHour << ":" << time.wMinute
            << ":" << time.wSecond << "." << time.wMilliseconds;
        EXPECT_FALSE(ty::isValidSystemTime(time));
    }
}

TEST(SystemTimeToFileTime, AcceptsTheEdgesOfTheValidRange)
{
    EXPECT_TRUE(ty::systemTimeToFileTime(makeTime(2000, 2, 29)).has_value());  // 2000 is a leap year
    EXPECT_TRUE(ty::systemTimeToFileTime(makeTime(2024, 2, 29)).has_value());
    EXPECT_TRUE(ty::systemTimeToFileTime(makeTime(2024, 12, 31, 23, 59, 59, 999)).has_value());
    const std::optional<uint64_t> last = ty::systemTimeToFileTime(makeTime(30827, 12, 31, 23, 59, 59, 999));
    ASSERT_TRUE(last.has_value());
    EXPECT_LT(*last, ty::kFileTimeLimit);
}

TEST(FileTimeRoundTrip, FileTimeToSystemTimeAndBackKeepsTheMilliseconds)
{
    // Steps of a prime number of ticks across the whole range, so every field varies.
    const uint64_t step = 0x7FFFFFFFFFFFFFFFULL / 100'003;
    for (uint64_t fileTime = 7; fileTime < ty::kFileTimeLimit - step; fileTime += step) {
        const std::optional<SystemTime> time = ty::fileTimeToSystemTime(fileTime);
        ASSERT_TRUE(time.has_value()) << fileTime;
        if (time->wYear > 30827) break;  // the last year of FILETIME lies beyond SYSTEMTIME's range
        EXPECT_EQ(ty::systemTimeToFileTime(*time), fileTime - fileTime % 10'000) << fileTime;
    }
}

TEST(FileTimeRoundTrip, SystemTimeToFileTimeAndBackComputesTheDayOfTheWeek)
{
    for (int year : {1601, 1700, 1899, 1900, 1969, 1970, 2000, 2038, 2039, 2100, 9999, 30827}) {
        for (int month = 1; month <= 12; ++month) {
            for (int day : {1, 15, 28}) {
                const SystemTime time = makeTime(year, month, day, 23, 59, 58, 997, 6);
                const std::optional<uint64_t> fileTime = ty::systemTimeToFileTime(time);
                ASSERT_TRUE(fileTime.has_value());
                const std::optional<SystemTime> back = ty::fileTimeToSystemTime(*fileTime);
                ASSERT_TRUE(back.has_value());
                SystemTime expected = time;
                expected.wDayOfWeek = back->wDayOfWeek;
                EXPECT_EQ(*back, expected);
            }
        }
    }
    // Consecutive days walk through the week.
    const uint64_t day = 86400ULL * 10'000'000;
    for (int i = 0; i < 14; ++i)
        EXPECT_EQ(ty::fileTimeToSystemTime(ty::kFileTimeUnixEpoch + i * day)->wDayOfWeek, (kThursday + i) % 7);
}

// Sets TZ for one test and puts the old value back afterwards.
class LocalTimeTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        const char* old = std::getenv("TZ");
        hadTz_ = old != nullptr;
        if (hadTz_) oldTz_ = old;
    }
    void TearDown() override
    {
        if (hadTz_)
            setenv("TZ", oldTz_.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    static void useZone(const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
    }
    static void useNewYork() { useZone("EST5EDT,M3.2.0,M11.1.0"); }

private:
    bool hadTz_ = false;
    std::string oldTz_;
};

TEST_F(LocalTimeTest, SummerIsFourHoursBehindAndWinterFive)
{
    useNewYork();
    // 2024-01-01 was a Monday, and so were January 15 and July 15.
    expectTime(ty::utcToLocal(makeTime(2024, 7, 15, 12, 0, 0, 250)), makeTime(2024, 7, 15, 8, 0, 0, 250, kMonday));
    expectTime(ty::utcToLocal(makeTime(2024, 1, 15, 12, 0, 0, 250)), makeTime(2024, 1, 15, 7, 0, 0, 250, kMonday));
}

TEST_F(LocalTimeTest, LocalTimeCanFallOnThePreviousDayAndYear)
{
    useNewYork();
    expectTime(ty::utcToLocal(makeTime(2024, 1, 1, 3, 0, 0)), makeTime(2023, 12, 31, 22, 0, 0, 0, kSunday));
}

TEST_F(LocalTimeTest, ChangesOfTheClockAtTwoInTheMorning)
{
    useNewYork();
    // M3.2.0: the second Sunday of March 2024 is the 10th; M11.1.0: the first of November is the 3rd.
    expectTime(ty::utcToLocal(makeTime(2024, 3, 10, 6, 59, 59)), makeTime(2024, 3, 10, 1, 59, 59, 0, kSunday));
    expectTime(ty::utcToLocal(makeTime(2024, 3, 10, 7, 0, 0)), makeTime(2024, 3, 10, 3, 0, 0, 0, kSunday));
    expectTime(ty::utcToLocal(makeTime(2024, 11, 3, 5, 59, 59)), makeTime(2024, 11, 3, 1, 59, 59, 0, kSunday));
    expectTime(ty::utcToLocal(makeTime(2024, 11, 3, 6, 0, 0)), makeTime(2024, 11, 3, 1, 0, 0, 0, kSunday));
}

TEST_F(LocalTimeTest, DatesBefore1970AndAfter2038)
{
    useNewYork();
    // glibc applies the rules of a TZ string from 1970 on only; winter is standard time anyway.
    expectTime(ty::utcToLocal(makeTime(1950, 1, 15, 12, 0, 0)), makeTime(1950, 1, 15, 7, 0, 0, 0, kSunday));
    // 2050-01-01 is 9497 days after 2024-01-01 (a Monday): a Saturday; July 15 is 195 days later.
    expectTime(ty::utcToLocal(makeTime(2050, 7, 15, 12, 0, 0)), makeTime(2050, 7, 15, 8, 0, 0, 0, kFriday));
    expectTime(ty::utcToLocal(makeTime(2050, 1, 15, 12, 0, 0)), makeTime(2050, 1, 15, 7, 0, 0, 0, 6));
    // The first day of FILETIME, as far back as it goes; the last day of SYSTEMTIME, which falls on
    // the weekday of 2027-12-31 (400 Gregorian years are whole weeks): a Friday.
    expectTime(ty::utcToLocal(makeTime(1601, 1, 2, 0, 0, 0)), makeTime(1601, 1, 1, 19, 0, 0, 0, kMonday));
    expectTime(ty::utcToLocal(makeTime(30827, 12, 31, 12, 0, 0)), makeTime(30827, 12, 31, 7, 0, 0, 0, kFriday));
}

TEST_F(LocalTimeTest, ZoneFileHistoryBefore1970)
{
    if (!std::filesystem::exists("/usr/share/zoneinfo/America/New_York"))
        GTEST_SKIP() << "no zone data (Debian package tzdata)";
    useZone("America/New_York");
    // New York kept daylight saving in the summer of 1950; before 1883 it kept local mean time,
    // 4:56:02 behind Greenwich. 1950-07-01 was a Saturday, 1850-07-01 a Monday.
    expectTime(ty::utcToLocal(makeTime(1950, 7, 1, 12, 0, 0)), makeTime(1950, 7, 1, 8, 0, 0, 0, 6));
    expectTime(ty::utcToLocal(makeTime(1950, 1, 15, 12, 0, 0)), makeTime(1950, 1, 15, 7, 0, 0, 0, kSunday));
    expectTime(ty::utcToLocal(makeTime(1850, 7, 1, 12, 0, 0)), makeTime(1850, 7, 1, 7, 3, 58, 0, kMonday));
    expectTime(ty::utcToLocal(makeTime(2050, 7, 15, 12, 0, 0)), makeTime(2050, 7, 15, 8, 0, 0, 0, kFriday));
    expectTime(ty::localFieldsToUtc({1950, 7, 1, 8, 0, 0}), makeTime(1950, 7, 1, 12, 0, 0, 0, 6));
    expectTime(ty::localToUtc(makeTime(1850, 7, 1, 7, 3, 58)), makeTime(1850, 7, 1, 12, 0, 0, 0, kMonday));
}

TEST_F(LocalTimeTest, RefusesInvalidInputAndResultsBefore1601)
{
    useNewYork();
    EXPECT_FALSE(ty::utcToLocal(makeTime(2024, 13, 1)).has_value());
    EXPECT_FALSE(ty::utcToLocal(makeTime(2023, 2, 29)).has_value());
    EXPECT_FALSE(ty::utcToLocal(makeTime(1601, 1, 1, 4, 59, 59)).has_value());  // 1600-12-31 locally
    EXPECT_FALSE(ty::localToUtc(makeTime(2024, 1, 5, 24, 0, 0)).has_value());
}

TEST_F(LocalTimeTest, EastOfGreenwich)
{
    useZone("CET-1CEST,M3.5.0,M10.5.0/3");
    expectTime(ty::utcToLocal(makeTime(2024, 7, 15, 12, 0, 0)), makeTime(2024, 7, 15, 14, 0, 0, 0, kMonday));
    expectTime(ty::utcToLocal(makeTime(2024, 1, 15, 23, 30, 0)), makeTime(2024, 1, 16, 0, 30, 0, 0, kTuesday));
    expectTime(ty::localToUtc(makeTime(2024, 7, 15, 14, 0, 0, 5)), makeTime(2024, 7, 15, 12, 0, 0, 5, kMonday));
}

TEST_F(LocalTimeTest, UtcZoneChangesNothing)
{
    useZone("UTC0");
    expectTime(ty::utcToLocal(makeTime(2024, 7, 15, 12, 34, 56, 789)), makeTime(2024, 7, 15, 12, 34, 56, 789, kMonday));
}

TEST_F(LocalTimeTest, TheZoneIsReadAgainWhenTzChanges)
{
    useZone("UTC0");
    EXPECT_EQ(ty::utcToLocal(makeTime(2024, 7, 15, 12, 0, 0))->wHour, 12);
    setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);  // no tzset here: the conversion must read TZ itself
    EXPECT_EQ(ty::utcToLocal(makeTime(2024, 7, 15, 12, 0, 0))->wHour, 8);
    setenv("TZ", "UTC0", 1);
    EXPECT_EQ(ty::localFieldsToUtc({2024, 7, 15, 8, 0, 0})->wHour, 8);
}

TEST_F(LocalTimeTest, LocalFieldsToUtcUsesTheOffsetInForce)
{
    useNewYork();
    expectTime(ty::localFieldsToUtc({2024, 7, 15, 8, 0, 0}), makeTime(2024, 7, 15, 12, 0, 0, 0, kMonday));
    expectTime(ty::localFieldsToUtc({2024, 1, 15, 7, 0, 0}), makeTime(2024, 1, 15, 12, 0, 0, 0, kMonday));
    expectTime(ty::localFieldsToUtc({2023, 12, 31, 22, 0, 0}), makeTime(2024, 1, 1, 3, 0, 0, 0, kMonday));
    expectTime(ty::localFieldsToUtc({1950, 1, 15, 7, 0, 0}), makeTime(1950, 1, 15, 12, 0, 0, 0, kSunday));
    expectTime(ty::localFieldsToUtc({2050, 7, 15, 8, 0, 0}), makeTime(2050, 7, 15, 12, 0, 0, 0, kFriday));
}

TEST_F(LocalTimeTest, LocalFieldsToUtcInTheHoursOfChange)
{
    useNewYork();
    // 02:30 on 2024-03-10 doesn't exist. Taken as standard time it is 07:30 UTC, which mktime
    // shows as 03:30 daylight time; the hour taken off then gives 06:30 UTC.
    expectTime(ty::localFieldsToUtc({2024, 3, 10, 2, 30, 0}), makeTime(2024, 3, 10, 6, 30, 0, 0, kSunday));
    // 01:30 on 2024-11-03 happens twice (05:30 and 06:30 UTC); standard time gives the second.
    expectTime(ty::localFieldsToUtc({2024, 11, 3, 1, 30, 0}), makeTime(2024, 11, 3, 6, 30, 0, 0, kSunday));
    // Just before and after the hours of change.
    expectTime(ty::localFieldsToUtc({2024, 3, 10, 1, 59, 59}), makeTime(2024, 3, 10, 6, 59, 59, 0, kSunday));
    expectTime(ty::localFieldsToUtc({2024, 3, 10, 3, 0, 0}), makeTime(2024, 3, 10, 7, 0, 0, 0, kSunday));
    expectTime(ty::localFieldsToUtc({2024, 11, 3, 0, 59, 59}), makeTime(2024, 11, 3, 4, 59, 59, 0, kSunday));
    expectTime(ty::localFieldsToUtc({2024, 11, 3, 2, 0, 0}), makeTime(2024, 11, 3, 7, 0, 0, 0, kSunday));
}

TEST_F(LocalTimeTest, LocalFieldsToUtcNormalisesAsMktimeDoes)
{
    useNewYork();
    // Month 13 of 2024 is January 2025 (2025-01-01 a Wednesday); January 32 is February 1.
    expectTime(ty::localFieldsToUtc({2024, 13, 1, 0, 0, 0}), makeTime(2025, 1, 1, 5, 0, 0, 0, kWednesday));
    expectTime(ty::localFieldsToUtc({2024, 1, 32, 0, 0, 0}), makeTime(2024, 2, 1, 5, 0, 0, 0, kThursday));
    expectTime(ty::localFieldsToUtc({2024, 1, 5, 25, 0, 0}), makeTime(2024, 1, 6, 6, 0, 0, 0, 6));
}

TEST_F(LocalTimeTest, LocalFieldsToUtcKeepsYearsOutsideTheSystemTimeRange)
{
    useNewYork();
    // "1 Feb 99 10:00:00" is read as year 99 and stays there; the POSIX rule of TZ
    // applies to every year, so February is standard time.
    const std::optional<SystemTime> utc = ty::localFieldsToUtc({99, 2, 1, 10, 0, 0});
    ASSERT_TRUE(utc.has_value());
    EXPECT_EQ(utc->wYear, 99);
    EXPECT_EQ(utc->wMonth, 2);
    EXPECT_EQ(utc->wDay, 1);
    EXPECT_EQ(utc->wHour, 15);
}

TEST_F(LocalTimeTest, LocalFieldsToUtcRefusesWhatMktimeReportsAsMinusOne)
{
    useZone("UTC0");
    EXPECT_FALSE(ty::localFieldsToUtc({1969, 12, 31, 23, 59, 59}).has_value());
    expectTime(ty::localFieldsToUtc({1969, 12, 31, 23, 59, 58}), makeTime(1969, 12, 31, 23, 59, 58, 0, 3));
}

TEST_F(LocalTimeTest, LocalToUtcIsTheWayBackFromUtcToLocal)
{
    useNewYork();
    const uint64_t hour = 3600ULL * 10'000'000;
    // Every hour of 2024 plus some minutes, except the hour that is repeated in November.
    for (uint64_t fileTime = *ty::systemTimeToFileTime(makeTime(2024, 1, 1, 0, 17, 3, 42));
         fileTime < *ty::systemTimeToFileTime(makeTime(2025, 1, 1)); fileTime += hour) {
        const SystemTime utc = *ty::fileTimeToSystemTime(fileTime);
        if (utc.wMonth == 11 && utc.wDay == 3 && utc.wHour == 5) continue;  // 01:17 EDT, repeated
        const std::optional<SystemTime> local = ty::utcToLocal(utc);
        ASSERT_TRUE(local.has_value());
        const std::optional<SystemTime> back = ty::localToUtc(*local);
        ASSERT_TRUE(back.has_value());
        EXPECT_EQ(*back, utc) << utc.wMonth << "-" << utc.wDay << " " << utc.wHour;
    }
}

}  // namespace
