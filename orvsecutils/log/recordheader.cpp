#include "orvsecutils/log/recordheader.h"

#include <cstdlib>

namespace orvsecutils {

namespace {

// Writes `number` with exactly `digits` digits and moves `out` past them.
void putnumber(char*& out, int number, int digits) {
    for (int i = digits; i-- > 0; number /= 10) {
        out[i] = static_cast<char>('0' + number % 10);
    }
    out += digits;
}

void puttext(std::streambuf& out, std::string_view text) {
    out.sputn(text.data(), static_cast<std::streamsize>(text.size()));
}

const char* levelword(int level) {
    static constexpr const char* names[] = {"info", "warn", "error"};
    return level >= 0 && level < 3 ? names[level] : "unknown";
}

}  // namespace

// Not strftime, whose %z is the name of the time zone in this C library, and not a stream, which is a hundred times
// slower.
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

// Writes directly into the stream buffer: a string in between would cost two allocations per record, even with logging
// off.
void putheader(std::streambuf& out, const walltime& time, int level, std::string_view executable) {
    const std::array<char, 24> timefield = timetext(time);
    for (const std::string_view field :
         {std::string_view(timefield.data(), timefield.size()), std::string_view(levelword(level)), executable}) {
        puttext(out, field);
        out.sputc(',');
    }
}

}  // namespace orvsecutils
