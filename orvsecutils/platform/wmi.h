#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

/// @file
/// WMI queries.
namespace orvsecutils {

/// One object of a query's result: its text properties by name. Names and values are UTF-8.
using wmirow = std::map<std::string, std::string>;

/// A connection to the WMI namespace `ROOT\CIMV2` of this machine, as the current user.
///
/// For the thread that made it.
class wmi {
public:
    virtual ~wmi() = default;
    wmi(const wmi&) = delete;
    wmi& operator=(const wmi&) = delete;

    /// A new connection, or null when there is none within two minutes.
    ///
    /// Initialises COM on the calling thread as a single-threaded apartment and never uninitialises it: the thread
    /// stays in that apartment for its life. A thread in the multithreaded apartment gets null. COM security belongs to
    /// the whole process and can be set once: this call sets it (default authentication, impersonation level
    /// "impersonate") unless the host has called `CoInitializeSecurity` before, which a host with its own requirements
    /// must do at its start. Throws `platformerror` (`outofmemory`) when there is no memory for a BSTR.
    static std::shared_ptr<wmi> connect();

    /// Runs a WQL query and appends its objects to `rows` in the order of delivery. Only text properties are kept, not
    /// nulls, numbers or lists; of two with the same name, the first. True when `rows` is not empty afterwards. A
    /// failure ends the rows at that point and cannot be distinguished from the end of the results.
    ///
    /// Waits for the results without a time limit. Throws `std::range_error` ("bad conversion") for a `text` that is
    /// not UTF-8 or a property that is not UTF-16, and `platformerror` as connect() and toutf16() do.
    virtual bool query(const std::string& text, std::vector<wmirow>& rows) const = 0;

protected:
    wmi() = default;
};

}  // namespace orvsecutils
