// Calls the plain functions as a host does.

#include <string>

#include "Candidate.h"
#include "orvelloginc.h"

namespace {

orvellogin_client* client;
const std::wstring url(100, L'u');
std::wstring token;

template <class Call>
void repeat(int calls, Call call) {
    for (int i = 0; i < calls; ++i) {
        call();
    }
}

void signIn(const wchar_t* password) {
    const orvellogin_response* user;
    orvellogin_loginWithPassword(client, L"ada@example.com", -1, password, -1, &user);
}

}  // namespace

extern "C" __declspec(dllexport) Candidate candidate() {
    orvellogin_create(nullptr, &client);
    signIn(L"analytical engine");
    orvellogin_DunmoreLoginBrowser(client, L"https://dunmore.example.com", -1, L"bench", -1);
    static orvellogin_string result;
    orvellogin_getDNMAccessToken(client, &result);
    token = result.units;
    return {
        [](int calls) { repeat(calls, [] { orvellogin_getAccessToken(client, &result); }); },
        [](int calls) {
            repeat(calls,
                   [] { orvellogin_formatAccessUrl(client, url.data(), static_cast<int>(url.size()), &result); });
        },
        [](int calls) {
            repeat(calls, [] {
                int expired;
                orvellogin_isDunmorePlatformTokenExpired(client, token.data(), static_cast<int>(token.size()),
                                                         &expired);
            });
        },
        [](int calls) { repeat(calls, [] { signIn(L"analytical engine"); }); },
        [](int calls) { repeat(calls, [] { signIn(L"difference engine"); }); },
    };
}
