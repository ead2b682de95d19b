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
struct ManagedMember;
struct ManagerMembers;
}  // namespace OrvelLoginClientCLR
struct orvellogin_client;

/// Signs a user in to the online account service, through the managed login manager whose assemblies lie in the folder
/// `OrvelLoginManagerClient` next to this library.
///
/// Order of calls: construct -> setOrvelOfflineMode if needed -> login or getLoggedInUser -> the getters -> logout ->
/// destroy. The first member that needs the manager creates it. Every member needs it except setOrvelOfflineMode,
/// isOrvelOfflineMode and, while offline, the string getters from formatAccessUrl to getSpaceURL, which then
/// return an empty string without a call.
///
/// Strings are UTF-16 in both directions, passed unit for unit: embedded zero units and lone surrogates survive.
///
/// Failures:
/// - `loginManagerException*` (a pointer, which the catcher deletes): the manager's own report. Only from login,
///   getLoggedInUser, logout, formatAccessUrl, getAccessToken and DunmoreLoginBrowser.
/// - `loginRuntimeException` (by value): everything else, from any member that reaches the manager: an assembly that
///   cannot be loaded, an exception of another type, the manager's exception from a member not listed above, a null
///   string from the manager where none is allowed (`System.ArgumentNullException`). If creating the manager fails,
///   the next member that needs it tries again; but on Windows the runtime remembers an assembly that it could not
///   find.
/// - `std::bad_alloc` from any member.
///
/// Threads: a client may be used from any thread, but only from one at a time; it has no locks. If two threads make the
/// first call of one client at once, two managers may be created, of which one is leaked. COM apartments are up to the
/// host: if the manager shows a browser, call `OleInitialize` on the calling thread first. Members leave the calling
/// thread's floating-point control unchanged.
///
/// Where a client may live: in a function, in an object, or as a static object of the program. Do not construct one in
/// `DllMain` or as a static object of a DLL: starting the runtime there hangs the process. A static object of a DLL may
/// own a client that is constructed later. While the process is ending, that client's destructor does not call the
/// manager, and its members throw `loginRuntimeException`.
///
/// Once a manager has been created, the library stays loaded until the process ends.
class ORVELLOGIN_API LoginManagerClient {
public:
    /// Starts the .NET Framework 4 runtime in the process, or joins the one that runs, and registers the handler that
    /// resolves assemblies from the sub-folder. Neither creates the manager nor looks for its assemblies.
    ///
    /// `loginCallBack`, `logoutCallBack`: called each time the manager reports a sign-in or a sign-out, on whatever
    /// thread the manager reports it; null for none. The pair is process-wide: the client whose manager was created
    /// last decides which pair is called, for the managers of all clients, and keeps deciding after that client is
    /// destroyed. A callback runs inside the managed runtime, so it must not let an exception escape (`std::terminate`
    /// would end the process), must not leave by `longjmp`, and must not destroy a client; it may call members of one.
    ///
    /// `langIn`: language of the manager's user interface.
    ///
    /// Throws `loginRuntimeException` if the runtime cannot be started, or if `OrvelLoginClientCLR.dll` next to this
    /// library is missing, damaged or from another version.
    LoginManagerClient(void (*loginCallBack)(), void (*logoutCallBack)(), uiLang langIn);

    /// Disposes the manager, if one was created, and ignores an exception from its `Dispose`. Does not sign out.
    ~LoginManagerClient();

    LoginManagerClient(const LoginManagerClient&) = delete;
    LoginManagerClient& operator=(const LoginManagerClient&) = delete;

    /// Signs in without credentials from the host. The manager decides how (a remembered user, a browser). Ignores the
    /// offline flag. If the manager returns no record, throws `loginManagerException*` with code 6. A null `domainName`
    /// in the record becomes empty; a null in another field is a failed conversion.
    LoginResponse login();

    /// Signs in with account name and password. Otherwise as login(). The library wipes its copy of the password; the
    /// host must wipe its own.
    LoginResponse login(std::wstring userName, std::wstring password);

    /// Returns the signed-in user without prompting. If `LastLoginFlag` is true, calls login() instead. Otherwise as
    /// login().
    LoginResponse getLoggedInUser(bool LastLoginFlag);

    /// Signs the user out. Ignores the offline flag. Throws the manager's report.
    void logout();

    /// Converts `targeturl` to a URL that carries the sign-in. Returns an empty string while offline, not `targeturl`:
    /// a URL without the sign-in must not be mistaken for one that carries it. Throws the manager's report; a null from
    /// the manager is a failed conversion.
    std::wstring formatAccessUrl(std::wstring targeturl);

    /// Access token of the sign-in. Empty while offline and for a null from the manager. Throws the manager's report.
    std::wstring getAccessToken();

    /// @name Addresses and identity of the tenant
    /// Empty while offline and for a null from the manager. The manager's own exception becomes a
    /// `loginRuntimeException` here, not a `loginManagerException*`.
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
    /// manager's own exception becomes a `loginRuntimeException`.
    std::wstring getLoginTicket(std::wstring spaceurl);

    /// Address of the space. As the tenant getters above.
    std::wstring getSpaceURL();

    /// Stops the listener of the consumer platform's browser sign-in. Ignores the offline flag. The manager's own
    /// exception becomes a `loginRuntimeException`.
    void stopDNMListener();

    /// Signs in to the consumer platform through the browser. `serverDNM`: its server; `clientId`: the client
    /// identifier registered there. Ignores the offline flag. Throws the manager's report.
    void DunmoreLoginBrowser(std::wstring serverDNM, std::wstring clientId);

    /// Token of the consumer platform. Ignores the offline flag. A null from the manager is a failed conversion; the
    /// manager's own exception becomes a `loginRuntimeException`.
    std::wstring getDNMAccessToken();

    /// Whether the consumer platform's token `t` has expired. Ignores the offline flag. The manager's own exception
    /// becomes a `loginRuntimeException`.
    bool isDunmorePlatformTokenExpired(std::wstring t);

    /// Sets the offline flag, which is false after construction. It only affects this client; the manager does not know
    /// of it.
    void setOrvelOfflineMode(bool orvelOfflineMode);

    /// The offline flag.
    bool isOrvelOfflineMode() const;

private:
    friend struct orvellogin_client;  // the plain functions in orvelloginc.dll use the bridge directly

    OrvelLoginClientCLR::LoginManagerClientCLR* getLoginMgrClient();
    std::wstring string(OrvelLoginClientCLR::ManagedMember OrvelLoginClientCLR::ManagerMembers::* member,
                        const std::wstring* argument = nullptr);

    bool offlineMode;
    std::atomic<OrvelLoginClientCLR::LoginManagerClientCLR*> bridge;  // owned; null until it is needed
    void (*loginCallBack)();
    void (*logoutCallBack)();
    uiLang language;
};
