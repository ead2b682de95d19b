#pragma once

#include <cstdint>
#include <stdexcept>

namespace orvsecutils {

/// A buffer or string for a system call could not be had.
class platformerror : public std::runtime_error {
public:
    static constexpr std::uint32_t generalfailure = 0x80004005;   ///< no memory for it
    static constexpr std::uint32_t invalidargument = 0x80070057;  ///< no buffer can have that length
    static constexpr std::uint32_t outofmemory = 0x8007000E;      ///< no memory for a system string

    explicit platformerror(std::uint32_t result)
        : std::runtime_error(result == invalidargument ? "invalid argument"
                             : result == outofmemory   ? "out of memory"
                                                       : "general failure"),
          code(result) {}

    const std::uint32_t code;  ///< one of the three
};

}  // namespace orvsecutils
