// A plug-in with a client that lives as long as the DLL: it is destroyed when the process is already ending.

#include <windows.h>

#include <cstdio>
#include <memory>

#include "login/LoginManagerClient.h"

namespace {

struct Owner {
    std::unique_ptr<LoginManagerClient> client;

    ~Owner() {
        try {
            client->getTenantName();
            std::fputs("the runtime was called", stderr);
        } catch (const loginRuntimeException&) {}
    }
} owner;

}  // namespace

extern "C" __declspec(dllexport) void signIn() {
    const auto ignored = [] {};
    owner.client = std::make_unique<LoginManagerClient>(ignored, ignored, uiLangFallback);
    owner.client->login(L"ada@example.com", L"analytical engine");
}
