#pragma once

#include <cstdint>
#include <exception>

namespace orvsecutils {

/// Thrown if no buffer or string for a system call can be allocated. Derives from `std::exception` directly, because
/// the standard's classes with a message allocate memory for it, and here there usually is none.
class platformerror : public std::exception {
public:
    static constexpr std::uint32_t generalfailure = 0x80004005;   ///< no memory for a buffer
    static constexpr std::uint32_t invalidargument = 0x80070057;  ///< no buffer can have that length
    static constexpr std::uint32_t outofmemory = 0x8007000E;      ///< no memory for a system string

    /// `result` is one of the three.
    explicit platformerror(std::uint32_t result) noexcept : code(result) {}

    /// The meaning of the code.
    const char* what() const noexcept override {
        return code == invalidargument ? "invalid argument" : code == outofmemory ? "out of memory" : "general failure";
    }

    const std::uint32_t code;  ///< one of the three
};

}  // namespace orvsecutils
