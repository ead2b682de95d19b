#pragma once

#include <string>
#include <vector>

#include "orvsecutils/settings/setting.h"
#include "orvsecutils/settings/settingsdef.h"

/// @file
/// Settings groups in the registry. Each function implements an operation of `platform`; the contract stands there.
namespace orvsecutils {

/// platform::readsettings(). With `malformed`, a value whose name or text is not valid UTF-16 does not throw: its name
/// is added there, and the other values are read all the same. For a tool that tells which value is malformed.
settingsmap readgroup(settingsscope scope, const settingsdef& definition,
                      std::vector<std::wstring>* malformed = nullptr);

/// platform::writesettings()
bool writegroup(settingsscope scope, const settingsdef& definition, const settingsmap& values);

/// platform::settingsexist()
bool groupexists(settingsscope scope, const settingsdef& definition);

}  // namespace orvsecutils
