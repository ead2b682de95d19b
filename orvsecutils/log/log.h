#pragma once

#include <cstdint>
#include <ios>
#include <ostream>
#include <sstream>
#include <type_traits>

/// @file
/// The diagnostics log.
namespace orvsecutils {

/// One line of the diagnostics log. Create a temporary and insert the message; its destructor delivers the line:
///
///     loginfo() << "wmi::query(" << text << ")";
///
/// A line consists of time, level, name of the executable and message, separated by commas. If logging is on (see
/// `debugsettings`), the line goes to standard output and to the end of the log file (see `logfile`); otherwise it is
/// dropped. The level is only a label and filters nothing. The first record of a process reads the switch for all later
/// ones.
///
/// To trace a call, write the record `class::method(arguments)`, then another one with its result,
/// `class::method(arguments)=result`; an absent result is `null`. Strings are UTF-8. Never log secrets.
///
/// Delivery failures are swallowed; a log file that cannot be opened is reported on standard error. The only exception
/// of the log itself is `std::bad_alloc` from the constructor. The record is then lost, and never written with a
/// partial header. If memory runs out during an insertion, the rest of the message is missing; exceptions of a value's
/// own `operator<<` pass through.
///
/// A record belongs to the thread that created it; several threads may have records at the same time. Lines appear in
/// order of destruction. A record that the destructor of a static object creates may be lost, because the log may
/// already be destroyed.
class log {
public:
    /// Creates a record of level 0 ("info"), 1 ("warn"), 2 ("error") or any other number ("unknown").
    explicit log(int level);

    /// Creates a record for the outcome of a call: "info" for success, "error" for failure.
    explicit log(bool ok);

    log(const void*) = delete;  ///< a string passed by mistake would convert to true

    /// Delivers the line.
    virtual ~log();

    log(const log&) = delete;
    log& operator=(const log&) = delete;

    /// Inserts anything that a standard stream accepts. Values are not formatted if logging is off. Numbers are
    /// formatted alike in every locale. A null pointer to text is written as "null".
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

    /// Inserts a string, or "null" for a null pointer.
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
