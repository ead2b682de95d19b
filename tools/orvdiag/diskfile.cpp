#include "tools/orvdiag/diskfile.h"

#include <windows.h>

#include <algorithm>

#include "login/hosting/LibraryFile.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"

namespace orvdiag {

namespace {

constexpr LONGLONG mostbytes = 1 << 28;  // no file that is of interest here is larger

orvsecutils::filehandle open(const std::wstring& path) {
    return orvsecutils::filehandle(CreateFileW(path.c_str(), GENERIC_READ,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                               OPEN_EXISTING, 0, nullptr));
}

}  // namespace

std::wstring fullpath(const std::string& pathIn) {
    const std::wstring path = orvsecutils::toutf16(pathIn);
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    while (!full.empty() && full.back() == L'\\') {
        full.pop_back();
    }
    return full;
}

std::optional<std::string> readfile(const std::wstring& path) {
    const orvsecutils::filehandle file = open(path);
    LARGE_INTEGER size = {};
    if (!file || !GetFileSizeEx(file.get(), &size)) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(std::min<LONGLONG>(size.QuadPart, mostbytes)), '\0');
    DWORD read = 0;
    if (!ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr)) {
        return std::nullopt;
    }
    bytes.resize(read);
    return bytes;
}

bool samefile(const std::wstring& a, const std::wstring& b) {
    BY_HANDLE_FILE_INFORMATION left = {};
    BY_HANDLE_FILE_INFORMATION right = {};
    return GetFileInformationByHandle(open(a).get(), &left) && GetFileInformationByHandle(open(b).get(), &right) &&
           left.dwVolumeSerialNumber == right.dwVolumeSerialNumber && left.nFileIndexHigh == right.nFileIndexHigh &&
           left.nFileIndexLow == right.nFileIndexLow;
}

bool isfrominternet(const std::wstring& path) {
    // 3 is the internet, 4 a site that the user restricted.
    const std::string mark = readfile(path + L":Zone.Identifier").value_or("");
    const std::size_t zone = mark.find("ZoneId=");
    return zone != std::string::npos && (mark.compare(zone + 7, 1, "3") == 0 || mark.compare(zone + 7, 1, "4") == 0);
}

bool isonnetwork(const std::wstring& path) {
    wchar_t volume[32768];
    return OrvelLoginClientCLR::withoutLongPathPrefix(path).rfind(L"\\\\", 0) == 0 ||
           (GetVolumePathNameW(path.c_str(), volume, 32768) && GetDriveTypeW(volume) == DRIVE_REMOTE);
}

}  // namespace orvdiag
