#include "login/ManagedString.h"

#include <windows.h>

#include <oleauto.h>

#include "login/RuntimeFailure.h"
#include "login/Wiping.h"

namespace OrvelLoginClientCLR {

ManagedString::~ManagedString() {
    if (chars) {  // of the texts that pass here some are tokens, cookies and tickets; which, only the caller knows
        wipe(chars, SysStringLen(chars));
        SysFreeString(chars);
    }
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
