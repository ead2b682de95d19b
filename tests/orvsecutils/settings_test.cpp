#include <windows.h>

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "orvsecutils/platform/windows/registry.h"
#include "orvsecutils/settings/settings.h"

using namespace orvsecutils;
using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

constexpr REGSAM view64 = KEY_WOW64_64KEY, view32 = KEY_WOW64_32KEY;

std::string bytesOf(std::wstring_view units) {
    return std::string(reinterpret_cast<const char*>(units.data()), units.size() * sizeof(wchar_t));
}

const std::string one = "\x01\0\0\0"s, two = "\x02\0\0\0"s;

// A registry key in one view, for looking at and writing the plain bytes.
struct RawKey {
    RawKey(HKEY hive, REGSAM view, const std::string& path) {
        HKEY opened = nullptr;
        RegCreateKeyExW(hive, toutf16(path).c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr, &opened, nullptr);
        key.reset(opened);
    }

    void write(const std::wstring& name, DWORD type, std::string bytes) const {
        const auto size = static_cast<DWORD>(bytes.size());
        bytes += "\x7F\x7F\x7F";  // the system would add a terminator that it happens to find behind the data
        ASSERT_EQ(RegSetValueExW(key.get(), name.c_str(), 0, type, reinterpret_cast<BYTE*>(bytes.data()), size), 0);
    }

    // "type:bytes" of a value, or "-".
    std::string read(const std::wstring& name) const {
        DWORD type = 0, size = 1000;
        std::string bytes(size, '\0');
        const LSTATUS status =
            RegQueryValueExW(key.get(), name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()), &size);
        return status == ERROR_SUCCESS ? std::to_string(type) + ":" + bytes.substr(0, size) : "-";
    }

    registrykey key;
};

// A value as a text that shows its kind.
std::string describe(const setting* value) {
    return !value                                ? "-"
           : value->type == settingtype::integer ? std::to_string(static_cast<const settingint*>(value)->value)
           : value->type == settingtype::string
               ? "'" + static_cast<const settingstring*>(value)->value + "'"
               : testing::PrintToString(static_cast<const settingmultistring*>(value)->value);
}

// What each getter returns for a name, with its output after that.
std::string gotten(const settings& group, const std::string& name) {
    std::uint32_t number = 99;
    std::int32_t signednumber = 98;
    bool truth = true;
    std::string text = "kept";
    std::vector<std::string> list = {"kept"};
    std::ostringstream all;
    all << group.getint(name, number) << ':' << number << ' ' << group.getint(name, signednumber) << ':' << signednumber
        << ' ' << group.getbool(name, truth) << ':' << truth << ' ' << group.getstring(name, text) << ':' << text << ' '
        << group.getmultistring(name, list) << ':' << testing::PrintToString(list);
    return all.str();
}

class Settings : public testing::Test {
protected:
    ~Settings() override {
        RegDeleteTreeW(HKEY_CURRENT_USER, toutf16("software\\" + company).c_str());
        for (const REGSAM view : {view64, view32}) {
            RegDeleteTreeW(RawKey(HKEY_LOCAL_MACHINE, view, "software").key.get(), toutf16(company).c_str());
        }
    }

    const std::string company = "orvsecutils-test-" + std::to_string(GetCurrentProcessId());
    const settingsdef definition{company, "", "group", "name \xD0\xB6", ""};
    const std::string path = "software\\" + company + "\\group\\name \xD0\xB6";
    const RawKey user{HKEY_CURRENT_USER, view64, path};
    const RawKey machine{HKEY_LOCAL_MACHINE, view64, path};
    const RawKey machine32{HKEY_LOCAL_MACHINE, view32, path};
};

}  // namespace

TEST_F(Settings, RegistryDataOfAnyShapeIsReadOrLeftOut) {
    const std::wstring longText(40000, L'\x416');
    const struct {
        DWORD type;
        std::string bytes, expected;
    } cases[] = {
        {REG_DWORD, "\xFF\xFF\xFF\xFF", "4294967295"},
        {REG_DWORD, "\x01\0\0\0\0\0\0\0"s, "-"},
        {REG_SZ, bytesOf(L"abc"), "-"},
        {REG_SZ, bytesOf(L"\x416\x20AC\xD83D\xDE00\0"sv), "'\xD0\x96\xE2\x82\xAC\xF0\x9F\x98\x80'"},
        {REG_SZ, bytesOf(L"a\0c\0"sv), "'a'"},
        {REG_SZ, bytesOf(longText + L'\0'), "'" + toutf8(longText) + "'"},
        {REG_EXPAND_SZ, bytesOf(L"\xE9 %OS%\0"sv), "'\xC3\xA9 Windows_NT'"},
        {REG_EXPAND_SZ, bytesOf(L"%OS%"), "-"},
        {REG_MULTI_SZ, bytesOf(L"\0\0"sv), "{}"},
        {REG_MULTI_SZ, bytesOf(L"a\0b\0"sv), "-"},
        {REG_MULTI_SZ, bytesOf(L"a\0b\0\0"sv), R"({ "a", "b" })"},
        {REG_MULTI_SZ, bytesOf(L"a\0\0b\0\0"sv), R"({ "a" })"},
        {REG_DWORD_BIG_ENDIAN, "\x01\0\0\0"s, "-"},
        {77, bytesOf(L"a\0"sv), "-"},
    };
    for (const auto& row : cases) {
        user.write(std::to_wstring(&row - cases), row.type, row.bytes);
    }
    const settings group(definition);
    std::size_t read = 0;
    for (const auto& row : cases) {
        EXPECT_EQ(describe(group.find(std::to_string(&row - cases))), row.expected) << "case " << &row - cases;
        read += row.expected != "-";
    }
    EXPECT_EQ(group.getnames().size(), read);
}

TEST_F(Settings, NamesOfAnyScriptAndLengthAreFound) {
    user.write(std::wstring(16383, L'z'), REG_DWORD, one);  // does not fit the buffer; the others are read all the same
    std::set<std::string> names;
    for (const std::wstring& name : {L""s, L"\x416\xD83D\xDE00"s, L"a\\b"s, std::wstring(16382, L'\x5B57')}) {
        user.write(name, REG_DWORD, one);
        names.insert(toutf8(name));
    }
    EXPECT_EQ(settings(definition).getnames(), names);
}

TEST_F(Settings, TextThatIsNotUtf16IsReportedNotChanged) {
    user.write(L"a", REG_SZ, bytesOf(L"\xD800\0"sv));
    user.write(L"\xDC00", REG_DWORD, one);
    user.write(L"z", REG_DWORD, two);
    EXPECT_THROW(settings{definition}, std::range_error);
    std::vector<std::wstring> malformed;
    const settingsmap others = readgroup(settingsscope::user, definition, &malformed);
    EXPECT_EQ(std::set<std::wstring>(malformed.begin(), malformed.end()), (std::set<std::wstring>{L"a", L"\xDC00"}));
    EXPECT_EQ(others.size(), 1u);
    EXPECT_EQ(describe(others.at("z").get()), "2");
}

TEST_F(Settings, WhatCannotBeConvertedIsNotWrittenInPart) {
    for (const auto& [name, text] : {std::pair("z\xFF", ""), {"z", "\xFF"}}) {
        settings group(definition);
        group.setint("a", 1);
        group.setstring(name, text);
        EXPECT_THROW(group.save(), std::range_error);
        EXPECT_EQ(user.read(L"a"), "-");
    }
}

TEST_F(Settings, TheUsersValueWinsWhateverItsKind) {
    user.write(L"both", REG_DWORD, one);
    machine.write(L"both", REG_DWORD, two);
    user.write(L"kinds", REG_SZ, bytesOf(L"1\0"sv));
    machine.write(L"kinds", REG_DWORD, two);
    machine.write(L"Machine", REG_DWORD, "\xFE\xFF\xFF\xFF");
    user.write(L"list", REG_MULTI_SZ, bytesOf(L"a\0b\0\0"sv));
    user.write(L"zero", REG_DWORD, std::string(4, '\0'));
    const settings group(definition);
    const std::pair<const char*, std::string> cases[] = {
        {"both", "1:1 1:1 1:1 0:kept 0:{ \"kept\" }"},
        {"zero", "1:0 1:0 1:0 0:kept 0:{ \"kept\" }"},
        {"Machine", "1:4294967294 1:-2 1:1 0:kept 0:{ \"kept\" }"},
        {"machine", "0:99 0:98 0:1 0:kept 0:{ \"kept\" }"},
        {"kinds", "0:99 0:98 0:1 1:1 0:{ \"kept\" }"},
        {"list", "0:99 0:98 0:1 0:kept 1:{ \"a\", \"b\" }"},
    };
    for (const auto& [name, answers] : cases) {
        EXPECT_EQ(gotten(group, name), answers) << name;
    }
    EXPECT_EQ(group.getnames(), (std::set<std::string>{"Machine", "both", "kinds", "list", "zero"}));
}

TEST_F(Settings, SaveWritesAllItCanAndNothingElse) {
    user.write(L"expand", REG_EXPAND_SZ, bytesOf(L"%OS%\0"sv));
    user.write(L"binary", REG_BINARY, "\x01");
    user.write(L"kind", REG_DWORD, one);
    machine.write(L"machine", REG_DWORD, one);
    settings(definition).setint("forgotten", 1);
    settings group(definition);
    group.setint("\xD0\x96", 0x80000000);
    group.setbool("truth", true);
    group.setstring("kind", "\xF0\x9F\x98\x80");
    EXPECT_EQ(describe(group.find("kind")), "'\xF0\x9F\x98\x80'") << "seen before it is saved";
    EXPECT_TRUE(group.save());
    user.write(L"a list", REG_MULTI_SZ, bytesOf(L"a\0\0"sv));
    settings withList(definition);
    withList.setstring("empty", "");
    EXPECT_FALSE(withList.save());

    const std::pair<std::wstring, std::string> cases[] = {
        {L"\x416", "4:\0\0\0\x80"s},
        {L"truth", "4:\x01\0\0\0"s},
        {L"kind", "1:" + bytesOf(L"\xD83D\xDE00\0"sv)},
        {L"expand", "1:" + bytesOf(L"Windows_NT\0"sv)},
        {L"empty", "1:" + bytesOf(L"\0"sv)},
        {L"binary", "3:\x01"},
        {L"a list", "7:" + bytesOf(L"a\0\0"sv)},
        {L"forgotten", "-"},
        {L"machine", "-"},
    };
    for (const auto& [name, stored] : cases) {
        EXPECT_EQ(user.read(name), stored) << toutf8(name);
    }

    settings nowhere(settingsdef(company, "", "", std::string(300, 'x'), ""));
    EXPECT_FALSE(nowhere.save()) << "no key has so long a name";
}

TEST_F(Settings, TheMachineIsReadIn64BitsAndWrittenIn32) {
    const platform& system = currentplatform();
    machine.write(L"value", REG_DWORD, one);
    machine32.write(L"value", REG_DWORD, two);
    EXPECT_EQ(describe(system.readsettings(settingsscope::machine, definition)["value"].get()), "1");
    settingsmap values;
    values["value"] = makesetting(3);
    EXPECT_TRUE(system.writesettings(settingsscope::machine, definition, values));
    EXPECT_EQ(machine.read(L"value"), "4:\x01\0\0\0"s);
    EXPECT_EQ(machine32.read(L"value"), "4:\x03\0\0\0"s);

    // Any other scope is the user's.
    EXPECT_TRUE(system.writesettings(static_cast<settingsscope>(7), definition, values));
    EXPECT_EQ(user.read(L"value"), "4:\x03\0\0\0"s);
    EXPECT_TRUE(system.settingsexist(static_cast<settingsscope>(-1), definition));
    EXPECT_TRUE(system.settingsexist(settingsscope::machine, definition));
    EXPECT_FALSE(system.settingsexist(settingsscope::user, settingsdef(company, "", "group", "", "no such")));
}

TEST_F(Settings, AGroupByNameLiesUnderTheLibrarysOwnKey) {
    settings group(company);
    group.setint("a", 5);
    EXPECT_TRUE(group.save());
    EXPECT_EQ(RawKey(HKEY_CURRENT_USER, view64, "software\\Orvel\\LoginManager\\" + company).read(L"a"),
              "4:\x05\0\0\0"s);
    RegDeleteTreeW(HKEY_CURRENT_USER, toutf16("software\\Orvel\\LoginManager\\" + company).c_str());
}

TEST_F(Settings, LoadingAndSavingLeavesNoHandleOpen) {
    // Wine does not count handles; but a new one takes the lowest number that is free.
    const auto firstFree = [] {
        const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        CloseHandle(event);
        return event;
    };
    settings(definition).save();
    const HANDLE before = firstFree();
    for (int i = 0; i < 1000; ++i) {
        settings group(definition);
        group.setint("a", i);
        ASSERT_TRUE(group.save());
    }
    EXPECT_EQ(firstFree(), before);
}
