#pragma once

#include <cstdint>
#include <exception>

namespace orvsecutils {

/// There is no buffer or string for a system call. Derives from `std::exception` directly: the standard's classes with
/// a text allocate it, and this one reports, most of the time, that nothing can be allocated.
class platformerror : public std::exception {
public:
    static constexpr std::uint32_t generalfailure = 0x80004005;   ///< no memory for a buffer
    static constexpr std::uint32_t invalidargument = 0x80070057;  ///< no buffer can have that length
    static constexpr std::uint32_t outofmemory = 0x8007000E;      ///< no memory for a system string

    /// `result` is one of the three.
    explicit platformerror(std::uint32_t result) noexcept : code(result) {}

    /// The code in words.
    const char* what() const noexcept override {
        return code == invalidargument ? "invalid argument" : code == outofmemory ? "out of memory" : "general failure";
    }

    const std::uint32_t code;  ///< one of the three
};

}  // namespace orvsecutils
