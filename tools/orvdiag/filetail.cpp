#include "tools/orvdiag/filetail.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"

namespace orvdiag {

namespace {

constexpr std::int64_t blockbytes = 64 * 1024;

// Null when it cannot be had.
orvsecutils::filehandle open(const std::string& path) {
    return orvsecutils::filehandle(CreateFileW(orvsecutils::toutf16(path).c_str(), GENERIC_READ,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::int64_t size(HANDLE file) {
    LARGE_INTEGER bytes = {};
    GetFileSizeEx(file, &bytes);
    return bytes.QuadPart;
}

// At most one block.
std::string block(HANDLE file, std::int64_t from, std::int64_t to) {
    LARGE_INTEGER start = {};
    start.QuadPart = from;
    std::string text(static_cast<std::size_t>(std::min(to - from, blockbytes)), '\0');
    DWORD bytes = 0;
    if (!SetFilePointerEx(file, start, nullptr, FILE_BEGIN) ||
        !ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &bytes, nullptr)) {
        bytes = 0;
    }
    text.resize(bytes);
    return text;
}

std::string withoutreturns(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

}  // namespace

std::string lastlines(std::string_view text, std::size_t count, bool cut) {
    if (cut) {
        const std::size_t end = text.find('\n');
        text.remove_prefix(end == std::string_view::npos ? 0 : end + 1);
    }
    std::size_t start = text.size();
    for (std::size_t lines = 0; start > 0; --start) {
        // The end of the line in front of the one that starts here, unless that is the text's own end.
        if (text[start - 1] == '\n' && start < text.size() && ++lines == count) {
            break;
        }
    }
    return withoutreturns(std::string(text.substr(start)));
}

filetail::filetail(std::string pathIn) : path(std::move(pathIn)) {}

std::optional<std::string> filetail::last(std::size_t count) {
    const orvsecutils::filehandle file = open(path);
    if (!file) {
        return std::nullopt;
    }
    const std::int64_t end = size(file.get());
    const std::int64_t from = std::max<std::int64_t>(0, end - blockbytes);
    const std::string text = block(file.get(), from, end);
    position = from + static_cast<std::int64_t>(text.size());
    return lastlines(text, count, from > 0);
}

std::string filetail::added() {
    std::string text;
    if (const orvsecutils::filehandle file = open(path)) {
        const std::int64_t end = size(file.get());
        if (end < position) {
            position = 0;
        }
        text = block(file.get(), position, end);
        position += static_cast<std::int64_t>(text.size());
    }
    return withoutreturns(std::move(text));
}

}  // namespace orvdiag
