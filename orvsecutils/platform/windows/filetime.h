#pragma once

#include <windows.h>

#include <cstdint>

namespace orvsecutils {

/// Seconds since 1970-01-01 00:00 UTC, converted through local time as platform::filetimes() describes; -1 for a time
/// that the C library cannot represent.
std::int64_t calendartime(const FILETIME& time);

}  // namespace orvsecutils
