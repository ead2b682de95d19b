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
#include <thread>

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
    {L"kelpa", [] { return client->getKelpaURL(); }},
    {L"plugin", plain([] {
         const FARPROC signIn = GetProcAddress(LoadLibraryW(L"plugin.dll"), "signIn");
         reinterpret_cast<void (*)()>(reinterpret_cast<void*>(signIn))();
     })},
    {L"unload", plain([] { FreeLibrary(GetModuleHandleW(L"plugin.dll")); })},
    {L"destroy", plain([] { client.reset(); })},
    {L"listen", plain([] {
         const auto called = [] { std::puts("called back"); };
         client = std::make_unique<LoginManagerClient>(called, called, uiLangFallback);
         client->stopDNMListener();
     })},
    // Calls a member again and again until it is refused, which the manager's handler of the process's end waits for.
    {L"linger", plain([] {
         static const HANDLE refused = CreateEventW(nullptr, TRUE, FALSE, L"orvellogin-refused");
         std::thread([kept = client.release()] {
             std::string result = "Example Works";
             for (int i = 0; i < 1000 && result == "Example Works"; ++i, Sleep(5)) {
                 result = resultOf([&] { return kept->getTenantName(); });
             }
             std::printf("linger: %s\n", result.c_str());
             SetEvent(refused);
         }).detach();
     })},
    {L"hide", plain([] { rename(folder / L"OrvelLoginManagerClient", folder / L"hidden"); })},
    {L"show", plain([] { rename(folder / L"hidden", folder / L"OrvelLoginManagerClient"); })},
    {L"exit", plain([] { std::exit(7); })},
    // As exit() does when it has called the functions of atexit(), after which g++'s programs cannot throw any more.
    {L"shutdown", plain([] {
         const FARPROC corExitProcess = GetProcAddress(GetModuleHandleW(L"mscoree.dll"), "CorExitProcess");
         reinterpret_cast<void(WINAPI*)(int)>(reinterpret_cast<void*>(corExitProcess))(7);
     })},
};

}  // namespace

int wmain(int count, wchar_t** arguments) {
    _setmode(_fileno(stdout), _O_BINARY);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    for (int i = 1; i < count; ++i) {
        const std::wstring step = arguments[i];
        std::printf("%s: %s\n", orvsecutils::toutf8(step).c_str(), resultOf(steps.at(step)).c_str());
    }
    return 0;
}
