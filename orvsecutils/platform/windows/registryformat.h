#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvsecutils/settings/settingsdef.h"

/// @file
/// How settings look in the registry: the key of a group, and the form of each type's data.
///
/// The registry stores any bytes under any type. So only the number of bytes that came back is trusted: nothing is read
/// beyond `bytes`, and data that does not have the form of its type is refused. Texts that are returned point into
/// `data`.
namespace orvsecutils {

/// The registry key of a settings group, below its hive: root, company, group and name, separated by backslashes. An
/// empty group or name is left out with its backslash. `appid` is not used.
std::string grouppath(const settingsdef& definition);

/// The number of a REG_DWORD: exactly four bytes.
std::optional<std::uint32_t> decodedword(const void* data, std::size_t bytes);

/// The text of a REG_SZ or REG_EXPAND_SZ, up to its first zero. The data must be whole units, the last of them zero.
std::optional<std::wstring_view> decodetext(const wchar_t* data, std::size_t bytes);

/// The texts of a REG_MULTI_SZ, up to the first empty one. The data must be whole units, the last two of them zero.
std::optional<std::vector<std::wstring_view>> decodelist(const wchar_t* data, std::size_t bytes);

}  // namespace orvsecutils
