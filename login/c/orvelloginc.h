/**
 * @file
 * The login library as plain functions in orvelloginc.dll, for Windows programs of any compiler and language.
 *
 * C89; includes only <stddef.h>. C++ programs should use the header-only class over these functions instead:
 * login/LoginManagerClient.h.
 *
 * Calls
 *   Functions and callbacks are __stdcall, which every language for Windows can call and which has no effect for
 *   64 bits. The DLL exports the functions by the names below, without decoration.
 *   Every function that can fail returns an orvellogin_result and keeps the details in the client; see
 *   orvellogin_lastFailure. No exception leaves the DLL. Invalid arguments return ORVELLOGIN_BAD_CALL, and nothing is
 *   done: a null `client`, a null pointer for a result, a length below -1, or a null string of another length than 0.
 *   A call that needs the login manager blocks until it answers: for a sign-in in a browser that can take minutes. It
 *   cannot be cancelled.
 *
 * Results
 *   Every string, record and failure that a function returns belongs to the client; the caller frees nothing. It stays
 *   valid until the next function with this client that returns an orvellogin_result ends, or until orvellogin_forget
 *   or orvellogin_destroy. Each of these wipes it: the memory is overwritten, because it may hold a token. An argument
 *   may be a result of the call before: arguments are read before results are wiped.
 *   A callback may call functions of the client whose call is running. Their results stay valid until the next call
 *   inside the callback or until the outer call ends. The outer call's results replace them.
 *   After a failure a string is empty, a pointer is null, and a number is 0.
 *
 * Strings
 *   UTF-16, passed on unchanged in both directions, including zero code units and lone surrogates.
 *   Input: a pointer to the code units and their number, or -1 if the string is zero-terminated.
 *   Output: orvellogin_string.
 *
 * Later versions
 *   Functions, and fields at the end of structures, are only added. A structure that the library fills begins with
 *   `size`, the number of bytes that the loaded DLL fills: a program that may meet an older DLL asks ORVELLOGIN_HAS
 *   before it reads a field that the older one lacks. A program sets the `size` of orvellogin_options.
 *   orvellogin_version returns the version of the DLL.
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

/** Whether the loaded DLL fills `field` of the structure at `structure`: `if (ORVELLOGIN_HAS(response, domainName))`.
    Only needed for a field that is newer than the oldest DLL with which the program must run. */
#define ORVELLOGIN_HAS(structure, field) \
    ((const char*)(&(structure)->field + 1) <= (const char*)(structure) + (structure)->size)

#ifdef __cplusplus
extern "C" {
#endif

/** How a call ended. */
typedef enum orvellogin_result {
    ORVELLOGIN_OK = 0,
    ORVELLOGIN_MANAGER_ERROR = 1, /**< an error from the login manager; see `code` of the failure */
    ORVELLOGIN_FAILED = 2,        /**< any other managed exception, or the runtime cannot be started */
    ORVELLOGIN_NO_MEMORY = 3,     /**< memory is exhausted */
    ORVELLOGIN_BAD_CALL = 4       /**< invalid arguments */
} orvellogin_result;

/** A string of the client's. Also zero-terminated; `units` is never null. These two fields are final. */
typedef struct orvellogin_string {
    const wchar_t* units; /**< UTF-16 code units */
    int length;           /**< their number, without the terminator */
} orvellogin_string;

/** The login manager's data about a signed-in user. */
typedef struct orvellogin_response {
    int size;                            /**< number of bytes that the loaded DLL fills */
    orvellogin_string statusDescription; /**< outcome of the sign-in, as the manager phrased it */
    orvellogin_string userName;          /**< account name */
    orvellogin_string firstName;         /**< given name */
    orvellogin_string lastName;          /**< family name */
    orvellogin_string rowId;             /**< identifier of the user's record on the platform */
    orvellogin_string aliasName;         /**< display name */
    orvellogin_string domainName;        /**< domain of the account; empty when the account has none */
} orvellogin_response;

/** How the last call of a client ended. If memory is exhausted, strings may be empty. */
typedef struct orvellogin_failure {
    int size;    /**< number of bytes that the loaded DLL fills */
    int result;  /**< the orvellogin_result that the call returned; after ORVELLOGIN_OK all strings are empty */
    int code;    /**< ORVELLOGIN_MANAGER_ERROR: the manager's number, 0 to 8; 8 also for a number outside that range, 6
                    also if the manager returned no record at all. Otherwise -1 */
    int hresult; /**< ORVELLOGIN_FAILED: the exception's HRESULT, or the one with which starting the runtime failed */
    orvellogin_string typeName; /**< full name of the managed exception's type; empty if there was no exception */
    orvellogin_string message;  /**< the exception's message with those of its causes, in the runtime's language */
    const char* text;           /**< type and message in UTF-8, zero-terminated, for a log; never null */
} orvellogin_failure;

/** A client of the library. Creates its own login manager on first need. */
typedef struct orvellogin_client orvellogin_client;

/** Called with the context that was registered with it. Must not let an exception escape, nor leave by longjmp. */
typedef void(ORVELLOGIN_CALL* orvellogin_callback)(void* context);

/**
 * What a client is created with. Every field may be 0: `orvellogin_options options = {sizeof options};`.
 *
 * Callbacks are called on whatever thread the manager raises its event. Both with their contexts are one pair, and the
 * pair is process-wide: events of all managers go to the pair of the client whose manager was created last, even after
 * that client is destroyed. So functions and contexts must stay valid until the process ends, or until
 * orvellogin_withdrawCallbacks. A manager of a client without callbacks raises no events. A callback may call functions
 * of this header, but must not destroy a client.
 */
typedef struct orvellogin_options {
    int size;     /**< set by the caller: sizeof(orvellogin_options). Fields that are not wholly inside count as 0.
                     Bytes beyond the fields that the loaded DLL knows must be 0 */
    int language; /**< language of the manager's user interface, 0 to 13 as the manager numbers them; any other number
                     means 0 */
    orvellogin_callback onLogin;  /**< called for each sign-in; null for none */
    void* loginContext;           /**< passed to onLogin */
    orvellogin_callback onLogout; /**< called for each sign-out; null for none */
    void* logoutContext;          /**< passed to onLogout */
} orvellogin_options;

/** Version of the DLL, to compare with ORVELLOGIN_VERSION of the headers: 10203 is 1.2.3. Any thread may call. */
ORVELLOGINC_API int ORVELLOGIN_CALL orvellogin_version(void);

/**
 * Creates a client. Starts the .NET Framework 4 runtime in the process, or joins the one that runs, and registers the
 * handler that resolves assemblies from the folder OrvelLoginManagerClient beside the DLL. Neither creates the manager
 * nor looks for its assemblies: the first function that needs the manager creates it. If that fails, the next one tries
 * again.
 *
 * options: null means that every field is 0. Read before the function returns. ORVELLOGIN_BAD_CALL if its size is less
 *   than that of an int or more than 4096, or if bytes beyond the known fields are not 0.
 * client: receives the client, to be destroyed with orvellogin_destroy, whatever the function returns. After
 *   ORVELLOGIN_FAILED its orvellogin_lastFailure says why, and every function that needs a working client returns that
 *   same failure. Null only after ORVELLOGIN_NO_MEMORY and ORVELLOGIN_BAD_CALL.
 */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_create(const orvellogin_options* options,
                                                                    orvellogin_client** client);

/** Disposes the client's manager, if one was created, wipes the results and frees the client. Does not sign out, and
   leaves the callbacks registered. Null is allowed. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_destroy(orvellogin_client* client);

/** How the last call of this client ended. Valid as long as that call's other results. Wipes nothing. Never null; for a
   null `client` a fixed failure with ORVELLOGIN_BAD_CALL. */
ORVELLOGINC_API const orvellogin_failure* ORVELLOGIN_CALL orvellogin_lastFailure(const orvellogin_client* client);

/** Wipes the results of the last call at once: for a caller that has copied a token, a cookie, a ticket or a record.
   Null is allowed. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_forget(orvellogin_client* client);

/**
 * Withdraws this client's callbacks, for a plug-in that will be unloaded. When the function returns, neither is called
 * again by any manager, and neither is still running on another thread: it waits for those that are, so do not hold a
 * lock that a callback needs. No other client's callbacks take their place until another manager is created. May be
 * called inside a callback. Call it before orvellogin_destroy. Null is allowed.
 */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_withdrawCallbacks(orvellogin_client* client);

/**
 * Signing in and out. These functions ignore the offline flag. An error from the login manager returns
 * ORVELLOGIN_MANAGER_ERROR. A null in a field of the response returns ORVELLOGIN_FAILED, except for domainName, which
 * becomes empty; no response at all returns ORVELLOGIN_MANAGER_ERROR with code 6.
 */

/** Signs in without credentials. The manager decides how (a remembered user, a browser). */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_login(orvellogin_client* client,
                                                                   const orvellogin_response** response);

/** Signs in with account name and password. The library wipes its copy of the password; the caller must wipe its own.
 */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL
orvellogin_loginWithPassword(orvellogin_client* client, const wchar_t* userName, int userNameLength,
                             const wchar_t* password, int passwordLength, const orvellogin_response** response);

/** Returns the signed-in user without prompting; with lastLoginFlag other than 0, does what orvellogin_login does. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getLoggedInUser(orvellogin_client* client,
                                                                             int lastLoginFlag,
                                                                             const orvellogin_response** response);

/** Signs the user out. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_logout(orvellogin_client* client);

/**
 * Getters. While the client is offline all of these return an empty string, without creating or calling the manager.
 */

/** Converts targetUrl to a URL that signs the user in when opened. An error from the login manager returns
   ORVELLOGIN_MANAGER_ERROR; a null from the manager returns ORVELLOGIN_FAILED. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_formatAccessUrl(orvellogin_client* client,
                                                                             const wchar_t* targetUrl,
                                                                             int targetUrlLength,
                                                                             orvellogin_string* url);

/** Access token of the sign-in; empty for a null from the manager. An error from the login manager returns
   ORVELLOGIN_MANAGER_ERROR. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getAccessToken(orvellogin_client* client,
                                                                            orvellogin_string* token);

/** Address of the platform. Empty for a null from the manager. Every exception, even an error from the login manager,
   returns ORVELLOGIN_FAILED. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getPlatFormURL(orvellogin_client* client,
                                                                            orvellogin_string* url);
/** Address of the registry. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getRegistryURL(orvellogin_client* client,
                                                                            orvellogin_string* url);
/** Address of the Kelpa service. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getKelpaURL(orvellogin_client* client,
                                                                         orvellogin_string* url);
/** Name of the tenant. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantName(orvellogin_client* client,
                                                                           orvellogin_string* name);
/** Address of the passport service. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getPassportURL(orvellogin_client* client,
                                                                            orvellogin_string* url);
/** Cookie of the central authentication service. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getCASCookie(orvellogin_client* client,
                                                                          orvellogin_string* cookie);
/** Address of the user's applications. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getmyAppsURL(orvellogin_client* client,
                                                                          orvellogin_string* url);
/** Identifier of the tenant. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantId(orvellogin_client* client,
                                                                         orvellogin_string* id);
/** Identifiers of all tenants in one string, as the manager joins them. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getTenantIds(orvellogin_client* client,
                                                                          orvellogin_string* ids);
/** Address of the space. As orvellogin_getPlatFormURL. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getSpaceURL(orvellogin_client* client,
                                                                         orvellogin_string* url);

/** Ticket for the space at spaceUrl. Every exception of the manager returns ORVELLOGIN_FAILED, and so does a null. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getLoginTicket(orvellogin_client* client,
                                                                            const wchar_t* spaceUrl, int spaceUrlLength,
                                                                            orvellogin_string* ticket);

/**
 * The consumer platform (Dunmore, DNM). These functions ignore the offline flag. Every exception of the manager returns
 * ORVELLOGIN_FAILED, except that DunmoreLoginBrowser returns ORVELLOGIN_MANAGER_ERROR for an error from the login
 * manager.
 */

/** Stops the listener of the browser sign-in. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_stopDNMListener(orvellogin_client* client);

/** Signs in through the browser. server: the platform's server; clientId: the client identifier registered there. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_DunmoreLoginBrowser(
    orvellogin_client* client, const wchar_t* server, int serverLength, const wchar_t* clientId, int clientIdLength);

/** Token of the consumer platform. A null from the manager returns ORVELLOGIN_FAILED. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_getDNMAccessToken(orvellogin_client* client,
                                                                               orvellogin_string* token);

/** Whether the consumer platform's `token` has expired. expired: receives 1 or 0. */
ORVELLOGINC_API orvellogin_result ORVELLOGIN_CALL orvellogin_isDunmorePlatformTokenExpired(orvellogin_client* client,
                                                                                           const wchar_t* token,
                                                                                           int tokenLength,
                                                                                           int* expired);

/** Sets the offline flag, which is 0 in a new client. It only affects this client; it is not passed to the manager.
   Leaves results untouched. Does nothing for a null client. */
ORVELLOGINC_API void ORVELLOGIN_CALL orvellogin_setOrvelOfflineMode(orvellogin_client* client, int offline);
/** The offline flag, 1 or 0; 0 for a null client. Leaves results untouched. */
ORVELLOGINC_API int ORVELLOGIN_CALL orvellogin_isOrvelOfflineMode(const orvellogin_client* client);

#ifdef __cplusplus
}
#endif

#endif
