#pragma once
// The "Date" field of a message as a UTC SYSTEMTIME and its zone text, by three patterns tried in
// turn and kept as they have always stood: the second can never match a real date, and the
// third, having no zone in practice, reads its time as local.
#include <string>
#include <string_view>

#include "foundation/win_time.h"

namespace mcl {

struct MailDate {
    ty::SystemTime time;  // UTC; all zero when no pattern matched
    std::u16string zone;  // "+0200" after the first pattern, the sign alone or nothing after the others
};

// Reads a field value such as "Mon, 1 Feb 2010 10:00:00 +0200"; a leading "Date:" is dropped.
MailDate parseMailDate(std::u16string_view raw);

}  // namespace mcl
