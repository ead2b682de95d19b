#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace OrvelLoginClientCLR {

/// Overwrites `units` characters with zeros. Unlike a plain memset, the compiler cannot drop it if the memory is freed
/// next.
template <class Char>
void wipe(Char* chars, std::size_t units) noexcept {
    std::memset(chars, 0, units * sizeof *chars);
    // Tells the compiler that the memory is read here.
    __asm__ volatile("" : : "r"(chars) : "memory");
}

/// Wipes a string that the library owns at the end of a scope, also when an exception leaves it. Covers the string's
/// whole capacity, because an earlier, longer content may lie behind its end.
class WipedAtEnd {
public:
    explicit WipedAtEnd(std::wstring& secretIn) noexcept : secret(secretIn) {}
    ~WipedAtEnd() {
        if (secret.size() != secret.capacity()) {
            secret.resize(secret.capacity());  // does not reallocate: the spare capacity becomes part of the string
        }
        wipe(&secret[0], secret.size());
    }
    WipedAtEnd(const WipedAtEnd&) = delete;
    WipedAtEnd& operator=(const WipedAtEnd&) = delete;

private:
    std::wstring& secret;
};

}  // namespace OrvelLoginClientCLR
