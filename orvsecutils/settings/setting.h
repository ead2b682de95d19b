#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// @file
/// The values of a settings group.
namespace orvsecutils {

/// Types of setting values.
enum class settingtype : std::uint32_t {
    integer = 0,      ///< `settingint`
    string = 1,       ///< `settingstring`
    multistring = 2,  ///< `settingmultistring`
};

/// One value of a settings group, exactly as the registry holds it. `type` says which derived class this is; check it
/// before casting.
///
/// A class hierarchy and not a `std::variant`, because the types, their numbers and deletion through the base class are
/// part of the library's interface. Values are shared by pointer, so that copying a group does not copy strings.
class setting {
public:
    virtual ~setting() = default;
    setting(const setting&) = delete;
    setting& operator=(const setting&) = delete;

    const settingtype type;  ///< the derived class

protected:
    explicit setting(settingtype kind) : type(kind) {}  ///< for the derived classes
};

/// A 32-bit integer; as a boolean, any value but 0 is true.
class settingint : public setting {
public:
    explicit settingint(std::uint32_t number);  ///< stores `number`

    std::uint32_t value;  ///< the 32 bits; a caller may read them as signed
};

/// A string. An empty string is not the same as an absent value.
class settingstring : public setting {
public:
    explicit settingstring(std::string text);  ///< stores `text`

    std::string value;  ///< UTF-8
};

/// A list of strings, in the registry's order. May be empty.
class settingmultistring : public setting {
public:
    explicit settingmultistring(std::vector<std::string> texts);  ///< stores `texts`

    std::vector<std::string> value;  ///< UTF-8
};

/// @name New values
/// Creates a value of the type that matches the argument's type.
/// @{
std::unique_ptr<setting> makesetting(std::uint32_t number);            ///< a `settingint`
std::unique_ptr<setting> makesetting(std::string text);                ///< a `settingstring`
std::unique_ptr<setting> makesetting(std::vector<std::string> texts);  ///< a `settingmultistring`
/// @}

/// Values by name, ordered by the bytes of the name's UTF-8 string. No pointer in it is null.
using settingsmap = std::map<std::string, std::shared_ptr<setting>, std::less<>>;

}  // namespace orvsecutils
