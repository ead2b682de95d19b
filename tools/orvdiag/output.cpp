#include "tools/orvdiag/output.h"

#include <io.h>
#include <windows.h>

#include <cstdio>

#include "orvsecutils/log/appendfile.h"

namespace orvdiag {

namespace {

HANDLE standardoutput = nullptr;
bool failed = false;

bool write(HANDLE handle, std::string_view text) {
    DWORD mode = 0;
    DWORD written = 0;
    if (GetConsoleMode(handle, &mode)) {
        std::wstring wide(text.size(), L'\0');
        const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                                              static_cast<int>(wide.size()));
        // Older consoles accept only about 30,000 units per call.
        for (DWORD done = 0; done < static_cast<DWORD>(units); done += written) {
            const DWORD part = std::min<DWORD>(static_cast<DWORD>(units) - done, 8192);
            if (!WriteConsoleW(handle, wide.data() + done, part, &written, nullptr) || written == 0) {
                return false;
            }
        }
        return true;
    }
    const std::string bytes = orvsecutils::withcrlf(text);
    for (std::size_t done = 0; done < bytes.size(); done += written) {
        if (!WriteFile(handle, bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &written, nullptr) ||
            written == 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

void reservestandardoutput() {
    // A duplicate, because redirecting the C library's descriptor below closes the original handle.
    const HANDLE process = GetCurrentProcess();
    if (!DuplicateHandle(process, GetStdHandle(STD_OUTPUT_HANDLE), process, &standardoutput, 0, FALSE,
                         DUPLICATE_SAME_ACCESS)) {
        failed = true;
    }
    _dup2(_fileno(stderr), _fileno(stdout));
}

bool print(std::string_view text) {
    failed = failed || !write(standardoutput, text);
    return !failed;
}

std::string jsontext(const json& data) {
    return data.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

void printerror(std::string_view line) {
    write(GetStdHandle(STD_ERROR_HANDLE), "orvdiag: " + std::string(line) + "\n");
}

}  // namespace orvdiag
