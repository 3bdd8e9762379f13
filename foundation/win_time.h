#pragma once
// The Windows time values of the mail core and their conversions: SYSTEMTIME, FILETIME, and the
// move between UTC and the local time of the process's time zone.
//
// A PT_SYSTIME property value is a SystemTime in UTC, 16 bytes, copied in and out with memcpy.
// Readers meet times as FILETIME (MSG, TNEF, PST) and turn them into SystemTime; the
// EML date parser goes through FILETIME for a zone offset and through the C library for a local
// time; the presentation pages and the viewer show local time.
//
// The local time zone is the C library's: the TZ environment variable as tzset() reads it, or the
// system's zone if TZ is unset. It stands in for the Windows default zone of
// SystemTimeToTzSpecificLocalTime.
#include <cstdint>
#include <optional>
#include <type_traits>

namespace ty {

// Windows SYSTEMTIME, field for field. The day of the week runs from 0 (Sunday) to 6.
struct SystemTime {
    uint16_t wYear = 0;
    uint16_t wMonth = 0;
    uint16_t wDayOfWeek = 0;
    uint16_t wDay = 0;
    uint16_t wHour = 0;
    uint16_t wMinute = 0;
    uint16_t wSecond = 0;
    uint16_t wMilliseconds = 0;

    friend bool operator==(const SystemTime&, const SystemTime&) = default;
};
static_assert(sizeof(SystemTime) == 16, "SYSTEMTIME is 16 bytes");
static_assert(std::is_standard_layout_v<SystemTime> && std::is_trivially_copyable_v<SystemTime>,
              "a SystemTime is copied in and out of property values with memcpy");

// FILETIME: 100-nanosecond ticks since 1601-01-01 00:00:00 UTC, as one 64-bit number.
inline constexpr uint64_t kFileTimeTicksPerSecond = 10'000'000;
// The FILETIME of 1970-01-01 00:00:00 UTC, the Unix epoch.
inline constexpr uint64_t kFileTimeUnixEpoch = 116'444'736'000'000'000;
// The first FILETIME that FileTimeToSystemTime refuses.
inline constexpr uint64_t kFileTimeLimit = 0x8000'0000'0000'0000;

// What SystemTimeToFileTime accepts: a year from 1601 to 30827 (the range Windows documents),
// month 1 to 12, a day that exists in that month (leap years by the Gregorian rule), hour 0 to 23,
// minute and second 0 to 59, milliseconds 0 to 999. wDayOfWeek is not looked at.
bool isValidSystemTime(const SystemTime& time);

// FileTimeToSystemTime: nothing for values of kFileTimeLimit and above; otherwise the broken-down
// UTC time with the day of the week computed. Ticks below a millisecond are dropped.
std::optional<SystemTime> fileTimeToSystemTime(uint64_t fileTime);

// SystemTimeToFileTime: nothing if !isValidSystemTime(time); wDayOfWeek is ignored.
std::optional<uint64_t> systemTimeToFileTime(const SystemTime& time);

// SystemTimeToTzSpecificLocalTime with the default zone: the UTC time in the process's local
// time. Nothing if the input is invalid (as above), if the C library can't convert it, or if the
// local time falls outside the valid range (such as 1601-01-01 00:00 UTC west of Greenwich).
// Milliseconds are kept and the day of the week is computed. Dates before 1970 and after 2038
// convert as far as the C library's zone data reaches (time_t is 64-bit): a zone file such as
// TZ=America/New_York carries the zone's history back to local mean time, while glibc applies
// the daylight-saving rules of a POSIX TZ string ("EST5EDT,M3.2.0,M11.1.0") from 1970 on only
// and gives standard time before.
std::optional<SystemTime> utcToLocal(const SystemTime& utc);

// A local wall-clock time as a C `struct tm` takes it, numbers as they were written. Fields out
// of range are allowed and are normalised by mktime (month 13 is January of the next year).
struct LocalTimeFields {
    int year = 0;    // the full year, such as 2024
    int month = 0;   // 1 to 12
    int day = 0;     // 1 to 31
    int hour = 0;
    int minute = 0;
    int second = 0;
};

// A local time to UTC through the process's time zone, by the steps the EML date parser
// takes: fill a `tm` with the fields and tm_isdst 0 (the time is first taken
// as standard time), call mktime; if it returns -1, give nothing; if the normalised `tm` now says
// daylight saving, take 3600 seconds off; then gmtime. Away from the hour of a change this is the
// wall-clock time read with the offset in force then (for zones whose daylight saving adds one
// hour). In the hour that the clocks skip, a time comes out one hour early (02:30 in New York on
// the day of the change gives 06:30 UTC, which is 01:30 standard time); in the hour that they
// repeat, the second (standard-time) instance is chosen.
//
// The result holds gmtime's fields, the day of the week among them, as the original stored them
// in 16 bits; milliseconds are 0. It is not checked against the SYSTEMTIME range: a year such as 99
// stays year 99. Like the original, it refuses the one second whose time_t is -1
// (1969-12-31 23:59:59 UTC).
std::optional<SystemTime> localFieldsToUtc(const LocalTimeFields& local);

// TzSpecificLocalTimeToSystemTime with the default zone, the way back from utcToLocal: a valid
// local SystemTime to UTC by the rule of localFieldsToUtc, milliseconds kept. Nothing if the
// input is invalid or the result falls outside the valid range.
std::optional<SystemTime> localToUtc(const SystemTime& local);

}  // namespace ty
