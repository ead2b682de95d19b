#pragma once

#include <string>

#include "orvsecutils/settings/settingsdef.h"

namespace orvsecutils {

/// Registry key of a settings group, below its hive: root, company, group and name with backslashes between them. An
/// empty group or name is left out with its backslash. `appid` takes no part.
std::string grouppath(const settingsdef& definition);

}  // namespace orvsecutils
