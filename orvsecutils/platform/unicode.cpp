#include "orvsecutils/platform/unicode.h"

#include <new>
#include <stdexcept>

#include "orvsecutils/platform/platformerror.h"

namespace orvsecutils {

static_assert(sizeof(wchar_t) == 2, "wide texts are UTF-16");

namespace {

[[noreturn]] void badconversion() {
    throw std::range_error("bad conversion");
}

bool ishighsurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool islowsurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The lead bytes of multi-byte sequences. `least` is the smallest value that needs this length; below it the sequence
// is overlong.
struct leadbyte {
    unsigned char mask;
    unsigned char pattern;
    int continuations;
    char32_t least;
};
constexpr leadbyte leadbytes[] = {
    {0xE0, 0xC0, 1, 0x80},
    {0xF0, 0xE0, 2, 0x800},
    {0xF8, 0xF0, 3, 0x10000},
};

// Reads one multi-byte sequence and moves `in` past it.
char32_t readsequence(const char*& in, const char* end) {
    const auto lead = static_cast<unsigned char>(*in++);
    for (const leadbyte& row : leadbytes) {
        if ((lead & row.mask) != row.pattern) {
            continue;
        }
        char32_t scalar = lead & ~row.mask & 0xFF;
        for (int i = 0; i < row.continuations; ++i) {
            if (in == end || (*in & 0xC0) != 0x80) {
                badconversion();
            }
            scalar = scalar << 6 | (*in++ & 0x3F);
        }
        if (scalar < row.least || scalar > 0x10FFFF || ishighsurrogate(scalar) || islowsurrogate(scalar)) {
            badconversion();
        }
        return scalar;
    }
    badconversion();
}

// Reads one scalar value and moves `in` past it.
char32_t readunits(const wchar_t*& in, const wchar_t* end) {
    const char32_t unit = *in++;
    if (islowsurrogate(unit)) {
        badconversion();
    }
    if (!ishighsurrogate(unit)) {
        return unit;
    }
    if (in == end || !islowsurrogate(*in)) {
        badconversion();
    }
    return 0x10000 + ((unit - 0xD800) << 10) + (*in++ - 0xDC00);
}

}  // namespace

std::wstring utf16buffer(std::int64_t units) {
    std::wstring buffer;
    if (units < 0 || static_cast<std::uint64_t>(units) > buffer.max_size()) {
        throw platformerror(platformerror::invalidargument);
    }
    try {
        buffer.resize(static_cast<std::size_t>(units));
    } catch (const std::bad_alloc&) {
        throw platformerror(platformerror::generalfailure);
    }
    return buffer;
}

std::wstring toutf16(std::string_view text) {
    // Always large enough, because no sequence has more UTF-16 code units than UTF-8 bytes.
    std::wstring result = utf16buffer(static_cast<std::int64_t>(text.size()));
    wchar_t* out = result.data();
    const char* const end = text.data() + text.size();
    for (const char* in = text.data(); in != end;) {
        if ((*in & 0x80) == 0) {
            *out++ = static_cast<wchar_t>(*in++);
            continue;
        }
        const char32_t scalar = readsequence(in, end);
        if (scalar < 0x10000) {
            *out++ = static_cast<wchar_t>(scalar);
        } else {
            *out++ = static_cast<wchar_t>(0xD800 + ((scalar - 0x10000) >> 10));
            *out++ = static_cast<wchar_t>(0xDC00 + ((scalar - 0x10000) & 0x3FF));
        }
    }
    result.resize(static_cast<std::size_t>(out - result.data()));
    return result;
}

std::string toutf8(std::wstring_view text) {
    // Converted in blocks on the stack, so that a short string (most are) is allocated only once, with its exact size.
    char block[512];
    constexpr std::size_t longestsequence = 4;
    std::string result;
    const wchar_t* const end = text.data() + text.size();
    for (const wchar_t* in = text.data(); in != end;) {
        char* out = block;
        while (in != end && out <= block + sizeof block - longestsequence) {
            if (*in < 0x80) {
                *out++ = static_cast<char>(*in++);
                continue;
            }
            const char32_t scalar = readunits(in, end);
            if (scalar < 0x800) {
                *out++ = static_cast<char>(0xC0 | scalar >> 6);
            } else {
                if (scalar < 0x10000) {
                    *out++ = static_cast<char>(0xE0 | scalar >> 12);
                } else {
                    *out++ = static_cast<char>(0xF0 | scalar >> 18);
                    *out++ = static_cast<char>(0x80 | (scalar >> 12 & 0x3F));
                }
                *out++ = static_cast<char>(0x80 | (scalar >> 6 & 0x3F));
            }
            *out++ = static_cast<char>(0x80 | (scalar & 0x3F));
        }
        result.append(block, out);
    }
    return result;
}

}  // namespace orvsecutils
