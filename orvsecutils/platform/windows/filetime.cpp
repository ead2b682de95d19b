#include "orvsecutils/platform/windows/filetime.h"

#include <ctime>

namespace orvsecutils {

namespace {

// The C library decides whether daylight saving time applies. Milliseconds are dropped.
std::tm brokendowntime(const SYSTEMTIME& local) {
    std::tm fields = {};
    fields.tm_year = local.wYear - 1900;
    fields.tm_mon = local.wMonth - 1;
    fields.tm_mday = local.wDay;
    fields.tm_hour = local.wHour;
    fields.tm_min = local.wMinute;
    fields.tm_sec = local.wSecond;
    fields.tm_isdst = -1;
    return fields;
}

}  // namespace

// Not a plain subtraction of the two epochs: the contract of platform::filetimes() includes the error that the detour
// through local time makes in the other half of the daylight-saving year.
std::int64_t calendartime(const FILETIME& time) {
    FILETIME local = {};
    SYSTEMTIME fields = {};
    if (!FileTimeToLocalFileTime(&time, &local) || !FileTimeToSystemTime(&local, &fields)) {
        return -1;
    }
    std::tm broken = brokendowntime(fields);
    return _mktime64(&broken);
}

}  // namespace orvsecutils
