#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace OrvelLoginClientCLR {

/// One string that the managed part handed over, or a null reference. Wiped before its memory is freed, because some
/// are tokens, cookies and tickets; which ones only the caller knows.
///
/// The managed part writes it through its address. A text that fits goes into the buffer, which spares two thirds of
/// what a short text costs: allocating and freeing a BSTR. C# half: `NativeString`.
class ManagedString {
public:
    // cppcheck-suppress uninitMemberVar  // the buffer: initialising it would cost more than most texts
    ManagedString() = default;
    ManagedString(const ManagedString&) = delete;
    ManagedString& operator=(const ManagedString&) = delete;
    ~ManagedString();

    bool isNull() const { return length < 0; }

    /// Where the units lie, and how many; not for a null.
    const wchar_t* chars() const { return bstr ? bstr : buffer; }
    std::int32_t units() const { return length; }

    /// The same UTF-16 units, embedded zero units included. Throws `loginRuntimeException` for a null.
    std::wstring toNative() const;

    /// The same, but empty for a null.
    std::wstring toNativeOrEmpty() const;

    /// The text as a BSTR, which the caller frees: the managed part's own, or a new one. Leaves a null. Null for a
    /// null. Throws `std::bad_alloc`, and then leaves the text.
    wchar_t* detachBstr();

private:
    static constexpr std::int32_t capacity = 256;

    wchar_t* bstr = nullptr;   // a text that does not fit; allocated by the runtime
    std::int32_t length = -1;  // units; -1 for null
    wchar_t buffer[capacity];
};

}  // namespace OrvelLoginClientCLR
