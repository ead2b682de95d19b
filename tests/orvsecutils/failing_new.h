#pragma once

#include <atomic>

/// Counters of the test program's operator new.
namespace memory {

inline std::atomic<long> countdown{0};  ///< the allocation that fails: 1 for the next; 0 for none
inline std::atomic<long> live{0};       ///< allocations that are not freed yet

}  // namespace memory
