#pragma once

namespace orvsecutils {

/// A moment as the clock on the user's wall shows it.
struct walltime {
    int year;
    int month;  ///< 1 to 12
    int day;
    int hour;
    int minute;
    int second;
    int offset;  ///< minutes that local time is ahead of UTC
};

/// Now. A time zone that the user has changed is noticed within a minute. Any thread may call.
walltime currentwalltime();

}  // namespace orvsecutils
