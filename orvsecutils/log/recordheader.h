#pragma once

#include <array>
#include <string>
#include <string_view>

#include "orvsecutils/log/walltime.h"

/// @file
/// The text in front of a record's message.
namespace orvsecutils {

/// The word for a level.
const char* levelword(int level);

/// Date, time and offset from UTC, as in "11/13/2026 23:06:40+0100".
std::array<char, 24> timetext(const walltime& time);

/// Time, level word and executable's name, with a comma after each.
std::string recordheader(const walltime& time, int level, std::string_view executable);

}  // namespace orvsecutils
