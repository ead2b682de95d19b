#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "orvsecutils/settings/setting.h"
#include "orvsecutils/settings/settingsdef.h"

namespace orvsecutils {

/// A named group of values. Reads the whole group once, when it is made, from the scopes `user` and `machine`; answers
/// from memory; takes changes in memory; writes the user's values back on request.
///
/// The user's value wins over the machine's of the same name, whatever the kinds: a getter that asks for another kind
/// fails and does not look further. Names are compared byte by byte, so upper and lower case differ. Texts and names
/// are UTF-8.
///
/// For one thread at a time.
class settings {
public:
    /// Reads the group that `definition` places. A scope that lacks it counts as empty, and a value that cannot be read
    /// as absent. Throws `std::range_error` when a name or a text of the group is not valid UTF-16, or the definition
    /// not valid UTF-8.
    explicit settings(const settingsdef& definition);

    /// Reads this library's own group of that name.
    explicit settings(const std::string& name);

    virtual ~settings() = default;
    settings(const settings&) = default;
    settings& operator=(const settings&) = default;

    /// The value that wins, or null. It stays alive until a setter replaces it or this object ends.
    const setting* find(std::string_view name) const;

    /// @name Typed lookups
    /// False, and the output untouched, when there is no such value or the one that wins is of another kind.
    /// @{
    bool getint(std::string_view name, std::uint32_t& value) const;
    bool getint(std::string_view name, std::int32_t& value) const;  ///< the same 32 bits, read as signed
    bool getbool(std::string_view name, bool& value) const;         ///< an integer; true unless it is 0
    bool getstring(std::string_view name, std::string& value) const;
    bool getmultistring(std::string_view name, std::vector<std::string>& value) const;
    /// @}

    /// @name Changes in memory
    /// Replaces the user's value of that name, of whatever kind. The store learns of it by save().
    /// @{
    void setint(const std::string& name, std::uint32_t value);
    void setbool(const std::string& name, bool value);  ///< an integer, 1 or 0
    void setstring(const std::string& name, const std::string& value);
    /// @}

    /// Writes every value of the user's, also those that were only read; removes nothing from the store. False when any
    /// could not be written; the others are written all the same. Lists are never written, so with one among the user's
    /// values the answer is false. A text that was expanded on reading is written expanded.
    bool save();

    /// Names of both scopes, each once, in byte-wise order.
    std::set<std::string> getnames() const;

private:
    void load();

    settingsmap user;
    settingsmap machine;
    settingsdef definition;
};

}  // namespace orvsecutils
