#pragma once

#include <cstdint>
#include <string>

/// @file
/// Where settings groups are kept.
namespace orvsecutils {

/// The part of the registry that a group is read from or written to. Any number but 1 counts as `user`.
enum class settingsscope : std::int32_t {
    user = 0,     ///< HKEY_CURRENT_USER
    machine = 1,  ///< HKEY_LOCAL_MACHINE
};

/// Says where a settings group is kept. All strings are UTF-8.
class settingsdef {
public:
    /// Each argument becomes the field of its name.
    settingsdef(std::string company, std::string appid, std::string group, std::string name, std::string root);
    virtual ~settingsdef() = default;
    settingsdef(const settingsdef&) = default;             ///< copies the fields
    settingsdef& operator=(const settingsdef&) = default;  ///< copies the fields

    /// `root`, or platform::defaultsettingsroot() when `root` is empty.
    std::string getroot() const;

    std::string company;  ///< the company's key, directly under the root
    std::string appid;    ///< reverse-domain identifier, for stores that are keyed by such; not used on Windows
    std::string group;    ///< key under `company`; empty for none
    std::string name;     ///< name of the group, a key under `group`; empty for none
    std::string root;     ///< key to start from instead of the platform's default root; empty for the default
};

}  // namespace orvsecutils
