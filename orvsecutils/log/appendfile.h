#pragma once

#include <string>
#include <string_view>

namespace orvsecutils {

/// `text` with the line ends of a text file: a carriage return in front of every line feed.
std::string withcrlf(std::string_view text);

/// Appends `text`, converted by withcrlf(), to the file at the UTF-8 path `path`, creating it if it does not exist.
///
/// One write on a handle that can only append and shares everything with other openers. On a local disk Windows then
/// never mixes the lines of several threads and processes; on a network drive that is not guaranteed. Returns false if
/// the file cannot be opened; a failed write is not reported. Throws `std::range_error` ("bad conversion") if `path` is
/// not valid UTF-8. Any thread may call.
bool appendtofile(const std::string& path, std::string_view text);

}  // namespace orvsecutils
