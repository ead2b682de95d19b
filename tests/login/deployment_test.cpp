// What a host gets to see when files of the deployment are missing, broken or elsewhere.

#include <gmock/gmock.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "compiler_runtime.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// A folder with all that a host needs, removed at the end.
class Deployment {
public:
    Deployment() {
        const fs::path built = program::ownfolder();
        for (const wchar_t* name : {L"orvellogin.dll", L"OrvelLoginClientCLR.dll"}) {
            fs::copy_file(built / name, folder / name);
        }
        for (const char* name : compilerRuntime) {
            fs::copy_file(built / name, folder / name);
        }
        for (const wchar_t* name : {L"probe.exe", L"HostAssembly.dll"}) {
            fs::copy_file(program::ownfolder() / L"deployment" / name, folder / name);
        }
        fs::copy(built / L"OrvelLoginManagerClient", folder / L"OrvelLoginManagerClient");
    }

    fs::path operator/(const wchar_t* name) const { return folder / name; }

    void spoil(const wchar_t* name) const { std::ofstream(folder / name, std::ios::trunc) << "no assembly"; }

    /// Puts another make of a file, built for these tests, in its place.
    void replace(const wchar_t* name, const wchar_t* other) const {
        fs::copy_file(program::ownfolder() / L"deployment" / other, folder / name,
                      fs::copy_options::overwrite_existing);
    }

    program start(const std::wstring& steps) const { return program(folder / L"probe.exe", steps, folder); }

    /// What the probe prints for these steps.
    std::string run(const std::wstring& steps) const { return start(steps).wait().output; }

private:
    // Neither the library's folder nor the host's may be taken through a code page.
    const temporary_folder temporary;
    const fs::path& folder = temporary.path;
};

const wchar_t* const manager = L"OrvelLoginManagerClient\\OrvelLoginClient.dll";
const wchar_t* const managerTypes = L"OrvelLoginManagerClient\\loginManagerUtils.dll";

TEST(Deployment, WorksFromAFolderOutsideAscii) {
    EXPECT_EQ(Deployment().run(L"construct login destroy"), "construct: done\nlogin: ada@example.com\ndestroy: done\n");
}

TEST(Deployment, JoinsARuntimeThatTheHostStarted) {
    EXPECT_EQ(Deployment().run(L"start construct login"), "start: done\nconstruct: done\nlogin: ada@example.com\n");
}

TEST(Deployment, ConstructionNeedsNoOutsideAssemblyAndNamesTheMissingOneLater) {
    struct {
        const wchar_t* missing;
        const char* named;
    } const rows[] = {
        {L"OrvelLoginManagerClient", "OrvelLoginClient"},
        {manager, "OrvelLoginClient"},
        {managerTypes, "loginManagerUtils"},
    };
    for (const auto& row : rows) {
        const Deployment deployment;
        fs::remove_all(deployment / row.missing);
        const std::string printed = deployment.run(L"construct login tenant destroy");
        EXPECT_THAT(printed, HasSubstr("construct: done\nlogin: System.IO.FileNotFoundException: "));
        EXPECT_THAT(printed, HasSubstr("\ntenant: System.IO.FileNotFoundException: "));
        EXPECT_THAT(printed, HasSubstr(row.named));
        EXPECT_THAT(printed, HasSubstr("destroy: done\n"));
    }
}

TEST(Deployment, FailedConstructionSucceedsOnceTheFolderIsThere) {
    const Deployment deployment;
    fs::rename(deployment / L"OrvelLoginManagerClient", deployment / L"elsewhere");
    const std::string printed = deployment.run(L"construct login repair login");
    EXPECT_THAT(printed, HasSubstr("login: System.IO.FileNotFoundException: "));
    EXPECT_THAT(printed, HasSubstr("repair: done\nlogin: ada@example.com\n"));
}

TEST(Deployment, FileThatIsNoAssemblyIsReportedAsSuch) {
    for (const wchar_t* name : {manager, managerTypes}) {
        const Deployment deployment;
        deployment.spoil(name);
        EXPECT_THAT(deployment.run(L"construct login"), HasSubstr("login: System.BadImageFormatException: "));
    }
}

TEST(Deployment, MissingOrBrokenManagedPartIsNamed) {
    const Deployment deployment;
    deployment.spoil(L"OrvelLoginClientCLR.dll");
    EXPECT_THAT(deployment.run(L"construct"),
                HasSubstr("construct: the runtime cannot run OrvelLoginClientCLR.EntryPoint"));
    fs::remove(deployment / L"OrvelLoginClientCLR.dll");
    const std::string printed = deployment.run(L"construct");
    EXPECT_THAT(printed, HasSubstr("construct: the managed part of the login library is missing: "));
    EXPECT_THAT(printed, HasSubstr("\\OrvelLoginClientCLR.dll (HRESULT 0x80070002)\n"));
}

TEST(Deployment, ManagerOfAnotherVersionServesAsFarAsItHasTheMembers) {
    const Deployment deployment;
    deployment.replace(manager, L"old\\OrvelLoginClient.dll");
    // What is missing is found out inside a call and must not end the process.
    const std::string printed = deployment.run(L"construct tenant kelpa login platform tenant destroy");
    EXPECT_THAT(printed, HasSubstr("construct: done\ntenant: Old Works\nkelpa: System.MissingMethodException: "));
    EXPECT_THAT(printed, HasSubstr("\nlogin: System.MissingFieldException: "));
    EXPECT_THAT(printed,
                HasSubstr("\nplatform: OrvelLoginClient.SilentException: \ntenant: Old Works\ndestroy: done\n"));
}

TEST(Deployment, SharedTypesOfAnotherMakeCostTheStatusAndNothingElse) {
    struct {
        const wchar_t* types;
        const char* failure;
    } const rows[] = {
        {L"property\\loginManagerUtils.dll", "loginManagerUtils.LoginManagerException"},
        {L"none\\loginManagerUtils.dll", "System.TimeoutException"},
    };
    for (const auto& row : rows) {
        const Deployment deployment;
        deployment.replace(manager, L"old\\OrvelLoginClient.dll");
        deployment.replace(managerTypes, row.types);
        EXPECT_EQ(deployment.run(L"construct token tenant token destroy"),
                  std::string("construct: done\ntoken: ") + row.failure +
                      ": refused\ntenant: Old Works\ntoken: " + row.failure + ": refused\ndestroy: done\n");
    }
}

TEST(Deployment, HalfAnUpdateIsNamedWithBothFilesAndVersions) {
    for (const wchar_t* part : {L"earlier\\OrvelLoginClientCLR.dll", L"later\\OrvelLoginClientCLR.dll"}) {
        const Deployment deployment;
        deployment.replace(L"OrvelLoginClientCLR.dll", part);
        EXPECT_THAT(deployment.run(L"construct"),
                    AllOf(StartsWith("construct: these two files do not belong together: "),
                          HasSubstr("\\orvellogin.dll (version 1.0.0.0) and "),
                          HasSubstr("\\OrvelLoginClientCLR.dll (version 0.9.8.7); take both from one package")));
    }
}

TEST(Deployment, AClientOfAPlugInLeavesTheHostsExitStatusAlone) {
    const Deployment deployment;
    fs::copy_file(program::ownfolder() / L"deployment" / L"plugin.dll", deployment / L"plugin.dll");
    for (const wchar_t* steps : {L"exit", L"plugin exit"}) {
        const program::outcome ended = deployment.start(steps).wait();
        EXPECT_EQ(ended.status, 7u);
        EXPECT_EQ(ended.errors, "");
    }
}

TEST(Deployment, HandlerServesAnyAssemblyByItsSimpleNameAndNothingElse) {
    struct {
        const wchar_t* name;
        const char* found;
    } const rows[] = {
        {L"HostAssembly", "\\OrvelLoginManagerClient\\HostAssembly.dll\n"},
        {L"HostAssembly, Version=9.8.7.6, Culture=de, PublicKeyToken=b77a5c561934e089",
         "\\OrvelLoginManagerClient\\HostAssembly.dll\n"},
        {L"HostAssembly.resources, Version=1.0.0.0, Culture=de, PublicKeyToken=null", "tenant: not found\n"},
        {L"Missing", "tenant: not found\n"},
        {L"Above|x", "tenant: not found\n"},
    };
    for (const auto& row : rows) {
        const Deployment deployment;
        fs::rename(deployment / L"HostAssembly.dll", deployment / L"OrvelLoginManagerClient\\HostAssembly.dll");
        SetEnvironmentVariableW(L"ORVEL_STANDIN", (std::wstring(L"getTenantName=load ") + row.name).c_str());
        EXPECT_THAT(deployment.run(L"construct tenant"), HasSubstr(row.found)) << row.found;
    }
    SetEnvironmentVariableW(L"ORVEL_STANDIN", nullptr);
}

}  // namespace
