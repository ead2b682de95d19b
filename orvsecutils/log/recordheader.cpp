#include "orvsecutils/log/recordheader.h"

#include <cstdlib>
#include <initializer_list>

namespace orvsecutils {

namespace {

// Writes that many digits and moves `out` past them.
void putnumber(char*& out, int number, int digits) {
    for (int i = digits; i-- > 0; number /= 10) {
        out[i] = static_cast<char>('0' + number % 10);
    }
    out += digits;
}

}  // namespace

const char* levelword(int level) {
    static constexpr const char* words[] = {"info", "warn", "error"};
    return level >= 0 && level < 3 ? words[level] : "unknown";
}

// By hand: the C library here writes a zone's name for its offset, and a stream takes many times as long.
std::array<char, 24> timetext(const walltime& time) {
    std::array<char, 24> text;
    char* out = text.data();
    const auto put = [&out](int number, int digits, char after) {
        putnumber(out, number, digits);
        *out++ = after;
    };
    put(time.month, 2, '/');
    put(time.day, 2, '/');
    put(time.year, 4, ' ');
    put(time.hour, 2, ':');
    put(time.minute, 2, ':');
    put(time.second, 2, time.offset < 0 ? '-' : '+');
    const int offset = std::abs(time.offset);
    putnumber(out, offset / 60, 2);
    putnumber(out, offset % 60, 2);
    return text;
}

std::string recordheader(const walltime& time, int level, std::string_view executable) {
    const std::array<char, 24> timefield = timetext(time);
    const std::string_view levelfield = levelword(level);
    std::string header;
    header.reserve(timefield.size() + levelfield.size() + executable.size() + 3);
    for (const std::string_view field :
         {std::string_view(timefield.data(), timefield.size()), levelfield, executable}) {
        header.append(field).append(1, ',');
    }
    return header;
}

}  // namespace orvsecutils
