#pragma once

#include <array>
#include <streambuf>
#include <string_view>

#include "orvsecutils/log/walltime.h"

/// @file
/// The text in front of a record's message.
namespace orvsecutils {

/// Date, time and offset from UTC, as in "11/13/2026 23:06:40+0100".
std::array<char, 24> timetext(const walltime& time);

/// Writes time, level word and executable's name to `out`, each followed by a comma. The word is "info", "warn" or
/// "error" for level 0, 1 or 2, and "unknown" for any other. Throws what `out` throws: a string buffer
/// `std::bad_alloc`, and then the header is not whole.
void putheader(std::streambuf& out, const walltime& time, int level, std::string_view executable);

}  // namespace orvsecutils
