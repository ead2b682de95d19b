#include <windows.h>

#include <gmock/gmock.h>

#include <limits>
#include <stdexcept>

#include "orvsecutils/log/recordheader.h"
#include "orvsecutils/log/walltime.h"
#include "orvsecutils/platform/joining.h"
#include "orvsecutils/platform/languagecode.h"
#include "orvsecutils/platform/platformerror.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/registryformat.h"
#include "orvsecutils/platform/wmi.h"
#include "tests/orvsecutils/failing_new.h"

using namespace orvsecutils;
using namespace std::string_literals;
using namespace testing;

TEST(Unicode, EveryScalarValueIsConvertedAsTheSystemDoes) {
    std::wstring all;
    for (unsigned scalar = 0; scalar <= 0x10FFFF; scalar += scalar == 0xD7FF ? 0x801 : 1) {
        if (scalar >= 0x10000) {
            all += static_cast<wchar_t>(0xD7C0 + (scalar >> 10));
        }
        all += static_cast<wchar_t>(scalar < 0x10000 ? scalar : 0xDC00 + (scalar & 0x3FF));
    }
    std::string narrow(3 * all.size(), '\0');
    narrow.resize(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, all.data(), static_cast<int>(all.size()),
                                      narrow.data(), static_cast<int>(narrow.size()), nullptr, nullptr));
    EXPECT_TRUE(toutf8(all) == narrow);
    EXPECT_TRUE(toutf16(narrow) == all);
}

TEST(Unicode, MalformedTextIsRefused) {
    // No lead byte, truncated, overlong, an encoded surrogate, above U+10FFFF: each just outside the allowed range.
    for (const char* text : {"\x80", "\xBF", "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xC3(", "\xE2\x82(", "\xF0\x9F(\x80",
                             "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
                             "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF"}) {
        EXPECT_THROW(toutf16(text), std::range_error) << PrintToString(text);
    }
    for (const wchar_t* text : {L"\xD83D", L"\xDE00", L"\xDE00\xD83D", L"\xD83Dz", L"\xD83D\xD83D\xDE00"}) {
        EXPECT_THROW(toutf8(text), std::range_error) << PrintToString(text);
    }
}

TEST(Unicode, ImpossibleBuffersAreErrors) {
    const auto failure = [](std::uint32_t code, const char* what) {
        return Throws<platformerror>(
            AllOf(Field(&platformerror::code, code), Property(&platformerror::what, StrEq(what))));
    };
    EXPECT_EQ(utf16buffer(5), std::wstring(5, L'\0'));
    EXPECT_THAT([] { utf16buffer(-1); }, failure(0x80070057, "invalid argument"));
    EXPECT_THAT([] { utf16buffer(std::numeric_limits<std::int64_t>::max()); }, failure(0x80070057, "invalid argument"));
    const auto withoutmemory = [] {
        memory::countdown = 1;
        utf16buffer(100);
    };
    EXPECT_THAT(withoutmemory, failure(0x80004005, "general failure"));
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
            return false;
        }
        std::vector<wmirow> rows = {{{"MACAddress", "02"}}, {{"MACAddress", "01"}}, {{"Caption", "03"}}, {}};
    } connection;
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
    // The data is followed by units that would complete it, to detect a decoder that reads too far.
    const std::uint64_t number = 7;
    const wchar_t text[] = L"ab\0", list[] = L"a\0b\0\0";
    for (std::size_t bytes = 0; bytes <= 12; ++bytes) {
        EXPECT_EQ(decodedword(&number, bytes).has_value(), bytes == 4) << bytes;
        EXPECT_EQ(decodetext(text, bytes <= 8 ? bytes : 0).has_value(), bytes == 6 || bytes == 8) << bytes;
        EXPECT_EQ(decodelist(list, bytes).has_value(), bytes == 10 || bytes == 12) << bytes;
    }
}

namespace {

std::string text(const walltime& time) {
    const auto characters = timetext(time);
    return {characters.data(), characters.size()};
}

std::string calendartext(const SYSTEMTIME& time) {
    return text({time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, 0}).substr(0, 19);
}

std::int64_t ticks(const FILETIME& time) {
    return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

}  // namespace

TEST(RecordHeader, HasEveryFieldAtItsWidth) {
    std::stringbuf header;
    putheader(header, {2026, 11, 13, 23, 6, 40, 60}, 1, "host.exe");
    EXPECT_EQ(header.str(), "11/13/2026 23:06:40+0100,warn,host.exe,");
    EXPECT_EQ(text({2027, 1, 2, 3, 4, 5, 0}), "01/02/2027 03:04:05+0000");
    EXPECT_EQ(text({2027, 1, 2, 3, 4, 5, -30}), "01/02/2027 03:04:05-0030");
}

TEST(LocalTime, FollowsTheZoneThroughTheYear) {
    // A bias is in minutes behind UTC. A transition is on the n-th Sunday of a month; 5 means the last.
    const TIME_ZONE_INFORMATION berlin = {-60, L"", {0, 10, 0, 5, 3, 0, 0, 0}, 0, L"", {0, 3, 0, 5, 2, 0, 0, 0}, -60};
    const TIME_ZONE_INFORMATION stjohns = {210, L"", {0, 11, 0, 1, 2, 0, 0, 0}, 0, L"", {0, 3, 0, 2, 2, 0, 0, 0}, -60};
    const std::tuple<const TIME_ZONE_INFORMATION&, SYSTEMTIME, const char*> cases[] = {
        {berlin, {2026, 3, 0, 29, 0, 59, 59, 999}, "03/29/2026 01:59:59+0100"},
        {berlin, {2026, 7, 0, 31, 22, 0, 0, 0}, "08/01/2026 00:00:00+0200"},
        {berlin, {2026, 10, 0, 25, 1, 0, 0, 0}, "10/25/2026 02:00:00+0100"},
        {stjohns, {2026, 1, 0, 1, 0, 0, 0, 0}, "12/31/2025 20:30:00-0330"}};
    for (const auto& [zone, utc, local] : cases) {
        FILETIME time = {};
        SystemTimeToFileTime(&utc, &time);
        EXPECT_EQ(text(atoffset(ticks(time), utcoffset(ticks(time), &zone))), local);
    }
}

TEST(LocalTime, AgreesWithTheSystem) {
    SYSTEMTIME before, after;
    FILETIME moment;
    currentwalltime();
    GetLocalTime(&before);
    const walltime now = currentwalltime();  // with the offset that the first call has cached
    GetLocalTime(&after);
    GetSystemTimeAsFileTime(&moment);
    EXPECT_THAT(text(now), AnyOf(StartsWith(calendartext(before)), StartsWith(calendartext(after))));
    EXPECT_EQ(now.offset, utcoffset(ticks(moment), nullptr));
}
