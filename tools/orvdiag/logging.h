#pragma once

#include "tools/orvdiag/commandline.h"

namespace orvdiag {

/// Tells whether logging is on for this user; switches it as the word says.
outcome switchlogging(const arguments& given);

}  // namespace orvdiag
