#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvsecutils {

/// A buffer of that many UTF-16 units, all zero, for a system call to fill. Throws `platformerror`: `invalidargument`
/// for a length that is negative or more than a string can have, `generalfailure` when there is no memory for it.
std::wstring utf16buffer(std::int64_t units);

/// The same text in UTF-16. Throws `std::range_error` ("bad conversion") unless `text` is well-formed UTF-8: what is
/// cut short, overlong, an encoded surrogate or above U+10FFFF is refused. Buffers as in utf16buffer().
std::wstring toutf16(std::string_view text);

/// The same text in UTF-8. Throws `std::range_error` ("bad conversion") for a surrogate without its other half.
std::string toutf8(std::wstring_view text);

}  // namespace orvsecutils
