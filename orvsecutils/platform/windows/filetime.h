#pragma once

#include <windows.h>

#include <cstdint>

namespace orvsecutils {

/// Seconds since 1970-01-01 00:00 UTC, converted by way of local time as platform::filetimes() says; -1 for a time that
/// the C library's calendar does not cover.
std::int64_t calendartime(const FILETIME& time);

}  // namespace orvsecutils
