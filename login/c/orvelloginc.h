/**
 * @file
 * The login library as plain functions in orvelloginc.dll, for Windows programs of any compiler and language.
 *
 * C89; includes only <stddef.h>. C++ programs should use the header-only class over these functions instead:
 * login/LoginManagerClient.h in the folder client beside this header.
 *
 * Calls
 *   Functions and callbacks are __stdcall, which has no effect for 64 bits. The DLL exports the functions by the names
 *   below, without decoration.
 *   Every function that can fail returns an orvellogin_result; no exception leaves the DLL. Invalid arguments return
 *   orvellogin_badCall, and nothing is done: a null `client`, a null output, a length below -1, a null text with a
 *   length other than 0, or a structure whose `size` is too small.
 *
 * Text
 *   UTF-16. Input: a pointer to the units and their number, or -1 if they end with a zero unit. The units are read
 *   before the call returns and are passed on unchanged, including zero units and lone surrogates.
 *   Output: a BSTR, which the caller frees with orvellogin_free or SysFreeString. It carries its length (SysStringLen)
 *   and ends with a zero unit. After success it is never null; after a failure it is null.
 *
 * Structures
 *   The caller sets `size` to the sizeof of the structure and need not set anything else. The library writes no field
 *   beyond `size`, so programs also run with a later DLL that has more fields. Functions and fields are only ever
 *   added; orvellogin_version returns the version of the DLL.
 *
 * Threads
 *   A client may be used from any thread, but only from one at a time. Do not create a client in DllMain: starting the
 *   runtime there hangs the process.
 *
 * Once a client's manager has been created, the DLL stays loaded until the process ends.
 */
#ifndef ORVELLOGINC_H
#define ORVELLOGINC_H

#include <stddef.h>

#include "orvelloginversion.h"

#if !defined(_WIN32) || !(defined(_M_IX86) || defined(__i386__) || defined(_M_X64) || defined(__x86_64__))
#error "orvelloginc.dll serves Windows programs for x86 and x64 only: compile for one of these targets"
#endif

/** The calling convention of functions and callbacks. */
#define ORVELLOGIN_CALL __stdcall

/** Marks the functions that the DLL exports; the library's own build defines ORVELLOGINC_BUILD. */
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
    orvellogin_reported = 1, /**< the login manager reported a failure; see `code` of the failure */
    orvellogin_failed = 2,   /**< any other managed exception, or the runtime cannot be started */
    orvellogin_noMemory = 3, /**< memory is exhausted */
    orvellogin_badCall = 4   /**< invalid arguments */
} orvellogin_result;

/**
 * The details of a failure. Each function that can fail takes a pointer to one, which may be null. It overwrites the
 * fields without freeing them; on success with null and 0. Free them with orvellogin_clearFailure.
 */
typedef struct orvellogin_failure {
    int size;    /**< set by the caller: sizeof(orvellogin_failure) */
    int code;    /**< orvellogin_reported: the manager's number, 0 to 8; 8 also for a number outside that range, 6 also
                    if the manager returned no record at all. Otherwise -1 */
    int hresult; /**< orvellogin_failed: the exception's HRESULT, or the one with which starting the runtime failed */
    wchar_t* typeName; /**< BSTR. Full name of the managed exception's type; empty if there was no managed exception */
    wchar_t* message;  /**< BSTR. The exception's message with those of its causes, in the runtime's language */
    char* text;        /**< BSTR of bytes, zero-terminated: type and message in UTF-8, for a log */
} orvellogin_failure;

/** The login manager's data about a signed-in user; each field is a BSTR. Free it with orvellogin_clearResponse. */
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

/** A client of the library. Gets its own login manager as soon as a function needs one. */
typedef struct orvellogin_client orvellogin_client;

/** Called with the context that was registered with it. Must not let an exception escape, nor leave by longjmp. */
typedef void(ORVELLOGIN_CALL* orvellogin_callback)(void* context);

/** Copies a text into a string of the caller's own: see orvellogin_setReceiver. Returns 0 if memory is exhausted, else
   1. Must not let an exception escape. */
typedef int(ORVELLOGIN_CALL* orvellogin_receiver)(wchar_t** place, const wchar_t* units, int length);

/** Version of the DLL, to compare with ORVELLOGIN_VERSION of the headers: 10203 is 1.2.3. Any thread may call. */
ORVELLOGINC_API int ORVELLOGIN_CALL orvellogin_version(void);

/** Wipes and frees a text that the library returned. Null is allowed. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_free(wchar_t* text);

/** Frees the texts of a failure and resets its fields to null and 0. Null is allowed. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_clearFailure(orvellogin_failure* failure);
/** The same for a response. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_clearResponse(orvellogin_response* response);

/**
 * Creates a client. Starts the .NET Framework 4 runtime in the process, or joins the one that runs, and registers the
 * handler that resolves assemblies from the folder OrvelLoginManagerClient beside the DLL. Neither creates the manager
 * nor looks for its assemblies: the first function that needs the manager creates it. If that fails, the next one tries
 * again.
 *
 * onLogin, onLogout: called each time the manager reports a sign-in or a sign-out, on whatever thread the manager
 *   reports it; null for none. The pair with its contexts is process-wide: the client whose manager was created last
 *   decides which pair is called, for the managers of all clients, and keeps deciding after that client is destroyed.
 *   So functions and contexts must stay valid until the process ends. A callback may call functions of this header, but
 *   must not destroy a client.
 * language: language of the manager's user interface, 0 to 13 as the manager numbers them; any other number means 0.
 * client: receives the client, or null after a failure. Destroy it with orvellogin_destroy.
 */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_create(orvellogin_callback onLogin, void* loginContext,
                                                                    orvellogin_callback onLogout, void* logoutContext,
                                                                    int language, orvellogin_client** client,
                                                                    orvellogin_failure* failure);

/** Disposes the client's manager, if one was created, and frees the client. Does not sign out. Null is allowed. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_destroy(orvellogin_client* client);

/**
 * For wrappers in languages with their own string type, which saves them copying and freeing a BSTR. From now on each
 * text that a function of this client returns is passed to `receiver`, with the place where the BSTR would have been
 * stored: the pointer that was passed, or the address of the response's field. The functions do not touch that place,
 * so the caller may store there the address of the string to fill. The texts of failures remain BSTRs. A null
 * `receiver` restores BSTRs.
 */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_setReceiver(orvellogin_client* client, orvellogin_receiver receiver);

/**
 * Signing in and out. These functions ignore the offline flag. A failure that the manager reports returns
 * orvellogin_reported. A null in a field of the response returns orvellogin_failed, except for domainName, which
 * becomes empty; no response at all returns orvellogin_reported with code 6.
 */

/** Signs in without credentials. The manager decides how (a remembered user, a browser). */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_login(orvellogin_client* client,
                                                                   orvellogin_response* response,
                                                                   orvellogin_failure* failure);

/** Signs in with account name and password. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_loginWithPassword(
    orvellogin_client* client, const wchar_t* userName, int userNameLength, const wchar_t* password, int passwordLength,
    orvellogin_response* response, orvellogin_failure* failure);

/** Returns the signed-in user without prompting; with lastLoginFlag other than 0, does what orvellogin_login does. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getLoggedInUser(orvellogin_client* client,
                                                                             int lastLoginFlag,
                                                                             orvellogin_response* response,
                                                                             orvellogin_failure* failure);

/** Signs the user out. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_logout(orvellogin_client* client,
                                                                    orvellogin_failure* failure);

/**
 * Getters. While the client is offline all of these return an empty text, without creating or calling the manager.
 */

/** Converts targetUrl to a URL that carries the sign-in. A failure that the manager reports returns
   orvellogin_reported; a null from the manager returns orvellogin_failed. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_formatAccessUrl(orvellogin_client* client,
                                                                             const wchar_t* targetUrl,
                                                                             int targetUrlLength, wchar_t** url,
                                                                             orvellogin_failure* failure);

/** Access token of the sign-in; empty for a null from the manager. A failure that the manager reports returns
   orvellogin_reported. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getAccessToken(orvellogin_client* client, wchar_t** token,
                                                                            orvellogin_failure* failure);

/** Address of the platform. Empty for a null from the manager. Every exception, even the manager's own report, returns
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
/** Identifiers of all tenants in one text, as the manager joins them. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantIds(orvellogin_client* client, wchar_t** ids,
                                                                          orvellogin_failure* failure);
/** Address of the space. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getSpaceURL(orvellogin_client* client, wchar_t** url,
                                                                         orvellogin_failure* failure);

/** Ticket for the space at spaceUrl. Every exception of the manager returns orvellogin_failed, and so does a null. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getLoginTicket(orvellogin_client* client,
                                                                            const wchar_t* spaceUrl, int spaceUrlLength,
                                                                            wchar_t** ticket,
                                                                            orvellogin_failure* failure);

/**
 * The consumer platform. These functions ignore the offline flag. Every exception of the manager returns
 * orvellogin_failed, except that DunmoreLoginBrowser returns orvellogin_reported for the manager's own report.
 */

/** Stops the listener of the browser sign-in. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_stopDNMListener(orvellogin_client* client,
                                                                             orvellogin_failure* failure);

/** Signs in through the browser. server: the platform's server; clientId: the client identifier registered there. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL
orvellogin_DunmoreLoginBrowser(orvellogin_client* client, const wchar_t* server, int serverLength,
                               const wchar_t* clientId, int clientIdLength, orvellogin_failure* failure);

/** Token of the consumer platform. A null from the manager returns orvellogin_failed. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getDNMAccessToken(orvellogin_client* client,
                                                                               wchar_t** token,
                                                                               orvellogin_failure* failure);

/** Whether the consumer platform's `token` has expired. expired: receives 1 or 0; 0 after a failure. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_isDunmorePlatformTokenExpired(
    orvellogin_client* client, const wchar_t* token, int tokenLength, int* expired, orvellogin_failure* failure);

/** Sets the offline flag, which is 0 in a new client. It only affects this client; the manager does not know of it.
   Does nothing for a null client. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_setOrvelOfflineMode(orvellogin_client* client, int offline);
/** The offline flag, 1 or 0; 0 for a null client. */
ORVELLOGINC_API int ORVELLOGIN_CALL orvellogin_isOrvelOfflineMode(const orvellogin_client* client);

#ifdef __cplusplus
}
#endif

#endif
