#pragma once

#include <string>
#include <vector>

namespace orvsecutils {

/// The parameter text of a process: the arguments in order, as they are, with a space in front of each unless the text
/// so far is empty. Nothing is quoted.
std::string joinarguments(const std::vector<std::string>& arguments);

}  // namespace orvsecutils
