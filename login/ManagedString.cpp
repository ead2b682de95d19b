#include "login/ManagedString.h"

#include <windows.h>

#include <oleauto.h>

#include "login/RuntimeFailure.h"

namespace OrvelLoginClientCLR {

ManagedString::~ManagedString() {
    SysFreeString(chars);
}

std::wstring ManagedString::toNative() const {
    if (isNull()) {
        throw nullStringFailure();
    }
    return std::wstring(chars, SysStringLen(chars));
}

std::wstring ManagedString::toNativeOrEmpty() const {
    return isNull() ? std::wstring() : toNative();
}

}  // namespace OrvelLoginClientCLR
