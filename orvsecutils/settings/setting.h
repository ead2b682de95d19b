#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvsecutils {

/// Kinds of setting values.
enum class settingtype : std::uint32_t {
    integer = 0,      ///< `settingint`
    string = 1,       ///< `settingstring`
    multistring = 2,  ///< `settingmultistring`
};

/// One value of a settings group, exactly as the store holds it. What it is tells `type`; whoever wants the payload
/// checks `type` and then reads the field of the class that it names.
class setting {
public:
    virtual ~setting() = default;
    setting(const setting&) = delete;
    setting& operator=(const setting&) = delete;

    const settingtype type;

protected:
    explicit setting(settingtype kind) : type(kind) {}
};

/// A 32-bit integer; as a boolean, any value but 0 is true.
class settingint : public setting {
public:
    explicit settingint(std::uint32_t number);

    std::uint32_t value;
};

/// A text, in UTF-8. May be empty, which is not the same as absent.
class settingstring : public setting {
public:
    explicit settingstring(std::string text);

    std::string value;
};

/// A list of texts in UTF-8, in the store's order. May have no elements.
class settingmultistring : public setting {
public:
    explicit settingmultistring(std::vector<std::string> texts);

    std::vector<std::string> value;
};

/// A new value of the kind that fits the payload.
std::unique_ptr<setting> makesetting(std::uint32_t number);
std::unique_ptr<setting> makesetting(std::string text);
std::unique_ptr<setting> makesetting(std::vector<std::string> texts);

/// Values by name, ordered by the bytes of the name's UTF-8 text. No pointer in it is null.
using settingsmap = std::map<std::string, std::shared_ptr<setting>, std::less<>>;

}  // namespace orvsecutils
