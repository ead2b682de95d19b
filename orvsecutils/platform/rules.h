#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orvsecutils/platform/wmi.h"

/// @file
/// What the platform's operations decide without asking the system: functions of their arguments alone.
namespace orvsecutils {

/// The library's number for a Windows language identifier (primary language in the low 10 bits, sub-language above):
///
/// 0 traditional Chinese, 1 simplified Chinese, 2 Czech, 3 English, 4 French, 5 German, 6 Italian, 7 Japanese,
/// 8 Korean, 9 Polish, 10 Brazilian Portuguese, 11 Russian, 12 Spanish, 13 Turkish.
///
/// Every other language is 3. So are other variants of Portuguese, and Chinese anywhere but in Taiwan and on the
/// mainland.
int languagecode(std::uint16_t languageid);

/// The command-line parameters of a process as one text: the arguments in order and unchanged, each preceded by a space
/// unless the text so far is empty. Nothing is quoted.
std::string joinarguments(const std::vector<std::string>& arguments);

/// The dependencies of a service as one UTF-8 text, with a zero character between names. `list` is a sequence of
/// zero-terminated names that ends with an empty one, or null for no dependencies. Throws `std::range_error` ("bad
/// conversion") for a name that is not valid UTF-16.
std::string joindependencies(const wchar_t* list);

/// The MAC address of the IP-enabled network adapter that WMI lists last, among those that have one. Empty when there
/// is none, and when `connection` is null. Throws as wmi::query() does.
std::string adapteraddress(const wmi* connection);

}  // namespace orvsecutils
