#pragma once

#include "tools/orvdiag/commandline.h"

namespace orvdiag {

/// Prints every fact of the platform's; as JSON with the option.
outcome showfacts(const arguments& given);

}  // namespace orvdiag
