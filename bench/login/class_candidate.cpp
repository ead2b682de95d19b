// Calls the class as a host does. Built twice: with the exported class, and with the header-only one.

#include <memory>
#include <string>

#include "Candidate.h"
#include "login/LoginManagerClient.h"

namespace {

LoginManagerClient& client() {
    static LoginManagerClient client(nullptr, nullptr, uiLangFallback);
    return client;
}

const std::wstring url(100, L'u');
std::wstring token;

template <class Call>
void repeat(int calls, Call call) {
    for (int i = 0; i < calls; ++i) {
        call(client());
    }
}

}  // namespace

extern "C" __declspec(dllexport) Candidate candidate() {
    client().login(L"ada@example.com", L"analytical engine");
    client().DunmoreLoginBrowser(L"https://dunmore.example.com", L"bench");
    token = client().getDNMAccessToken();
    return {
        [](int calls) { repeat(calls, [](LoginManagerClient& c) { c.getAccessToken(); }); },
        [](int calls) { repeat(calls, [](LoginManagerClient& c) { c.formatAccessUrl(url); }); },
        [](int calls) { repeat(calls, [](LoginManagerClient& c) { c.isDunmorePlatformTokenExpired(token); }); },
        [](int calls) {
            repeat(calls, [](LoginManagerClient& c) { c.login(L"ada@example.com", L"analytical engine"); });
        },
        [](int calls) {
            repeat(calls, [](LoginManagerClient& c) {
                try {
                    c.login(L"ada@example.com", L"difference engine");
                } catch (loginManagerException* refused) {
                    delete refused;
                }
            });
        },
    };
}
