#pragma once

#include <string>

namespace OrvelLoginClientCLR {

/// Owns one string that the managed part handed over. Null where the managed reference was null.
///
/// The managed part writes it through its address, so it is exactly one pointer wide.
class ManagedString {
public:
    ManagedString() = default;
    ManagedString(const ManagedString&) = delete;
    ManagedString& operator=(const ManagedString&) = delete;
    ~ManagedString();

    bool isNull() const { return chars == nullptr; }

    /// Gives up the string, a BSTR, to a caller who owns it from now on.
    wchar_t* release() {
        wchar_t* const released = chars;
        chars = nullptr;
        return released;
    }

    /// The same UTF-16 units, embedded zero units included. Throws `loginRuntimeException` for a null.
    std::wstring toNative() const;

    /// The same, but empty for a null.
    std::wstring toNativeOrEmpty() const;

private:
    wchar_t* chars = nullptr;  // a BSTR, allocated by the runtime
};

static_assert(sizeof(ManagedString) == sizeof(void*), "the managed part writes a pointer here");

}  // namespace OrvelLoginClientCLR
