#include "tools/orvdiag/report.h"

#include <io.h>
#include <windows.h>

#include <cstdio>
#include <string>

namespace orvdiag {

namespace {

std::FILE* report = stdout;

}  // namespace

void claimstandardoutput() {
    SetConsoleOutputCP(CP_UTF8);
    report = _fdopen(_dup(_fileno(stdout)), "w");
    _dup2(_fileno(stderr), _fileno(stdout));
}

bool print(std::string_view text) {
    return report && std::fwrite(text.data(), 1, text.size(), report) == text.size() && std::fflush(report) == 0 &&
           !std::ferror(report);
}

void complain(std::string_view line) {
    const std::string text = "orvdiag: " + std::string(line) + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace orvdiag
