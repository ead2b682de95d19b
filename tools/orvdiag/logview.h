#pragma once

#include "tools/orvdiag/commandline.h"

namespace orvdiag {

/// Prints the log file's path and last lines; with the option goes on with new ones for as long as somebody reads them.
outcome showlog(const arguments& given);

}  // namespace orvdiag
