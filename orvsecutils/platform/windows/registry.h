#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "orvsecutils/settings/setting.h"
#include "orvsecutils/settings/settingsdef.h"

/// @file
/// Settings groups in the registry. Each function implements an operation of `platform`; the contract is in platform.h.
namespace orvsecutils {

/// A value that the library does not use.
struct unusedvalue {
    /// Why not.
    enum class cause {
        type,      ///< the library reads no values of this type
        data,      ///< the data does not match the type
        text,      ///< name or text is not valid UTF-16
        longname,  ///< the name has the maximum length, for which the library has no room
    };

    std::wstring name;   ///< as it is stored
    unsigned long type;  ///< REG_SZ or another registry type
    cause why;
};

/// The values of an open key. A value whose name or text is not valid UTF-16 throws `std::range_error`; if `unused` is
/// given, that value and all others that are left out are added to it instead.
settingsmap readvalues(HKEY key, std::vector<unusedvalue>* unused = nullptr);

/// platform::readsettings()
settingsmap readgroup(settingsscope scope, const settingsdef& definition);

/// platform::writesettings()
bool writegroup(settingsscope scope, const settingsdef& definition, const settingsmap& values);

/// platform::settingsexist()
bool groupexists(settingsscope scope, const settingsdef& definition);

}  // namespace orvsecutils
