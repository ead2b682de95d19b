#pragma once

#include <atomic>
#include <cstdlib>
#include <new>

/// Replaces operator new in the one source file of a program that includes this.
namespace memory {

inline std::atomic<long> countdown{0};  ///< the allocation that fails: 1 for the next; 0 for none
inline std::atomic<long> live{0};       ///< allocations that are not freed yet

}  // namespace memory

// Not inlined: the compiler would see malloc and free in pairs that it warns of.
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
