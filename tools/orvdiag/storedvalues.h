#pragma once

#include <string>
#include <vector>

#include "orvsecutils/settings/settingsdef.h"
#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Where a value can be stored; `machine32` is the 32-bit view, which the library does not read.
enum class registrylocation { user, machine, machine32 };

/// A value in the registry, whether or not the library can read it.
struct storedvalue {
    std::string group;
    std::string name;
    registrylocation location;
    std::string kind;      ///< "number", "text", "list", or the registry type if the library does not read it
    json value;            ///< a number, a text, or a list of texts; null for other kinds and malformed data
    bool ignored = false;  ///< the library ignores it: of another kind, or malformed
    bool badtext = false;  ///< name or text is not valid UTF-16, so the library cannot read the whole group
};

/// "user's" or "machine's", the latter for both views.
std::string whose(registrylocation location);

/// The definition of the library's group of that name.
orvsecutils::settingsdef librarygroup(const std::string& name);

/// Whether the group's key exists in any of the locations.
bool groupexists(const std::string& group);

/// The values of a group in all locations, sorted by name, then location.
std::vector<storedvalue> storedvalues(const std::string& group);

/// The values of all of the library's groups, sorted by group, name and location.
std::vector<storedvalue> allstoredvalues();

}  // namespace orvdiag
