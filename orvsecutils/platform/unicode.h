#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// @file
/// Conversion between the library's UTF-8 and the system's UTF-16, and buffers for the latter.
namespace orvsecutils {

/// A zero-filled buffer of `units` UTF-16 code units for a system call. Throws `platformerror`: `invalidargument` if
/// the length is negative or exceeds the maximum of a string, `generalfailure` if there is no memory.
std::wstring utf16buffer(std::int64_t units);

/// `text` in UTF-16. Throws `std::range_error` ("bad conversion") unless it is well-formed UTF-8: truncated and
/// overlong sequences, encoded surrogates and values above U+10FFFF are rejected. Throws as utf16buffer() if there is
/// no memory.
std::wstring toutf16(std::string_view text);

/// `text` in UTF-8. Throws `std::range_error` ("bad conversion") for an unpaired surrogate.
std::string toutf8(std::wstring_view text);

}  // namespace orvsecutils
