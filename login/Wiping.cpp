#include "login/Wiping.h"

#include <cstring>

namespace OrvelLoginClientCLR {

void wipe(wchar_t* chars, std::size_t units) noexcept {
    std::memset(chars, 0, units * sizeof *chars);
    // The memory is read here, as far as the compiler knows.
    __asm__ volatile("" : : "r"(chars) : "memory");
}

WipedAtEnd::~WipedAtEnd() {
    secret.resize(secret.capacity());  // stays in place: the memory behind the end becomes part of the string
    wipe(&secret[0], secret.size());
}

}  // namespace OrvelLoginClientCLR
