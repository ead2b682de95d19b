#pragma once

#include <string>

#include "orvsecutils/settings/setting.h"
#include "orvsecutils/settings/settingsdef.h"
#include "tools/orvdiag/commandline.h"

namespace orvdiag {

/// Where the library's group of that name lies.
orvsecutils::settingsdef librarygroup(const std::string& name);

/// The values of a group as lines: name, kind, value, scope.
std::string listing(const orvsecutils::settingsmap& user, const orvsecutils::settingsmap& machine);

/// Prints the group that the word names.
outcome showsettings(const arguments& given);

}  // namespace orvdiag
