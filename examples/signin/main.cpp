// Signs a user in and out through the library, and prints all that it returns.

#include <windows.h>

#include <cstdio>
#include <string>

#include "login/LoginManagerClient.h"

namespace {

std::string utf8(const std::wstring& text) {
    const int units = static_cast<int>(text.size());
    std::string result(text.size() * 3, '\0');
    result.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), units, &result[0],
                                                               static_cast<int>(result.size()), nullptr, nullptr)));
    return result;
}

void show(const char* name, const std::wstring& value) {
    std::printf("  %-18s %s\n", name, value.empty() ? "(empty)" : utf8(value).c_str());
}

void show(const LoginResponse& user) {
    show("statusDescription", user.statusDescription);
    show("userName", user.userName);
    show("firstName", user.firstName);
    show("lastName", user.lastName);
    show("rowId", user.rowId);
    show("aliasName", user.aliasName);
    show("domainName", user.domainName);
}

// A callback may be called on any thread, so keep it short. It must not let an exception escape.
void signedIn() {
    std::printf("  [sign-in callback, thread %lu]\n", GetCurrentThreadId());
}

void signedOut() {
    std::printf("  [sign-out callback, thread %lu]\n", GetCurrentThreadId());
}

void run() {
    std::printf("Main thread %lu\n", GetCurrentThreadId());
    LoginManagerClient client(signedIn, signedOut, uiLangFallback);

    std::printf("\nA wrong password:\n");
    try {
        client.login(L"ada@example.com", L"difference engine");
    } catch (loginManagerException* refused) {
        std::printf("  refused: code %d\n", refused->code);
        delete refused;
    }

    std::printf("\nThe right one:\n");
    show(client.login(L"ada@example.com", L"analytical engine"));

    std::printf("\nWhat the sign-in established:\n");
    show("access token", client.getAccessToken());
    show("tenant", client.getTenantName());
    show("tenant id", client.getTenantId());
    show("tenant ids", client.getTenantIds());
    show("CAS cookie", client.getCASCookie());
    show("platform URL", client.getPlatFormURL());
    show("registry URL", client.getRegistryURL());
    show("passport URL", client.getPassportURL());
    show("applications URL", client.getmyAppsURL());
    show("Kelpa URL", client.getKelpaURL());
    show("space URL", client.getSpaceURL());
    show("access URL", client.formatAccessUrl(L"https://space.example.com/plan"));
    show("login ticket", client.getLoginTicket(L"https://space.example.com/"));

    std::printf("\nThe consumer platform:\n");
    client.DunmoreLoginBrowser(L"https://dunmore.example.com", L"signin-example");
    show("token", client.getDNMAccessToken());
    std::printf("  %-18s %s\n", "expired",
                client.isDunmorePlatformTokenExpired(client.getDNMAccessToken()) ? "yes" : "no");
    client.stopDNMListener();

    std::printf("\nWhile offline, getters return empty strings without calling the manager:\n");
    client.setOrvelOfflineMode(true);
    show("access token", client.getAccessToken());
    show("platform URL", client.getPlatFormURL());
    client.setOrvelOfflineMode(false);

    std::printf("\nAnother user, whose account has no domain:\n");
    show(client.login(L"zoe@example.com", L"κωδικός"));

    std::printf("\nSigning out:\n");
    client.logout();
    try {
        client.getLoggedInUser(false);
    } catch (loginManagerException* nobody) {
        std::printf("  nobody is signed in: code %d\n", nobody->code);
        delete nobody;
    }
}

}  // namespace

int main() {
    SetConsoleOutputCP(CP_UTF8);
    try {
        run();
        return 0;
    } catch (loginManagerException* failed) {
        std::fprintf(stderr, "the login manager reported error %d\n", failed->code);
        delete failed;
    } catch (const loginRuntimeException& failed) {
        std::fprintf(stderr, "%s\n", failed.what());
        if (!failed.typeName.empty()) {  // a managed exception; the text of any other failure has the number already
            std::fprintf(stderr, "  HRESULT 0x%08X\n", static_cast<unsigned>(failed.hresult));
        }
    } catch (const std::exception& failed) {
        std::fprintf(stderr, "%s\n", failed.what());
    }
    return 1;
}
