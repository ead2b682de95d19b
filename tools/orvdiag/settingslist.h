#pragma once

#include <string>
#include <vector>

#include "tools/orvdiag/answer.h"
#include "tools/orvdiag/storedvalues.h"

namespace orvdiag {

/// Whether a value of that name may be a secret: a password, a token, a key and the like.
bool namesasecret(const std::string& name);

/// The values as lines and as data; with their groups, and without secrets, for a report.
answer listing(const std::vector<storedvalue>& rows, bool forreport);

/// The values of one group.
answer settingsof(const std::string& group);

}  // namespace orvdiag
