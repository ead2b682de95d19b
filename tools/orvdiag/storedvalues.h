#pragma once

#include <string>
#include <vector>

#include "orvsecutils/settings/settingsdef.h"
#include "tools/orvdiag/answer.h"

namespace orvdiag {

/// Where values of the library's can lie. The library reads the first two.
enum class store { user, machine, machine32 };

/// A value as it lies in the registry, whether or not the library can read it.
struct storedvalue {
    std::string group;
    std::string name;
    store place;
    std::string kind;      ///< "number", "text", "list", or the registry's type where the library reads none of these
    json value;            ///< a number, a text, or a list of texts; null when the kind has no such form
    bool ignored = false;  ///< the library passes over it: of another kind, or not in the form of its kind
    bool badtext = false;  ///< name or text is not valid UTF-16, so that the library cannot read any of the group
};

/// "user's" or "machine's", the latter for both views.
std::string whose(store place);

/// Where the library's group of that name lies.
orvsecutils::settingsdef librarygroup(const std::string& name);

/// Whether the group's key is there in any of the stores.
bool groupexists(const std::string& group);

/// The values of a group in all stores, by name, then store.
std::vector<storedvalue> storedvalues(const std::string& group);

/// The values of all groups of the library's, by group, name and store.
std::vector<storedvalue> allstoredvalues();

}  // namespace orvdiag
