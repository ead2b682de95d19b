// environment_test uilanguage CODE | filetimes
// Checks what the environment decides that the process was started in; status 0 when it is right.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/windows/filetime.h"

namespace {

// How far a time comes out from where it is.
std::int64_t error(std::int64_t seconds) {
    const std::int64_t ticks = (seconds + 11644473600) * 10000000;
    return orvsecutils::calendartime({static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)}) - seconds;
}

// A time comes out off by the difference between the offset of today and its own.
bool fileTimesAreOffByTheirSeason() {
    const std::int64_t january = error(1705320000), july = error(1721044800);
    TIME_ZONE_INFORMATION zone;
    const bool summer = GetTimeZoneInformation(&zone) == TIME_ZONE_ID_DAYLIGHT;
    std::printf("january: %lld, july: %lld\n", january, july);
    return january == (summer ? 3600 : 0) && july == january - 3600 && orvsecutils::calendartime({}) == -1;
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
