#pragma once

#include <string>
#include <vector>

#include "tools/orvdiag/commandresult.h"
#include "tools/orvdiag/storedvalues.h"

namespace orvdiag {

/// The values as text and as JSON, without secrets. For a report, names include the group.
commandresult listing(const std::vector<storedvalue>& rows, bool forreport);

/// The values of one group.
commandresult settingsof(const std::string& group);

}  // namespace orvdiag
