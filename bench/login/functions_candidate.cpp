// Calls the plain functions as a host does.

#include <string>

#include "Candidate.h"
#include "orvelloginc.h"

namespace {

orvellogin_client* client;
const std::wstring url(100, L'u');
std::wstring token;

void signIn(int calls, const wchar_t* password) {
    for (int i = 0; i < calls; ++i) {
        orvellogin_response user;
        user.size = sizeof user;
        orvellogin_failure failure;
        failure.size = sizeof failure;
        orvellogin_loginWithPassword(client, L"ada@example.com", -1, password, -1, &user, &failure);
        orvellogin_clearResponse(&user);
        orvellogin_clearFailure(&failure);
    }
}

}  // namespace

extern "C" __declspec(dllexport) Candidate candidate() {
    orvellogin_create(nullptr, nullptr, nullptr, nullptr, 0, &client, nullptr);
    signIn(1, L"analytical engine");
    orvellogin_DunmoreLoginBrowser(client, L"https://dunmore.example.com", -1, L"bench", -1, nullptr);
    wchar_t* text;
    orvellogin_getDNMAccessToken(client, &text, nullptr);
    token = text;
    orvellogin_free(text);
    return {
        [](int calls) {
            for (int i = 0; i < calls; ++i) {
                wchar_t* result;
                orvellogin_getAccessToken(client, &result, nullptr);
                orvellogin_free(result);
            }
        },
        [](int calls) {
            for (int i = 0; i < calls; ++i) {
                wchar_t* result;
                orvellogin_formatAccessUrl(client, url.data(), static_cast<int>(url.size()), &result, nullptr);
                orvellogin_free(result);
            }
        },
        [](int calls) {
            for (int i = 0; i < calls; ++i) {
                int expired;
                orvellogin_isDunmorePlatformTokenExpired(client, token.data(), static_cast<int>(token.size()), &expired,
                                                         nullptr);
            }
        },
        [](int calls) { signIn(calls, L"analytical engine"); },
        [](int calls) { signIn(calls, L"difference engine"); },
    };
}
