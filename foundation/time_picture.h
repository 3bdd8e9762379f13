#pragma once
// Formatting of a SystemTime by the Windows date and time pictures, as GetDateFormatW and
// GetTimeFormatW do it with flags 0, in English (United States); and the user's long date and
// time pictures (LOCALE_SLONGDATE, LOCALE_STIMEFORMAT).
//
// Date pictures (formatDate):
//   d, dd        day of the month, without and with a leading zero
//   ddd, dddd    "Fri", "Friday"; four or more d give the full name
//   M, MM        month, without and with a leading zero
//   MMM, MMMM    "Jan", "January"; four or more M give the full name
//   y            the year within its century without a leading zero: 2024 "24", 2005 "5"
//                (Windows documents "the last digit"; Wine's two implementations print "24" and
//                "05"; no picture of this system uses it)
//   yy           two digits: "24", "05"
//   yyy, yyyy, yyyyy and longer: the full year, "2024" (for the Gregorian calendar Windows treats
//                yyyyy as yyyy)
//   g, gg        the era, "A.D." (CAL_SERASTRING); any run of g gives it once
// Time pictures (formatTime):
//   h, hh        hour on the 12-hour clock, 0 and 12 shown as 12; H, HH on the 24-hour clock
//   m, mm        minute; s, ss second. One letter: no leading zero; two or more: two digits
//   t, tt        "A"/"P" and "AM"/"PM"; two or more t give the long marker
// In both: text in single quotes is copied as it stands, and '' inside quotes gives one quote
// ('abc''bar' gives abc'bar; '' outside quotes gives nothing; an unclosed quote runs to the end).
// Every other character is copied as it stands. The two calls know only their own letters, as
// Windows does: time letters (h H m s t) in a date picture, and date letters (d M y g) in a time
// picture, are copied as literal text ("h:mm" through formatDate gives "h:mm"). The picture ends
// at its first NUL character, as the Windows call reads a C string.
//
// Failure gives the empty string, as the Windows call returns 0:
// - formatDate looks only at wYear, wMonth and wDay; it fails if they are not a valid date
//   (isValidSystemTime with the time of day taken as midnight). The time fields and wDayOfWeek
//   are ignored, and the day of the week is computed from the date.
// - formatTime looks only at the time of day; it fails if the hour is above 23, the minute or the
//   second above 59, or the milliseconds above 999. The date fields are ignored.
// Whether a picture that yields nothing is told apart from a failure is for the caller: both
// give an empty string here.
#include <string>
#include <string_view>

#include "foundation/win_time.h"

namespace ty {

std::u16string formatDate(const SystemTime& time, std::u16string_view picture);
std::u16string formatTime(const SystemTime& time, std::u16string_view picture);

// The user's long date picture, LOCALE_SLONGDATE: on this platform the en-US default
// "dddd, MMMM d, yyyy".
std::u16string userLongDatePicture();
// The user's time picture, LOCALE_STIMEFORMAT: on this platform the en-US default "h:mm:ss tt".
std::u16string userTimePicture();

}  // namespace ty
