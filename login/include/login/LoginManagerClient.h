#pragma once

/// @file
/// The exported class: sign-in, sign-out, and what a sign-in established.

#include <atomic>
#include <string>

#include "login/LoginExport.h"
#include "login/LoginResponse.h"
#include "login/loginManagerException.h"
#include "login/loginRuntimeException.h"
#include "login/uiLang.h"

namespace OrvelLoginClientCLR {
class LoginManagerClientCLR;
}
struct orvellogin_client;

/// Signs a user in to the online account service, through the managed login manager whose assemblies lie in the folder
/// `OrvelLoginManagerClient` next to this library.
///
/// Order of calls: construct (cheap) -> setOrvelOfflineMode if wanted -> login or getLoggedInUser -> the getters ->
/// logout -> destroy. The first member that needs the manager creates it. That is every member but
/// setOrvelOfflineMode, isOrvelOfflineMode and, while offline, the thirteen string getters from formatAccessUrl to
/// getSpaceURL, which then answer empty without a call.
///
/// Strings are UTF-16 in both directions, passed unit for unit: embedded zero units and lone surrogates survive.
///
/// Failures:
/// - `loginManagerException*` (a pointer, which the catcher deletes): the manager's own report. Only from login,
///   getLoggedInUser, logout, formatAccessUrl, getAccessToken and DunmoreLoginBrowser.
/// - `loginRuntimeException` (by value): everything else, from any member that reaches the manager. An assembly that
///   cannot be loaded, an exception of another type, the manager's exception from a member not listed above, a string
///   of the manager's that is null where none may be (`System.ArgumentNullException`). If creating the manager fails,
///   the next member that needs it tries again; but on Windows the runtime remembers an assembly that it could not
///   find.
/// - `std::bad_alloc` from any member.
///
/// Threads: any thread may call, one at a time; nothing here is guarded. Two threads that make the first call of one
/// client at once may create two managers, of which one is leaked. COM apartments are the host's business: if the
/// manager shows a browser, call `OleInitialize` on the calling thread first. The calling thread's floating-point
/// control is the same after each member.
///
/// Where a client may live: in a function, in an object, or as a static object of the program. Do not construct one in
/// `DllMain` or while a DLL's static objects are made: starting the runtime there hangs the process. A static object of
/// a DLL may own one that was made later: when the process is ending, its destructor leaves the manager alone, and its
/// members throw `loginRuntimeException`.
///
/// Once a manager has been created the library stays loaded until the process ends.
class ORVELLOGIN_API LoginManagerClient {
public:
    /// Starts the .NET Framework 4 runtime in the process, or joins the one that runs, and makes the assemblies of the
    /// sub-folder findable. Neither creates the manager nor looks for its assemblies.
    ///
    /// `loginCallBack`, `logoutCallBack`: called each time the manager reports a sign-in or a sign-out, on whatever
    /// thread the manager reports it; null for none. The pair is process-wide: the client whose manager was created
    /// last decides which pair is called, for the managers of all clients, and keeps deciding after that client is
    /// destroyed. A callback runs inside the managed runtime, so it must not let an exception out (the process ends by
    /// `std::terminate`), must not leave by `longjmp`, and must not destroy a client; it may call members of one.
    ///
    /// `langIn`: language of the manager's user interface.
    ///
    /// Throws `loginRuntimeException` when the runtime cannot be started or `OrvelLoginClientCLR.dll` does not lie next
    /// to this library.
    LoginManagerClient(void (*loginCallBack)(), void (*logoutCallBack)(), uiLang langIn);

    /// Disposes the manager, if one was created, and ignores an exception of its `Dispose`. Signs nobody out.
    ~LoginManagerClient();

    LoginManagerClient(const LoginManagerClient&) = delete;
    LoginManagerClient& operator=(const LoginManagerClient&) = delete;

    /// Signs in without credentials from the host. The manager decides how (a remembered user, a browser). Not governed
    /// by the offline flag. No record from the manager: `loginManagerException*` with code 6. A null `domainName` in
    /// the record becomes empty; a null in one of the other six fields is a failed conversion.
    LoginResponse login();

    /// Signs in with account name and password. The copy of the password is wiped. Otherwise as login().
    LoginResponse login(std::wstring userName, std::wstring password);

    /// The signed-in user, without asking anyone to sign in. With `LastLoginFlag` true it is login() instead. Otherwise
    /// as login().
    LoginResponse getLoggedInUser(bool LastLoginFlag);

    /// Signs the user out. Not governed by the offline flag. Throws the manager's report.
    void logout();

    /// Makes `targeturl` into an URL that carries the sign-in. Empty while offline (not `targeturl`). Throws the
    /// manager's report; a null from the manager is a failed conversion.
    std::wstring formatAccessUrl(std::wstring targeturl);

    /// Access token of the sign-in. Empty while offline and for a null from the manager. Throws the manager's report.
    std::wstring getAccessToken();

    /// @name Addresses and identity of the tenant
    /// Empty while offline and for a null from the manager. The manager's own exception arrives as
    /// `loginRuntimeException` here, not as `loginManagerException*`.
    /// @{
    std::wstring getPlatFormURL();  ///< address of the platform
    std::wstring getRegistryURL();  ///< address of the registry
    std::wstring getKelpaURL();     ///< address of the Kelpa service
    std::wstring getTenantName();   ///< name of the tenant
    std::wstring getPassportURL();  ///< address of the passport service
    std::wstring getCASCookie();    ///< cookie of the central authentication service
    std::wstring getmyAppsURL();    ///< address of the user's applications
    std::wstring getTenantId();     ///< identifier of the tenant
    std::wstring getTenantIds();    ///< identifiers of all tenants in one string, as the manager joins them
    /// @}

    /// Ticket for the space at `spaceurl`. Empty while offline. A null from the manager is a failed conversion; the
    /// manager's own exception arrives as `loginRuntimeException`.
    std::wstring getLoginTicket(std::wstring spaceurl);

    /// Address of the space. As the tenant getters above.
    std::wstring getSpaceURL();

    /// Stops the listener of the consumer platform's browser sign-in. Not governed by the offline flag. The manager's
    /// own exception arrives as `loginRuntimeException`.
    void stopDNMListener();

    /// Signs in to the consumer platform through the browser. `serverDNM`: its server; `clientId`: the client
    /// identifier registered there. Not governed by the offline flag. Throws the manager's report.
    void DunmoreLoginBrowser(std::wstring serverDNM, std::wstring clientId);

    /// Token of the consumer platform. Not governed by the offline flag. A null from the manager is a failed
    /// conversion; the manager's own exception arrives as `loginRuntimeException`.
    std::wstring getDNMAccessToken();

    /// Whether the consumer platform's token `t` has expired. Not governed by the offline flag. The manager's own
    /// exception arrives as `loginRuntimeException`.
    bool isDunmorePlatformTokenExpired(std::wstring t);

    /// Sets the offline flag, which is false after construction. The flag belongs to this client; the manager is not
    /// told.
    void setOrvelOfflineMode(bool orvelOfflineMode);

    /// The offline flag.
    bool isOrvelOfflineMode() const;

private:
    friend struct orvellogin_client;  // the plain functions' client, in orvelloginc.dll

    OrvelLoginClientCLR::LoginManagerClientCLR* getLoginMgrClient();

    bool offlineMode;
    std::atomic<OrvelLoginClientCLR::LoginManagerClientCLR*> bridge;  // owned; null until it is needed
    void (*loginCallBack)();
    void (*logoutCallBack)();
    uiLang language;
};
