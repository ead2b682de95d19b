#pragma once

#include <windows.h>

#include <wbemcli.h>
#include <wrl/client.h>

#include <functional>

#include "orvsecutils/platform/wmi.h"

namespace orvsecutils {

/// Creates the locator of a connection; a test has another one than the system's.
using locatorsource = std::function<HRESULT(IWbemLocator**)>;

/// Adds a property to a row if its value is a text and the row has none of that name yet. Throws `std::range_error`
/// ("bad conversion") when name or value is not valid UTF-16.
void addproperty(wmirow& row, BSTR name, const VARIANT& value);

/// `wmi` over the system's interfaces.
class wmiconnection final : public wmi {
public:
    /// wmi::connect() with the locator that `source` creates.
    static std::shared_ptr<wmi> connect(const locatorsource& source);

    /// wmi::query(); without a connection nothing is added.
    bool query(const std::string& text, std::vector<wmirow>& rows) const override;

private:
    bool open(const locatorsource& source);

    // Members are destroyed in reverse: the locator is released before the services.
    Microsoft::WRL::ComPtr<IWbemServices> services;
    Microsoft::WRL::ComPtr<IWbemLocator> locator;
};

}  // namespace orvsecutils
