#pragma once
// SYSTEMTIME values for tests, written in calendar order.
#include <cstdint>

#include "foundation/win_time.h"

namespace test_support {

inline ty::SystemTime makeTime(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                               int milliseconds = 0, int dayOfWeek = 0)
{
    ty::SystemTime time;
    time.wYear = static_cast<uint16_t>(year);
    time.wMonth = static_cast<uint16_t>(month);
    time.wDayOfWeek = static_cast<uint16_t>(dayOfWeek);
    time.wDay = static_cast<uint16_t>(day);
    time.wHour = static_cast<uint16_t>(hour);
    time.wMinute = static_cast<uint16_t>(minute);
    time.wSecond = static_cast<uint16_t>(second);
    time.wMilliseconds = static_cast<uint16_t>(milliseconds);
    return time;
}

}  // namespace test_support
