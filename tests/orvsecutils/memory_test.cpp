#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "orvsecutils/log/log.h"
#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/platformerror.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/settings/settings.h"
#include "tests/orvsecutils/failing_new.h"

using namespace orvsecutils;

namespace {

// Runs `action` again and again, failing its first allocation, then its second and so on, until none fails. Each time
// all that it allocated must be freed again.
void faileach(const char* what, const std::function<void()>& action) {
    for (long allocation = 1;; ++allocation) {
        SCOPED_TRACE(std::string(what) + ", allocation " + std::to_string(allocation));
        bool failed = false;
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
        const bool missed = memory::countdown > 0;
        memory::countdown = 0;
        EXPECT_EQ(memory::live, before) << "allocations that are not freed";
        EXPECT_EQ(failed, !missed);
        if (missed) {
            EXPECT_GT(allocation, 1) << "nothing was allocated";
            return;
        }
    }
}

TEST(ExhaustedMemory, LosesNothingAndLeavesNothingHalf) {
    const std::string company = "orvsecutils-test-" + std::to_string(GetCurrentProcessId());
    const settingsdef definition(company, "", "group with a long name", "", "");
    const std::string number = "a number with a long name", text = "a text with a long name", longtext(100, 'x');
    settings group(definition);
    group.setint(number, 1);
    group.setstring(text, longtext);
    EXPECT_TRUE(group.save());
    const std::string pattern = currentplatform().executablefolder() + "\\*";

    loginfo();
    faileach("a later record", [] { loginfo() << 1; });
    faileach("load", [&] { EXPECT_EQ(settings(definition).getnames().size(), 2u); });
    faileach("findfiles", [&] {
        std::vector<fileentry> entries;
        EXPECT_TRUE(currentplatform().findfiles(pattern, entries));
    });
    faileach("paths", [&] {
        EXPECT_FALSE(currentplatform().createdirectory("Q:\\none\\" + longtext));
        EXPECT_EQ(currentplatform().executablename(), "memory_test.exe");
    });
    faileach("getters", [&] {
        std::string output;
        EXPECT_TRUE(group.getstring(text, output));
    });
    faileach("setters", [&] {
        settings changed(group);
        try {
            changed.setint("one more number", 7);
            changed.setstring(number, longtext);
        } catch (const std::bad_alloc&) {
            for (const std::string& name : changed.getnames()) {
                EXPECT_NE(changed.find(name), nullptr) << name;
            }
            std::uint32_t value = 0;
            EXPECT_TRUE(changed.getint(number, value)) << "the last change was not begun";
            throw;
        }
    });
    group.setint("a", 5);
    faileach("save", [&] {
        EXPECT_EQ(settings(definition).find("a"), nullptr) << "written in part";
        EXPECT_TRUE(group.save());
    });
    RegDeleteTreeW(HKEY_CURRENT_USER, toutf16("software\\" + company).c_str());
}

}  // namespace
