#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvdiag {

/// What the headers of a DLL say.
struct image {
    bool for32bit;        ///< whether a 32-bit process can load it
    bool managed;         ///< whether it is an assembly
    std::uint64_t bytes;  ///< how far its headers and sections reach at least: a shorter file is cut short
};

/// Reads the headers at the start of `file`; none when it is not a DLL.
std::optional<image> readimage(std::string_view file);

/// The compiler that `file` names as its own, as in "12-posix" or "13.2.0"; empty when it names none.
std::string gccversion(std::string_view file);

/// Whether two compilers are of the same major version and, if both tell, of the same thread model.
bool samegcc(const std::string& a, const std::string& b);

/// The version resource of the file at `path`, as in "1.0.0.0"; empty for a file without one.
std::string fileversion(const std::wstring& path);

}  // namespace orvdiag
