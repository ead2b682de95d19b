// What a host sees if deployed files are missing, broken or elsewhere.

#include <gmock/gmock.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/deploy.h"
#include "tests/support/system.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

/// A deployed host: a folder with all that it needs, removed at the end.
class Deployment {
public:
    Deployment() {
        deploy(folder);
        replace(L"probe.exe", L"probe.exe");
        replace(L"HostAssembly.dll", L"HostAssembly.dll");
    }

    fs::path operator/(const wchar_t* name) const { return folder / name; }

    /// Puts a file built for these tests in place of a file; or text if `other` is empty, or nothing if it is null.
    void replace(const wchar_t* name, const wchar_t* other) const {
        fs::remove_all(folder / name);
        if (other && *other) {
            fs::copy_file(program::ownfolder() / L"deployment" / other, folder / name);
        } else if (other) {
            std::ofstream(folder / name) << "no assembly";
        }
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

const wchar_t* const subfolder = L"OrvelLoginManagerClient";
const wchar_t* const manager = L"OrvelLoginManagerClient\\OrvelLoginClient.dll";
const wchar_t* const managerTypes = L"OrvelLoginManagerClient\\loginManagerUtils.dll";
const wchar_t* const part = L"OrvelLoginClientCLR.dll";

TEST(Deployment, IsUsedAsFarAsPossibleAndItsFaultsAreNamed) {
    using Changes = std::vector<std::pair<const wchar_t*, const wchar_t*>>;
    const Changes old = {{manager, L"old\\OrvelLoginClient.dll"}};
    const Changes property = {old[0], {managerTypes, L"property\\loginManagerUtils.dll"}};
    const Changes noException = {old[0], {managerTypes, L"none\\loginManagerUtils.dll"}};
    struct {
        Changes changes;
        const wchar_t* steps;
        std::vector<const char*> printed;  // in this order, with anything between
    } const rows[] = {
        {{},
         L"start construct login destroy",
         {"start: done\nconstruct: done\nlogin: ada@example.com\ndestroy: done\n"}},
        {{{subfolder, nullptr}},
         L"construct login tenant destroy",
         {"construct: done\nlogin: System.IO.FileNotFoundException: ", "OrvelLoginClient",
          "\ntenant: System.IO.FileNotFoundException: ", "OrvelLoginClient", "\ndestroy: done\n"}},
        {{},
         L"hide construct login show login",
         {"login: System.IO.FileNotFoundException: ",
          onwine() ? "show: done\nlogin: ada@example.com\n" : "show: done\nlogin: "}},
        {{{manager, L""}}, L"construct login", {"login: System.BadImageFormatException: "}},
        {{{part, L""}}, L"construct", {"construct: the runtime cannot run OrvelLoginClientCLR.EntryPoint"}},
        {{{part, nullptr}},
         L"construct",
         {"construct: the managed part of the login library is missing: ",
          "\\OrvelLoginClientCLR.dll (HRESULT 0x80070002)\n"}},
        {{{part, L"earlier\\OrvelLoginClientCLR.dll"}},
         L"construct",
         {"construct: these two files do not belong together: ",
          "\\orvellogin.dll (version " PROJECT_VERSION ".0) and ",
          "\\OrvelLoginClientCLR.dll (version 0.9.8.7); take both from one package"}},
        {old,
         L"construct tenant kelpa login tenant destroy",
         {"construct: done\ntenant: Old Works\nkelpa: System.MissingMethodException: ",
          "\nlogin: System.MissingFieldException: ", "\ntenant: Old Works\ndestroy: done\n"}},
        {property,
         L"construct token tenant token destroy",
         {"construct: done\ntoken: loginManagerUtils.LoginManagerException: refused\ntenant: Old Works\n"
          "token: loginManagerUtils.LoginManagerException: refused\ndestroy: done\n"}},
        {noException,
         L"construct token tenant destroy",
         {"token: System.TimeoutException: refused\ntenant: Old Works\ndestroy: done\n"}},
    };
    for (const auto& row : rows) {
        const Deployment deployment;
        for (const auto& [name, other] : row.changes) {
            deployment.replace(name, other);
        }
        const std::string printed = deployment.run(row.steps);
        std::size_t at = 0;
        for (const char* expected : row.printed) {
            at = printed.find(expected, at);
            ASSERT_NE(at, std::string::npos) << testing::PrintToString(row.changes) << ": no " << expected << " in\n"
                                             << printed;
        }
    }
}

TEST(Deployment, AClientOfAPlugInLeavesTheHostsExitStatusAlone) {
    const Deployment deployment;
    deployment.replace(L"plugin.dll", L"plugin.dll");
    for (const wchar_t* steps : {L"exit", L"plugin exit"}) {
        const program::result ended = deployment.start(steps).wait();
        EXPECT_EQ(ended.status, 7u);
        EXPECT_EQ(ended.errors, "");
    }
}

TEST(Deployment, AManagerThatWaitsForAThreadHangsTheUnloadingOfItsPlugIn) {
    const Deployment deployment;
    deployment.replace(L"plugin.dll", L"plugin.dll");
    SetEnvironmentVariableW(L"ORVEL_STANDIN", L"Dispose=event;events=thread");
    const program hanging = deployment.start(L"plugin unload");
    EXPECT_EQ(deployment.run(L"listen destroy"), "listen: done\ncalled back\ndestroy: done\n");
    SetEnvironmentVariableW(L"ORVEL_STANDIN", nullptr);
    EXPECT_FALSE(hanging.ended(2000)) << hanging.outputsofar();
    EXPECT_EQ(hanging.outputsofar(), "plugin: done\n");
    hanging.end();
}

TEST(Deployment, TheManagerIsLeftAloneOnceTheRuntimeShutsDown) {
    const Deployment deployment;
    SetEnvironmentVariableW(L"ORVEL_STANDIN", L"exit=wait orvellogin-refused");
    const program::result ended = deployment.start(L"listen linger shutdown").wait();
    SetEnvironmentVariableW(L"ORVEL_STANDIN", nullptr);
    EXPECT_EQ(ended.status, 7u);
    EXPECT_EQ(ended.output,
              "listen: done\nlinger: done\nlinger: the process is ending, and the runtime cannot be called any more "
              "(HRESULT 0x80131023)\n");
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
        deployment.replace(L"..\\Current.dll", L"");  // in the current folder
        SetEnvironmentVariableW(L"ORVEL_STANDIN", (std::wstring(L"getTenantName=load ") + name).c_str());
        EXPECT_THAT(deployment.run(L"construct tenant"), HasSubstr(found)) << found;
    }
    SetEnvironmentVariableW(L"ORVEL_STANDIN", nullptr);
}

}  // namespace
