// What a host sees if deployed files are missing, broken or elsewhere.

#include <gmock/gmock.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "compiler_runtime.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

/// A folder with all that a host needs, removed at the end.
class Deployment {
public:
    Deployment() {
        const fs::path built = program::ownfolder();
        fs::create_directory(folder);
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

    /// Replaces a file by another version of it, built for these tests.
    void replace(const wchar_t* name, const wchar_t* other) const {
        fs::copy_file(program::ownfolder() / L"deployment" / other, folder / name,
                      fs::copy_options::overwrite_existing);
    }

    /// Its current folder is not the one it lies in, because nothing may be taken from there.
    program start(const std::wstring& steps) const { return program(folder / L"probe.exe", steps, temporary.path); }

    /// What the probe prints for these steps.
    std::string run(const std::wstring& steps) const { return start(steps).wait().output; }

private:
    // No code page can represent its name, so a path that is converted to one on the way is detected.
    const temporary_folder temporary;
    const fs::path folder = temporary.path / L"host";
};

const wchar_t* const manager = L"OrvelLoginManagerClient\\OrvelLoginClient.dll";
const wchar_t* const managerTypes = L"OrvelLoginManagerClient\\loginManagerUtils.dll";
const wchar_t* const managedPart = L"OrvelLoginClientCLR.dll";

TEST(Deployment, IsUsedAsFarAsPossibleAndItsFaultsAreNamed) {
    const auto oldManager = [](const Deployment& d) { d.replace(manager, L"old\\OrvelLoginClient.dll"); };
    struct {
        const char* fault;
        std::function<void(const Deployment&)> prepare;
        const wchar_t* steps;
        std::vector<const char*> printed;  // in this order, with anything between
    } const rows[] = {
        {"none",
         [](const Deployment&) {},
         L"start construct login destroy",
         {"start: done\nconstruct: done\nlogin: ada@example.com\ndestroy: done\n"}},
        {"no sub-folder",
         [](const Deployment& d) { fs::remove_all(d / L"OrvelLoginManagerClient"); },
         L"construct login tenant destroy",
         {"construct: done\nlogin: System.IO.FileNotFoundException: ", "OrvelLoginClient",
          "\ntenant: System.IO.FileNotFoundException: ", "OrvelLoginClient", "\ndestroy: done\n"}},
        {"sub-folder comes later",
         [](const Deployment& d) { fs::rename(d / L"OrvelLoginManagerClient", d / L"elsewhere"); },
         L"construct login repair login",
         {"login: System.IO.FileNotFoundException: ", "repair: done\nlogin: ada@example.com\n"}},
        {"manager no assembly",
         [](const Deployment& d) { d.spoil(manager); },
         L"construct login",
         {"login: System.BadImageFormatException: "}},
        {"managed part no assembly",
         [](const Deployment& d) { d.spoil(managedPart); },
         L"construct",
         {"construct: the runtime cannot run OrvelLoginClientCLR.EntryPoint"}},
        {"no managed part",
         [](const Deployment& d) { fs::remove(d / managedPart); },
         L"construct",
         {"construct: the managed part of the login library is missing: ",
          "\\OrvelLoginClientCLR.dll (HRESULT 0x80070002)\n"}},
        {"managed part of version 1.0",
         [](const Deployment& d) { d.replace(managedPart, L"earlier\\OrvelLoginClientCLR.dll"); },
         L"construct",
         {"construct: these two files do not belong together: ",
          "\\orvellogin.dll (version " PROJECT_VERSION ".0) and ",
          "\\OrvelLoginClientCLR.dll (version 0.9.8.7); take both from one package"}},
        {"managed part of a later version",
         [](const Deployment& d) { d.replace(managedPart, L"later\\OrvelLoginClientCLR.dll"); },
         L"construct",
         {"construct: these two files do not belong together: ", "(version 0.9.8.7)"}},
        {"manager that lacks members",
         oldManager,
         L"construct tenant kelpa login platform tenant destroy",
         {"construct: done\ntenant: Old Works\nkelpa: System.MissingMethodException: ",
          "\nlogin: System.MissingFieldException: ",
          "\nplatform: OrvelLoginClient.SilentException: \ntenant: Old Works\ndestroy: done\n"}},
        {"status that is a property",
         [&](const Deployment& d) { oldManager(d), d.replace(managerTypes, L"property\\loginManagerUtils.dll"); },
         L"construct token tenant token destroy",
         {"construct: done\ntoken: loginManagerUtils.LoginManagerException: refused\ntenant: Old Works\n"
          "token: loginManagerUtils.LoginManagerException: refused\ndestroy: done\n"}},
        {"no exception class",
         [&](const Deployment& d) { oldManager(d), d.replace(managerTypes, L"none\\loginManagerUtils.dll"); },
         L"construct token tenant destroy",
         {"token: System.TimeoutException: refused\ntenant: Old Works\ndestroy: done\n"}},
    };
    for (const auto& row : rows) {
        const Deployment deployment;
        row.prepare(deployment);
        const std::string printed = deployment.run(row.steps);
        std::size_t at = 0;
        for (const char* expected : row.printed) {
            at = printed.find(expected, at);
            ASSERT_NE(at, std::string::npos) << row.fault << ": no " << expected << " in\n" << printed;
        }
    }
}

TEST(Deployment, AClientOfAPlugInLeavesTheHostsExitStatusAlone) {
    const Deployment deployment;
    fs::copy_file(program::ownfolder() / L"deployment" / L"plugin.dll", deployment / L"plugin.dll");
    for (const wchar_t* steps : {L"exit", L"plugin exit"}) {
        const program::result ended = deployment.start(steps).wait();
        EXPECT_EQ(ended.status, 7u);
        EXPECT_EQ(ended.errors, "");
    }
}

TEST(Deployment, HandlerServesAnyAssemblyByItsSimpleNameAndNothingElse) {
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"HostAssembly", "\\OrvelLoginManagerClient\\HostAssembly.dll\n"},
        {L"HostAssembly, Version=9.8.7.6, Culture=de, PublicKeyToken=b77a5c561934e089",
         "\\OrvelLoginManagerClient\\HostAssembly.dll\n"},
        {L"HostAssembly.resources, Version=1.0.0.0, Culture=de, PublicKeyToken=null", "tenant: not found\n"},
        {L"Missing", "tenant: not found\n"},
        {L"Current", "tenant: not found\n"},
        {L"Above|x", "tenant: not found\n"},
        {L"../OrvelLoginManagerClient/HostAssembly", "tenant: not found\n"},
    };
    for (const auto& [name, found] : rows) {
        const Deployment deployment;
        fs::rename(deployment / L"HostAssembly.dll", deployment / L"OrvelLoginManagerClient\\HostAssembly.dll");
        deployment.spoil(L"..\\Current.dll");  // in the current folder
        SetEnvironmentVariableW(L"ORVEL_STANDIN", (std::wstring(L"getTenantName=load ") + name).c_str());
        EXPECT_THAT(deployment.run(L"construct tenant"), HasSubstr(found)) << found;
    }
    SetEnvironmentVariableW(L"ORVEL_STANDIN", nullptr);
}

}  // namespace
