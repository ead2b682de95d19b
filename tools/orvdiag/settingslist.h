#pragma once

#include <string>
#include <vector>

#include "tools/orvdiag/commandresult.h"
#include "tools/orvdiag/storedvalues.h"

namespace orvdiag {

/// Whether a setting of this name is probably a secret, such as a password, a token or a key.
bool issecretname(const std::string& name);

/// The values as text and as JSON. For a report, names include the group and secrets are hidden.
commandresult listing(const std::vector<storedvalue>& rows, bool forreport);

/// The values of one group.
commandresult settingsof(const std::string& group);

}  // namespace orvdiag
