#pragma once

#include <string>
#include <vector>

#include "orvsecutils/settings/setting.h"
#include "orvsecutils/settings/settingsdef.h"

/// @file
/// Settings groups in the registry. Each function implements an operation of `platform`; the contract is in platform.h.
namespace orvsecutils {

/// platform::readsettings(). If `malformed` is given, a value whose name or text is not valid UTF-16 does not throw:
/// its name is added to `malformed`, and the other values are still read.
settingsmap readgroup(settingsscope scope, const settingsdef& definition,
                      std::vector<std::wstring>* malformed = nullptr);

/// platform::writesettings()
bool writegroup(settingsscope scope, const settingsdef& definition, const settingsmap& values);

/// platform::settingsexist()
bool groupexists(settingsscope scope, const settingsdef& definition);

}  // namespace orvsecutils
