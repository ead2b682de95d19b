#include "orvsecutils/platform/languagecode.h"

namespace orvsecutils {

namespace {

constexpr int anysublanguage = -1;
constexpr int english = 3;

struct languagerow {
    int primary;
    int sublanguage;
    int code;
};

// In the order of the codes, which is the alphabetical order of the languages' English names.
constexpr languagerow languages[] = {
    {4, 1, 0},                 // Chinese, traditional
    {4, 2, 1},                 // Chinese, simplified
    {5, anysublanguage, 2},    // Czech
    {12, anysublanguage, 4},   // French
    {7, anysublanguage, 5},    // German
    {16, anysublanguage, 6},   // Italian
    {17, anysublanguage, 7},   // Japanese
    {18, anysublanguage, 8},   // Korean
    {21, anysublanguage, 9},   // Polish
    {22, 1, 10},               // Portuguese, Brazilian
    {25, anysublanguage, 11},  // Russian
    {10, anysublanguage, 12},  // Spanish
    {31, anysublanguage, 13},  // Turkish
};

}  // namespace

int languagecode(std::uint16_t languageid) {
    const int primary = languageid & 0x3FF;
    const int sublanguage = languageid >> 10;
    for (const languagerow& row : languages) {
        if (row.primary == primary && (row.sublanguage == anysublanguage || row.sublanguage == sublanguage)) {
            return row.code;
        }
    }
    return english;
}

}  // namespace orvsecutils
