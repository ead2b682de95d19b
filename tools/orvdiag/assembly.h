#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvdiag {

/// What a portable executable says about itself.
struct image {
    bool sixtyfourbit;                     ///< for 64-bit processes only
    bool managed;                          ///< whether it holds an assembly; what follows is empty otherwise
    std::string name;                      ///< the assembly's simple name, in UTF-8
    std::array<std::uint16_t, 4> version;  ///< the assembly's: major, minor, build, revision
};

/// Reads the bytes of a file; none when it is no portable executable, is cut short, or contradicts itself.
std::optional<image> readimage(std::string_view bytes);

}  // namespace orvdiag
