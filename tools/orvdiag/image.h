#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvdiag {

/// Whether this is the 64-bit program. Either one checks files of its own bitness.
constexpr bool is64bit = sizeof(void*) == 8;

/// What the headers of a DLL say.
struct image {
    bool loadable;        ///< whether a process of this program's bitness can load it
    bool managed;         ///< whether it is an assembly
    std::uint64_t bytes;  ///< minimum size of the file according to its headers and sections; less means truncated
};

/// Reads the headers of a DLL with the content `file`; none if it is not a DLL.
std::optional<image> readimage(std::string_view file);

/// The version of GCC that built a DLL with the content `file`, for example "12-posix" or "13.2.0"; empty if unknown.
std::string gccversion(std::string_view file);

/// Whether two versions of GCC have the same major version and, if both name it, the same thread model.
bool samegcc(const std::string& a, const std::string& b);

/// The file version in the version resource of the file at `path`, for example "1.0.0.0"; empty if it has none.
std::string fileversion(const std::wstring& path);

}  // namespace orvdiag
