#include "mime/mail_date.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>

#include "regex/pattern.h"

namespace mcl {
namespace {

// Weekday, day, month, year, hour, minute, second, then the zone with its sign, hours, minutes.
constexpr std::u16string_view kZonedPattern =
    uR"re((\w+)\W*?(\d+)\D*?(\w+)\W*?(\d+)\D*?(\d+)\D*?(\d+)\D*?(\d+)\D*(([\+\-])(\d\d)(\d\d)))re";
// Meant for a month-first date, but its escaped brackets demand a literal "[a-zA-Z" and "]".
constexpr std::u16string_view kMonthFirstPattern =
    uR"re((\[a-zA-Z]+)\W*?(\[a-zA-Z]+)\W*?(\d+)\D*?(\d+)\D*?(\d+)\D*?(\d+)\D*?(\d+)\D*(([\+\-])(\d\d)(\d\d))?)re";
// Day, month, year, hour, minute, second; the greedy \D* takes a zone's sign, so the zone stays unset.
constexpr std::u16string_view kDayFirstPattern =
    uR"re((\d+)\D*?(\w+)\W*?(\d+)\D*?(\d+)\D*?(\d+)\D*?(\d+)\D*(([\+\-])(\d\d)(\d\d))?)re";

// A group of digits in base 10; too many digits saturate, as the C library's reading does.
int number(const rx::MatchResult& match, std::u16string_view text, int group)
{
    std::string digits;
    for (char16_t c : match.view(text, group)) digits += static_cast<char>(c);
    int value = 0;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec == std::errc::result_out_of_range)
        value = std::numeric_limits<int>::max();
    return value;
}

// 1 to 12 for the first of "Jan" to "Dec" found in the group, case-sensitive; -1 for none.
int monthNumber(std::u16string_view name)
{
    static constexpr std::array<std::u16string_view, 12> kMonths = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                                                    u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
    for (size_t i = 0; i < kMonths.size(); ++i)
        if (name.find(kMonths[i]) != std::u16string_view::npos) return int(i) + 1;
    return -1;
}

// The fields as written, each kept in 16 bits (month -1 becomes 65535).
ty::SystemTime asWritten(const ty::LocalTimeFields& fields)
{
    ty::SystemTime time;
    time.wYear = static_cast<uint16_t>(fields.year);
    time.wMonth = static_cast<uint16_t>(fields.month);
    time.wDay = static_cast<uint16_t>(fields.day);
    time.wHour = static_cast<uint16_t>(fields.hour);
    time.wMinute = static_cast<uint16_t>(fields.minute);
    time.wSecond = static_cast<uint16_t>(fields.second);
    return time;
}

// A written time less its zone offset, through a FILETIME. A time that no FILETIME holds (a
// two-digit year, an unknown month, a day past the month's end) stays as written: an unshifted
// date is more use to a reader than none.
ty::SystemTime shiftedToUtc(const ty::SystemTime& written, int64_t offsetSeconds)
{
    const std::optional<uint64_t> fileTime = ty::systemTimeToFileTime(written);
    if (!fileTime) return written;
    const int64_t utc = int64_t(*fileTime) - offsetSeconds * int64_t(ty::kFileTimeTicksPerSecond);
    const std::optional<ty::SystemTime> result = utc >= 0 ? ty::fileTimeToSystemTime(uint64_t(utc)) : std::nullopt;
    return result ? *result : written;
}

}  // namespace

MailDate parseMailDate(std::u16string_view raw)
{
    const std::u16string text = rx::WPattern(uR"re(\s*Date:\s*)re").replace(raw, u"");
    MailDate date;
    // Group numbers below count from 1, as the matcher gives them; "groups that came back" are
    // those up to the last one that took part.
    rx::MatchResult match = rx::WPattern(kZonedPattern).match(text);
    if (match) {
        const ty::LocalTimeFields fields{number(match, text, 4), monthNumber(match.view(text, 3)),
                                         number(match, text, 2), number(match, text, 5),
                                         number(match, text, 6), number(match, text, 7)};
        int64_t offset = int64_t(number(match, text, 10)) * 3600 + int64_t(number(match, text, 11)) * 60;
        if (match.view(text, 8).starts_with(u"-")) offset = -offset;
        date.time = shiftedToUtc(asWritten(fields), offset);
    } else if ((match = rx::WPattern(kMonthFirstPattern).match(text)).lastGroup() >= 7) {
        date.time = asWritten({number(match, text, 4), monthNumber(match.view(text, 2)), number(match, text, 3),
                               number(match, text, 5), number(match, text, 6), number(match, text, 7)});
    } else if ((match = rx::WPattern(kDayFirstPattern).match(text)).lastGroup() >= 6) {
        const ty::LocalTimeFields fields{number(match, text, 3), monthNumber(match.view(text, 2)),
                                         number(match, text, 1), number(match, text, 4),
                                         number(match, text, 5), number(match, text, 6)};
        date.time = asWritten(fields);
        if (match.view(text, 7).empty()) {
            if (const std::optional<ty::SystemTime> utc = ty::localFieldsToUtc(fields)) date.time = *utc;
        }
    } else {
        return date;
    }
    // The eighth group back is the zone under the first pattern but its sign under the third,
    // whose groups stand one lower.
    if (match.lastGroup() >= 8) date.zone = match.group(text, 8);
    return date;
}

}  // namespace mcl
