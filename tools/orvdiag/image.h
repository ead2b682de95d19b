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
    bool fits;            ///< whether a process of this program's architecture can load it
    bool managed;         ///< whether it is an assembly
    std::uint64_t bytes;  ///< minimum size of the file according to its headers; less means truncated
    std::string content;  ///< what signing and stripping leave: all but time, checksum and signature
    bool issigned;        ///< whether it has a signature; nobody checks here whether that is valid
};

/// Reads the headers of a DLL with the content `file`; none if it is not a DLL.
std::optional<image> readimage(std::string_view file);

/// The SHA-256 of the bytes, in hexadecimal; empty if the system cannot compute it.
std::string sha256(std::string_view bytes);

/// The file version in the version resource of a file with that content, for example "1.0.0.0"; empty if it has none.
std::string fileversion(std::string_view file);

}  // namespace orvdiag
