#pragma once

#include <array>
#include <streambuf>
#include <string_view>

#include "orvsecutils/log/walltime.h"

/// @file
/// The string in front of a record's message.
namespace orvsecutils {

/// Date, time and offset from UTC, as in "11/13/2026 23:06:40+0100".
std::array<char, 24> timetext(const walltime& time);

/// Writes time, level and name of the executable to `out`, each followed by a comma. Level 0, 1 and 2 are written as
/// "info", "warn" and "error", any other as "unknown". Throws what `out` throws, for example `std::bad_alloc` from a
/// string buffer; the header is then incomplete.
void putheader(std::streambuf& out, const walltime& time, int level, std::string_view executable);

}  // namespace orvsecutils
