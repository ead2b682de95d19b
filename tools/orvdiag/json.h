#pragma once

#include <string>
#include <string_view>

namespace orvdiag {

/// UTF-8 text as a JSON string, with its quotes.
std::string jsonstring(std::string_view text);

}  // namespace orvdiag
