#pragma once

#include <cstdint>
#include <ios>
#include <ostream>
#include <sstream>
#include <type_traits>

namespace orvsecutils {

/// One line of the diagnostics log. Made in a statement, filled by insertion, delivered by its destructor:
///
///     loginfo() << "wmi::query(" << text << ")";
///
/// A line is time, level word, executable's name and message, with commas between them. It goes to standard output and
/// to the end of the log file (`logfile`) when logging is on (`debugsettings`), and nowhere when it is off. Levels
/// label lines and filter none.
///
/// A traced call is the record `class::method(arguments)`. Its outcome is another, `class::method(arguments)=result`;
/// an absent result is `null`. Texts are UTF-8. No secret belongs into a line.
///
/// What keeps a record from being delivered is never the caller's concern: nothing but exhausted memory is thrown, and
/// that by the constructor or an insertion only. A file that cannot be opened is told on standard error. Each record is
/// for one thread; any number of them may be under way. Not for destructors of static objects: the log may have ended
/// before them.
class log {
public:
    /// Level 0 is "info", 1 "warn", 2 "error", any other "unknown".
    explicit log(int level);

    /// "info" for a call that went well, "error" for one that did not.
    explicit log(bool ok);

    log(const void*) = delete;  // a text given for a level would count as true

    /// Delivers the record: when it ends, not when it was made, decides its place in the log.
    virtual ~log();

    log(const log&) = delete;
    log& operator=(const log&) = delete;

    /// Whatever a standard stream takes. Not even formatted when logging is off. Numbers look the same in every locale.
    template <class Value>
    log& operator<<(const Value& value) {
        using character = std::remove_cv_t<std::remove_pointer_t<std::decay_t<Value>>>;
        static_assert(!std::is_same_v<character, wchar_t> && !std::is_same_v<character, char16_t> &&
                          !std::is_same_v<character, char32_t>,
                      "a line is narrow text: convert to UTF-8 what is wide");
        if (enabled) {
            buffer << value;
        }
        return *this;
    }

    /// A null pointer is written as "null".
    log& operator<<(const char* text);

    /// @name Manipulators
    /// @{
    log& operator<<(std::ostream& (*manipulator)(std::ostream&));
    log& operator<<(std::ios_base& (*manipulator)(std::ios_base&));
    /// @}

private:
    const bool enabled;
    std::stringstream buffer;
    const std::int32_t level;
};

/// A record of level 0.
class loginfo : public log {
public:
    loginfo() : log(0) {}
};

/// A record of level 1.
class logwarn : public log {
public:
    logwarn() : log(1) {}
};

/// A record of level 2.
class logerror : public log {
public:
    logerror() : log(2) {}
};

}  // namespace orvsecutils
