#pragma once

#include <cstdint>

#include "login/ManagedString.h"

/// What the managed part `OrvelLoginClientCLR.dll` and the native side agree on. Its C# half is `login/managed/`.
///
/// The two are files of their own and may come from different versions, so the first call is a handshake: it compares
/// `agreementVersion`, the sizes of what is handed across, and the names of the members.
namespace OrvelLoginClientCLR {

/// Number of this agreement; the C# half has the same. Raise both when a structure or the meaning of a call changes.
constexpr std::int32_t agreementVersion = 2;

/// A managed object held by the managed part; 0 for none.
using ManagerHandle = std::intptr_t;

/// How a managed member ended when it did not return: its exception, as data.
struct ManagedFailure {
    std::int32_t isManagerException = 0;  ///< 1 for the manager's own LoginManagerException
    std::int32_t status = 0;              ///< that exception's status
    std::int32_t hresult = 0;
    ManagedString typeName;
    ManagedString message;  ///< followed by " ---> Type: message" for each cause
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

/// What a manager is created from, and the manager.
struct ManagedCreation {
    void (*loginHandler)();  ///< called for each sign-in event; null for none
    void (*logoutHandler)();
    std::int32_t language;
    ManagerHandle manager = 0;  ///< out
};

/// UTF-16 text for a managed member: any units, no terminator needed.
struct TextArgument {
    const wchar_t* chars;
    std::int32_t length;
};

/// The one shape of every call into the managed part. What a member does not take is null. `result` is a
/// `ManagedString`, a `ManagedRecord`, a `std::int32_t` or a `ManagedCreation`, or null, as the member's row says.
///
/// Returns 0 when the member returned; otherwise `failure` was filled in. No exception crosses.
using ManagedCall = std::int32_t (*)(ManagerHandle manager, const TextArgument* first, const TextArgument* second,
                                     void* result, ManagedFailure* failure);

/// A member by the name under which the managed part has it.
struct ManagedMember {
    const wchar_t* name;
    ManagedCall call = nullptr;  ///< filled in by the managed part
};

/// The members, in the order in which they are bound. Only here is there an order: the managed part finds each by its
/// name, and a name that it lacks fails the binding.
struct ManagerMembers {
    ManagedMember create{L"create"};    ///< result: ManagedCreation
    ManagedMember dispose{L"dispose"};  ///< releases the handle, too
    ManagedMember login{L"login"};      ///< result: ManagedRecord
    ManagedMember loginWith{L"loginWith"};
    ManagedMember getLoggedInUser{L"getLoggedInUser"};
    ManagedMember Logout{L"Logout"};
    ManagedMember getAccessToken{L"getAccessToken"};  ///< result: ManagedString
    ManagedMember formatAccessURL{L"formatAccessURL"};
    ManagedMember getPlatformURL{L"getPlatformURL"};
    ManagedMember getRegistryURL{L"getRegistryURL"};
    ManagedMember getPassportURL{L"getPassportURL"};
    ManagedMember getCASCookie{L"getCASCookie"};
    ManagedMember getmyAppsURL{L"getmyAppsURL"};
    ManagedMember getKelpaURL{L"getKelpaURL"};
    ManagedMember getTenantName{L"getTenantName"};
    ManagedMember getTenantId{L"getTenantId"};
    ManagedMember getTenantIds{L"getTenantIds"};
    ManagedMember getSpaceURL{L"getSpaceURL"};
    ManagedMember getLoginTicket{L"getLoginTicket"};
    ManagedMember stopDNMListener{L"stopDNMListener"};
    ManagedMember DunmoreLoginBrowser{L"DunmoreLoginBrowser"};
    ManagedMember getDNMAccessToken{L"getDNMAccessToken"};
    ManagedMember isDunmorePlatformTokenExpired{L"isDunmorePlatformTokenExpired"};  ///< result: int32, 0 or 1
};

constexpr std::int32_t managerMemberCount = sizeof(ManagerMembers) / sizeof(ManagedMember);

/// Calls `member`, with the runtime's floating-point control. True when it returned; otherwise `failure` holds its
/// exception. Throws `loginRuntimeException` while the process is ending.
bool callManaged(ManagedCall member, ManagerHandle manager, const TextArgument* first, const TextArgument* second,
                 void* result, ManagedFailure& failure);

/// Throws the managed exception that `failure` describes as `loginRuntimeException`.
[[noreturn]] void throwUntranslated(const ManagedFailure& failure);

/// Starts the runtime if need be and registers the resolve handler `LoadLoginClientManaged` with the current
/// application domain, once more each time. Throws `loginRuntimeException`.
void registerResolveHandler();

/// The manager's members. The first call makes the runtime load the outside assemblies; while that fails it throws
/// `loginRuntimeException`, and the next call tries again.
const ManagerMembers& managerMembers();

}  // namespace OrvelLoginClientCLR
