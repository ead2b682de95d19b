#pragma once

#include <string>
#include <string_view>

#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Reserves standard output for print(): everything else that is written there from now on, such as the log's echo,
/// goes to standard error. Call once, before anything is written.
void reservestandardoutput();

/// Writes UTF-8 text to standard output: to a console as UTF-16, which is independent of its code page; to a file or a
/// pipe as UTF-8 with CR LF line ends. Returns false if this or an earlier call failed.
bool print(std::string_view text);

/// The result as indented JSON.
std::string jsontext(const json& data);

/// Writes one line about a failure to standard error, in the same encoding.
void printerror(std::string_view line);

}  // namespace orvdiag
