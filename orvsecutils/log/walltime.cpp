#include "orvsecutils/log/walltime.h"

#include <windows.h>

#include <atomic>
#include <chrono>

namespace orvsecutils {

namespace {

constexpr std::int64_t ticksperminute = 60 * 10'000'000LL;

std::int64_t toticks(const FILETIME& time) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

FILETIME tofiletime(std::int64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// The system's offset from UTC in that minute, counted since 1601. It can only change on a full minute, and the system
// call takes microseconds, so each minute's offset is cached. Minute and offset share one atomic value, so that no
// thread combines those of two writers.
int cachedutcoffset(std::int32_t minute) {
    constexpr std::int64_t span = 1 << 12;  // offsets are less than a day (1440 minutes) in either direction
    static std::atomic<std::int64_t> cached{-1};
    const std::int64_t known = cached.load(std::memory_order_relaxed);
    if (known >= 0 && known / span == minute) {
        return static_cast<int>(known % span - span / 2);
    }
    const int offset = utcoffset(minute * ticksperminute, nullptr);
    cached.store(minute * span + offset + span / 2, std::memory_order_relaxed);
    return offset;
}

// The calendar fields of a moment, given as minutes since 1601 and the ticks in that minute. Not the system's calendar
// functions, which would be most of the cost of a record that is dropped: they use 64-bit divisions, but minutes since
// 1601 fit into 32 bits, and the standard's calendar counts days in 32 bits.
walltime atoffset(std::int32_t minute, std::int32_t ticks, int offset) {
    constexpr std::chrono::sys_days begin = std::chrono::year(1601) / 1 / 1;
    const int local = minute + offset;
    const std::chrono::year_month_day date = begin + std::chrono::days(local / (24 * 60));
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
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
    // Via calendar fields, because FileTimeToLocalFileTime applies today's offset to every date.
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
