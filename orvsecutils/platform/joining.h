#pragma once

#include <string>
#include <vector>

/// @file
/// Lists that the platform passes on as one string.
namespace orvsecutils {

/// Joins command-line arguments with spaces, in order and unchanged. Nothing is quoted. No space is added while the
/// result is still empty.
std::string joinarguments(const std::vector<std::string>& arguments);

/// Joins the dependencies of a service to one UTF-8 string, with a zero character between names. `list` is a sequence
/// of zero-terminated names that ends with an empty one, or null for no dependencies. Throws `std::range_error` ("bad
/// conversion") if a name is not valid UTF-16.
std::string joindependencies(const wchar_t* list);

}  // namespace orvsecutils
