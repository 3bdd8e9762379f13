// Expected texts are worked out from the calendar and the picture rules by hand; the ones marked
// "Windows" are the expectations of Wine's locale tests, which run on Windows itself.
#include <gtest/gtest.h>

#include <string>

#include "foundation/time_picture.h"
#include "support/system_time.h"

namespace {

using ty::SystemTime;

using test_support::makeTime;

// 2024-01-05 was a Friday (2024-01-01 was a Monday).
const SystemTime kFriday = makeTime(2024, 1, 5, 13, 7, 9, 0, 5);

TEST(TimePicture, ThePicturesOfTheSystem)
{
    EXPECT_EQ(ty::formatDate(kFriday, u"yyyy'.'MM'.'dd"), u"2024.01.05");
    EXPECT_EQ(ty::formatTime(kFriday, u"hh':'mm':'ss"), u"01:07:09");  // hh is the 12-hour clock
    EXPECT_EQ(ty::formatDate(kFriday, u"dddd, MMMM d, yyyy"), u"Friday, January 5, 2024");
    EXPECT_EQ(ty::formatTime(kFriday, u"h:mm:ss tt"), u"1:07:09 PM");
}

TEST(TimePicture, UserPicturesAreTheEnglishUnitedStatesDefaults)
{
    EXPECT_EQ(ty::userLongDatePicture(), u"dddd, MMMM d, yyyy");
    EXPECT_EQ(ty::userTimePicture(), u"h:mm:ss tt");
    EXPECT_EQ(ty::formatDate(kFriday, ty::userLongDatePicture()) + u" " + ty::formatTime(kFriday, ty::userTimePicture()),
              u"Friday, January 5, 2024 1:07:09 PM");
}

TEST(DatePicture, DayLetters)
{
    EXPECT_EQ(ty::formatDate(kFriday, u"d"), u"5");
    EXPECT_EQ(ty::formatDate(kFriday, u"dd"), u"05");
    EXPECT_EQ(ty::formatDate(kFriday, u"ddd"), u"Fri");
    EXPECT_EQ(ty::formatDate(kFriday, u"dddd"), u"Friday");
    EXPECT_EQ(ty::formatDate(kFriday, u"ddddd"), u"Friday");
    EXPECT_EQ(ty::formatDate(makeTime(2024, 1, 23), u"d dd"), u"23 23");
}

TEST(DatePicture, EveryDayName)
{
    // 2024-01-07 was a Sunday.
    const char16_t* longNames[] = {u"Sunday", u"Monday", u"Tuesday", u"Wednesday", u"Thursday", u"Friday", u"Saturday"};
    const char16_t* shortNames[] = {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(ty::formatDate(makeTime(2024, 1, 7 + i), u"dddd"), longNames[i]);
        EXPECT_EQ(ty::formatDate(makeTime(2024, 1, 7 + i), u"ddd"), shortNames[i]);
    }
}

TEST(DatePicture, MonthLetters)
{
    EXPECT_EQ(ty::formatDate(kFriday, u"M"), u"1");
    EXPECT_EQ(ty::formatDate(kFriday, u"MM"), u"01");
    EXPECT_EQ(ty::formatDate(kFriday, u"MMM"), u"Jan");
    EXPECT_EQ(ty::formatDate(kFriday, u"MMMM"), u"January");
    EXPECT_EQ(ty::formatDate(kFriday, u"MMMMM"), u"January");
    EXPECT_EQ(ty::formatDate(makeTime(2024, 10, 1), u"M MM"), u"10 10");
}

TEST(DatePicture, EveryMonthName)
{
    const char16_t* longNames[] = {u"January", u"February", u"March",     u"April",   u"May",      u"June",
                                   u"July",    u"August",   u"September", u"October", u"November", u"December"};
    const char16_t* shortNames[] = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                    u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
    for (int month = 1; month <= 12; ++month) {
        EXPECT_EQ(ty::formatDate(makeTime(2024, month, 1), u"MMMM"), longNames[month - 1]);
        EXPECT_EQ(ty::formatDate(makeTime(2024, month, 1), u"MMM"), shortNames[month - 1]);
    }
}

TEST(DatePicture, YearLetters)
{
    EXPECT_EQ(ty::formatDate(kFriday, u"y"), u"24");
    EXPECT_EQ(ty::formatDate(kFriday, u"yy"), u"24");
    EXPECT_EQ(ty::formatDate(kFriday, u"yyy"), u"2024");
    EXPECT_EQ(ty::formatDate(kFriday, u"yyyy"), u"2024");
    EXPECT_EQ(ty::formatDate(kFriday, u"yyyyy"), u"2024");
    const SystemTime early = makeTime(2005, 3, 9);
    EXPECT_EQ(ty::formatDate(early, u"y"), u"5");
    EXPECT_EQ(ty::formatDate(early, u"yy"), u"05");
    EXPECT_EQ(ty::formatDate(early, u"yyyy"), u"2005");
    EXPECT_EQ(ty::formatDate(makeTime(2000, 6, 1), u"y|yy"), u"0|00");
    EXPECT_EQ(ty::formatDate(makeTime(1601, 1, 1), u"yy yyyy"), u"01 1601");
}

TEST(DatePicture, EraLetters)
{
    EXPECT_EQ(ty::formatDate(kFriday, u"g"), u"A.D.");
    EXPECT_EQ(ty::formatDate(kFriday, u"gg"), u"A.D.");
    EXPECT_EQ(ty::formatDate(kFriday, u"yyyy gg"), u"2024 A.D.");
}

TEST(DatePicture, DayOfWeekComesFromTheDateAndTheTimeIsIgnored)
{
    // Windows: wrong day of the week and impossible time fields.
    EXPECT_EQ(ty::formatDate(makeTime(2002, 10, 23, 65432, 34512, 65535, 12345, 45612), u"dddd d MMMM yyyy"),
              u"Wednesday 23 October 2002");
    // Windows: 2002-05-04 was a Saturday although the record says Wednesday.
    const SystemTime may4 = makeTime(2002, 5, 4, 0, 0, 0, 0, 3);
    EXPECT_EQ(ty::formatDate(may4, u"ddd',' MMM dd yy"), u"Sat, May 04 02");
    EXPECT_EQ(ty::formatDate(may4, u"ddd',' MMM dd ''''yy"), u"Sat, May 04 '02");
    EXPECT_EQ(ty::formatDate(makeTime(2024, 1, 5, 36, 0, 0, 0, 0), u"dddd"), u"Friday");
}

TEST(DatePicture, InvalidDatesGiveNothing)
{
    // Windows: the first day of FILETIME works, the day before it fails.
    EXPECT_EQ(ty::formatDate(makeTime(1601, 1, 1), u"dddd d MMMM yyyy"), u"Monday 1 January 1601");
    EXPECT_EQ(ty::formatDate(makeTime(1600, 12, 31, 23, 59, 59, 999), u"dddd d MMMM yyyy"), u"");
    // Windows: every word 0x0202.
    EXPECT_EQ(ty::formatDate(makeTime(514, 514, 514, 514, 514, 514, 514, 514), u"ddd',' MMM dd yy"), u"");
    EXPECT_EQ(ty::formatDate(makeTime(2024, 13, 1), u"yyyy"), u"");
    EXPECT_EQ(ty::formatDate(makeTime(2024, 0, 1), u"yyyy"), u"");
    EXPECT_EQ(ty::formatDate(makeTime(2024, 4, 31), u"yyyy"), u"");
    EXPECT_EQ(ty::formatDate(makeTime(2023, 2, 29), u"yyyy"), u"");
    EXPECT_EQ(ty::formatDate(makeTime(2024, 2, 29), u"MMMM d"), u"February 29");
}

TEST(DatePicture, TimeLettersAreLiteralText)
{
    EXPECT_EQ(ty::formatDate(kFriday, u"h:mm:ss tt H"), u"h:mm:ss tt H");
    EXPECT_EQ(ty::formatDate(kFriday, u"yyyy'.'MM'.'dd hh':'mm"), u"2024.01.05 hh:mm");
}

TEST(TimePicture, EveryLetter)
{
    EXPECT_EQ(ty::formatTime(kFriday, u"h"), u"1");
    EXPECT_EQ(ty::formatTime(kFriday, u"hh"), u"01");
    EXPECT_EQ(ty::formatTime(kFriday, u"hhh"), u"01");
    EXPECT_EQ(ty::formatTime(kFriday, u"H"), u"13");
    EXPECT_EQ(ty::formatTime(kFriday, u"HH"), u"13");
    EXPECT_EQ(ty::formatTime(kFriday, u"m"), u"7");
    EXPECT_EQ(ty::formatTime(kFriday, u"mm"), u"07");
    EXPECT_EQ(ty::formatTime(kFriday, u"s"), u"9");
    EXPECT_EQ(ty::formatTime(kFriday, u"ss"), u"09");
    EXPECT_EQ(ty::formatTime(kFriday, u"t"), u"P");
    EXPECT_EQ(ty::formatTime(kFriday, u"tt"), u"PM");
    EXPECT_EQ(ty::formatTime(kFriday, u"ttt"), u"PM");
    // Windows: 14:05:03.
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 14, 5, 3), u"h hh H HH m mm s ss t tt"), u"2 02 14 14 5 05 3 03 P PM");
}

TEST(TimePicture, TwelveHourClock)
{
    // Windows: midnight is 12 on the 12-hour clock and 0 on the 24-hour one.
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 0, 5, 3), u"h/H/hh/HH"), u"12/0/12/00");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 0, 5, 3), u"h:m:s tt"), u"12:5:3 AM");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 0, 59, 0), u"hh:mm t"), u"12:59 A");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 1, 0, 0), u"h tt"), u"1 AM");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 11, 59, 59), u"h:mm:ss tt"), u"11:59:59 AM");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 12, 0, 0), u"h:mm:ss tt"), u"12:00:00 PM");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 12, 30, 0), u"hh:mm t HH"), u"12:30 P 12");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 23, 59, 59), u"h:mm:ss tt HH"), u"11:59:59 PM 23");
}

TEST(TimePicture, DateLettersAreLiteralText)
{
    EXPECT_EQ(ty::formatTime(kFriday, u"d/M/y gg"), u"d/M/y gg");
    // Windows: 08:56:13; of these letters only h, H, m and s are time letters.
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 8, 56, 13, 22),
                             u"h:hh:hhh H:HH:HHH m:mm:mmm M:MM:MMM s:ss:sss S:SS:SSS"),
              u"8:08:08 8:08:08 56:56:56 M:MM:MMM 13:13:13 S:SS:SSS");
}

TEST(TimePicture, TheDateIsIgnoredAndInvalidTimesGiveNothing)
{
    // Windows: month 60 doesn't matter to the time; hour 25 does.
    EXPECT_EQ(ty::formatTime(makeTime(2002, 60, 1, 12, 56, 13), u"h:m:s"), u"12:56:13");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 25, 56, 13), u"'123'tt"), u"");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 24, 0, 0), u"HH"), u"");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 23, 60, 0), u"HH"), u"");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 23, 0, 60), u"HH"), u"");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 23, 0, 0, 1000), u"HH"), u"");
    EXPECT_EQ(ty::formatTime(makeTime(2002, 1, 1, 23, 59, 59, 999), u"HH"), u"23");
}

TEST(Picture, QuotedTextIsLiteral)
{
    const SystemTime time = makeTime(2002, 1, 1, 8, 56, 13, 22);
    // Windows.
    EXPECT_EQ(ty::formatTime(time, u"h 'h' H 'H' HH 'HH' m 'm' s 's' t 't' tt 'tt'"),
              u"8 h 8 H 08 HH 56 m 13 s A t AM tt");
    // The documentation's example: two quotes inside quotes give one.
    EXPECT_EQ(ty::formatDate(time, u"'abc''bar'"), u"abc'bar");
    EXPECT_EQ(ty::formatTime(time, u"'abc''bar'"), u"abc'bar");
    EXPECT_EQ(ty::formatDate(kFriday, u"'Today is' dddd', the' d'th'"), u"Today is Friday, the 5th");
    EXPECT_EQ(ty::formatTime(kFriday, u"h 'o''clock' tt"), u"1 o'clock PM");
    EXPECT_EQ(ty::formatDate(kFriday, u"'yyyy MM dd'"), u"yyyy MM dd");
}

TEST(Picture, OddQuoting)
{
    const SystemTime time = makeTime(2002, 1, 1, 8, 56, 13, 22);
    // Windows.
    EXPECT_EQ(ty::formatTime(time, u"'''"), u"'");
    EXPECT_EQ(ty::formatTime(time, u"''''"), u"'");
    EXPECT_EQ(ty::formatTime(time, u"''HHHHHH"), u"08");
    EXPECT_EQ(ty::formatTime(time, u"'''HHHHHH'"), u"'HHHHHH");
    EXPECT_EQ(ty::formatTime(time, u"'''HHHHHH"), u"'HHHHHH");
    // An unclosed quote runs to the end.
    EXPECT_EQ(ty::formatDate(kFriday, u"d 'of MMMM"), u"5 of MMMM");
    EXPECT_EQ(ty::formatDate(kFriday, u"''"), u"");
}

TEST(Picture, OtherCharactersAreCopied)
{
    EXPECT_EQ(ty::formatDate(kFriday, u"yyyy\u5E74M\u6708d\u65E5"), u"2024\u5E74" u"1\u6708" u"5\u65E5");
    EXPECT_EQ(ty::formatTime(kFriday, u"HH.mm,ss [x] A"), u"13.07,09 [x] A");
    EXPECT_EQ(ty::formatDate(kFriday, u""), u"");
    EXPECT_EQ(ty::formatTime(kFriday, u""), u"");
}

TEST(Picture, EndsAtTheFirstNul)
{
    const std::u16string date(u"yyyy\0MM", 7);
    const std::u16string time(u"HH\0mm", 5);
    EXPECT_EQ(ty::formatDate(kFriday, date), u"2024");
    EXPECT_EQ(ty::formatTime(kFriday, time), u"13");
    EXPECT_EQ(ty::formatDate(kFriday, std::u16string(80, u'\0')), u"");
}

}  // namespace
