#pragma once

#include <string>
#include <string_view>

namespace orvsecutils {

/// `text` with the line ends of a text file: a carriage return in front of every line feed.
std::string textfileform(std::string_view text);

/// Appends `text`, in textfileform(), to the file at the UTF-8 path `path`, creating it if it does not exist.
///
/// One write on a handle that can only append and denies nothing to other openers. On a local disk Windows then appends
/// lines of several threads and processes one after the other, whole; on a network drive that is not promised. False
/// when the file cannot be opened; a write that fails is not reported. Throws `std::range_error` ("bad conversion")
/// when `path` is not valid UTF-8. Any thread may call.
bool appendtofile(const std::string& path, std::string_view text);

}  // namespace orvsecutils
