#include <windows.h>

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <stdexcept>
#include <string>

#include "orvsecutils/platform/platformerror.h"
#include "orvsecutils/platform/rules.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/registryformat.h"

using namespace orvsecutils;
using namespace std::string_literals;

namespace {

std::optional<std::wstring> converted(const std::string& text) {
    try {
        return toutf16(text);
    } catch (const std::range_error&) {
        return std::nullopt;
    }
}

std::optional<std::wstring> convertedBySystem(const std::string& text) {
    wchar_t buffer[64];
    const auto bytes = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), bytes, buffer, 64);
    return units > 0 ? std::make_optional(std::wstring(buffer, units)) : std::nullopt;
}

}  // namespace

TEST(Unicode, EveryScalarValueIsConvertedAsTheSystemDoes) {
    std::wstring all;
    for (unsigned scalar = 0; scalar <= 0x10FFFF; ++scalar) {
        if (scalar >= 0x10000) {
            all += {static_cast<wchar_t>(0xD7C0 + (scalar >> 10)), static_cast<wchar_t>(0xDC00 + (scalar & 0x3FF))};
        } else if (scalar < 0xD800 || scalar > 0xDFFF) {
            all += static_cast<wchar_t>(scalar);
        }
    }
    std::string narrow(3 * all.size(), '\0');
    narrow.resize(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, all.data(), static_cast<int>(all.size()),
                                      narrow.data(), static_cast<int>(narrow.size()), nullptr, nullptr));
    EXPECT_TRUE(toutf8(all) == narrow);
    EXPECT_TRUE(toutf16(narrow) == all);
}

TEST(Unicode, MalformedUtf8IsRefusedWhereTheSystemRefusesIt) {
    // Pairs of bytes, alone and in front of continuations that may or may not complete a sequence.
    for (int first = 0x70; first <= 0xFF; ++first) {
        for (int second = 0; second <= 0xFF; ++second) {
            for (const char* rest : {"", "\x80", "\xBF\xBF", "\x80\x80\x80", "a"}) {
                const std::string text = std::string{static_cast<char>(first), static_cast<char>(second)} + rest;
                ASSERT_EQ(converted(text), convertedBySystem(text)) << std::hex << first << ' ' << second;
            }
        }
    }
    // Not left to the system alone: cut short, overlong, an encoded surrogate, above U+10FFFF.
    for (const char* text : {"\xF0\x9F\x98", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"}) {
        EXPECT_FALSE(converted(text)) << text;
    }
}

TEST(Unicode, LoneSurrogatesAreRefused) {
    const std::wstring high(1, wchar_t{0xD83D}), low(1, wchar_t{0xDE00});
    for (const std::wstring& text : {high, low, low + high, high + L"a", high + high + low, L"a" + high}) {
        EXPECT_THROW(toutf8(text), std::range_error);
    }
}

TEST(Unicode, BuffersThatCannotBeHadSaySo) {
    const auto failure = [](std::int64_t units) -> std::uint32_t {
        try {
            return utf16buffer(units).empty();
        } catch (const platformerror& error) {
            return error.code;
        }
    };
    EXPECT_EQ(failure(-1), platformerror::invalidargument);
    EXPECT_EQ(failure(std::numeric_limits<std::int64_t>::max()), platformerror::invalidargument);
    EXPECT_EQ(failure(static_cast<std::int64_t>(std::wstring().max_size())), platformerror::generalfailure);
}

TEST(Rules, LanguagesHaveTheLibrarysNumbers) {
    const struct {
        int language, sublanguage, code;
    } cases[] = {
        {LANG_CHINESE, SUBLANG_CHINESE_TRADITIONAL, 0},
        {LANG_CHINESE, SUBLANG_CHINESE_SIMPLIFIED, 1},
        {LANG_CHINESE, SUBLANG_CHINESE_HONGKONG, 3},
        {LANG_CZECH, 1, 2},
        {LANG_ENGLISH, SUBLANG_ENGLISH_UK, 3},
        {LANG_DUTCH, 1, 3},
        {LANG_FRENCH, SUBLANG_FRENCH_CANADIAN, 4},
        {LANG_GERMAN, SUBLANG_GERMAN_AUSTRIAN, 5},
        {LANG_ITALIAN, 1, 6},
        {LANG_JAPANESE, 1, 7},
        {LANG_KOREAN, 1, 8},
        {LANG_POLISH, 1, 9},
        {LANG_PORTUGUESE, SUBLANG_PORTUGUESE_BRAZILIAN, 10},
        {LANG_PORTUGUESE, SUBLANG_PORTUGUESE, 3},
        {LANG_RUSSIAN, 1, 11},
        {LANG_SPANISH, 63, 12},
        {LANG_TURKISH, 1, 13},
    };
    for (const auto& [language, sublanguage, code] : cases) {
        EXPECT_EQ(languagecode(MAKELANGID(language, sublanguage)), code) << language << '/' << sublanguage;
    }
}

TEST(Rules, TheLastAdaptersAddressWins) {
    struct fake final : wmi {
        bool query(const std::string& text, std::vector<wmirow>& found) const override {
            EXPECT_EQ(text, "SELECT MACAddress FROM Win32_NetworkAdapterConfiguration WHERE IPEnabled=TRUE");
            found = rows;
            return !rows.empty();
        }
        std::vector<wmirow> rows;
    } connection;
    EXPECT_EQ(adapteraddress(&connection), "");
    connection.rows = {{{"MACAddress", "02"}}, {{"MACAddress", "01"}}, {{"Caption", "03"}}, {}};
    EXPECT_EQ(adapteraddress(&connection), "01");
    EXPECT_EQ(adapteraddress(nullptr), "") << "without a connection";
}

TEST(Rules, TextsAreJoinedAsTheyAre) {
    EXPECT_EQ(joinarguments({"", "", "a"}), "a");
    EXPECT_EQ(joinarguments({"a", "", "b c", ""}), "a  b c ");
    EXPECT_EQ(joindependencies(nullptr), "");
    EXPECT_EQ(joindependencies(L""), "");
    EXPECT_EQ(joindependencies(L"one\0\x416\0"), "one\0\xD0\x96"s);
    EXPECT_EQ(grouppath(settingsdef("c", "id", "g", "n", "")), "software\\c\\g\\n");
    EXPECT_EQ(grouppath(settingsdef("c", "id", "", "n", "r")), "r\\c\\n");
    EXPECT_EQ(grouppath(settingsdef("c", "id", "g", "", "r")), "r\\c\\g");
}

TEST(Rules, RegistryDataIsReadNoFurtherThanItsBytes) {
    // The data is followed by what would complete it, so that a reader who goes on is found out.
    const std::uint64_t number = 7;
    const wchar_t text[] = L"ab\0", list[] = L"a\0b\0\0";
    for (std::size_t bytes = 0; bytes <= 12; ++bytes) {
        EXPECT_EQ(decodedword(&number, bytes).has_value(), bytes == 4) << bytes;
        EXPECT_EQ(decodetext(text, bytes <= 8 ? bytes : 0).has_value(), bytes == 6 || bytes == 8) << bytes;
        EXPECT_EQ(decodelist(list, bytes).has_value(), bytes == 10 || bytes == 12) << bytes;
    }
}
