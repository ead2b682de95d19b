#include <fstream>
#include <functional>
#include <regex>
#include <set>

#include "orvsecutils/log/appendfile.h"
#include "orvsecutils/platform/platform.h"
#include "tests/orvdiag/tool.h"
#include "tests/support/deploy.h"
#include "tools/orvdiag/facts.h"
#include "tools/orvdiag/findings.h"
#include "tools/orvdiag/image.h"

using namespace orvdiag;
using namespace std::literals;
using namespace testing;
using orvsecutils::toutf8;

namespace fs = std::filesystem;

namespace {

const fs::path built = program::ownfolder();
const char* const client = "OrvelLoginManagerClient\\OrvelLoginClient.dll";
const char* const utils = "OrvelLoginManagerClient\\loginManagerUtils.dll";
const char* const part = "OrvelLoginClientCLR.dll";
const char* const library = "orvellogin.dll";
const std::string libgcc = compilerRuntime[0];  // its name tells the architecture
const char* const libcpp = "libstdc++-6.dll";
const char* const thread = "libwinpthread-1.dll";

constexpr wchar_t ownwmi[] = L"C:\\windows\\system32\\wbem\\wbemprox.dll";

void put(std::string& bytes, std::size_t at, std::uint32_t number) {
    bytes.replace(at, sizeof number, reinterpret_cast<const char*>(&number), sizeof number);
}

// With what signing changes: the checksum, the entry of the certificates, and these at the end.
std::string signedfile(std::string bytes) {
    const auto headers = static_cast<unsigned char>(bytes[0x3C]) + 24u;
    bytes.resize((bytes.size() + 7) / 8 * 8);
    put(bytes, headers + 64, 4711);
    const auto entry = headers + (is64bit ? 144 : 128);
    put(bytes, entry, bytes.size());
    put(bytes, entry + 4, 16);
    return bytes + "\x10\0\0\0\0\2\2\0 sigature"s;
}

// With another file version, which follows the signature and the structure's own version.
std::string withversion(std::string bytes, std::uint32_t high, std::uint32_t low) {
    const std::size_t fixed = bytes.find("\xBD\x04\xEF\xFE\0\0\1\0"s);
    put(bytes, fixed + 8, high);
    put(bytes, fixed + 12, low);
    return bytes;
}

std::string damaged(std::string bytes) {
    return bytes.replace(bytes.size() / 2, 4096, 4096, '\0');
}

class Check : public Orvdiag {
protected:
    Check() { deploy(folder); }
    ~Check() override {
        if (onwine()) {
            replacewmi(ownwmi);
        }
    }

    void write(const std::string& file, const std::string& content) const {
        std::ofstream(folder / orvsecutils::toutf16(file), std::ios::binary) << content;
    }

    // The programs of the test's architecture then take WMI's locator from another DLL.
    static void replacewmi(const std::wstring& dll) {
        rawkey(HKEY_LOCAL_MACHINE, 0,
               "Software\\Classes\\CLSID\\{4590F811-1D3A-11D0-891F-00AA004B2E24}\\InprocServer32")
            .write(L"", REG_SZ, bytesof(dll + L'\0'));
    }

    const temporary_folder own;
    const fs::path folder = own.path / L"日 é";
};

TEST_F(Check, FindsEachProblemOnce) {
    if (!onwine()) {
        GTEST_SKIP() << "moves the profile and replaces a part of WMI";
    }
    const std::string native = contentof(built / library);
    const std::string assembly = contentof(built / client);
    const fs::path longfolder = own.path / std::wstring(120, L'p') / std::wstring(120, L'q');
    fs::path checked = folder;
    fs::path tool = "orvdiag.exe";
    orvsecutils::filehandle held;
    // What is wrong with a machine; then per line that is not ok its finding and a part of its text.
    const std::pair<std::function<void()>, std::vector<std::pair<std::string, std::string>>> machines[] = {
        {[&] {
             write(library, signedfile(native));
             box.setswitch(HKEY_CURRENT_USER, 1);
         },
         {}},
        {[&] {
             checked = folder / "none";
             plant(machine, L"value", REG_DWORD, one, "Closed");
             setaccess(HKEY_LOCAL_MACHINE, "Closed", noaccess);
         },
         {{"folder-missing", "\\none."},
          {"not-tried", "no such"},
          {"not-tried", "no such"},
          {"group-unreadable", ": machine's Closed (cannot be read: Access denied. (code 5))."},
          {"logging-off", "nobody"}}},
        {[&] {
             write(library, damaged(native));
             fs::remove(folder / libgcc);
             write(libcpp, contentof(built / libcpp) + std::string(8, 'x'));
             write(std::string(libcpp) + ":Zone.Identifier", "[ZoneTransfer]\r\nZoneId=3\r\n");
             write(thread,
                   contentof(is64bit ? "C:\\windows\\syswow64\\version.dll" : "C:\\windows\\sysnative\\version.dll"));
             held = orvsecutils::filehandle(
                 CreateFileW((folder / part).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
             fs::remove(folder / client);
             write(utils, native);
             plant(user, L"bad\xD800", REG_DWORD, one, "Größe");
             plant(machine, L"odd", REG_QWORD, one + zero, "Größe");
             plant(machine32, L"view", REG_DWORD, one, "Größe");
             plant(user, L"Logging", REG_SZ, bytesof(L"1\0"sv));
             plant(machine, L"LOGGING", REG_DWORD, one);
             create_directories(box.log());
             replacewmi(L"C:\\none.dll");
         },
         {{"file-damaged", ": orvellogin.dll (its content differs"},
          {"file-missing", ": " + libgcc + "."},
          {"runtime-build", ": libstdc++-6.dll."},
          {"file-blocked", ": libstdc++-6.dll."},
          {"file-architecture", ": libwinpthread-1.dll (for "},
          {"file-unreadable", ": OrvelLoginClientCLR.dll ("},
          {"not-tried", ": OrvelLoginClientCLR.dll cannot"},
          {"assembly-missing", ": OrvelLoginManagerClient\\OrvelLoginClient.dll."},
          {"file-foreign", "\\loginManagerUtils.dll (not a managed assembly)"},
          {"not-tried", "does not run"},
          {"group-malformed", ": user's Größe\\bad"},
          {"value-ignored", ": machine's Größe\\odd (64-bit number)"},
          {"value-view", ": machine's Größe\\view"},
          {"logging-off", ", because the user's setting \"Logging\" is not a number"},
          {"logging-spelling", ": the machine's setting \"LOGGING\""},
          {"logging-type", ": the user's setting \"Logging\" (text)"},
          {"log-unwritable", "(code 5)"},
          {"network-missing", "no address"}}},
        {[&] {
             write(libgcc, contentof(built / "ending.dll"));
             write(part, assembly);
             replacewmi((built / "ending.dll").native());
         },
         {{"runtime-build", ": " + libgcc + "."},
          {"library-fails", "terminated the trial process (status 0x00000000); so does " + libgcc + " alone."},
          {"file-version", ": OrvelLoginClientCLR.dll (34.0.0.5070 instead of "},
          {"versions-mixed", ": these two files do not belong together: "},
          {"not-tried", "does not run"},
          {"logging-off", ""},
          {"network-fails", ": terminated the trial process"}}},
        {[&] {
             write(library, withversion(native, 34 << 16, 5070));
             write(part, assembly);  // of the same version
             write(libcpp, damaged(contentof(built / libcpp)));
             write(utils, assembly.substr(0, 1000));
             write(client, "text");
             box.moveprofile("Q:\\none");
         },
         {{"file-version", ": orvellogin.dll (34.0.0.5070 instead of "},
          {"file-damaged", ": libstdc++-6.dll (its content"},
          {"managed-part-fails", ": the runtime cannot run OrvelLoginClientCLR.EntryPoint.Enter"},
          {"file-damaged",
           "OrvelLoginClient.dll (not a DLL), OrvelLoginManagerClient\\loginManagerUtils.dll (truncated: "},
          {"not-tried", "does not run"},
          {"logging-off", ""},
          {"not-tried", "no profile folder"},
          {"profile-missing", ""}}},
        {[&] {
             checked = longfolder;
             create_directories(longfolder.parent_path());
             fs::rename(folder, longfolder);
             fs::remove(longfolder / library);
             copy_file(built / "orvelloginc.dll", longfolder / "orvelloginc.dll");
             fs::remove(longfolder / libgcc);  // not needed
             fs::remove(longfolder / client);
             copy_file(built / "deployment/old/OrvelLoginClient.dll", longfolder / client);
         },
         {{"path-long", ": OrvelLoginClientCLR.dll."},
          {"path-long", client},
          {"manager-version", "OrvelLoginClient.dll (33.1.0.0 instead of 34.0.0.5070)."},
          {"members-missing", ": LoginManagerClient: LoginResponse login(), L"},
          {"logging-off", ""}}},
        {[&] {
             copy_file(built / "orvdiag.exe", own.path / "orvdiag.exe");
             copy_file(built / client, own.path / "OrvelLoginClient.dll");
             tool = own.path / "orvdiag.exe";
             fs::remove(folder / utils);
         },
         {{"assembly-elsewhere", "\\OrvelLoginClient.dll)."},
          {"assembly-fails", "OrvelLoginClient.dll (System.IO.FileNotFoundException"},
          {"assembly-missing", ": OrvelLoginManagerClient\\loginManagerUtils.dll."},
          {"logging-off", ""}}},
    };
    std::set<std::string> tried = {"user-other"};      // Wine has one user
    tried.insert({"file-remote", "framework-fails"});  // in machines.sh
    for (const auto& [spoil, expected] : machines) {
        SCOPED_TRACE(expected.empty() ? "" : expected[0].first + ", ...");
        spoil();
        const program::result result = program(tool, L"check --json \"" + checked.native() + L"\"", own.path).wait();
        const json data = json::parse(result.output);
        std::vector<std::pair<std::string, std::string>> found;
        DWORD status = 0;
        for (const json& row : data["findings"]) {
            if (row["result"] != "ok") {
                EXPECT_THAT(row["step"].get<std::string>(), EndsWith("."));
                found.emplace_back(row["finding"], row["text"]);
                status = row["result"] == "FAIL" ? 1 : status;
            }
        }
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(found.size(), expected.size()) << data["findings"].dump(1);
        for (std::size_t i = 0; i < std::min(found.size(), expected.size()); ++i) {
            EXPECT_EQ(found[i].first, expected[i].first);
            EXPECT_THAT(found[i].second, HasSubstr(expected[i].second));
            tried.insert(found[i].first);
        }
        held = {};
        replacewmi(ownwmi);
        setaccess(HKEY_LOCAL_MACHINE, "Closed", fullaccess);
        removecompany(L"Orvel");
        box.moveprofile(profile);
        fs::remove_all(profile / "Orvel");
        fs::remove_all(folder);
        deploy(folder);
        checked = folder;
        tool = "orvdiag.exe";
    }
    for (const advice& row : advices) {
        EXPECT_TRUE(tried.count(row.id)) << row.id;
    }
}

TEST_F(Check, PrintsALineForEachAreaAndTheVerdict) {
    fs::remove(folder / utils);
    const program::result result = run(L"check --files \"" + folder.native() + L"\"");
    const std::string digits = "[0-9a-f]{64}\r\n";
    EXPECT_TRUE(std::regex_search(result.output, std::regex("OrvelLoginClientCLR.dll +[0-9.]+ +[0-9]+ +" + digits)));
    EXPECT_THAT(result.output,
                AllOf(HasSubstr("ok    files of the library  orvellogin.dll "), HasSubstr("FAIL  login manager "),
                      HasSubstr("\r\n                            Install the login manager: "),
                      EndsWith("\r\n2 problems, 1 warning\r\n")));
    EXPECT_EQ(result.status, 1u);
}

TEST_F(Check, WritesAReportWithoutSecrets) {
    plant(user, L"ApiToken", REG_SZ, bytesof(L"hush\0"sv), "Größe\\Inner");
    plant(machine, L"ApiToken", REG_DWORD, one);  // in another group, so neither hides the other
    plant(machine32, L"Server", REG_SZ, bytesof(L"日\0"sv));
    create_directories(box.folder());
    for (int i = 100; i <= 350; ++i) {
        orvsecutils::appendtofile(log, "line " + std::to_string(i) + " \xFF\n");
    }
    copy_file(built / "orvdiag.exe", own.path / "orvdiag.exe");  // alone in its folder
    const program::result written = program(own.path / "orvdiag.exe", L"report", own.path).wait();
    EXPECT_EQ(written.status, 0u);
    EXPECT_THAT(written.output, AllOf(HasSubstr("\\orvdiag-report.txt\r\n"), HasSubstr("personal data")));
    const std::string text = contentof(own.path / "orvdiag-report.txt");
    EXPECT_EQ(toutf8(orvsecutils::toutf16(text)), text);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), std::count(text.begin(), text.end(), '\n'));
    std::size_t at = 0;
    for (const std::string& next : std::vector<std::string>{
             "Report of orvdiag " ORVDIAG_VERSION ", ", "Folder: " + toutf8(own.path.native()) + "\r\nFAIL",
             "Missing: orvellogin.dll or orvelloginc.dll, OrvelLoginClientCLR.dll.", "\r\n2 problems, ",
             "What was expected?", "personal data", "FILE", "osversion", "netframework4", "elevated",
             "machine, 32-bit view", "Größe\\Inner\\ApiToken  text    (hidden)", "Logging is off", "It can be written.",
             "line 151 \uFFFD\r\n", "line 350"}) {
        EXPECT_NE(text.find(next, at), std::string::npos) << next;
        at = std::min(text.find(next, at), text.size());
    }
    EXPECT_THAT(text, AllOf(Not(HasSubstr("hush")), Not(HasSubstr("line 150")), Not(HasSubstr("hidden by"))));

    const fs::path other = own.path / "other.json";
    std::ofstream(other) << std::string(1000000, 'x');
    EXPECT_EQ(run(L"report --json -o \"" + other.native() + L"\" \"" + folder.native() + L"\"").status, 0u);
    const json data = json::parse(contentof(other));
    EXPECT_EQ(data["check"]["folder"], toutf8(folder.native()));
    EXPECT_EQ(data["settings"][2]["value"], "(hidden)");
    const orvsecutils::platform& system = orvsecutils::currentplatform();
    EXPECT_EQ(data["facts"]["uilanguage"], system.uilanguage());
    EXPECT_EQ(data["facts"]["profilefolder"], toutf8(profile.native()));
    EXPECT_EQ(data["facts"]["macaddress"], system.macaddress());
    EXPECT_EQ(data["facts"]["meanings"]["languageids"], explainlocales(system.languageids()));
    EXPECT_EQ(data["log"].size(), 200u);
    EXPECT_EQ(program("orvdiag.exe", L"report --json", own.path).wait().status, 0u);
    EXPECT_TRUE(exists(own.path / "orvdiag-report.json"));

    const program::result refused = run(L"report -o \"" + folder.native() + L"\"");
    EXPECT_EQ(refused.status, 1u);
    EXPECT_THAT(refused.output, StartsWith("The report cannot be written to "));
}

TEST_F(Check, ShowsWhichProgramsHaveLoadedTheLibrary) {
    ASSERT_TRUE(LoadLibraryW((built / library).c_str()));
    const json programs = json::parse(run(L"facts --json").output)["system"]["programs"];
    EXPECT_THAT(programs.dump(), AllOf(HasSubstr("orvdiag_test.exe ("), HasSubstr("\\\\orvellogin.dll")));
}

}  // namespace
