#include "orvsecutils/log/appendfile.h"

#include <windows.h>

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"

namespace orvsecutils {

std::string withcrlf(std::string_view text) {
    std::string result;
    result.reserve(text.size() + 1);  // one allocation: most strings have one line feed
    for (const char character : text) {
        if (character == '\n') {
            result += '\r';
        }
        result += character;
    }
    return result;
}

bool appendtofile(const std::string& path, std::string_view text) {
    // FILE_APPEND_DATA without FILE_WRITE_DATA makes the system find the end of the file as part of the write, so lines
    // of several writers never mix.
    const filehandle file(CreateFileW(toutf16(path).c_str(), FILE_APPEND_DATA,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return false;
    }
    const std::string bytes = withcrlf(text);
    DWORD written = 0;
    WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    return true;
}

}  // namespace orvsecutils
