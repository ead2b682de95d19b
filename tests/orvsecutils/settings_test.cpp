#include <windows.h>

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

#include "orvsecutils/log/log.h"
#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/platformerror.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "orvsecutils/platform/windows/registry.h"
#include "orvsecutils/settings/settings.h"
#include "tests/orvsecutils/failing_new.h"
#include "tests/support/rawkey.h"
#include "tests/support/system.h"

using namespace orvsecutils;
using namespace std::string_literals;
using namespace std::string_view_literals;
using namespace testing;

namespace {

const std::string one = "\x01\0\0\0"s, two = "\x02\0\0\0"s, three = "\x03\0\0\0"s;
const std::string none = "- - - - - ";  // see getterresults()

// The value that a getter finds; "-" if it finds none and leaves its output untouched.
template <class Value>
std::string getterresult(const settings& group, const std::string& name,
                         bool (settings::*getter)(std::string_view, Value&) const, Value output) {
    const Value before = output;
    return (group.*getter)(name, output) ? PrintToString(output) + " " : output == before ? "- " : "changed ";
}

// The results of all getters.
std::string getterresults(const settings& group, const std::string& name) {
    return getterresult<std::uint32_t>(group, name, &settings::getint, 99) +
           getterresult<std::int32_t>(group, name, &settings::getint, 98) +
           getterresult(group, name, &settings::getbool, true) +
           getterresult(group, name, &settings::getstring, "old"s) +
           getterresult(group, name, &settings::getmultistring, {"old"s});
}

class Settings : public Test {
protected:
    ~Settings() override { removecompany(toutf16(company)); }

    const std::string company = "orvsecutils-test-" + std::to_string(GetCurrentProcessId());
    const settingsdef definition{company, "", "group", "name \xD0\xB6", ""};
    const std::string path = "software\\" + company + "\\group\\name \xD0\xB6";
    const rawkey user{HKEY_CURRENT_USER, view64, path};
    const rawkey machine{HKEY_LOCAL_MACHINE, view64, path};
    const rawkey machine32{HKEY_LOCAL_MACHINE, view32, path};
};

TEST_F(Settings, RegistryDataOfAnyShapeIsReadOrLeftOut) {
    const auto read = [this](DWORD type, const std::string& bytes) {
        user.write(L"value", type, bytes);
        return getterresults(settings(definition), "value");
    };
    const auto text = [](const std::string& content) { return "- - - " + PrintToString(content) + " - "; };
    const std::wstring longtext(40000, L'\x416');
    EXPECT_EQ(read(REG_DWORD, "\xFE\xFF\xFF\xFF"), "4294967294 -2 true - - ");
    EXPECT_EQ(read(REG_DWORD, "\0\0\0\0"s), "0 0 false - - ");
    EXPECT_EQ(read(REG_DWORD, "\x01\0\0\0\0\0\0\0"s), none);
    EXPECT_EQ(read(REG_SZ, bytesof(L"abc")), none);
    EXPECT_EQ(read(REG_SZ, bytesof(L"\x416\xD83D\xDE00\0"sv)), text("\xD0\x96\xF0\x9F\x98\x80"));
    EXPECT_EQ(read(REG_SZ, bytesof(L"a\0c\0"sv)), text("a"));
    EXPECT_EQ(read(REG_SZ, bytesof(longtext + L'\0')), text(toutf8(longtext)));
    EXPECT_EQ(read(REG_EXPAND_SZ, bytesof(L"\xE9 %OS%\0"sv)), text("\xC3\xA9 Windows_NT"));
    EXPECT_EQ(read(REG_MULTI_SZ, bytesof(L"\0\0"sv)), "- - - - {} ");
    EXPECT_EQ(read(REG_MULTI_SZ, bytesof(L"a\0b\0\0c\0\0"sv)), R"(- - - - { "a", "b" } )");
    EXPECT_EQ(read(REG_MULTI_SZ, bytesof(L"a\0b\0"sv)), none);
    EXPECT_EQ(read(77, bytesof(L"a\0"sv)), none);
    EXPECT_THAT(settings(definition).getnames(), IsEmpty());
}

TEST_F(Settings, NamesOfAnyScriptAndLengthAreFound) {
    user.write(std::wstring(16383, L'z'), REG_DWORD, one);  // does not fit the buffer; the others are still read
    std::set<std::string> names;
    for (const std::wstring& name : {L""s, L"\x416\xD83D\xDE00"s, L"a\\b"s, std::wstring(16382, L'\x5B57')}) {
        user.write(name, REG_DWORD, one);
        names.insert(toutf8(name));
    }
    EXPECT_EQ(settings(definition).getnames(), names);
}

TEST_F(Settings, MalformedTextIsReportedNotChanged) {
    for (const auto& [name, text] : {std::pair("z\xFF", ""), {"z", "\xFF"}}) {
        settings group(definition);
        group.setint("a", 1);
        group.setstring(name, text);
        EXPECT_THROW(group.save(), std::range_error);
        EXPECT_EQ(user.read(L"a"), ":") << "written in part";
    }
    user.write(L"a", REG_SZ, bytesof(L"\xD800\0"sv));
    user.write(L"\xDC00", REG_DWORD, one);
    user.write(L"z", REG_DWORD, two);
    EXPECT_THROW(settings{definition}, std::range_error);
    std::vector<unusedvalue> unused;
    EXPECT_THAT(readvalues(user.key.get(), &unused), ElementsAre(Key("z")));
    EXPECT_THAT(unused, UnorderedElementsAre(Field(&unusedvalue::name, L"a"), Field(&unusedvalue::name, L"\xDC00")));
}

TEST_F(Settings, TheUsersValueWinsWhateverItsKind) {
    if (!administrator()) {
        GTEST_SKIP() << needsrights;
    }
    user.write(L"both", REG_DWORD, one);
    machine.write(L"both", REG_DWORD, two);
    user.write(L"kinds", REG_SZ, bytesof(L"1\0"sv));
    machine.write(L"kinds", REG_DWORD, two);
    machine.write(L"Machine", REG_DWORD, two);
    machine32.write(L"Machine", REG_DWORD, three);
    const settings group(definition);
    EXPECT_EQ(getterresults(group, "both"), "1 1 true - - ");
    EXPECT_EQ(getterresults(group, "kinds"), "- - - \"1\" - ");
    EXPECT_EQ(getterresults(group, "Machine"), "2 2 true - - ");
    EXPECT_EQ(getterresults(group, "machine"), none);
    EXPECT_THAT(group.getnames(), ElementsAre("Machine", "both", "kinds"));
}

TEST_F(Settings, SaveWritesAllItCanAndNothingElse) {
    if (!administrator()) {
        GTEST_SKIP() << needsrights;
    }
    user.write(L"expand", REG_EXPAND_SZ, bytesof(L"%OS%\0"sv));
    user.write(L"kind", REG_DWORD, one);
    machine.write(L"machine", REG_DWORD, one);
    settings(definition).setint("forgotten", 1);
    settings group(definition);
    group.setint("\xD0\x96", 0x80000000);
    group.setbool("true", true);
    group.setbool("false", false);
    group.setstring("kind", "\xE5\xAD\x97");
    EXPECT_TRUE(group.save());
    user.write(L"a list", REG_MULTI_SZ, bytesof(L"a\0\0"sv));
    settings withlist(definition);
    withlist.setstring("empty", "");
    EXPECT_FALSE(withlist.save());
    EXPECT_EQ(user.read(L"\x416"), "4:\0\0\0\x80"s);
    EXPECT_EQ(user.read(L"true"), "4:" + one);
    EXPECT_EQ(user.read(L"false"), "4:\0\0\0\0"s);
    EXPECT_EQ(user.read(L"kind"), "1:" + bytesof(L"\x5B57\0"sv));
    EXPECT_EQ(user.read(L"expand"), "1:" + bytesof(L"Windows_NT\0"sv));
    EXPECT_EQ(user.read(L"empty"), "1:\0\0"s);
    EXPECT_EQ(user.read(L"a list"), "7:" + bytesof(L"a\0\0"sv));
    EXPECT_EQ(user.read(L"forgotten"), ":");
    EXPECT_EQ(user.read(L"machine"), ":");
    EXPECT_FALSE(settings(settingsdef(company, "", "", std::string(300, 'x'), "")).save()) << "no key has such a name";
}

TEST_F(Settings, TheMachinesValuesAreReadIn64BitsAndWrittenInTheOwnView) {
    if (!administrator()) {
        GTEST_SKIP() << needsrights;
    }
    constexpr bool is64bit = sizeof(void*) == 8;
    const platform& system = currentplatform();
    settingsmap values;
    values["value"] = makesetting(3);
    EXPECT_TRUE(system.writesettings(settingsscope::machine, definition, values));
    EXPECT_EQ((is64bit ? machine : machine32).read(L"value"), "4:" + three);
    EXPECT_EQ((is64bit ? machine32 : machine).read(L"value"), ":");
    EXPECT_TRUE(system.writesettings(static_cast<settingsscope>(7), definition, values));
    EXPECT_EQ(user.read(L"value"), "4:" + three) << "any other scope is the user's";
    EXPECT_EQ(rawkey(HKEY_CURRENT_USER, view32, path).read(L"value"), "4:" + three) << "the user has only one view";
    const settingsdef written(company, "", "written", "", "");
    EXPECT_TRUE(system.writesettings(settingsscope::machine, written, values));
    EXPECT_EQ(system.settingsexist(settingsscope::machine, written), is64bit);
    EXPECT_FALSE(system.settingsexist(settingsscope::user, written));
    EXPECT_TRUE(system.settingsexist(settingsscope::machine, definition));
}

TEST_F(Settings, LoadingAndSavingLeavesNoHandleOpen) {
    settings(definition).save();
    const std::uintptr_t before = openhandles();
    for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(settings(definition).save());
        EXPECT_TRUE(currentplatform().settingsexist(settingsscope::user, definition));
    }
    EXPECT_LT(openhandles(), before + 100) << "a leak is of at least 1000";
}

// Repeats `action`: first its first allocation fails, then its second, and so on, until none fails. Each time
// everything that it allocated must be freed.
void faileach(const char* what, const std::function<void()>& action) {
    bool failed = true;
    for (long allocation = 1; failed; ++allocation) {
        SCOPED_TRACE(std::string(what) + ", allocation " + std::to_string(allocation));
        failed = false;
        const long before = memory::live;
        memory::countdown = allocation;
        try {
            action();
        } catch (const std::bad_alloc&) {
            failed = true;
        } catch (const platformerror& error) {
            failed = true;
            EXPECT_EQ(error.code, platformerror::generalfailure);
        }
        EXPECT_EQ(memory::countdown == 0, failed) << "a failed allocation must be reported";
        memory::countdown = 0;
        EXPECT_EQ(memory::live, before) << "allocations that are not freed";
        EXPECT_TRUE(failed || allocation > 1) << "nothing was allocated";
    }
}

TEST_F(Settings, ExhaustedMemoryLosesNothingAndLeavesNothingHalfWritten) {
    const std::string number = "a number with a long name", text = "a text with a long name", longtext(100, 'x');
    settings group(definition);
    group.setint(number, 1);
    group.setstring(text, longtext);
    EXPECT_TRUE(group.save());
    removecompany(L"Orvel");  // logging is off
    loginfo();
    faileach("a later record", [] { loginfo() << 1; });
    faileach("load", [&] { EXPECT_EQ(settings(definition).getnames().size(), 2u); });
    group.setint("a", 5);
    faileach("save", [&] {
        EXPECT_EQ(user.read(L"a"), ":") << "written in part";
        EXPECT_TRUE(group.save());
    });
}

}  // namespace
