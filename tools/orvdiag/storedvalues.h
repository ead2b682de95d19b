#pragma once

#include <string>
#include <vector>

#include "orvsecutils/settings/settingsdef.h"
#include "tools/orvdiag/commandresult.h"

namespace orvdiag {

/// Where a value can be stored; `machine32` is the 32-bit view, which the library does not read.
enum class registrylocation { user, machine, machine32 };

/// The kind of a group that the library cannot read as a whole; no kind of a value.
inline constexpr char groupkind[] = "group";
/// The kind of a number (REG_DWORD).
inline constexpr char numberkind[] = "number";

/// A value in the registry, whether or not the library can read it, or a group that it cannot read.
struct storedvalue {
    std::string group;
    std::string name;
    registrylocation location;
    std::string kind;      ///< number, text, list, group, or the registry type if the library does not read it
    json value;            ///< a number, a string, or a list of strings; null if the library ignores the value
    std::string remark;    ///< why the library does not use it; empty if it does
    bool ignored = false;  ///< the library ignores it: of another kind, malformed, or its name is too long
    bool badtext = false;  ///< name or string is not valid UTF-16, so the library cannot read the whole group
};

/// "user's" or "machine's", the latter for both views.
std::string whose(registrylocation location);

/// The definition of the library's group of that name.
orvsecutils::settingsdef librarygroup(const std::string& name);

/// Whether the group's key can be opened in any of the locations.
bool groupexists(const std::string& group);

/// The values of a group in all locations, sorted by name, then location.
std::vector<storedvalue> storedvalues(const std::string& group);

/// The values of all of the library's groups, sorted by group, name and location.
std::vector<storedvalue> allstoredvalues();

}  // namespace orvdiag
