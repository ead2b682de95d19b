/* Signs a user in and out through the plain functions, and prints all that they return. C89. */

#include <stdio.h>
#include <string.h>

#include <windows.h>

#include "orvelloginc.h"

static void show(const char* name, orvellogin_string value) {
    char bytes[1024];
    if (!WideCharToMultiByte(CP_UTF8, 0, value.units, -1, bytes, sizeof bytes, NULL, NULL)) {
        strcpy(bytes, "(long)");
    }
    printf("  %-18s %s\n", name, value.length ? bytes : "(empty)");
}

static void showUser(const orvellogin_response* user) {
    show("statusDescription", user->statusDescription);
    show("userName", user->userName);
    show("firstName", user->firstName);
    show("lastName", user->lastName);
    show("rowId", user->rowId);
    show("aliasName", user->aliasName);
    show("domainName", user->domainName);
}

/* A callback gets the context that was registered with it. It may be called on any thread, so keep it short. */
static void ORVELLOGIN_CALL onEvent(void* context) {
    printf("  [%s callback, thread %lu]\n", (const char*)context, GetCurrentThreadId());
}

typedef orvellogin_result(ORVELLOGIN_CALL* getter)(orvellogin_client*, orvellogin_string*);

static int showString(const char* name, getter get, orvellogin_client* client) {
    orvellogin_string value;
    if (get(client, &value)) {
        return 0;
    }
    show(name, value);
    return 1;
}

/* Returns 0 as soon as a call fails. */
static int run(orvellogin_client* client) {
    static const struct {
        const char* name;
        getter get;
    } getters[] = {{"access token", orvellogin_getAccessToken},   {"tenant", orvellogin_getTenantName},
                   {"tenant id", orvellogin_getTenantId},         {"tenant ids", orvellogin_getTenantIds},
                   {"CAS cookie", orvellogin_getCASCookie},       {"platform URL", orvellogin_getPlatFormURL},
                   {"registry URL", orvellogin_getRegistryURL},   {"passport URL", orvellogin_getPassportURL},
                   {"applications URL", orvellogin_getmyAppsURL}, {"Kelpa URL", orvellogin_getKelpaURL},
                   {"space URL", orvellogin_getSpaceURL}};
    const orvellogin_response* user;
    orvellogin_string value;
    size_t i;
    int expired;

    printf("\nA wrong password:\n");
    if (orvellogin_loginWithPassword(client, L"ada@example.com", -1, L"difference engine", -1, &user) !=
        ORVELLOGIN_MANAGER_ERROR) {
        return 0;
    }
    printf("  refused: code %d\n", orvellogin_lastFailure(client)->code);

    printf("\nThe right one:\n");
    if (orvellogin_loginWithPassword(client, L"ada@example.com", -1, L"analytical engine", -1, &user)) {
        return 0;
    }
    showUser(user);

    printf("\nWhat the sign-in established:\n");
    for (i = 0; i < sizeof getters / sizeof getters[0]; ++i) {
        if (!showString(getters[i].name, getters[i].get, client)) {
            return 0;
        }
    }
    if (orvellogin_formatAccessUrl(client, L"https://space.example.com/plan", -1, &value)) {
        return 0;
    }
    show("access URL", value);
    /* A result is valid until the next call with the client, and may be an argument of that call. */
    if (orvellogin_getSpaceURL(client, &value) ||
        orvellogin_getLoginTicket(client, value.units, value.length, &value)) {
        return 0;
    }
    show("login ticket", value);

    printf("\nThe consumer platform:\n");
    if (orvellogin_DunmoreLoginBrowser(client, L"https://dunmore.example.com", -1, L"signin-example", -1) ||
        orvellogin_getDNMAccessToken(client, &value)) {
        return 0;
    }
    show("token", value);
    if (orvellogin_isDunmorePlatformTokenExpired(client, value.units, value.length, &expired)) {
        return 0;
    }
    printf("  %-18s %s\n", "expired", expired ? "yes" : "no");
    if (orvellogin_stopDNMListener(client)) {
        return 0;
    }

    printf("\nWhile offline, getters return empty strings without calling the manager:\n");
    orvellogin_setOrvelOfflineMode(client, 1);
    if (!showString("access token", orvellogin_getAccessToken, client) ||
        !showString("platform URL", orvellogin_getPlatFormURL, client)) {
        return 0;
    }
    orvellogin_setOrvelOfflineMode(client, 0);

    printf("\nAnother user, whose account has no domain:\n");
    if (orvellogin_loginWithPassword(client, L"zoe@example.com", -1, L"\x3ba\x3c9\x3b4\x3b9\x3ba\x3cc\x3c2", -1,
                                     &user)) {
        return 0;
    }
    showUser(user);

    printf("\nSigning out:\n");
    if (orvellogin_logout(client) || orvellogin_getLoggedInUser(client, 0, &user) != ORVELLOGIN_MANAGER_ERROR) {
        return 0;
    }
    printf("  nobody is signed in: code %d\n", orvellogin_lastFailure(client)->code);
    return 1;
}

int main(void) {
    static char signIn[] = "sign-in";
    static char signOut[] = "sign-out";
    static orvellogin_options options;
    orvellogin_client* client;
    int good;
    options.size = sizeof options;
    options.onLogin = onEvent;
    options.loginContext = signIn;
    options.onLogout = onEvent;
    options.logoutContext = signOut;
    SetConsoleOutputCP(CP_UTF8);
    printf("Main thread %lu\n", GetCurrentThreadId());
    good = orvellogin_create(&options, &client) == ORVELLOGIN_OK && run(client);
    if (!good) {
        const orvellogin_failure* failure = orvellogin_lastFailure(client);
        fprintf(stderr, "%s\n", client ? failure->text : "memory is exhausted");
        /* A managed exception; the text of any other failure has the number already. */
        if (failure->typeName.length) {
            fprintf(stderr, "  HRESULT 0x%08X\n", (unsigned)failure->hresult);
        }
    }
    orvellogin_destroy(client);
    return good ? 0 : 1;
}
