#include <windows.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

#include "orvsecutils/platform/platformerror.h"
#include "orvsecutils/platform/rules.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/registryformat.h"

using namespace orvsecutils;
using namespace std::string_literals;

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

TEST(Unicode, MalformedTextIsRefused) {
    // Not a lead, cut short, overlong, an encoded surrogate, above U+10FFFF; each just outside of what is allowed.
    for (const char* text : {"\x80", "\xBF", "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xC3(", "\xE2\x82(", "\xF0\x9F(\x80",
                             "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
                             "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF"}) {
        EXPECT_THROW(toutf16(text), std::range_error) << testing::PrintToString(text);
    }
    for (const std::wstring& text : {L"\xD83D"s, L"\xDE00"s, L"\xDE00\xD83D"s,
                                     L"\xD83D"
                                     L"a"s,
                                     L"\xD83D\xD83D\xDE00"s}) {
        EXPECT_THROW(toutf8(text), std::range_error);
    }
}

TEST(Unicode, BuffersThatCannotBeHadSaySo) {
    const auto failure = [](std::int64_t units) {
        try {
            return std::pair(utf16buffer(units).size(), std::string("none"));
        } catch (const platformerror& error) {
            return std::pair(std::size_t{error.code}, std::string(error.what()));
        }
    };
    EXPECT_EQ(failure(5), std::pair(std::size_t{5}, "none"s));
    EXPECT_EQ(failure(-1), std::pair(std::size_t{0x80070057}, "invalid argument"s));
    EXPECT_EQ(failure(std::numeric_limits<std::int64_t>::max()), failure(-1));
    EXPECT_EQ(failure(static_cast<std::int64_t>(std::wstring().max_size())),
              std::pair(std::size_t{0x80004005}, "general failure"s));
    EXPECT_STREQ(platformerror(platformerror::outofmemory).what(), "out of memory");
}

TEST(Rules, LanguagesHaveTheLibrarysNumbers) {
    // zh-TW zh-CN zh-HK cs en-GB nl fr-CA de-AT it ja ko pl pt-BR pt-PT ru es-419 tr
    const std::pair<std::uint16_t, int> cases[] = {
        {0x404, 0}, {0x804, 1}, {0xC04, 3}, {0x405, 2},  {0x809, 3}, {0x413, 3},  {0xC0C, 4},   {0xC07, 5}, {0x410, 6},
        {0x411, 7}, {0x412, 8}, {0x415, 9}, {0x416, 10}, {0x816, 3}, {0x419, 11}, {0x580A, 12}, {0x41F, 13}};
    for (const auto& [language, code] : cases) {
        EXPECT_EQ(languagecode(language), code) << std::hex << language;
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
    EXPECT_EQ(joindependencies(L"a\0\x416\0"), "a\0\xD0\x96"s);
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
