#pragma once

#include <cstdint>

// The tag of TIME_ZONE_INFORMATION, declared to keep windows.h out of this header.
struct _TIME_ZONE_INFORMATION;

/// @file
/// Local time with its offset from UTC, for the header of a record.
namespace orvsecutils {

/// The local date and time of a moment.
struct walltime {
    int year;    ///< with all four digits
    int month;   ///< 1 to 12
    int day;     ///< 1 to 31
    int hour;    ///< 0 to 23
    int minute;  ///< 0 to 59
    int second;  ///< 0 to 59
    int offset;  ///< minutes that local time is ahead of UTC
};

/// The current local time. A change of the system's time zone is noticed within a minute. Any thread may call.
walltime currentwalltime();

/// Minutes that local time is ahead of UTC at the moment `ticks`, in 100-nanosecond ticks of UTC as in FILETIME. A null
/// `zone` means the system's time zone. Returns 0 for a moment that the system's calendar does not cover.
int utcoffset(std::int64_t ticks, const _TIME_ZONE_INFORMATION* zone);

/// The date and time at the moment `ticks`, as above, in a zone that is `offset` minutes ahead of UTC.
walltime atoffset(std::int64_t ticks, int offset);

}  // namespace orvsecutils
