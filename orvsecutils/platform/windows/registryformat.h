#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvsecutils/settings/settingsdef.h"

/// @file
/// How settings are stored in the registry: the key of a group, and the data format of each type.
///
/// The registry stores any bytes under any type. So these functions trust only the number of bytes that the system
/// returned: they read nothing beyond `bytes`, and reject data that does not match its type. The returned strings point
/// into `data`.
namespace orvsecutils {

/// The registry key of a settings group, below its hive: root, company, group and name, separated by backslashes. An
/// empty group or name is omitted together with its backslash. `appid` is not used.
std::string grouppath(const settingsdef& definition);

/// The number in a REG_DWORD. The data must have exactly four bytes.
std::optional<std::uint32_t> decodedword(const void* data, std::size_t bytes);

/// The string in a REG_SZ or REG_EXPAND_SZ, up to its first zero. The data must be whole code units and end in a zero.
std::optional<std::wstring_view> decodetext(const wchar_t* data, std::size_t bytes);

/// The strings in a REG_MULTI_SZ, up to the first empty one. The data must be whole code units and end in two zeros.
std::optional<std::vector<std::wstring_view>> decodelist(const wchar_t* data, std::size_t bytes);

}  // namespace orvsecutils
