#include "login/boundary/ManagedString.h"

#include <windows.h>

#include <oleauto.h>

#include <new>
#include <utility>

#include "login/hosting/RuntimeFailure.h"
#include "login/hosting/Wiping.h"

namespace OrvelLoginClientCLR {

ManagedString::~ManagedString() {
    if (length > 0) {
        wipe(bstr ? bstr : buffer, static_cast<std::size_t>(length));
    }
    if (bstr) {
        SysFreeString(bstr);
    }
}

std::wstring ManagedString::toNative() const {
    if (isNull()) {
        throw nullStringFailure();
    }
    return std::wstring(chars(), static_cast<std::size_t>(length));
}

std::wstring ManagedString::toNativeOrEmpty() const {
    return isNull() ? std::wstring() : std::wstring(chars(), static_cast<std::size_t>(length));
}

wchar_t* ManagedString::detachBstr() {
    if (isNull()) {
        return nullptr;
    }
    if (!bstr) {
        wchar_t* const made = SysAllocStringLen(buffer, static_cast<UINT>(length));
        if (!made) {
            throw std::bad_alloc();
        }
        // Wiped here, because the destructor of a null string wipes nothing.
        wipe(buffer, static_cast<std::size_t>(length));
        length = -1;
        return made;
    }
    length = -1;
    return std::exchange(bstr, nullptr);
}

}  // namespace OrvelLoginClientCLR
