#include "tools/orvdiag/image.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "login/hosting/LibraryFile.h"
#include "orvsecutils/platform/unicode.h"

namespace orvdiag {

namespace {

// Copies a structure from an offset; false if it extends beyond the end of the file.
template <class Part>
bool take(std::string_view file, std::size_t offset, Part& part) {
    if (offset > file.size() || file.size() - offset < sizeof part) {
        return false;
    }
    std::memcpy(&part, file.data() + offset, sizeof part);
    return true;
}

}  // namespace

std::optional<image> readimage(std::string_view file) {
    IMAGE_DOS_HEADER dos;
    IMAGE_NT_HEADERS32 headers;
    IMAGE_NT_HEADERS64 headers64;  // differ from the others from the middle of the optional header on
    if (!take(file, 0, dos) || dos.e_magic != IMAGE_DOS_SIGNATURE ||
        !take(file, static_cast<std::size_t>(dos.e_lfanew), headers) || headers.Signature != IMAGE_NT_SIGNATURE ||
        (headers.FileHeader.Characteristics & IMAGE_FILE_DLL) == 0) {
        return std::nullopt;
    }
    const bool fileis64bit = headers.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR64_MAGIC;
    if (fileis64bit && !take(file, static_cast<std::size_t>(dos.e_lfanew), headers64)) {
        return std::nullopt;
    }
    const IMAGE_DATA_DIRECTORY* directories =
        fileis64bit ? headers64.OptionalHeader.DataDirectory : headers.OptionalHeader.DataDirectory;
    image result = {};
    result.managed = directories[IMAGE_DIRECTORY_ENTRY_COM_DESCRIPTOR].VirtualAddress != 0;
    // An assembly for any processor has the headers of a 32-bit file.
    result.loadable = fileis64bit
                          ? is64bit && headers.FileHeader.Machine == IMAGE_FILE_MACHINE_AMD64
                          : (!is64bit || result.managed) && headers.FileHeader.Machine == IMAGE_FILE_MACHINE_I386;
    std::size_t offset = static_cast<std::size_t>(dos.e_lfanew) + offsetof(IMAGE_NT_HEADERS32, OptionalHeader) +
                         headers.FileHeader.SizeOfOptionalHeader;
    const std::size_t end = offset + headers.FileHeader.NumberOfSections * sizeof(IMAGE_SECTION_HEADER);
    result.bytes = end;
    for (IMAGE_SECTION_HEADER section; offset < end && take(file, offset, section); offset += sizeof section) {
        result.bytes = std::max<std::uint64_t>(
            result.bytes, static_cast<std::uint64_t>(section.PointerToRawData) + section.SizeOfRawData);
    }
    return result;
}

std::string gccversion(std::string_view file) {
    // Each object file leaves its compiler's name in the DLL. Those of the C runtime's start-up code only name the
    // release, as in "12 20220819". The greatest text is one that also names the thread model, as in "12-posix".
    constexpr std::string_view mark = "GCC: (";
    std::string version;
    for (std::size_t at = file.find(mark); at != std::string_view::npos; at = file.find(mark, at + 1)) {
        const std::string_view name = file.substr(at, std::min<std::size_t>(file.find('\0', at) - at, 80));
        const std::size_t start = name.find(") ");
        if (start != std::string_view::npos) {
            version = std::max(version, std::string(name.substr(start + 2)));
        }
    }
    return version.substr(0, version.find(' '));
}

bool samegcc(const std::string& a, const std::string& b) {
    const auto major = [](const std::string& version) { return version.substr(0, version.find_first_of(".-")); };
    const auto model = [](const std::string& version) {
        return version.substr(std::min(version.find('-'), version.size()));
    };
    return major(a) == major(b) && (model(a) == model(b) || model(a).empty() || model(b).empty());
}

std::string fileversion(const std::wstring& path) {
    return orvsecutils::toutf8(OrvelLoginClientCLR::fileVersion(path));
}

}  // namespace orvdiag
