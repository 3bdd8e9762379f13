#include "foundation/win_time.h"

#include <ctime>
#include <limits>

namespace ty {
namespace {

constexpr int64_t kSecondsPerDay = 86'400;
constexpr uint64_t kTicksPerMillisecond = 10'000;
// Days from 1601-01-01 to 1970-01-01: 369 years with 89 leap days.
constexpr int64_t kDays1601To1970 = 369 * 365 + 89;
constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

bool isLeapYear(int64_t year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysInMonth(int64_t year, int month)
{
    static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

// Days since 1970-01-01 of a proleptic Gregorian date (H. Hinnant's days_from_civil).
int64_t daysFromCivil(int64_t year, int month, int day)
{
    year -= month <= 2;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const int64_t yearOfEra = year - era * 400;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

struct CivilDate {
    int64_t year;
    int month;
    int day;
};

// The inverse of daysFromCivil.
CivilDate civilFromDays(int64_t days)
{
    days += 719468;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int64_t dayOfEra = days - era * 146097;
    const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    const int month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    return {yearOfEra + era * 400 + (month <= 2), month, day};
}

// 0 for Sunday; 1970-01-01 was a Thursday.
uint16_t dayOfWeek(int64_t daysSince1970)
{
    int64_t weekday = (daysSince1970 + 4) % 7;
    if (weekday < 0) weekday += 7;
    return static_cast<uint16_t>(weekday);
}

// Seconds since the Unix epoch of a valid SystemTime, milliseconds left out.
int64_t unixSeconds(const SystemTime& time)
{
    return daysFromCivil(time.wYear, time.wMonth, time.wDay) * kSecondsPerDay + time.wHour * 3600 +
           time.wMinute * 60 + time.wSecond;
}

std::optional<SystemTime> fromTm(const std::tm& tm, uint16_t milliseconds)
{
    const int64_t year = static_cast<int64_t>(tm.tm_year) + 1900;
    if (year < kFirstYear || year > kLastYear) return std::nullopt;
    SystemTime result;
    result.wYear = static_cast<uint16_t>(year);
    result.wMonth = static_cast<uint16_t>(tm.tm_mon + 1);
    result.wDay = static_cast<uint16_t>(tm.tm_mday);
    result.wHour = static_cast<uint16_t>(tm.tm_hour);
    result.wMinute = static_cast<uint16_t>(tm.tm_min);
    result.wSecond = static_cast<uint16_t>(tm.tm_sec);
    result.wMilliseconds = milliseconds;
    // A zone with leap seconds can give second 60; that is no SYSTEMTIME.
    if (!isValidSystemTime(result)) return std::nullopt;
    result.wDayOfWeek = dayOfWeek(daysFromCivil(result.wYear, result.wMonth, result.wDay));
    return result;
}

}  // namespace

bool isValidSystemTime(const SystemTime& time)
{
    if (time.wYear < kFirstYear || time.wYear > kLastYear) return false;
    if (time.wMonth < 1 || time.wMonth > 12) return false;
    if (time.wDay < 1 || time.wDay > daysInMonth(time.wYear, time.wMonth)) return false;
    return time.wHour <= 23 && time.wMinute <= 59 && time.wSecond <= 59 && time.wMilliseconds <= 999;
}

std::optional<SystemTime> fileTimeToSystemTime(uint64_t fileTime)
{
    if (fileTime >= kFileTimeLimit) return std::nullopt;
    const uint64_t totalSeconds = fileTime / kFileTimeTicksPerSecond;
    const int64_t days = static_cast<int64_t>(totalSeconds / kSecondsPerDay) - kDays1601To1970;
    const uint64_t secondOfDay = totalSeconds % kSecondsPerDay;
    const CivilDate date = civilFromDays(days);

    SystemTime result;
    result.wYear = static_cast<uint16_t>(date.year);
    result.wMonth = static_cast<uint16_t>(date.month);
    result.wDayOfWeek = dayOfWeek(days);
    result.wDay = static_cast<uint16_t>(date.day);
    result.wHour = static_cast<uint16_t>(secondOfDay / 3600);
    result.wMinute = static_cast<uint16_t>(secondOfDay / 60 % 60);
    result.wSecond = static_cast<uint16_t>(secondOfDay % 60);
    result.wMilliseconds = static_cast<uint16_t>(fileTime / kTicksPerMillisecond % 1000);
    return result;
}

std::optional<uint64_t> systemTimeToFileTime(const SystemTime& time)
{
    if (!isValidSystemTime(time)) return std::nullopt;
    const int64_t seconds = unixSeconds(time) + kDays1601To1970 * kSecondsPerDay;
    return static_cast<uint64_t>(seconds) * kFileTimeTicksPerSecond + time.wMilliseconds * kTicksPerMillisecond;
}

std::optional<SystemTime> utcToLocal(const SystemTime& utc)
{
    if (!isValidSystemTime(utc)) return std::nullopt;
    const std::time_t seconds = static_cast<std::time_t>(unixSeconds(utc));
    // localtime_r need not read TZ again (glibc reads it once); tzset makes a change of TZ count.
    tzset();
    std::tm local{};
    if (!localtime_r(&seconds, &local)) return std::nullopt;
    return fromTm(local, utc.wMilliseconds);
}

std::optional<SystemTime> localFieldsToUtc(const LocalTimeFields& local)
{
    const int64_t tmYear = static_cast<int64_t>(local.year) - 1900;
    const int64_t tmMonth = static_cast<int64_t>(local.month) - 1;
    if (tmYear < std::numeric_limits<int>::min() || tmMonth < std::numeric_limits<int>::min())
        return std::nullopt;

    std::tm tm{};
    tm.tm_year = static_cast<int>(tmYear);
    tm.tm_mon = static_cast<int>(tmMonth);
    tm.tm_mday = local.day;
    tm.tm_hour = local.hour;
    tm.tm_min = local.minute;
    tm.tm_sec = local.second;
    tm.tm_isdst = 0;
    std::time_t seconds = std::mktime(&tm);  // mktime calls tzset itself
    if (seconds == static_cast<std::time_t>(-1)) return std::nullopt;
    if (tm.tm_isdst > 0) seconds -= 3600;

    std::tm utc{};
    if (!gmtime_r(&seconds, &utc)) return std::nullopt;
    // The original stored gmtime's fields in the 16-bit members as they came.
    SystemTime result;
    result.wYear = static_cast<uint16_t>(static_cast<int64_t>(utc.tm_year) + 1900);
    result.wMonth = static_cast<uint16_t>(utc.tm_mon + 1);
    result.wDayOfWeek = static_cast<uint16_t>(utc.tm_wday);
    result.wDay = static_cast<uint16_t>(utc.tm_mday);
    result.wHour = static_cast<uint16_t>(utc.tm_hour);
    result.wMinute = static_cast<uint16_t>(utc.tm_min);
    result.wSecond = static_cast<uint16_t>(utc.tm_sec);
    return result;
}

std::optional<SystemTime> localToUtc(const SystemTime& local)
{
    if (!isValidSystemTime(local)) return std::nullopt;
    std::optional<SystemTime> utc = localFieldsToUtc(
        {local.wYear, local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond});
    if (!utc) return std::nullopt;
    utc->wMilliseconds = local.wMilliseconds;
    if (!isValidSystemTime(*utc)) return std::nullopt;
    return utc;
}

}  // namespace ty
