#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <tuple>

#include "orvsecutils/log/recordheader.h"
#include "orvsecutils/log/walltime.h"

using namespace orvsecutils;

namespace {

std::string text(const walltime& time) {
    const auto characters = timetext(time);
    return {characters.data(), characters.size()};
}

TEST(RecordHeader, WritesEveryFieldAtItsWidth) {
    std::stringbuf header;
    putheader(header, {2026, 11, 13, 23, 6, 40, 60}, 1, "host.exe");
    EXPECT_EQ(header.str(), "11/13/2026 23:06:40+0100,warn,host.exe,");
    EXPECT_EQ(text({2027, 1, 2, 3, 4, 5, 0}), "01/02/2027 03:04:05+0000");
    EXPECT_EQ(text({2027, 1, 2, 3, 4, 5, -30}), "01/02/2027 03:04:05-0030");
}

std::int64_t ticks(WORD month, WORD day, WORD hour, WORD minute, WORD second = 0) {
    const SYSTEMTIME utc = {2026, month, 0, day, hour, minute, second, 999};
    FILETIME time = {};
    SystemTimeToFileTime(&utc, &time);
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

TEST(LocalTime, FollowsTheZoneThroughTheYear) {
    // Bias counts minutes behind UTC; a transition is the fifth, that is last, or n-th Sunday of a month.
    const TIME_ZONE_INFORMATION berlin = {-60, L"", {0, 10, 0, 5, 3, 0, 0, 0}, 0, L"", {0, 3, 0, 5, 2, 0, 0, 0}, -60};
    const TIME_ZONE_INFORMATION adelaide = {-570, L"", {0, 4, 0, 1, 3, 0, 0, 0}, 0, L"", {0, 10, 0, 1, 2, 0, 0, 0},
                                            -60};
    const TIME_ZONE_INFORMATION stjohns = {210, L"", {0, 11, 0, 1, 2, 0, 0, 0}, 0, L"", {0, 3, 0, 2, 2, 0, 0, 0}, -60};
    const TIME_ZONE_INFORMATION kathmandu = {-345, L"", {}, 0, L"", {}, 0};
    const struct {
        const TIME_ZONE_INFORMATION& zone;
        std::int64_t moment;
        const char* text;
    } cases[] = {{berlin, ticks(3, 29, 0, 59, 59), "03/29/2026 01:59:59+0100"},
                 {berlin, ticks(10, 25, 1, 0), "10/25/2026 02:00:00+0100"},
                 {adelaide, ticks(1, 1, 0, 0), "01/01/2026 10:30:00+1030"},
                 {stjohns, ticks(1, 1, 0, 0), "12/31/2025 20:30:00-0330"},
                 {kathmandu, ticks(12, 31, 18, 15), "01/01/2027 00:00:00+0545"}};
    for (const auto& row : cases) {
        EXPECT_EQ(text(atoffset(row.moment, utcoffset(row.moment, &row.zone))), row.text);
    }
}

TEST(LocalTime, HasTheSystemsCalendar) {
    constexpr std::int64_t day = 24LL * 60 * 60 * 10'000'000;
    for (std::int64_t moment = day / 2 - 1; moment < 1000 * 365 * day; moment += day) {
        const FILETIME time = {static_cast<DWORD>(moment), static_cast<DWORD>(moment >> 32)};
        SYSTEMTIME fields = {};
        FileTimeToSystemTime(&time, &fields);
        const walltime own = atoffset(moment, 0);
        ASSERT_EQ(std::tuple(own.year, own.month, own.day, own.hour, own.minute, own.second),
                  std::tuple(fields.wYear, fields.wMonth, fields.wDay, 11, 59, 59));
    }
}

TEST(LocalTime, IsTheSystems) {
    const auto ofsystem = [] {
        SYSTEMTIME time = {};
        GetLocalTime(&time);
        return std::tuple(time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond);
    };
    const auto before = ofsystem();
    currentwalltime();
    const walltime now = currentwalltime();  // by the offset that the first call has asked for
    FILETIME moment = {};
    GetSystemTimeAsFileTime(&moment);
    const auto fields = std::tuple(now.year, now.month, now.day, now.hour, now.minute, now.second);
    EXPECT_LE(before, fields);
    EXPECT_LE(fields, ofsystem());
    const auto ticks = static_cast<std::int64_t>(moment.dwHighDateTime) << 32 | moment.dwLowDateTime;
    EXPECT_EQ(now.offset, utcoffset(ticks, nullptr));
}

}  // namespace
