#pragma once

#include <windows.h>

#include <oleauto.h>

#include <memory>
#include <string_view>

#include "orvsecutils/platform/platformerror.h"
#include "orvsecutils/platform/windows/handles.h"

/// @file
/// Owning types for BSTR and VARIANT. Use `Microsoft::WRL::ComPtr` for interfaces.
namespace orvsecutils {

/// A BSTR.
using bstr = std::unique_ptr<OLECHAR, releasing<SysFreeString>>;

/// A copy of `text` as a BSTR. Throws `platformerror` (`outofmemory`) if there is no memory.
inline bstr makebstr(std::wstring_view text) {
    bstr copy(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    if (!copy) {
        throw platformerror(platformerror::outofmemory);
    }
    return copy;
}

/// A VARIANT that starts empty; the destructor clears it.
class variant {
public:
    variant() { VariantInit(&value); }
    ~variant() { VariantClear(&value); }
    variant(const variant&) = delete;
    variant& operator=(const variant&) = delete;

    VARIANT value;  ///< for a call to fill
};

}  // namespace orvsecutils
