#pragma once

#include <windows.h>

#include <wbemcli.h>

/// A WMI without a service. The result of each query is one object with one property. A test can make each step fail.
extern struct fakewmi {
    HRESULT (*source)(IWbemLocator**);             ///< a `locatorsource`
    HRESULT locator, connection, blanket, result;  ///< what each step returns
    HRESULT afterobject, afterproperty;            ///< what Next returns after the object and after the property
    const wchar_t* value;                          ///< of the property, "name"
    int references, objects, properties;           ///< references and enumerations held; what is not yet enumerated
} fakewmi;
