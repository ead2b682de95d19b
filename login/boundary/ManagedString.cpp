#include "login/boundary/ManagedString.h"

#include <windows.h>

#include <oleauto.h>

#include <cstring>
#include <utility>

#include "login/hosting/RuntimeFailure.h"
#include "login/hosting/Wiping.h"

namespace OrvelLoginClientCLR {

ManagedString::~ManagedString() {
    clear();
}

void ManagedString::clear() noexcept {
    if (length > 0) {
        wipe(bstr ? bstr : buffer, static_cast<std::size_t>(length));
    }
    if (bstr) {
        SysFreeString(std::exchange(bstr, nullptr));
    }
    length = -1;
}

void ManagedString::take(ManagedString& other) noexcept {
    clear();
    bstr = std::exchange(other.bstr, nullptr);
    length = other.length;
    if (!bstr && length >= 0) {
        std::memcpy(buffer, other.buffer, static_cast<std::size_t>(length) * sizeof *buffer);
        buffer[length] = 0;
        other.clear();
    }
    other.length = -1;
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

}  // namespace OrvelLoginClientCLR
