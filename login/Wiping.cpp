#include "login/Wiping.h"

#include <windows.h>

namespace OrvelLoginClientCLR {

void wipe(wchar_t* chars, std::size_t units) noexcept {
    SecureZeroMemory(chars, units * sizeof *chars);
}

WipedAtEnd::~WipedAtEnd() {
    secret.resize(secret.capacity());  // stays in place: the memory behind the end becomes part of the string
    wipe(&secret[0], secret.size());
}

}  // namespace OrvelLoginClientCLR
