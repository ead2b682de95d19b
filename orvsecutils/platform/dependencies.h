#pragma once

#include <string>

namespace orvsecutils {

/// The dependencies of a service as one text: the names of a list that an empty name ends, in UTF-8, with a zero
/// character between each two. Empty for null.
std::string joindependencies(const wchar_t* list);

}  // namespace orvsecutils
