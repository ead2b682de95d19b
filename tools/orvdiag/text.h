#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvdiag {

/// The text in UTF-8. A lone surrogate becomes U+FFFD, because malformed text must be shown, not rejected.
std::string toutf8lossy(std::wstring_view text);

/// The bytes as well-formed UTF-8; malformed parts become U+FFFD.
std::string toutf8lossy(std::string_view bytes);

/// The text on one line: control characters become escapes such as "\u000a".
std::string oneline(std::string_view text);

/// The text in quotes, escaped as in JSON, so that spaces at its ends are visible.
std::string quoted(const std::string& text);

/// Whether two texts are equal when the case of ASCII letters is ignored.
bool equalsignorecase(std::string_view a, std::string_view b);

/// The system's message for one of its error codes, and the code.
std::string systemmessage(unsigned long code);

/// The rows as lines, each column as wide as its longest text.
std::string table(const std::vector<std::vector<std::string>>& rows);

}  // namespace orvdiag
