#include "tools/orvdiag/logincheck.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "login/Handshake.h"
#include "login/loginRuntimeException.h"
#include "orvsecutils/platform/unicode.h"
#include "tools/orvdiag/assembly.h"
#include "tools/orvdiag/report.h"

namespace orvdiag {

using orvsecutils::toutf16;
using orvsecutils::toutf8;

namespace {

struct part {
    const char* file;      // below the library's folder
    const char* assembly;  // its simple name; null for a native library
};
constexpr part managedpart = {"OrvelLoginClientCLR.dll", "OrvelLoginClientCLR"};
constexpr part parts[] = {
    {"orvellogin.dll", nullptr},
    {"libgcc_s_dw2-1.dll", nullptr},
    {"libstdc++-6.dll", nullptr},
    {"libwinpthread-1.dll", nullptr},
    managedpart,
    {"OrvelLoginManagerClient\\OrvelLoginClient.dll", "OrvelLoginClient"},
    {"OrvelLoginManagerClient\\loginManagerUtils.dll", "loginManagerUtils"},
};

struct finding {
    bool good;
    std::string text;
};

template <class Numbers>
std::string dotted(const Numbers& numbers) {
    std::string text;
    for (const unsigned number : numbers) {
        text += (text.empty() ? "" : ".") + std::to_string(number);
    }
    return text;
}

// Of the version resource; empty for a file without one.
std::string fileversion(const std::wstring& path) {
    DWORD ignored = 0;
    std::vector<char> resource(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    void* found = nullptr;
    UINT bytes = 0;
    if (resource.empty() ||
        !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()) ||
        !VerQueryValueW(resource.data(), L"\\", &found, &bytes) || bytes < sizeof(VS_FIXEDFILEINFO)) {
        return std::string();
    }
    const auto& info = *static_cast<const VS_FIXEDFILEINFO*>(found);
    return dotted(std::vector<unsigned>{HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS),
                                        HIWORD(info.dwFileVersionLS), LOWORD(info.dwFileVersionLS)});
}

finding look(const part& wanted, const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) {
        const bool there = GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
        return {false, there ? "is there but cannot be read" : "is missing"};
    }
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::optional<image> found = readimage(bytes);
    if (!found) {
        return {false, "is damaged, or no library at all"};
    }
    if (found->sixtyfourbit) {
        return {false, "is for 64-bit programs; this library serves 32-bit ones"};
    }
    const std::string resource = fileversion(path);
    const std::string versions = resource.empty() ? "" : "file version " + resource;
    if (!wanted.assembly) {
        return {true, versions};
    }
    if (!found->managed) {
        return {false, "is no managed assembly"};
    }
    if (found->name != wanted.assembly) {
        return {false, "holds another assembly, " + found->name};
    }
    return {true, "assembly version " + dotted(found->version) + (versions.empty() ? "" : ", ") + versions};
}

// The way in which the library itself starts the runtime: by entering the managed part.
finding enter(const std::wstring& library, const std::wstring& managedpart) {
    try {
        OrvelLoginClientCLR::enterManagedPart(library, managedpart);
    } catch (const loginRuntimeException& failed) {
        return {false, failed.what()};
    }
    return {true, "starts, and runs the managed part"};
}

void show(const char* what, const finding& found) {
    constexpr std::size_t width = 48;
    const std::string name = what;
    print((found.good ? "ok    " : "FAIL  ") + name +
          (found.text.empty() ? "" : std::string(width - std::min(name.size(), width - 2), ' ') + found.text) + "\n");
}

}  // namespace

outcome checklogin(const arguments& given) {
    const std::wstring folder = std::filesystem::absolute(toutf16(given.words.front())).lexically_normal().native();
    print("Folder: " + toutf8(folder) + "\n");
    if (!std::filesystem::is_directory(folder)) {
        print("FAIL  there is no such folder\n");
        return {1, std::nullopt};
    }
    int failures = 0;
    finding runtime = {false, "not tried, for want of the managed part"};
    for (const part& wanted : parts) {
        const std::wstring path = folder + L"\\" + toutf16(wanted.file);
        const finding found = look(wanted, path);
        show(wanted.file, found);
        failures += !found.good;
        if (found.good && wanted.file == managedpart.file) {
            runtime = enter(folder + L"\\orvellogin.dll", path);
        }
    }
    show(".NET Framework runtime v4.0.30319", runtime);
    failures += !runtime.good;
    print(failures == 0 ? "Everything is in its place.\n"
                        : "Not everything is in its place; see the lines with FAIL.\n");
    return {failures == 0 ? 0 : 1, std::to_string(failures)};
}

}  // namespace orvdiag
