/**
 * @file
 * The login library as plain functions, for programs of any compiler and language: 32-bit Windows, orvelloginc.dll.
 *
 * C89, and no other header but <stddef.h>. C++ programs rather use the class over these functions, which is compiled
 * into them: login/LoginManagerClient.h in the folder client beside this header.
 *
 * Calls
 *   Functions and callbacks are __stdcall. The DLL exports them by the names below, without decoration.
 *   Every function that can fail returns an orvellogin_result; no exception leaves the DLL. A null `client`, a null
 *   output, a length below -1, a text that is null with a length other than 0, or a structure with a `size` that is too
 *   small is a bad call: orvellogin_badCall, and nothing is done.
 *
 * Text
 *   UTF-16. Into the library: a pointer to units and their number, or -1 when a zero unit ends them. The units are read
 *   before the call returns and are passed on one for one: zero units and lone surrogates survive.
 *   Out of the library: a BSTR, the caller's, who frees it by orvellogin_free or SysFreeString. It carries its length
 *   (SysStringLen) and ends with a zero unit. After success it is never null; after a failure it is null.
 *
 * Structures
 *   The caller sets `size` to the sizeof of the structure and need not set anything else. The library writes no field
 *   that lies beyond `size`, so a program goes on running with a later DLL, which may know more fields. Functions and
 *   fields are only ever added; orvellogin_version tells which DLL is there.
 *
 * Threads
 *   Any thread may call, for one client one thread at a time. Do not create a client in DllMain: starting the runtime
 *   there hangs the process.
 *
 * Once a client's manager has been created, the DLL stays loaded until the process ends.
 */
#ifndef ORVELLOGINC_H
#define ORVELLOGINC_H

#include <stddef.h>

#include "orvelloginversion.h"

#if !defined(_WIN32) || !(defined(_M_IX86) || defined(__i386__))
#error "orvelloginc.dll serves 32-bit Windows programs only: compile for that target (i686, x86)"
#endif

/** The calling convention of functions and callbacks. */
#define ORVELLOGIN_CALL __stdcall

/** Marks what the DLL exports; the library's own build defines ORVELLOGINC_BUILD. */
#ifdef ORVELLOGINC_BUILD
#define ORVELLOGINC_API __declspec(dllexport)
#else
#define ORVELLOGINC_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** How a call ended. */
typedef enum orvellogin_result {
    orvellogin_ok = 0,
    orvellogin_reported = 1, /**< the login manager reported a failure; `code` of the failure tells which */
    orvellogin_failed = 2,   /**< anything else that a runtime exception stands for, or the runtime cannot be started */
    orvellogin_noMemory = 3, /**< memory is exhausted */
    orvellogin_badCall = 4   /**< the arguments make no sense */
} orvellogin_result;

/**
 * What is known of a failure. Each function that can fail takes a pointer to one, which may be null. It overwrites the
 * fields: with null and 0 when it succeeds. Free them by orvellogin_clearFailure.
 */
typedef struct orvellogin_failure {
    int size;    /**< set by the caller: sizeof(orvellogin_failure) */
    int code;    /**< orvellogin_reported: the manager's number, 0 to 8; 8 also stands for any other number of its,
                    6 also for a manager that gave back no record at all. Otherwise -1 */
    int hresult; /**< orvellogin_failed: the exception's HRESULT, or the one that starting the runtime ended with */
    wchar_t*
        typeName;     /**< BSTR. Full name of the managed exception's type; empty when none stands behind the failure */
    wchar_t* message; /**< BSTR. Its message with those of its causes, in the language the runtime chose */
    char* text;       /**< BSTR of bytes, ended by a zero: type and message in one line of UTF-8, for a log */
} orvellogin_failure;

/** What the login manager tells of a signed-in user, each field a BSTR. Free it by orvellogin_clearResponse. */
typedef struct orvellogin_response {
    int size;                   /**< set by the caller: sizeof(orvellogin_response) */
    wchar_t* statusDescription; /**< outcome of the sign-in, as the manager phrased it */
    wchar_t* userName;          /**< account name */
    wchar_t* firstName;         /**< given name */
    wchar_t* lastName;          /**< family name */
    wchar_t* rowId;             /**< identifier of the user's record on the platform */
    wchar_t* aliasName;         /**< display name */
    wchar_t* domainName;        /**< domain of the account; empty when the account has none */
} orvellogin_response;

/** One user of the library, with a login manager of its own once a function needed one. */
typedef struct orvellogin_client orvellogin_client;

/** Called with the context that was given with it. It must not let an exception out, nor leave by longjmp. */
typedef void(ORVELLOGIN_CALL* orvellogin_callback)(void* context);

/** Takes a text into a string of the caller's own: see orvellogin_setReceiver. Returns 0 when memory is exhausted, and
   lets nothing out. */
typedef int(ORVELLOGIN_CALL* orvellogin_receiver)(wchar_t** place, const wchar_t* units, int length);

/** Version of the DLL, as ORVELLOGIN_VERSION has that of this header: 10203 is 1.2.3. Any thread. */
ORVELLOGINC_API int ORVELLOGIN_CALL orvellogin_version(void);

/** Overwrites a text that the library gave out, and frees it. Null is allowed. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_free(wchar_t* text);

/** Frees what a function wrote into a failure, and sets the fields to null. Null is allowed. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_clearFailure(orvellogin_failure* failure);
/** The same for a response. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_clearResponse(orvellogin_response* response);

/**
 * Creates a client. Starts the .NET Framework 4 runtime in the process, or joins the one that runs, and makes the
 * assemblies of the folder OrvelLoginManagerClient beside the DLL findable. Neither creates the manager nor looks for
 * its assemblies: the first function that needs the manager creates it, and while that fails, the next one tries again.
 *
 * onLogin, onLogout: called each time the manager reports a sign-in or a sign-out, on whatever thread the manager
 *   reports it; null for none. The pair with its contexts is process-wide: the client whose manager was created last
 *   decides which pair is called, for the managers of all clients, and keeps deciding after that client is destroyed.
 *   So functions and contexts must stay valid until the process ends. A callback may call functions of this header, but
 *   must not destroy a client.
 * language: of the manager's user interface, 0 to 13 as the manager numbers them; any other number means 0.
 * client: receives the client, null after a failure. To be destroyed by orvellogin_destroy.
 */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_create(orvellogin_callback onLogin, void* loginContext,
                                                                    orvellogin_callback onLogout, void* logoutContext,
                                                                    int language, orvellogin_client** client,
                                                                    orvellogin_failure* failure);

/** Disposes the client's manager, if one was created, and frees the client. Signs nobody out. Null is allowed. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_destroy(orvellogin_client* client);

/**
 * For wrappers in languages with strings of their own, which would only copy a BSTR and free it: from now on each text
 * that a function of this client answers is handed to `receiver`, with the place where the BSTR would have been stored:
 * the pointer that was passed, or the address of the response's field. What that place contains is the caller's, so it
 * may point to a string; the functions leave it as it is. The texts of failures remain BSTRs. Null for BSTRs again.
 */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_setReceiver(orvellogin_client* client, orvellogin_receiver receiver);

/**
 * Signing in and out. None of these is governed by the offline flag; a failure that the manager reports is
 * orvellogin_reported. A null of the manager's in the response is orvellogin_failed, but for domainName, which becomes
 * empty; no response at all is orvellogin_reported with code 6.
 */

/** Signs in without credentials: what the manager does then (a remembered user, a browser) is its own affair. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_login(orvellogin_client* client,
                                                                   orvellogin_response* response,
                                                                   orvellogin_failure* failure);

/** Signs in with account name and password. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_loginWithPassword(
    orvellogin_client* client, const wchar_t* userName, int userNameLength, const wchar_t* password, int passwordLength,
    orvellogin_response* response, orvellogin_failure* failure);

/** The signed-in user, not asking for a sign-in; with lastLoginFlag other than 0 it is orvellogin_login instead. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getLoggedInUser(orvellogin_client* client,
                                                                             int lastLoginFlag,
                                                                             orvellogin_response* response,
                                                                             orvellogin_failure* failure);

/** Signs the user out. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_logout(orvellogin_client* client,
                                                                    orvellogin_failure* failure);

/**
 * What the sign-in established. While the client is offline all of these answer empty, without calling the manager or
 * creating it.
 */

/** Makes targetUrl into an address that carries the sign-in. A failure that the manager reports is orvellogin_reported;
   a null of the manager's is orvellogin_failed. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_formatAccessUrl(orvellogin_client* client,
                                                                             const wchar_t* targetUrl,
                                                                             int targetUrlLength, wchar_t** url,
                                                                             orvellogin_failure* failure);

/** Access token of the sign-in; empty for a null of the manager's. A failure that the manager reports is
   orvellogin_reported. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getAccessToken(orvellogin_client* client, wchar_t** token,
                                                                            orvellogin_failure* failure);

/** Address of the platform. Empty for a null of the manager's; each exception of the manager's, also its own kind, is
   orvellogin_failed. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getPlatFormURL(orvellogin_client* client, wchar_t** url,
                                                                            orvellogin_failure* failure);
/** Address of the registry. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getRegistryURL(orvellogin_client* client, wchar_t** url,
                                                                            orvellogin_failure* failure);
/** Address of the Kelpa service. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getKelpaURL(orvellogin_client* client, wchar_t** url,
                                                                         orvellogin_failure* failure);
/** Name of the tenant. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantName(orvellogin_client* client, wchar_t** name,
                                                                           orvellogin_failure* failure);
/** Address of the passport service. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getPassportURL(orvellogin_client* client, wchar_t** url,
                                                                            orvellogin_failure* failure);
/** Cookie of the central authentication service. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getCASCookie(orvellogin_client* client, wchar_t** cookie,
                                                                          orvellogin_failure* failure);
/** Address of the user's applications. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getmyAppsURL(orvellogin_client* client, wchar_t** url,
                                                                          orvellogin_failure* failure);
/** Identifier of the tenant. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantId(orvellogin_client* client, wchar_t** id,
                                                                         orvellogin_failure* failure);
/** All tenants' identifiers in one text, as the manager joins them. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantIds(orvellogin_client* client, wchar_t** ids,
                                                                          orvellogin_failure* failure);
/** Address of the space. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getSpaceURL(orvellogin_client* client, wchar_t** url,
                                                                         orvellogin_failure* failure);

/** Ticket for the space at spaceUrl. Each exception of the manager's is orvellogin_failed, and so is a null. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getLoginTicket(orvellogin_client* client,
                                                                            const wchar_t* spaceUrl, int spaceUrlLength,
                                                                            wchar_t** ticket,
                                                                            orvellogin_failure* failure);

/**
 * The consumer platform. Not governed by the offline flag. Each exception of the manager's is orvellogin_failed, but
 * for DunmoreLoginBrowser, where a failure that the manager reports is orvellogin_reported.
 */

/** Stops the listener of the browser sign-in. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_stopDNMListener(orvellogin_client* client,
                                                                             orvellogin_failure* failure);

/** Signs in through the browser. server: the platform's server; clientId: the client identifier registered there. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL
orvellogin_DunmoreLoginBrowser(orvellogin_client* client, const wchar_t* server, int serverLength,
                               const wchar_t* clientId, int clientIdLength, orvellogin_failure* failure);

/** Token of the consumer platform. A null of the manager's is orvellogin_failed. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getDNMAccessToken(orvellogin_client* client,
                                                                               wchar_t** token,
                                                                               orvellogin_failure* failure);

/** Whether `token` of the consumer platform has expired. expired: receives 1 or 0, 0 after a failure. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_isDunmorePlatformTokenExpired(
    orvellogin_client* client, const wchar_t* token, int tokenLength, int* expired, orvellogin_failure* failure);

/** Sets the offline flag, which is 0 in a new client and belongs to it: the manager is not told. Does nothing for a
   null client. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_setOrvelOfflineMode(orvellogin_client* client, int offline);
/** The offline flag, 1 or 0; 0 for a null client. */
ORVELLOGINC_API int ORVELLOGIN_CALL orvellogin_isOrvelOfflineMode(const orvellogin_client* client);

#ifdef __cplusplus
}
#endif

#endif
