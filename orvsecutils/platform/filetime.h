#pragma once

#include <windows.h>

#include <cstdint>
#include <ctime>

namespace orvsecutils {

/// The C library's form of local calendar fields; whether daylight saving holds is left to it. Milliseconds are
/// dropped.
std::tm brokendowntime(const SYSTEMTIME& local);

/// Seconds since 1970-01-01 00:00 UTC, by way of local time as platform::filetimes says; -1 for a time before that.
std::int64_t calendartime(const FILETIME& time);

}  // namespace orvsecutils
