#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

/// @file
/// WMI queries.
namespace orvsecutils {

/// One object in the result of a query: its text properties by name. Names and values are UTF-8.
using wmirow = std::map<std::string, std::string>;

/// A connection to the WMI namespace `ROOT\CIMV2` of this machine, as the current user.
///
/// May only be used by the thread that created it.
class wmi {
public:
    virtual ~wmi() = default;
    wmi(const wmi&) = delete;
    wmi& operator=(const wmi&) = delete;

    /// Creates a connection; null if that fails or takes more than two minutes.
    ///
    /// Initialises COM on the calling thread as a single-threaded apartment and never uninitialises it, so the thread
    /// stays in that apartment. Returns null on a thread in the multithreaded apartment. COM security is set once for
    /// the whole process: this call sets it (default authentication, impersonation level "impersonate") unless the host
    /// has called `CoInitializeSecurity` before. A host with its own requirements must do that at its start. Throws
    /// `platformerror` (`outofmemory`) if there is no memory for a BSTR.
    static std::shared_ptr<wmi> connect();

    /// Runs a WQL query and appends its objects to `rows`, in the order in which WMI delivers them. Only text
    /// properties are kept, not nulls, numbers or lists; of two with the same name, the first. True if `rows` is not
    /// empty afterwards. A failure ends the rows at that point and cannot be distinguished from the end of the results.
    ///
    /// Waits for the results without a time limit. Throws `std::range_error` ("bad conversion") if `text` is not valid
    /// UTF-8 or a property not valid UTF-16, and `platformerror` as connect() and toutf16() do.
    virtual bool query(const std::string& text, std::vector<wmirow>& rows) const = 0;

protected:
    wmi() = default;
};

/// The MAC address of the last IP-enabled network adapter that WMI lists, among those that have one. Empty if there is
/// none, or if `connection` is null. Throws as wmi::query() does.
std::string adapteraddress(const wmi* connection);

}  // namespace orvsecutils
