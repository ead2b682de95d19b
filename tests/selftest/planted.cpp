// A test that fails, crashes, hangs or skips itself, as its argument says.

#include <windows.h>

#include <cstdio>
#include <string>

int main(int, char** arguments) {
    const std::string how = arguments[1];
    std::puts("planted <output> & more");
    std::fflush(stdout);
    if (how == "hang") {
        Sleep(INFINITE);
    } else if (how == "crash") {
        RaiseException(STATUS_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    } else if (how == "skip") {
        std::puts("file:1: Skipped\nneeds a reason\n\n[  SKIPPED ] planted");
    }
    return how == "fail" ? 3 : 0;
}
