#pragma once

#include <cstddef>
#include <string>

namespace OrvelLoginClientCLR {

/// Overwrites `units` characters with zeros. The compiler cannot drop it, as it may drop stores to memory that is freed
/// next.
void wipe(wchar_t* chars, std::size_t units) noexcept;

/// Wipes a string that the library owns at the end of a scope, however the scope is left. Covers all of the string's
/// memory, also what lies behind its end.
class WipedAtEnd {
public:
    explicit WipedAtEnd(std::wstring& secret) noexcept : secret(secret) {}
    ~WipedAtEnd();
    WipedAtEnd(const WipedAtEnd&) = delete;
    WipedAtEnd& operator=(const WipedAtEnd&) = delete;

private:
    std::wstring& secret;
};

}  // namespace OrvelLoginClientCLR
