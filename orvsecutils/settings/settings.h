#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "orvsecutils/settings/setting.h"
#include "orvsecutils/settings/settingsdef.h"

namespace orvsecutils {

/// A named group of values. The constructor reads the whole group from both scopes, `user` and `machine`; getters
/// answer from memory, setters change it in memory, and save() writes the user's values back.
///
/// The user's value wins over the machine's of the same name, whatever its kind: a getter that asks for another kind
/// fails and does not look further. Names and texts are UTF-8; names are compared byte by byte.
///
/// For one thread at a time.
class settings {
public:
    /// Reads the group that `definition` places. A scope without the group counts as empty, and a value that cannot be
    /// read as absent. Throws `std::range_error` ("bad conversion") when a name or text of the group is not valid
    /// UTF-16, or the definition not valid UTF-8; and as `platform` does when there is no memory.
    explicit settings(const settingsdef& definition);

    /// Reads the group of that name among this library's own. Throws as above.
    explicit settings(const std::string& name);

    virtual ~settings() = default;
    settings(const settings&) = default;             ///< the copy shares the values, which never change
    settings& operator=(const settings&) = default;  ///< likewise

    /// The value that wins, or null. It is valid until a setter replaces it or this object is destroyed.
    const setting* find(std::string_view name) const;

    /// @name Typed lookups
    /// False, and the output untouched, when there is no such value or the one that wins is of another kind.
    /// @{
    bool getint(std::string_view name, std::uint32_t& value) const;   ///< an integer
    bool getint(std::string_view name, std::int32_t& value) const;    ///< the same 32 bits, read as signed
    bool getbool(std::string_view name, bool& value) const;           ///< an integer; true unless it is 0
    bool getstring(std::string_view name, std::string& value) const;  ///< a text
    bool getmultistring(std::string_view name, std::vector<std::string>& value) const;  ///< a list of texts
    /// @}

    /// @name Changes in memory
    /// Replaces the user's value of that name, of whatever kind. Nothing reaches the registry until save(). A failure
    /// for lack of memory changes nothing. The registry does not distinguish upper and lower case: of names that differ
    /// only in case, save() leaves one value, that of the last name in byte-wise order.
    /// @{
    void setint(const std::string& name, std::uint32_t value);          ///< an integer
    void setbool(const std::string& name, bool value);                  ///< an integer, 1 or 0
    void setstring(const std::string& name, const std::string& value);  ///< a text
    /// @}

    /// Writes every value of the user's, including those that were only read; removes nothing from the registry. False
    /// when any could not be written; the others are written all the same. Lists are never written, so with one among
    /// the user's values the result is false. A text that was expanded on reading is written expanded. Throws
    /// `std::range_error` ("bad conversion") when a name or text is not valid UTF-8; nothing is written then.
    bool save();

    /// The names of both scopes, each once, in byte-wise order.
    std::set<std::string> getnames() const;

private:
    void load();

    settingsmap user;
    settingsmap machine;
    settingsdef definition;
};

}  // namespace orvsecutils
