#pragma once

namespace tarvo::platform {

/// A date and time of the local clock.
struct LocalTime {
    int year;        ///< such as 2026
    int month;       ///< 1 to 12
    int day;         ///< 1 to 31
    int hour;        ///< 0 to 23
    int minute;      ///< 0 to 59
    int second;      ///< 0 to 60
    int millisecond; ///< 0 to 999
};

/// The current one.
LocalTime localTime();

} // namespace tarvo::platform
