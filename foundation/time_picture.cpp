#include "foundation/time_picture.h"

#include <optional>

namespace ty {
namespace {

constexpr std::u16string_view kDayNames[7] = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                              u"Thursday", u"Friday", u"Saturday"};
constexpr std::u16string_view kDayAbbreviations[7] = {u"Sun", u"Mon", u"Tue", u"Wed",
                                                      u"Thu", u"Fri", u"Sat"};
constexpr std::u16string_view kMonthNames[12] = {u"January", u"February", u"March",     u"April",
                                                 u"May",     u"June",     u"July",      u"August",
                                                 u"September", u"October", u"November", u"December"};
constexpr std::u16string_view kMonthAbbreviations[12] = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                                         u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
constexpr std::u16string_view kEra = u"A.D.";
constexpr std::u16string_view kAm = u"AM";
constexpr std::u16string_view kPm = u"PM";

// The picture up to its first NUL.
std::u16string_view untilNul(std::u16string_view picture)
{
    const size_t end = picture.find(u'\0');
    return end == std::u16string_view::npos ? picture : picture.substr(0, end);
}

// The length of the element that starts at `pos`: a quoted run up to and with its closing quote
// (or to the end), a run of one of the `letters`, or a single other character.
size_t elementLength(std::u16string_view picture, size_t pos, std::u16string_view letters)
{
    const char16_t first = picture[pos];
    size_t i = pos + 1;
    if (first == u'\'') {
        while (i < picture.size()) {
            if (picture[i] != u'\'') {
                ++i;
                continue;
            }
            ++i;
            if (i >= picture.size() || picture[i] != u'\'') return i - pos;  // closing quote
            ++i;                                                               // '' inside quotes
        }
        return i - pos;
    }
    if (letters.find(first) == std::u16string_view::npos) return 1;
    while (i < picture.size() && picture[i] == first) ++i;
    return i - pos;
}

// The text of a quoted element: '' inside gives one quote; the quotes around are dropped.
void appendQuoted(std::u16string& out, std::u16string_view element)
{
    for (size_t i = 1; i < element.size(); ++i) {
        if (element[i] == u'\'') ++i;
        if (i < element.size()) out += element[i];
    }
}

// A number in decimal with at least `minDigits` digits.
void appendNumber(std::u16string& out, unsigned value, size_t minDigits)
{
    std::u16string digits;
    do {
        digits.insert(digits.begin(), static_cast<char16_t>(u'0' + value % 10));
        value /= 10;
    } while (value != 0);
    if (digits.size() < minDigits) out.append(minDigits - digits.size(), u'0');
    out += digits;
}

}  // namespace

std::u16string formatDate(const SystemTime& time, std::u16string_view picture)
{
    SystemTime date;
    date.wYear = time.wYear;
    date.wMonth = time.wMonth;
    date.wDay = time.wDay;
    // Validate the date at midnight and compute its day of the week, as Windows does.
    const std::optional<uint64_t> fileTime = systemTimeToFileTime(date);
    if (!fileTime) return {};
    date = *fileTimeToSystemTime(*fileTime);

    picture = untilNul(picture);
    std::u16string out;
    for (size_t pos = 0; pos < picture.size();) {
        const size_t count = elementLength(picture, pos, u"dMyg");
        const std::u16string_view element = picture.substr(pos, count);
        pos += count;
        switch (element[0]) {
        case u'\'':
            appendQuoted(out, element);
            break;
        case u'd':
            if (count <= 2)
                appendNumber(out, date.wDay, count);
            else
                out += (count == 3 ? kDayAbbreviations : kDayNames)[date.wDayOfWeek];
            break;
        case u'M':
            if (count <= 2)
                appendNumber(out, date.wMonth, count);
            else
                out += (count == 3 ? kMonthAbbreviations : kMonthNames)[date.wMonth - 1];
            break;
        case u'y':
            if (count <= 2)
                appendNumber(out, date.wYear % 100, count);
            else
                appendNumber(out, date.wYear, 4);
            break;
        case u'g':
            out += kEra;
            break;
        default:
            out += element;
            break;
        }
    }
    return out;
}

std::u16string formatTime(const SystemTime& time, std::u16string_view picture)
{
    if (time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59 || time.wMilliseconds > 999) return {};

    picture = untilNul(picture);
    std::u16string out;
    for (size_t pos = 0; pos < picture.size();) {
        const size_t count = elementLength(picture, pos, u"Hhmst");
        const std::u16string_view element = picture.substr(pos, count);
        pos += count;
        const size_t digits = count >= 2 ? 2 : 1;
        switch (element[0]) {
        case u'\'':
            appendQuoted(out, element);
            break;
        case u'H':
            appendNumber(out, time.wHour, digits);
            break;
        case u'h':
            appendNumber(out, time.wHour % 12 == 0 ? 12 : time.wHour % 12, digits);
            break;
        case u'm':
            appendNumber(out, time.wMinute, digits);
            break;
        case u's':
            appendNumber(out, time.wSecond, digits);
            break;
        case u't': {
            const std::u16string_view marker = time.wHour < 12 ? kAm : kPm;
            out += count == 1 ? marker.substr(0, 1) : marker;
            break;
        }
        default:
            out += element;
            break;
        }
    }
    return out;
}

std::u16string userLongDatePicture()
{
    return u"dddd, MMMM d, yyyy";
}

std::u16string userTimePicture()
{
    return u"h:mm:ss tt";
}

}  // namespace ty
