#pragma once

#include <cstdint>

#include "login/ManagedString.h"

/// What the managed part `OrvelLoginClientCLR.dll` and the native side agree on. Its C# half is `login/managed/`; the
/// order and layout here and there must match.
namespace OrvelLoginClientCLR {

/// A managed object held by the managed part; 0 for none.
using ManagerHandle = std::intptr_t;

/// How a managed member ended when it did not return: its exception, as data.
struct ManagedFailure {
    std::int32_t isManagerException = 0;  ///< 1 for the manager's own LoginManagerException
    std::int32_t status = 0;              ///< that exception's status
    std::int32_t hresult = 0;
    ManagedString typeName;
    ManagedString message;
};

/// A response record of the manager. `present` is 0 when the manager gave back null.
struct ManagedRecord {
    std::int32_t present = 0;
    ManagedString statusDescription;
    ManagedString userName;
    ManagedString firstName;
    ManagedString lastName;
    ManagedString rowId;
    ManagedString aliasName;
    ManagedString domainName;
};

/// UTF-16 text for a managed member: any units, no terminator needed.
struct TextArgument {
    const wchar_t* chars;
    std::int32_t length;
};

/// 0 when the member returned; otherwise the failure was filled in. No exception crosses.
using Outcome = std::int32_t;

/// Addresses of the managed manager's members. The three members that the manager has as statics take no handle.
struct ManagerMembers {
    using EventHandler = void (*)();
    using Plain = Outcome (*)(ManagerHandle, ManagedFailure*);
    using Record = Outcome (*)(ManagerHandle, ManagedRecord*, ManagedFailure*);
    using Text = Outcome (*)(ManagerHandle, ManagedString*, ManagedFailure*);
    using TextOfText = Outcome (*)(ManagerHandle, const TextArgument*, ManagedString*, ManagedFailure*);

    Outcome (*create)(EventHandler login, EventHandler logout, std::int32_t language, ManagerHandle*, ManagedFailure*);
    Plain dispose;
    Record login;
    Outcome (*loginWith)(ManagerHandle, const TextArgument* userName, const TextArgument* password, ManagedRecord*,
                         ManagedFailure*);
    Record getLoggedInUser;
    Plain Logout;
    Text getAccessToken;
    TextOfText formatAccessURL;
    Text getPlatformURL;
    Text getRegistryURL;
    Text getPassportURL;
    Text getCASCookie;
    Text getmyAppsURL;
    Text getKelpaURL;
    Text getTenantName;
    Text getTenantId;
    Text getTenantIds;
    Text getSpaceURL;
    TextOfText getLoginTicket;
    Plain stopDNMListener;
    Outcome (*DunmoreLoginBrowser)(const TextArgument* server, const TextArgument* clientId, ManagedFailure*);
    Outcome (*getDNMAccessToken)(ManagedString*, ManagedFailure*);
    Outcome (*isDunmorePlatformTokenExpired)(const TextArgument*, std::int32_t* expired, ManagedFailure*);
};

/// Throws the managed exception that `failure` describes as `loginRuntimeException`.
[[noreturn]] void throwUntranslated(const ManagedFailure& failure);

/// Starts the runtime if need be and registers the resolve handler `LoadLoginClientManaged` with the current
/// application domain, once more each time. Throws `loginRuntimeException`.
void registerResolveHandler();

/// The manager's members. The first call makes the runtime load the outside assemblies; while that fails it throws
/// `loginRuntimeException`, and the next call tries again.
const ManagerMembers& managerMembers();

/// Keeps this library in the process until it ends: from now on the managed side may call into it.
void pinLibrary();

}  // namespace OrvelLoginClientCLR
