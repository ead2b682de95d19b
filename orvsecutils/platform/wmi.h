#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvsecutils {

/// One object of a query's answer: its properties that are texts, by name. Names and values are UTF-8.
using wmirow = std::map<std::string, std::string>;

/// A connection to the WMI namespace `ROOT\CIMV2` of this machine, as the current user.
///
/// For the thread that made it.
class wmi {
public:
    virtual ~wmi() = default;
    wmi(const wmi&) = delete;
    wmi& operator=(const wmi&) = delete;

    /// A new connection, or null when there is none to be had within two minutes.
    ///
    /// Initialises COM on the calling thread, for a single-threaded apartment, and leaves it so. On a thread that has
    /// joined the multithreaded apartment the answer is null. Process-wide COM security is set unless the host has done
    /// so before. Throws `platformerror` (`outofmemory`) when the system has no memory for a string.
    static std::shared_ptr<wmi> connect();

    /// Runs a WQL query and adds its objects to `rows`, in the order of delivery; what was in it stays. Properties that
    /// are null, numbers or lists are left out; of two with the same name the first counts. True when `rows` is not
    /// empty afterwards. A failure ends the rows at that point and is not told from there being no more.
    ///
    /// Waits for the answer without a time limit. Throws `std::range_error` ("bad conversion") for a `text` that is not
    /// UTF-8 or a property that is not UTF-16, and `platformerror` (`outofmemory`) as connect() does.
    virtual bool query(const std::string& text, std::vector<wmirow>& rows) const = 0;

protected:
    wmi() = default;
};

}  // namespace orvsecutils
