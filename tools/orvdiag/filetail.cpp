#include "tools/orvdiag/filetail.h"

#include <windows.h>

#include <algorithm>
#include <tuple>

#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"

namespace orvdiag {

namespace {

// Large enough that the calls cost little beside the bytes.
constexpr std::int64_t blockbytes = 1024 * 1024;
// Kept of each end of a long line: more than any record that is read by people, little enough for any machine.
constexpr std::size_t keptbytes = 128 * 1024;
// How far the start of one line is looked for from its end. Beyond it, the file is damaged and not a long record.
constexpr std::int64_t longestsearch = 16 * blockbytes;
// How many bytes in front of the position are compared to detect a file that was emptied and written again. Records
// contain the time, so other records differ within a few of them.
constexpr std::int64_t comparedbytes = 1024;
constexpr char cutstart[] = "(the start of this line is left out) ";

std::uint64_t wide(DWORD high, DWORD low) {
    return static_cast<std::uint64_t>(high) << 32 | low;
}

}  // namespace

// The file while it is open.
struct filetail::opened {
    explicit opened(const std::wstring& path)
        : handle(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                             nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)),
          failure(handle ? 0 : GetLastError()) {
        BY_HANDLE_FILE_INFORMATION about = {};
        FILE_REMOTE_PROTOCOL_INFO remote = {};
        if (GetFileInformationByHandle(handle.get(), &about)) {
            size = static_cast<std::int64_t>(wide(about.nFileSizeHigh, about.nFileSizeLow));
            // Servers may number a file anew each time it is opened: there, only size and content tell files apart.
            if (!GetFileInformationByHandleEx(handle.get(), FileRemoteProtocolInfo, &remote, sizeof remote)) {
                // Without the number of the volume, which Wine does not tell while the file is renamed.
                id = wide(about.nFileIndexHigh, about.nFileIndexLow);
            }
        }
    }

    // The bytes from `from` up to `to`, but at most one block.
    std::string read(std::int64_t from, std::int64_t to) const {
        LARGE_INTEGER start = {};
        start.QuadPart = from;
        std::string bytes(static_cast<std::size_t>(std::clamp<std::int64_t>(to - from, 0, blockbytes)), '\0');
        DWORD count = 0;
        if (!SetFilePointerEx(handle.get(), start, nullptr, FILE_BEGIN) ||
            !ReadFile(handle.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr)) {
            count = 0;
        }
        bytes.resize(count);
        return bytes;
    }

    // The position of the first of the last `lines` lines, and whether that line starts there. A line feed at the end
    // of the file belongs to the last line.
    std::pair<std::int64_t, bool> startoflast(std::size_t lines) const {
        std::int64_t end = size;  // of the line whose start is looked for
        for (std::int64_t to = size; lines > 0 && to > 0;) {
            const std::int64_t from = std::max<std::int64_t>(0, to - blockbytes);
            const std::string block = read(from, to);
            for (std::size_t i = block.size(); i-- > 0;) {
                const std::int64_t at = from + static_cast<std::int64_t>(i);
                if (block[i] == '\n' && at + 1 < size) {
                    if (--lines == 0) {
                        return {at + 1, true};
                    }
                    end = at;
                }
            }
            if (end - from > longestsearch) {
                return {from, false};
            }
            to = from;
        }
        return {lines == 0 ? size : 0, true};
    }

    orvsecutils::filehandle handle;
    unsigned long failure;
    std::int64_t size = 0;
    std::uint64_t id = 0;
};

filetail::filetail(const std::string& pathIn) : path(orvsecutils::toutf16(pathIn)) {}

unsigned long filetail::begin(std::optional<std::size_t> lastlines) {
    const opened file(path);
    bool whole = true;
    if (file.failure == 0 && lastlines) {
        std::tie(position, whole) = file.startoflast(*lastlines);
    }
    line = whole ? "" : cutstart;
    before = file.read(std::max<std::int64_t>(0, position - comparedbytes), position);
    current = file.id;
    return file.failure;
}

bool filetail::next(const taker& take) {
    const opened file(path);
    // A file that exists but cannot be opened at the moment, for example while a scanner holds it, is still the same.
    const bool gone = file.failure == ERROR_FILE_NOT_FOUND || file.failure == ERROR_PATH_NOT_FOUND;
    if (file.failure != 0 && !gone) {
        return false;
    }
    if (gone || file.id != current || file.size < position ||
        file.read(position - static_cast<std::int64_t>(before.size()), position) != before) {
        rest(take);
        before.clear();
        position = 0;
        current = file.id;
    }
    const std::string block = file.read(position, file.size);
    split(block, take);
    position += static_cast<std::int64_t>(block.size());
    before.append(block, block.size() - std::min<std::size_t>(block.size(), comparedbytes));
    before.erase(0, before.size() - std::min<std::size_t>(before.size(), comparedbytes));
    return !block.empty();
}

void filetail::split(std::string_view block, const taker& take) {
    while (!block.empty()) {
        const std::size_t end = std::min(block.find('\n'), block.size());
        for (std::string_view part = block.substr(0, end); !part.empty();) {
            const std::size_t count = std::min(part.find_first_not_of('\0'), part.size());
            if (count > 0 && !line.empty()) {
                rest(take);
            }
            zeros += count;
            part.remove_prefix(count);
            const std::string_view text = part.substr(0, part.find('\0'));
            line += text;
            part.remove_prefix(text.size());
            if (line.size() > 4 * keptbytes) {  // not at twice the size already, so that short parts cost no copy each
                leftout += line.size() - 2 * keptbytes;
                line.erase(keptbytes, line.size() - 2 * keptbytes);
            }
        }
        if (end < block.size()) {
            finish(take);
        }
        block.remove_prefix(std::min(end + 1, block.size()));
    }
}

void filetail::rest(const taker& take) {
    if (!line.empty() || zeros > 0) {
        finish(take);
    }
}

void filetail::finish(const taker& take) {
    if (zeros > 0) {
        take("(" + std::to_string(zeros) + " zeros)");
    }
    line.erase(line.find_last_not_of('\r') + 1);
    if (leftout > 0) {
        line.insert(keptbytes, " (cut: " + std::to_string(leftout) + " bytes are left out here) ");
    }
    if (!line.empty() || zeros == 0) {
        take(std::string_view(line).substr(line.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0));
    }
    line.clear();
    leftout = 0;
    zeros = 0;
}

}  // namespace orvdiag
