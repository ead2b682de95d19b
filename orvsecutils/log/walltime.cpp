#include "orvsecutils/log/walltime.h"

#include <windows.h>

#include <atomic>

namespace orvsecutils {

namespace {

constexpr std::int64_t ticksperminute = 60 * 10'000'000LL;

std::int64_t toticks(const FILETIME& time) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

FILETIME tofiletime(std::int64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// The system's offset in that minute of file time. Asking costs microseconds and the answer changes only on a full
// minute, so it is asked once a minute. Minute and offset share one word, so that no thread sees one without the other.
int cachedutcoffset(std::int32_t minute) {
    constexpr std::int64_t span = 1 << 12;  // offsets lie within a day either way
    static std::atomic<std::int64_t> cached{-1};
    const std::int64_t known = cached.load(std::memory_order_relaxed);
    if (known >= 0 && known / span == minute) {
        return static_cast<int>(known % span - span / 2);
    }
    const int offset = utcoffset(minute * ticksperminute, nullptr);
    cached.store(minute * span + offset + span / 2, std::memory_order_relaxed);
    return offset;
}

// A moment by the minute of file time and the ticks in it. Most of the cost of a dropped record would be the system's
// calendar, which works with 64 bits; minutes since 1601 fit 32.
walltime atoffset(std::int32_t minute, std::int32_t ticks, int offset) {
    const int local = minute + offset;
    // Years are counted from March, so that a leap day is the last of its year; 1600-03-01 begins a cycle of 400 years.
    constexpr int daysfrommarch1600 = 306;
    const int days = local / (24 * 60) + daysfrommarch1600;
    const int cycle = days / 146097;
    const int day = days % 146097;
    const int year = (day - day / 1460 + day / 36524 - day / 146096) / 365;
    const int dayofyear = day - (365 * year + year / 4 - year / 100);
    const int month = (5 * dayofyear + 2) / 153;  // 0 for March; from there, five months have 153 days again and again
    return {1600 + 400 * cycle + year + (month < 10 ? 0 : 1),
            month < 10 ? month + 3 : month - 9,
            dayofyear - (153 * month + 2) / 5 + 1,
            local / 60 % 24,
            local % 60,
            ticks / 10'000'000,
            offset};
}

}  // namespace

int utcoffset(std::int64_t ticks, const TIME_ZONE_INFORMATION* zone) {
    const std::int64_t minute = ticks / ticksperminute * ticksperminute;
    const FILETIME time = tofiletime(minute);
    SYSTEMTIME utc = {};
    SYSTEMTIME local = {};
    FILETIME moved = {};
    // By way of calendar fields: FileTimeToLocalFileTime applies today's offset to every date.
    if (!FileTimeToSystemTime(&time, &utc) || !SystemTimeToTzSpecificLocalTime(zone, &utc, &local) ||
        !SystemTimeToFileTime(&local, &moved)) {
        return 0;
    }
    return static_cast<int>((toticks(moved) - minute) / ticksperminute);
}

walltime atoffset(std::int64_t ticks, int offset) {
    const std::int64_t minute = ticks / ticksperminute;
    return atoffset(static_cast<std::int32_t>(minute), static_cast<std::int32_t>(ticks - minute * ticksperminute),
                    offset);
}

walltime currentwalltime() {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    const std::int64_t ticks = toticks(now);
    return atoffset(ticks, cachedutcoffset(static_cast<std::int32_t>(ticks / ticksperminute)));
}

}  // namespace orvsecutils
