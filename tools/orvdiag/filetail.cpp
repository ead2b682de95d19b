#include "tools/orvdiag/filetail.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"

namespace orvdiag {

using orvsecutils::filehandle;

namespace {

constexpr std::int64_t blockbytes = 1024 * 1024;
constexpr wchar_t linksuffix[] = L".follow-";

filehandle open(const std::wstring& path) {
    return filehandle(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Reads from `from` up to `to`, but at most one block.
std::string block(const filehandle& file, std::int64_t from, std::int64_t to) {
    LARGE_INTEGER start = {};
    start.QuadPart = from;
    std::string text(static_cast<std::size_t>(std::clamp<std::int64_t>(to - from, 0, blockbytes)), '\0');
    DWORD bytes = 0;
    if (!SetFilePointerEx(file.get(), start, nullptr, FILE_BEGIN) ||
        !ReadFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &bytes, nullptr)) {
        bytes = 0;
    }
    text.resize(bytes);
    return text;
}

BY_HANDLE_FILE_INFORMATION information(const filehandle& file) {
    BY_HANDLE_FILE_INFORMATION result = {};
    GetFileInformationByHandle(file.get(), &result);
    return result;
}

std::uint64_t wide(DWORD high, DWORD low) {
    return static_cast<std::uint64_t>(high) << 32 | low;
}

// The position of the first of the last `lines` lines. A line feed at the end of the file belongs to the last line.
std::int64_t startoflast(const filehandle& file, std::int64_t size, std::size_t lines) {
    std::size_t ends = 0;
    for (std::int64_t to = size; to > 0;) {
        const std::int64_t from = std::max<std::int64_t>(0, to - blockbytes);
        const std::string text = block(file, from, to);
        for (std::size_t i = text.size(); i-- > 0;) {
            const std::int64_t at = from + static_cast<std::int64_t>(i);
            if (text[i] == '\n' && at + 1 < size && ++ends == lines) {
                return at + 1;
            }
        }
        to = from;
    }
    return 0;
}

}  // namespace

filetail::filetail(const std::string& pathIn, bool followingIn)
    : path(orvsecutils::toutf16(pathIn)), following(followingIn) {
    if (following) {
        linkname = path + linksuffix + std::to_wstring(GetCurrentProcessId());
        // Remove links that killed processes left behind: they would keep the content of a log after its deletion.
        const std::wstring folder = path.substr(0, path.find_last_of(L'\\') + 1);
        WIN32_FIND_DATAW entry;
        const orvsecutils::findhandle search(FindFirstFileW((path + linksuffix + L"*").c_str(), &entry));
        for (BOOL found = static_cast<bool>(search); found; found = FindNextFileW(search.get(), &entry)) {
            const std::wstring name = entry.cFileName;
            const DWORD process = std::wcstoul(name.substr(name.find_last_of(L'-') + 1).c_str(), nullptr, 10);
            if (!orvsecutils::kernelhandle(OpenProcess(SYNCHRONIZE, FALSE, process))) {
                DeleteFileW((folder + name).c_str());
            }
        }
    }
}

filetail::~filetail() {
    unlink();
}

// Creates the second name. Returns the system's code if the file does not exist. Any other failure, for example on a
// file system without hard links, is no obstacle: the file is then read under its own name.
unsigned long filetail::link() {
    if (!following) {
        return 0;
    }
    DeleteFileW(linkname.c_str());
    linked = CreateHardLinkW(linkname.c_str(), path.c_str(), nullptr);
    const DWORD failure = linked ? 0 : GetLastError();
    return failure == ERROR_FILE_NOT_FOUND || failure == ERROR_PATH_NOT_FOUND ? failure : 0;
}

void filetail::unlink() {
    if (linked) {
        DeleteFileW(linkname.c_str());
        linked = false;
    }
}

unsigned long filetail::begin(std::optional<std::size_t> lastlines) {
    if (const unsigned long failure = link()) {
        return failure;
    }
    const filehandle file = open(linked ? linkname : path);
    if (!file) {
        return GetLastError();
    }
    const BY_HANDLE_FILE_INFORMATION about = information(file);
    current = {about.dwVolumeSerialNumber, wide(about.nFileIndexHigh, about.nFileIndexLow)};
    const auto size = static_cast<std::int64_t>(wide(about.nFileSizeHigh, about.nFileSizeLow));
    position = !lastlines ? 0 : *lastlines == 0 ? size : startoflast(file, size, *lastlines);
    return 0;
}

std::string filetail::lines(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    text.insert(0, unfinished);
    const std::size_t end = text.rfind('\n') + 1;  // 0 without one
    unfinished = text.substr(end);
    text.resize(end);
    return text;
}

// Ends the last, incomplete line of a file that is gone, because what is read next is not its continuation.
std::string filetail::finished() {
    const std::string last = rest();
    return last.empty() ? last : last + "\n";
}

std::string filetail::next() {
    if (!current && begin(std::nullopt) != 0) {
        return std::string();
    }
    const auto same = [this](const BY_HANDLE_FILE_INFORMATION& about) {
        return current->volume == about.dwVolumeSerialNumber &&
               current->file == wide(about.nFileIndexHigh, about.nFileIndexLow);
    };
    {
        const filehandle file = open(linked ? linkname : path);
        const BY_HANDLE_FILE_INFORMATION about = information(file);
        if (file && same(about)) {
            const auto size = static_cast<std::int64_t>(wide(about.nFileSizeHigh, about.nFileSizeLow));
            if (size < position) {  // emptied
                position = 0;
                return finished();
            }
            for (std::string text; !(text = block(file, position, size)).empty();) {
                position += static_cast<std::int64_t>(text.size());
                text = lines(std::move(text));
                if (!text.empty()) {  // empty if a line is longer than a block
                    return text;
                }
            }
        }
    }
    const filehandle now = open(path);
    if (now && same(information(now))) {
        leaving = false;
        return std::string();
    }
    // Read the old file once more before leaving it: a program that opened it earlier may write to it only now.
    if (linked && !std::exchange(leaving, true)) {
        return std::string();
    }
    unlink();
    leaving = false;
    current.reset();
    return finished();
}

std::string filetail::rest() {
    return std::exchange(unfinished, std::string());
}

}  // namespace orvdiag
