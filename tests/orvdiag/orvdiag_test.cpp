#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "orvsecutils/log/appendfile.h"
#include "orvsecutils/platform/unicode.h"
#include "tests/orvsecutils/sandbox.h"
#include "tools/orvdiag/assembly.h"
#include "tools/orvdiag/commandline.h"
#include "tools/orvdiag/filetail.h"
#include "tools/orvdiag/json.h"
#include "tools/orvdiag/settingslist.h"

using namespace orvdiag;
using orvsecutils::makesetting;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::filesystem::path manager = program::ownfolder() / "OrvelLoginManagerClient";

TEST(CommandLine, TellsOneThingThatIsWrong) {
    const struct {
        std::vector<std::string> texts;
        const char* complaint;  // how it starts; empty when there is none
        bool help;
    } cases[] = {
        {{}, "", true},
        {{"--help"}, "", true},
        {{"settings", "Größe"}, "", false},
        {{"settings", "--help"}, "", true},
        {{"logging"}, "", false},
        {{"fact"}, "unknown command 'fact'", false},
        {{"facts", "all"}, "one word too many: 'all'", false},
        {{"facts", "--follow"}, "unknown option '--follow'", false},
        {{"logging", "On"}, "unknown word 'On'", false},
        {{"settings"}, "GROUP is missing", false},
        {{"login", ""}, "DIR is missing", false},
    };
    for (const auto& row : cases) {
        const request asked = parse(row.texts);
        EXPECT_THAT(asked.complaint, StartsWith(row.complaint));
        EXPECT_EQ(asked.complaint.empty(), *row.complaint == '\0') << asked.complaint;
        EXPECT_EQ(asked.help, row.help);
    }
}

TEST(Texts, StayWithinJson) {
    EXPECT_EQ(jsonstring("C:\\a \"b\"\n\x1F\x7F日本"), "\"C:\\\\a \\\"b\\\"\\u000a\\u001f\\u007f日本\"");
}

TEST(Texts, ListTheValueThatWinsAndTheOneItHides) {
    orvsecutils::settingsmap user;
    orvsecutils::settingsmap machine;
    user["b"] = makesetting(4294967295u);
    machine["b"] = makesetting(std::string("x"));
    machine["a"] = makesetting(std::vector<std::string>{"1", ""});
    EXPECT_EQ(listing(user, machine),
              "NAME  KIND    VALUE       SCOPE\n"
              "a     list    [\"1\", \"\"]   machine\n"
              "b     number  4294967295  user\n"
              "b     text    \"x\"         machine, hidden by the user's\n");
}

TEST(FileTail, CutsAtLines) {
    EXPECT_EQ(lastlines("a\r\nb\r\nc\r\n", 2, false), "b\nc\n");
    EXPECT_EQ(lastlines("a\nb\nc", 2, false), "b\nc");
    EXPECT_EQ(lastlines("a\nb\n", 9, false), "a\nb\n");
    EXPECT_EQ(lastlines("a\nb\n", 9, true), "b\n");
    EXPECT_EQ(lastlines("", 1, false), "");
}

TEST(FileTail, FollowsGrowthAndANewFile) {
    const sandbox box;
    create_directories(box.folder());
    const std::string path = orvsecutils::toutf8(box.log().native());
    filetail tail(path);
    EXPECT_EQ(tail.last(1), std::nullopt);
    orvsecutils::appendtofile(path, std::string(70000, 'x') + "\nlast\n");
    EXPECT_EQ(tail.last(9), "last\n");
    EXPECT_EQ(tail.added(), "");
    orvsecutils::appendtofile(path, "more\n");
    EXPECT_EQ(tail.added(), "more\n");
    std::filesystem::remove(box.log());
    EXPECT_EQ(tail.added(), "");
    orvsecutils::appendtofile(path, "anew\n");
    EXPECT_EQ(tail.added(), "anew\n");
}

TEST(Assembly, IsReadAndMistrusted) {
    const std::string bytes = contentof(manager / "OrvelLoginClient.dll");
    const std::optional<image> read = readimage(bytes);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->managed);
    EXPECT_EQ(read->name, "OrvelLoginClient");
    EXPECT_THAT(read->version, ElementsAre(34, 0, 0, 5070));

    EXPECT_FALSE(readimage(std::string(4096, 'M')));
    for (std::size_t size = 0; size < bytes.size(); size += 97) {
        readimage(bytes.substr(0, size));
        std::string damaged = bytes;
        damaged[size] = static_cast<char>(~damaged[size]);
        readimage(damaged);
    }
    // Large enough for wide indexes; there under Wine only, and by another name inside.
    const std::filesystem::path large = "C:\\windows\\mono\\mono-2.0\\lib\\mono\\4.5\\mscorlib.dll";
    if (exists(large)) {
        EXPECT_THAT(readimage(contentof(large))->version, ElementsAre(4, 0, 0, 0));
    }
}

class Orvdiag : public testing::Test {
protected:
    program::outcome run(const std::wstring& words) { return box.run("orvdiag.exe", words); }
    sandbox box;
};

TEST_F(Orvdiag, SwitchesTheLogAndTracesIntoIt) {
    EXPECT_THAT(run(L"logging").output, StartsWith("Logging is off, because nobody has set it."));
    EXPECT_THAT(run(L"logging on").output, StartsWith("Logging is on, by the user's setting."));
    EXPECT_FALSE(exists(box.log())) << "the program that switches keeps its own setting";
    EXPECT_THAT(run(L"settings Debug").output, HasSubstr("Logging  number  1      user"));
    EXPECT_EQ(run(L"settings Größe").status, 1u);
    const program::outcome facts = run(L"facts --json");
    EXPECT_THAT(facts.output, StartsWith("{\r\n"));
    EXPECT_THAT(facts.output, EndsWith("}\r\n"));
    EXPECT_THAT(facts.output, HasSubstr("orvel ñ 日本 вход 😀"));
    EXPECT_THAT(facts.errors, HasSubstr("orvdiag::facts()=16")) << "the echo of the trace stays out of the report";
    run(L"logging off");
    EXPECT_THAT(
        box.logged(),
        ElementsAre(
            "TIME,info,orvdiag.exe,orvdiag::settings(Debug)", "TIME,info,orvdiag.exe,orvdiag::settings(Debug)=1",
            "TIME,info,orvdiag.exe,orvdiag::settings(Größe)", "TIME,error,orvdiag.exe,orvdiag::settings(Größe)=null",
            "TIME,info,orvdiag.exe,orvdiag::facts()", "TIME,info,orvdiag.exe,orvdiag::facts()=16",
            "TIME,info,orvdiag.exe,orvdiag::logging(off)", "TIME,info,orvdiag.exe,orvdiag::logging(off)=off"));
    EXPECT_THAT(run(L"logging").output, StartsWith("Logging is off, by the user's setting."));
}

TEST_F(Orvdiag, FollowsTheLog) {
    program follower = box.start("orvdiag.exe", L"log --follow");
    const auto sees = [&](const char* text) {
        bool seen = false;
        for (int i = 0; i < 100 && !seen; ++i) {
            Sleep(100);
            seen = follower.outputsofar().find(text) != std::string::npos;
        }
        return seen;
    };
    EXPECT_TRUE(sees("not there yet"));
    create_directories(box.folder());
    orvsecutils::appendtofile(orvsecutils::toutf8(box.log().native()), "日本\n");
    EXPECT_TRUE(sees("日本\r\n"));
    follower.end();
    follower.wait();
}

TEST_F(Orvdiag, NamesWhatADeploymentLacks) {
    const std::filesystem::path folder = box.folder() / L"日本 é";
    const std::filesystem::path copied = folder / manager.filename();
    const auto check = [&](const char* finding, DWORD status = 1) {
        const program::outcome result = run(L"login \"" + folder.native() + L"\"");
        EXPECT_THAT(result.output, HasSubstr(finding));
        EXPECT_EQ(result.status, status);
    };
    check("no such folder");
    create_directories(copied);
    check("not tried, for want of the managed part");
    for (const char* file : {"orvellogin.dll", "OrvelLoginClientCLR.dll", "libgcc_s_dw2-1.dll", "libstdc++-6.dll",
                             "libwinpthread-1.dll"}) {
        copy_file(program::ownfolder() / file, folder / file);
    }
    const std::filesystem::path utils = copied / "loginManagerUtils.dll";
    copy_file(folder / "orvellogin.dll", utils);
    check("is no managed assembly");
    std::ofstream(utils) << "text";
    check("is damaged, or no library at all");
    copy_file(manager / "OrvelLoginClient.dll", utils, std::filesystem::copy_options::overwrite_existing);
    check("holds another assembly, OrvelLoginClient");
    check("starts, and runs the managed part");
    remove_all(copied);
    copy(manager, copied);
    check("assembly version 34.0.0.5070", 0);
}

}  // namespace
