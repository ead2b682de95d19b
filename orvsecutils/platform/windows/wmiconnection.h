#pragma once

#include <windows.h>

#include <wbemcli.h>
#include <wrl/client.h>

#include <functional>

#include "orvsecutils/platform/wmi.h"

namespace orvsecutils {

/// Where a connection takes its locator from.
using locatorsource = std::function<HRESULT(IWbemLocator**)>;

class wmiconnection final : public wmi {
public:
    /// wmi::connect(), with another locator.
    static std::shared_ptr<wmi> connect(const locatorsource& source);

    /// Does nothing without a connection.
    bool query(const std::string& text, std::vector<wmirow>& rows) const override;

private:
    bool open(const locatorsource& source);

    // Members are destroyed in reverse: the locator is released before the services.
    Microsoft::WRL::ComPtr<IWbemServices> services;
    Microsoft::WRL::ComPtr<IWbemLocator> locator;
};

}  // namespace orvsecutils
