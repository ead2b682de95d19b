#pragma once

#include <string>
#include <string_view>
#include <vector>

/// @file
/// What the console and the report show of strings that anybody may have written: well-formed UTF-8 without control
/// characters, which could move the cursor, change colours or begin a line of their own.
namespace orvdiag {

/// The string in UTF-8. Malformed parts become U+FFFD, because malformed strings must be shown, not rejected.
/// @{
std::string toutf8lossy(std::wstring_view text);
std::string toutf8lossy(std::string_view bytes);
/// @}

/// The string on one line: control characters except tabs become escapes such as "\u000a".
std::string oneline(std::string_view text);

/// The string on one line, in quotes, so that spaces at its ends are visible.
std::string quoted(const std::string& text);

/// Whether two strings are equal when the case of ASCII letters is ignored.
bool equalsignorecase(std::string_view a, std::string_view b);

/// The system's message for one of its error codes, and the code.
std::string systemmessage(unsigned long code);

/// The rows as lines, each column as wide as its longest string.
std::string table(const std::vector<std::vector<std::string>>& rows);

}  // namespace orvdiag
