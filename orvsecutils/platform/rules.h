#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orvsecutils/platform/wmi.h"

/// @file
/// The parts of the platform's operations that need no system call, and can therefore be tested alone.
namespace orvsecutils {

/// The library's number for a Windows language identifier (primary language in the low 10 bits, sub-language above):
///
/// 0 traditional Chinese, 1 simplified Chinese, 2 Czech, 3 English, 4 French, 5 German, 6 Italian, 7 Japanese,
/// 8 Korean, 9 Polish, 10 Brazilian Portuguese, 11 Russian, 12 Spanish, 13 Turkish.
///
/// Every other language is 3, including other variants of Portuguese, and of Chinese except those of Taiwan and
/// mainland China.
int languagecode(std::uint16_t languageid);

/// Joins command-line arguments with spaces, in order and unchanged. Nothing is quoted. No space is added while the
/// result is still empty.
std::string joinarguments(const std::vector<std::string>& arguments);

/// Joins the dependencies of a service to one UTF-8 text, with a zero character between names. `list` is a sequence of
/// zero-terminated names that ends with an empty one, or null for no dependencies. Throws `std::range_error` ("bad
/// conversion") if a name is not valid UTF-16.
std::string joindependencies(const wchar_t* list);

/// The MAC address of the last IP-enabled network adapter that WMI lists, among those that have one. Empty if there is
/// none, or if `connection` is null. Throws as wmi::query() does.
std::string adapteraddress(const wmi* connection);

}  // namespace orvsecutils
