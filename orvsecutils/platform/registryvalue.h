#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// Registry data taken from raw bytes. The registry stores whatever it is given, under whatever type, so only the
/// number of bytes that came back is believed: nothing is read beyond `bytes`, and data that does not have the form of
/// its type is refused. Texts that come back point into `data`.
namespace orvsecutils {

/// The number of a REG_DWORD: exactly four bytes.
std::optional<std::uint32_t> decodedword(const void* data, std::size_t bytes);

/// The text of a REG_SZ or REG_EXPAND_SZ: whole units, the last of them zero. It ends at the first zero.
std::optional<std::wstring_view> decodetext(const wchar_t* data, std::size_t bytes);

/// The texts of a REG_MULTI_SZ: whole units, the last two of them zero. The list ends at the first empty text.
std::optional<std::vector<std::wstring_view>> decodelist(const wchar_t* data, std::size_t bytes);

}  // namespace orvsecutils
