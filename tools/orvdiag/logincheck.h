#pragma once

#include "tools/orvdiag/commandline.h"

namespace orvdiag {

/// Prints what is there of the login library in the folder that the word names, and whether the runtime starts.
outcome checklogin(const arguments& given);

}  // namespace orvdiag
