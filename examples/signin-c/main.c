/* Signs a user in and out through the plain functions, and prints all that they return. C89. */

#include <stdio.h>
#include <string.h>

#include <windows.h>

#include "orvelloginc.h"

static void show(const char* name, const wchar_t* value) {
    char bytes[1024];
    if (!WideCharToMultiByte(CP_UTF8, 0, value, -1, bytes, sizeof bytes, NULL, NULL)) {
        strcpy(bytes, "(long)");
    }
    printf("  %-18s %s\n", name, value[0] ? bytes : "(empty)");
}

static void showAndClear(orvellogin_response* user) {
    show("statusDescription", user->statusDescription);
    show("userName", user->userName);
    show("firstName", user->firstName);
    show("lastName", user->lastName);
    show("rowId", user->rowId);
    show("aliasName", user->aliasName);
    show("domainName", user->domainName);
    orvellogin_clearResponse(user);
}

/* A callback gets the context that was registered with it. It may be called on any thread, so do little in it. */
static void ORVELLOGIN_CALL onEvent(void* context) {
    printf("  [%s callback, thread %lu]\n", (const char*)context, GetCurrentThreadId());
}

/* Prints a failure. Returns whether there was one. */
static int failed(orvellogin_result result, orvellogin_failure* failure) {
    if (result == orvellogin_ok) {
        return 0;
    }
    fprintf(stderr, "%s\n", failure->text ? failure->text : "memory is exhausted");
    /* A managed exception; the text of any other failure has the number already. */
    if (failure->typeName && failure->typeName[0]) {
        fprintf(stderr, "  HRESULT 0x%08X\n", (unsigned)failure->hresult);
    }
    orvellogin_clearFailure(failure);
    return 1;
}

typedef orvellogin_result(ORVELLOGIN_CALL* getter)(orvellogin_client*, wchar_t**, orvellogin_failure*);

static int showText(const char* name, getter get, orvellogin_client* client, orvellogin_failure* failure) {
    wchar_t* text;
    if (failed(get(client, &text, failure), failure)) {
        return 0;
    }
    show(name, text);
    orvellogin_free(text);
    return 1;
}

static int run(orvellogin_client* client, orvellogin_failure* failure) {
    static const struct {
        const char* name;
        getter get;
    } getters[] = {{"access token", orvellogin_getAccessToken}, {"tenant", orvellogin_getTenantName},
                   {"tenant id", orvellogin_getTenantId},       {"tenant ids", orvellogin_getTenantIds},
                   {"CAS cookie", orvellogin_getCASCookie},     {"platform URL", orvellogin_getPlatFormURL},
                   {"registry URL", orvellogin_getRegistryURL}, {"passport URL", orvellogin_getPassportURL},
                   {"applications URL", orvellogin_getmyAppsURL}, {"Kelpa URL", orvellogin_getKelpaURL},
                   {"space URL", orvellogin_getSpaceURL}};
    orvellogin_response user;
    orvellogin_result result;
    wchar_t* text;
    size_t i;
    int expired;
    user.size = sizeof user;

    printf("\nA wrong password:\n");
    result = orvellogin_loginWithPassword(client, L"ada@example.com", -1, L"difference engine", -1, &user, failure);
    if (result != orvellogin_reported) {
        return !failed(result, failure);
    }
    printf("  refused: code %d\n", failure->code);
    orvellogin_clearFailure(failure);

    printf("\nThe right one:\n");
    if (failed(orvellogin_loginWithPassword(client, L"ada@example.com", -1, L"analytical engine", -1, &user, failure),
               failure)) {
        return 0;
    }
    showAndClear(&user);

    printf("\nWhat the sign-in established:\n");
    for (i = 0; i < sizeof getters / sizeof getters[0]; ++i) {
        if (!showText(getters[i].name, getters[i].get, client, failure)) {
            return 0;
        }
    }
    if (failed(orvellogin_formatAccessUrl(client, L"https://space.example.com/plan", -1, &text, failure), failure)) {
        return 0;
    }
    show("access URL", text);
    orvellogin_free(text);
    if (failed(orvellogin_getLoginTicket(client, L"https://space.example.com/", -1, &text, failure), failure)) {
        return 0;
    }
    show("login ticket", text);
    orvellogin_free(text);

    printf("\nThe consumer platform:\n");
    if (failed(orvellogin_DunmoreLoginBrowser(client, L"https://dunmore.example.com", -1, L"signin-example", -1,
                                              failure),
               failure) ||
        failed(orvellogin_getDNMAccessToken(client, &text, failure), failure)) {
        return 0;
    }
    show("token", text);
    result = orvellogin_isDunmorePlatformTokenExpired(client, text, -1, &expired, failure);
    orvellogin_free(text);
    if (failed(result, failure)) {
        return 0;
    }
    printf("  %-18s %s\n", "expired", expired ? "yes" : "no");
    if (failed(orvellogin_stopDNMListener(client, failure), failure)) {
        return 0;
    }

    printf("\nOffline, the getters answer empty without a call:\n");
    orvellogin_setOrvelOfflineMode(client, 1);
    if (!showText("access token", orvellogin_getAccessToken, client, failure) ||
        !showText("platform URL", orvellogin_getPlatFormURL, client, failure)) {
        return 0;
    }
    orvellogin_setOrvelOfflineMode(client, 0);

    printf("\nAnother user, whose account has no domain:\n");
    if (failed(orvellogin_loginWithPassword(client, L"zoe@example.com", -1,
                                            L"\x3ba\x3c9\x3b4\x3b9\x3ba\x3cc\x3c2", -1, &user, failure),
               failure)) {
        return 0;
    }
    showAndClear(&user);

    printf("\nSigning out:\n");
    if (failed(orvellogin_logout(client, failure), failure)) {
        return 0;
    }
    result = orvellogin_getLoggedInUser(client, 0, &user, failure);
    if (result != orvellogin_reported) {
        orvellogin_clearResponse(&user);
        return !failed(result, failure);
    }
    printf("  nobody is signed in: code %d\n", failure->code);
    orvellogin_clearFailure(failure);
    return 1;
}

int main(void) {
    static char signIn[] = "sign-in";
    static char signOut[] = "sign-out";
    orvellogin_client* client;
    orvellogin_failure failure;
    int good;
    failure.size = sizeof failure;
    SetConsoleOutputCP(CP_UTF8);
    printf("Main thread %lu\n", GetCurrentThreadId());
    if (failed(orvellogin_create(onEvent, signIn, onEvent, signOut, 0, &client, &failure), &failure)) {
        return 1;
    }
    good = run(client, &failure);
    orvellogin_destroy(client);
    return good ? 0 : 1;
}
