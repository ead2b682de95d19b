#pragma once

#include <cstdint>
#include <ios>
#include <ostream>
#include <sstream>
#include <type_traits>

/// @file
/// The diagnostics log.
namespace orvsecutils {

/// One line of the diagnostics log. Create it in a statement and insert the message; the destructor delivers the line:
///
///     loginfo() << "wmi::query(" << text << ")";
///
/// A line is time, level word, executable's name and message, separated by commas. While logging is on (see
/// `debugsettings`), it goes to standard output and to the end of the log file (see `logfile`); while it is off,
/// nowhere. The level labels the line and filters nothing. All records of a process share one answer to whether logging
/// is on, which the first one gets.
///
/// To trace a call, write the record `class::method(arguments)`, then another one with its result,
/// `class::method(arguments)=result`; an absent result is `null`. Texts are UTF-8. Never log secrets.
///
/// Delivery failures are swallowed; a log file that cannot be opened is reported on standard error. The only exception
/// is `std::bad_alloc`, and only from the constructor: the record is then lost, and never written with half a header.
/// An insertion for which memory runs out leaves the rest of the message out; what a value's own `operator<<` throws
/// passes through.
///
/// A record belongs to the thread that made it; several threads may have records at the same time. Lines appear in
/// order of destruction. A record made by the destructor of a static object may come after the log's own end; it is
/// then lost.
class log {
public:
    /// Makes a record of level 0 ("info"), 1 ("warn"), 2 ("error") or any other number ("unknown").
    explicit log(int level);

    /// Makes a record that is "info" for a call that succeeded and "error" for one that failed.
    explicit log(bool ok);

    log(const void*) = delete;  ///< a text passed as the level would count as true

    /// Delivers the line.
    virtual ~log();

    log(const log&) = delete;
    log& operator=(const log&) = delete;

    /// Inserts whatever a standard stream takes. Values are not formatted while logging is off. Numbers look the same
    /// in every locale. A null pointer to text is written as "null".
    template <class Value>
    log& operator<<(const Value& value) {
        using character = std::remove_cv_t<std::remove_pointer_t<std::decay_t<Value>>>;
        static_assert(!std::is_same_v<character, wchar_t> && !std::is_same_v<character, char16_t> &&
                          !std::is_same_v<character, char32_t>,
                      "a line is narrow text: convert wide text to UTF-8");
        using pointer = std::decay_t<Value>;
        if constexpr (std::is_pointer_v<pointer> && (std::is_convertible_v<pointer, const char*> ||
                                                     std::is_convertible_v<pointer, const signed char*> ||
                                                     std::is_convertible_v<pointer, const unsigned char*>)) {
            return *this << reinterpret_cast<const char*>(value);
        } else if (enabled) {
            buffer << value;
        }
        return *this;
    }

    /// Inserts a text, and "null" for a null pointer.
    log& operator<<(const char* text);

    /// Applies a manipulator of a standard stream, such as `std::endl`.
    log& operator<<(std::ostream& (*manipulator)(std::ostream&));

    /// Applies a manipulator of a standard stream's format, such as `std::hex`.
    log& operator<<(std::ios_base& (*manipulator)(std::ios_base&));

private:
    const bool enabled;
    std::stringstream buffer;
    const std::int32_t level;
};

/// A record of level 0, "info".
class loginfo : public log {
public:
    loginfo() : log(0) {}  ///< as log(0)
};

/// A record of level 1, "warn".
class logwarn : public log {
public:
    logwarn() : log(1) {}  ///< as log(1)
};

/// A record of level 2, "error".
class logerror : public log {
public:
    logerror() : log(2) {}  ///< as log(2)
};

}  // namespace orvsecutils
