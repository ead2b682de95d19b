#pragma once

#include <cstdint>

namespace orvsecutils {

/// The library's number for a Windows language identifier (primary language in the low 10 bits, sub-language above):
///
/// 0 traditional Chinese, 1 simplified Chinese, 2 Czech, 3 English, 4 French, 5 German, 6 Italian, 7 Japanese,
/// 8 Korean, 9 Polish, 10 Brazilian Portuguese, 11 Russian, 12 Spanish, 13 Turkish.
///
/// Every other language is 3, including other variants of Portuguese, and of Chinese except those of Taiwan and
/// mainland China.
int languagecode(std::uint16_t languageid);

}  // namespace orvsecutils
