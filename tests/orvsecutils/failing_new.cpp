#include "tests/orvsecutils/failing_new.h"

#include <cstdlib>
#include <new>

// Not inlined, because the compiler would warn about mismatched pairs of malloc and delete.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
    void* const block = memory::countdown > 0 && --memory::countdown == 0 ? nullptr : std::malloc(bytes + 1);
    if (!block) {
        throw std::bad_alloc();
    }
    ++memory::live;
    return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
    memory::live -= block != nullptr;
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
