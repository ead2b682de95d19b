#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// @file
/// Conversion between the library's UTF-8 and the system's UTF-16, and buffers for the latter.
namespace orvsecutils {

/// A buffer of `units` UTF-16 units, all zero, for a system call to fill. Throws `platformerror`: `invalidargument` for
/// a length that is negative or more than a string can have, `generalfailure` when there is no memory for it.
std::wstring utf16buffer(std::int64_t units);

/// `text` in UTF-16. Throws `std::range_error` ("bad conversion") unless it is well-formed UTF-8: truncated and
/// overlong sequences, encoded surrogates and values above U+10FFFF are refused. Throws as utf16buffer() when there is
/// no memory.
std::wstring toutf16(std::string_view text);

/// `text` in UTF-8. Throws `std::range_error` ("bad conversion") for a surrogate without its other half.
std::string toutf8(std::wstring_view text);

}  // namespace orvsecutils
