#include "tools/orvdiag/logview.h"

#include <windows.h>

#include "orvsecutils/log/logfile.h"
#include "orvsecutils/platform/platform.h"
#include "tools/orvdiag/filetail.h"
#include "tools/orvdiag/report.h"

namespace orvdiag {

outcome showlog(const arguments& given) {
    constexpr std::size_t shownlines = 20;
    constexpr DWORD pausemilliseconds = 250;
    const std::string path = orvsecutils::logfilepath(orvsecutils::currentplatform());
    print("Log file: " + path + "\n");
    filetail tail(path);
    const std::optional<std::string> lines = tail.last(shownlines);
    print(lines ? *lines : "It is not there yet, or cannot be read. orvdiag logging tells whether logging is on.\n");
    // An empty text tells whether the reader is still there only once there is something to say; that will do.
    while (given.option && print(tail.added())) {
        Sleep(pausemilliseconds);
    }
    return {0, lines ? std::optional<std::string>(path) : std::nullopt};
}

}  // namespace orvdiag
