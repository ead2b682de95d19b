#pragma once

#include "orvsecutils/settings/setting.h"
#include "orvsecutils/settings/settingsdef.h"

/// Settings groups in the registry; what each does says the operation of `platform` that it serves.
namespace orvsecutils {

settingsmap readgroup(settingsscope scope, const settingsdef& definition);
bool writegroup(settingsscope scope, const settingsdef& definition, const settingsmap& values);
bool groupexists(settingsscope scope, const settingsdef& definition);

}  // namespace orvsecutils
