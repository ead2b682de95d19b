#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace OrvelLoginClientCLR {

/// A string received from the managed part, or a null reference. Always wiped before its memory is freed, because some
/// of these strings are tokens, cookies and tickets.
///
/// The managed part writes the object through its address. A text that fits is copied into the buffer: allocating and
/// freeing a BSTR would be two thirds of the cost of a short text. C# half: `NativeString`.
class ManagedString {
public:
    // cppcheck-suppress uninitMemberVar  // the buffer: clearing it would cost more than copying most texts
    ManagedString() = default;
    ManagedString(const ManagedString&) = delete;
    ManagedString& operator=(const ManagedString&) = delete;
    ~ManagedString();

    bool isNull() const { return length < 0; }

    /// The text's units and their number. Only valid if the string is not null.
    const wchar_t* chars() const { return bstr ? bstr : buffer; }
    std::int32_t units() const { return length; }

    /// The text, including embedded zero units. Throws `loginRuntimeException` for a null.
    std::wstring toNative() const;

    /// The text, or an empty string for a null.
    std::wstring toNativeOrEmpty() const;

    /// Moves the text of `other` here, zero-terminated, and makes `other` null. Wipes what either held before.
    void take(ManagedString& other) noexcept;

    /// Wipes the text and makes this string null.
    void clear() noexcept;

private:
    static constexpr std::int32_t capacity = 256;

    wchar_t* bstr = nullptr;   // a text that does not fit; allocated by the runtime
    std::int32_t length = -1;  // units; -1 for null
    wchar_t buffer[capacity];
};

}  // namespace OrvelLoginClientCLR
