// environment_test uilanguage CODE | filetimes
// Checks what the environment decides that the process was started in; status 0 when it is right.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "orvsecutils/platform/filetime.h"
#include "orvsecutils/platform/platform.h"

namespace {

FILETIME fileTime(std::int64_t seconds) {
    const std::int64_t ticks = (seconds + 11644473600) * 10000000;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// Seconds by which local time is ahead of UTC at that time.
int offset(const FILETIME& time) {
    SYSTEMTIME utc, local;
    FILETIME shifted;
    FileTimeToSystemTime(&time, &utc);
    SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
    SystemTimeToFileTime(&local, &shifted);
    const auto seconds = [](const FILETIME& of) {
        return (static_cast<std::int64_t>(of.dwHighDateTime) << 32 | of.dwLowDateTime) / 10000000;
    };
    return static_cast<int>(seconds(shifted) - seconds(time));
}

// A time comes out off by the difference between the offset of today and its own.
bool fileTimesAreOffByTheirSeason() {
    const std::int64_t january = 1705320000, july = 1721044800;
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    bool right = offset(fileTime(january)) != offset(fileTime(july));
    for (const std::int64_t time : {january, july}) {
        const std::int64_t expected = time + offset(now) - offset(fileTime(time));
        const std::int64_t actual = orvsecutils::calendartime(fileTime(time));
        std::printf("%lld: %lld, expected %lld\n", time, actual, expected);
        right = right && actual == expected;
    }
    return right && orvsecutils::calendartime({}) == -1;
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 3 && std::string(arguments[1]) == "uilanguage") {
        const int code = orvsecutils::currentplatform().uilanguage();
        std::printf("uilanguage: %d\n", code);
        return code == std::atoi(arguments[2]) ? 0 : 1;
    }
    return count == 2 && std::string(arguments[1]) == "filetimes" && fileTimesAreOffByTheirSeason() ? 0 : 1;
}
