#pragma once

#include <windows.h>

#include <wbemcli.h>
#include <wrl/client.h>

#include <functional>

#include "orvsecutils/platform/wmi.h"

namespace orvsecutils {

/// Creates the locator of a connection. Tests replace the system's.
using locatorsource = std::function<HRESULT(IWbemLocator**)>;

/// Adds a property to a row if its value is a string and the row has none of that name yet. Throws `std::range_error`
/// ("bad conversion") if the name or the value is not valid UTF-16.
void addproperty(wmirow& row, BSTR name, const VARIANT& value);

/// Implements `wmi` with the system's COM interfaces.
class wmiconnection final : public wmi {
public:
    /// wmi::connect() with the locator that `source` creates.
    static std::shared_ptr<wmi> connect(const locatorsource& source);

    /// wmi::query(). Adds nothing if the connection was not opened.
    bool query(const std::string& text, std::vector<wmirow>& rows) const override;

private:
    bool open(const locatorsource& source);

    // Members are destroyed in reverse order, so the locator is released before the services.
    Microsoft::WRL::ComPtr<IWbemServices> services;
    Microsoft::WRL::ComPtr<IWbemLocator> locator;
};

}  // namespace orvsecutils
