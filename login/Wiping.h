#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace OrvelLoginClientCLR {

/// Overwrites `units` characters with zeros. The compiler cannot drop it, as it may drop stores to memory that is freed
/// next.
inline void wipe(wchar_t* chars, std::size_t units) noexcept {
    std::memset(chars, 0, units * sizeof *chars);
    // As far as the compiler knows, the memory is read here.
    __asm__ volatile("" : : "r"(chars) : "memory");
}

/// Wipes a string that the library owns at the end of a scope, however the scope is left. Covers all of the string's
/// memory, also what lies behind its end.
class WipedAtEnd {
public:
    explicit WipedAtEnd(std::wstring& secretIn) noexcept : secret(secretIn) {}
    ~WipedAtEnd() {
        if (secret.size() != secret.capacity()) {
            secret.resize(secret.capacity());  // stays in place: the memory behind the end becomes part of the string
        }
        wipe(&secret[0], secret.size());
    }
    WipedAtEnd(const WipedAtEnd&) = delete;
    WipedAtEnd& operator=(const WipedAtEnd&) = delete;

private:
    std::wstring& secret;
};

}  // namespace OrvelLoginClientCLR
