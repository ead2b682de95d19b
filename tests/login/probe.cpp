// A host program for tests of deployments: carries out the steps given as arguments and prints the result of each.

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "login/ClrRuntime.h"
#include "login/LoginManagerClient.h"
#include "orvsecutils/platform/unicode.h"
#include "result_of.h"
#include "tests/support/program.h"

namespace {

std::unique_ptr<LoginManagerClient> client;

std::wstring carryOut(const std::wstring& step) {
    const std::filesystem::path folder = program::ownfolder();
    if (step == L"start") {
        OrvelLoginClientCLR::executeInDefaultAppDomain(folder / L"HostAssembly.dll", L"Host.HostAssembly", L"Start",
                                                       L"");
    } else if (step == L"construct") {
        client = std::make_unique<LoginManagerClient>(nullptr, nullptr, uiLangFallback);
    } else if (step == L"login") {
        return client->login(L"ada@example.com", L"analytical engine").userName;
    } else if (step == L"tenant") {
        return client->getTenantName();
    } else if (step == L"token") {
        return client->getAccessToken();
    } else if (step == L"platform") {
        return client->getPlatFormURL();
    } else if (step == L"kelpa") {
        return client->getKelpaURL();
    } else if (step == L"plugin") {
        const FARPROC signIn = GetProcAddress(LoadLibraryW(L"plugin.dll"), "signIn");
        reinterpret_cast<void (*)()>(reinterpret_cast<void*>(signIn))();
    } else if (step == L"exit") {
        std::exit(7);
    } else if (step == L"destroy") {
        client.reset();
    } else if (step == L"repair") {
        std::filesystem::rename(folder / L"elsewhere", folder / L"OrvelLoginManagerClient");
    } else {
        return L"unknown step";
    }
    return L"done";
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    _setmode(_fileno(stdout), _O_BINARY);
    for (int i = 1; i < count; ++i) {
        const std::wstring step = arguments[i];
        std::printf("%s: %s\n", orvsecutils::toutf8(step).c_str(), resultOf([&] { return carryOut(step); }).c_str());
    }
    return 0;
}
