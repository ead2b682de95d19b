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

// The system's offset at that moment. Asking costs microseconds and the answer changes only on a full minute, so it is
// asked once a minute. Minute and offset share one word, so that no thread sees one without the other.
int cachedutcoffset(std::int64_t ticks) {
    constexpr std::int64_t span = 1 << 12;  // offsets lie within a day either way
    static std::atomic<std::int64_t> cached{-1};
    const std::int64_t minute = ticks / ticksperminute;
    const std::int64_t known = cached.load(std::memory_order_relaxed);
    if (known >= 0 && known / span == minute) {
        return static_cast<int>(known % span - span / 2);
    }
    const int offset = utcoffset(ticks, nullptr);
    cached.store(minute * span + offset + span / 2, std::memory_order_relaxed);
    return offset;
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
    const FILETIME moved = tofiletime(ticks + offset * ticksperminute);
    SYSTEMTIME fields = {};
    FileTimeToSystemTime(&moved, &fields);
    return {fields.wYear, fields.wMonth, fields.wDay, fields.wHour, fields.wMinute, fields.wSecond, offset};
}

walltime currentwalltime() {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    const std::int64_t ticks = toticks(now);
    return atoffset(ticks, cachedutcoffset(ticks));
}

}  // namespace orvsecutils
