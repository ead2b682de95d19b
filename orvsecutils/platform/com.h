#pragma once

#include <windows.h>

#include <oleauto.h>
#include <unknwn.h>

#include <memory>
#include <string_view>
#include <utility>

#include "orvsecutils/platform/handles.h"
#include "orvsecutils/platform/platformerror.h"

/// Owning types for what COM hands out.
namespace orvsecutils {

struct releaseinterface {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using interfacepointer = std::unique_ptr<Interface, releaseinterface>;

/// What `call` puts into the pointer that it is given, or null when it fails.
template <class Interface, class Call>
interfacepointer<Interface> obtain(Call call) {
    Interface* object = nullptr;
    const HRESULT result = call(&object);
    interfacepointer<Interface> owner(object);
    return SUCCEEDED(result) ? std::move(owner) : nullptr;
}

using systemstring = std::unique_ptr<OLECHAR, releasing<SysFreeString>>;

inline systemstring makesystemstring(std::wstring_view text) {
    systemstring copy(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    if (!copy) {
        throw platformerror(platformerror::outofmemory);
    }
    return copy;
}

inline std::wstring_view view(BSTR text) {
    return {text, SysStringLen(text)};
}

/// A variant that starts empty and clears what it comes to hold.
class variant {
public:
    variant() { VariantInit(&value); }
    ~variant() { VariantClear(&value); }
    variant(const variant&) = delete;
    variant& operator=(const variant&) = delete;

    VARIANT value;
};

}  // namespace orvsecutils
