#pragma once

/// @file
/// The class of the login library: sign-in, sign-out, and what a sign-in established.

#include <string>

#include "login/LoginExport.h"
#include "login/LoginResponse.h"
#include "login/loginManagerException.h"
#include "login/loginRuntimeException.h"
#include "login/uiLang.h"

#ifdef ORVELLOGIN_HEADER_ONLY
#include "orvelloginc.h"
#else
#include <atomic>

namespace OrvelLoginClientCLR {
class LoginManagerClientCLR;
struct ManagedMember;
struct ManagerMembers;
}  // namespace OrvelLoginClientCLR
#endif

/// Signs a user in to the online account service, through the managed login manager whose assemblies are in the folder
/// `OrvelLoginManagerClient` next to the library.
///
/// Two classes with these members: the one that orvellogin.dll exports, for mingw-w64's g++ for i686, and the
/// header-only one, which is compiled into the host and calls the plain functions of orvelloginc.dll. Every other
/// compiler gets the header-only class; g++ gets it with `ORVELLOGIN_HEADER_ONLY`. It works with any C++17 compiler and
/// any runtime, because strings, records and exceptions never leave the host. A program that uses both in different
/// sources does not link.
///
/// Order of calls: construct -> setOrvelOfflineMode if needed -> login or getLoggedInUser -> the getters -> logout ->
/// destroy. The first member that needs the manager creates it. Every member needs it except setOrvelOfflineMode,
/// isOrvelOfflineMode and, while offline, the string getters from formatAccessUrl to getSpaceURL, which then return an
/// empty string without a call. A member that needs the manager blocks until it answers: for a sign-in in a browser
/// that can take minutes. It cannot be cancelled.
///
/// Strings are UTF-16 in both directions, passed on unchanged: embedded zero code units and lone surrogates survive.
///
/// Failures:
/// - `loginManagerException*` (a pointer, which the catcher deletes): the login manager reported an error. Thrown only
///   by login, getLoggedInUser, logout, formatAccessUrl, getAccessToken and DunmoreLoginBrowser.
/// - `loginRuntimeException` (by value): everything else, from any member that needs the manager: an assembly that
///   cannot be loaded, an exception of another type, the manager's exception from a member not listed above, a null
///   string from the manager where none is allowed (`System.ArgumentNullException`). If creating the manager fails,
///   the next member that needs it tries again; but on Windows the runtime remembers an assembly that it could not
///   find, so the host may have to be restarted.
/// - `std::bad_alloc` if memory is exhausted. With one exception: if the exported class has no memory for the object
///   that holds the manager, login and getLoggedInUser return an empty record, logout does nothing, and the other
///   members dereference a null pointer.
///
/// Threads: a client may be used from any thread, but only from one at a time; it has no locks. If two threads make a
/// client's first call at the same time, two managers may be created and one of them leaks. COM apartments are up to
/// the host: if the manager shows a browser, call `OleInitialize` on the calling thread first. Members preserve the x87
/// control word and MXCSR.
///
/// Where a client may be: in a function, in an object, or as a static object of the program. Do not construct one in
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
    /// thread the manager reports it; null for none. The pair is process-wide: events of all managers go to the
    /// callbacks of the client whose manager was created last, even after that client is gone. A manager that was
    /// created without callbacks raises no events. A callback runs inside the managed runtime, so it must not let an
    /// exception escape (`std::terminate` would end the process), must not leave by `longjmp`, and must not destroy a
    /// client; it may call members of one.
    ///
    /// `langIn`: language of the manager's user interface.
    ///
    /// Throws `loginRuntimeException` if the runtime cannot be started, or if `OrvelLoginClientCLR.dll` next to the
    /// library is missing, damaged or from another version.
    LoginManagerClient(void (*loginCallBack)(), void (*logoutCallBack)(), uiLang langIn);

    /// Disposes the manager, if one was created, and ignores an exception from its `Dispose`. Does not sign out.
    ~LoginManagerClient();

    LoginManagerClient(const LoginManagerClient&) = delete;
    LoginManagerClient& operator=(const LoginManagerClient&) = delete;

    /// Signs in without credentials from the host. The manager decides how (a remembered user, a browser). Ignores the
    /// offline flag. If the manager returns no record, throws `loginManagerException*` with code 6. A null `domainName`
    /// in the record becomes empty; a null in another field fails.
    LoginResponse login();

    /// Signs in with account name and password. Otherwise as login(). The library wipes its copy of the password; the
    /// host must wipe its own.
    LoginResponse login(std::wstring userName, std::wstring password);

    /// Returns the signed-in user without prompting. If `LastLoginFlag` is true, calls login() instead. Otherwise as
    /// login().
    LoginResponse getLoggedInUser(bool LastLoginFlag);

    /// Signs the user out. Ignores the offline flag.
    void logout();

    /// Converts `targeturl` to a URL that signs the user in when opened. Returns an empty string while offline, not
    /// `targeturl`: a URL that does not sign in must not be mistaken for one that does. A null from the manager fails.
    std::wstring formatAccessUrl(std::wstring targeturl);

    /// Access token of the sign-in. Empty while offline and for a null from the manager.
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

    /// Ticket for the space at `spaceurl`. Empty while offline. A null from the manager fails; the manager's own
    /// exception becomes a `loginRuntimeException`.
    std::wstring getLoginTicket(std::wstring spaceurl);

    /// Address of the space. As the tenant getters above.
    std::wstring getSpaceURL();

    /// Stops the listener of the browser sign-in to the consumer platform (Dunmore, DNM). Ignores the offline flag. The
    /// manager's own exception becomes a `loginRuntimeException`.
    void stopDNMListener();

    /// Signs in to the consumer platform through the browser. `serverDNM`: its server; `clientId`: the client
    /// identifier registered there. Ignores the offline flag.
    void DunmoreLoginBrowser(std::wstring serverDNM, std::wstring clientId);

    /// Token of the consumer platform. Ignores the offline flag. A null from the manager fails; the manager's own
    /// exception becomes a `loginRuntimeException`.
    std::wstring getDNMAccessToken();

    /// Whether the consumer platform's token `t` has expired. Ignores the offline flag. The manager's own exception
    /// becomes a `loginRuntimeException`.
    bool isDunmorePlatformTokenExpired(std::wstring t);

    /// Sets the offline flag, which is false after construction. It only affects this client; it is not passed to the
    /// manager.
    void setOrvelOfflineMode(bool orvelOfflineMode);

    /// The offline flag.
    bool isOrvelOfflineMode() const;

#ifdef ORVELLOGIN_HEADER_ONLY
    /// Header-only class only: withdraws this client's callbacks, for a plug-in that will be unloaded. When it returns,
    /// neither is called again by any manager, and neither is still running on another thread: it waits for those that
    /// are, so do not hold a lock that a callback needs. No other client's callbacks take their place until another
    /// manager is created. May be called inside a callback. Call it before the client is destroyed, and not in
    /// `DllMain`.
    void withdrawCallbacks();

private:
    template <class Function, class... Arguments>
    void call(Function function, Arguments... arguments) const;
    template <class Function, class... Arguments>
    std::wstring string(Function function, Arguments... arguments) const;
    template <class Function, class... Arguments>
    LoginResponse record(Function function, Arguments... arguments) const;

    orvellogin_client* client = nullptr;
#else
private:
    OrvelLoginClientCLR::LoginManagerClientCLR* getLoginMgrClient();
    std::wstring string(OrvelLoginClientCLR::ManagedMember OrvelLoginClientCLR::ManagerMembers::* member,
                        const std::wstring* argument = nullptr);

    bool offlineMode;
    std::atomic<OrvelLoginClientCLR::LoginManagerClientCLR*> bridge;  // owned; null until it is needed
    void (*loginCallBack)();
    void (*logoutCallBack)();
    uiLang language;
#endif
};

#ifdef ORVELLOGIN_HEADER_ONLY
#include "login/HeaderOnlyClient.h"
#endif
