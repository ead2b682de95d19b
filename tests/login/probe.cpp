// A host program for tests of deployments: carries out the steps given as arguments and prints the result of each.

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "login/LoginManagerClient.h"
#include "login/hosting/ClrRuntime.h"
#include "orvsecutils/platform/unicode.h"
#include "result_of.h"
#include "tests/support/program.h"

namespace {

const std::filesystem::path folder = program::ownfolder();
std::unique_ptr<LoginManagerClient> client;

using Step = std::function<std::wstring()>;

// A step that has no result.
Step plain(void (*action)()) {
    return [action] {
        action();
        return std::wstring(L"done");
    };
}

const std::map<std::wstring, Step> steps = {
    {L"start", plain([] {
         OrvelLoginClientCLR::executeInDefaultAppDomain(folder / L"HostAssembly.dll", L"Host.HostAssembly", L"Start",
                                                        L"");
     })},
    {L"construct", plain([] { client = std::make_unique<LoginManagerClient>(nullptr, nullptr, uiLangFallback); })},
    {L"login", [] { return client->login(L"ada@example.com", L"analytical engine").userName; }},
    {L"tenant", [] { return client->getTenantName(); }},
    {L"token", [] { return client->getAccessToken(); }},
    {L"platform", [] { return client->getPlatFormURL(); }},
    {L"kelpa", [] { return client->getKelpaURL(); }},
    {L"plugin", plain([] {
         const FARPROC signIn = GetProcAddress(LoadLibraryW(L"plugin.dll"), "signIn");
         reinterpret_cast<void (*)()>(reinterpret_cast<void*>(signIn))();
     })},
    {L"destroy", plain([] { client.reset(); })},
    {L"hide", plain([] { rename(folder / L"OrvelLoginManagerClient", folder / L"hidden"); })},
    {L"show", plain([] { rename(folder / L"hidden", folder / L"OrvelLoginManagerClient"); })},
    {L"exit", plain([] { std::exit(7); })},
};

}  // namespace

int wmain(int count, wchar_t** arguments) {
    _setmode(_fileno(stdout), _O_BINARY);
    for (int i = 1; i < count; ++i) {
        const std::wstring step = arguments[i];
        std::printf("%s: %s\n", orvsecutils::toutf8(step).c_str(), resultOf(steps.at(step)).c_str());
    }
    return 0;
}
