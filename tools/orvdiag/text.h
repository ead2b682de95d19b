#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvdiag {

/// The text in UTF-8. A lone surrogate becomes U+FFFD: what is broken must be shown, not refused.
std::string readable(std::wstring_view text);

/// Bytes as well-formed UTF-8, with U+FFFD for what is not.
std::string readable(std::string_view bytes);

/// The text on one line: control characters as "\u000a".
std::string oneline(std::string_view text);

/// The text in quotes, escaped as in JSON, so that spaces at its ends are seen.
std::string quoted(const std::string& text);

/// Whether two texts differ at most in the case of ASCII letters.
bool samebutcase(std::string_view a, std::string_view b);

/// The system's words for one of its error codes, and the code.
std::string systemwords(unsigned long code);

/// The rows as lines, each column as wide as its longest text.
std::string table(const std::vector<std::vector<std::string>>& rows);

}  // namespace orvdiag
