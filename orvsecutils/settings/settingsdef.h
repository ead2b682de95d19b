#pragma once

#include <cstdint>
#include <string>

namespace orvsecutils {

/// Whose store a group is read from or written to. Any value but `machine` means the user's.
enum class settingsscope : std::int32_t {
    user = 0,
    machine = 1,
};

/// Says where a settings group lives. All texts are UTF-8.
class settingsdef {
public:
    settingsdef(std::string company, std::string appid, std::string group, std::string name, std::string root);
    virtual ~settingsdef() = default;
    settingsdef(const settingsdef&) = default;
    settingsdef& operator=(const settingsdef&) = default;

    /// `root`, or the platform's default root when it is empty.
    std::string getroot() const;

    std::string company;  ///< the maker's folder, directly under the root
    std::string appid;  ///< the application in reverse-domain form, for stores keyed by that; Windows has no use for it
    std::string group;  ///< grouping key under `company`; empty for none
    std::string name;   ///< name of the group under `group`; empty for none
    std::string root;   ///< where to start instead of the platform's default root; empty for that
};

}  // namespace orvsecutils
