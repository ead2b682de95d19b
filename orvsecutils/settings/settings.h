#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "orvsecutils/settings/setting.h"
#include "orvsecutils/settings/settingsdef.h"

namespace orvsecutils {

/// A named group of values. The constructor reads the whole group from both scopes, `user` and `machine`. Getters and
/// setters work in memory only; save() writes the user's values back.
///
/// The user's value overrides the machine's of the same name, even if it is of a different type: a getter for another
/// type then fails and does not try the machine's. Names and strings are UTF-8; names are compared byte by byte.
///
/// May be used by one thread at a time.
class settings {
public:
    /// Reads the group that `definition` describes. A scope without the group counts as empty, and a value that cannot
    /// be read as absent. Throws `std::range_error` ("bad conversion") if a name or text of the group is not valid
    /// UTF-16, or if the definition is not valid UTF-8. If there is no memory, throws as `platform` does.
    explicit settings(const settingsdef& definition);

    /// Reads the group `name` below this library's own key. Throws as above.
    explicit settings(const std::string& name);

    virtual ~settings() = default;
    settings(const settings&) = default;             ///< the copy shares the values, which never change
    settings& operator=(const settings&) = default;  ///< likewise

    /// The user's value, else the machine's, else null. Valid until a setter replaces it or this object is destroyed.
    const setting* find(std::string_view name) const;

    /// @name Typed lookups
    /// Return false and leave the output untouched if find() returns null or a value of another type.
    /// @{
    bool getint(std::string_view name, std::uint32_t& value) const;   ///< an integer
    bool getint(std::string_view name, std::int32_t& value) const;    ///< the same 32 bits, read as signed
    bool getbool(std::string_view name, bool& value) const;           ///< an integer; true unless it is 0
    bool getstring(std::string_view name, std::string& value) const;  ///< a string
    bool getmultistring(std::string_view name, std::vector<std::string>& value) const;  ///< a list of strings
    /// @}

    /// @name Changes in memory
    /// Replace the user's value of that name, of any type. Nothing reaches the registry until save(). If memory runs
    /// out, nothing changes. The registry ignores case: if several names differ only in case, save() leaves one value,
    /// that of the last name in byte-wise order.
    /// @{
    void setint(const std::string& name, std::uint32_t value);          ///< an integer
    void setbool(const std::string& name, bool value);                  ///< an integer, 1 or 0
    void setstring(const std::string& name, const std::string& value);  ///< a string
    /// @}

    /// Writes all of the user's values, including those that were only read, and deletes nothing from the registry.
    /// False if a value could not be written; the others are still written. Lists are never written, so the result is
    /// false if the user has one. Expanded strings are written back in expanded form. Throws `std::range_error`
    /// ("bad conversion") if a name or text is not valid UTF-8; then nothing is written.
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
