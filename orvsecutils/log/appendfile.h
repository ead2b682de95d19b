#pragma once

#include <string>
#include <string_view>

namespace orvsecutils {

/// The text as a text file holds it: a carriage return in front of every line feed.
std::string textfileform(std::string_view text);

/// Adds `text`, in textfileform(), to the end of the file at the UTF-8 path `path`, making the file if need be.
///
/// One write on a handle that can do nothing but append and that keeps nobody else out, so that on Windows lines of
/// several threads and processes come one after the other, whole. False when the file cannot be opened; a write that
/// fails is not reported. Throws `std::range_error` when `path` is not valid UTF-8. Any thread may call.
bool appendtofile(const std::string& path, std::string_view text);

}  // namespace orvsecutils
