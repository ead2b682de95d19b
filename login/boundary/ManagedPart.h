#pragma once

#include <cstdint>

#include "login/boundary/ManagedString.h"

/// The interface between the native side and the managed part `OrvelLoginClientCLR.dll`. C# half: `login/managed/`.
///
/// The two are separate files and may come from different versions. So the first call is a handshake that compares
/// `interfaceVersion` and the sizes of the structures; binding then compares the names of the members.
namespace OrvelLoginClientCLR {

/// Version of this interface; the C# half has the same. Raise both when a structure or the meaning of a call changes.
constexpr std::int32_t interfaceVersion = 2;

/// A manager held by the managed part; 0 for none.
using ManagerHandle = std::intptr_t;

/// The exception with which a managed member ended, as data.
struct ManagedFailure {
    std::int32_t isManagerException = 0;  ///< 1 for the manager's own LoginManagerException
    std::int32_t status = 0;              ///< that exception's status
    std::int32_t hresult = 0;
    ManagedString typeName;
    ManagedString message;  ///< followed by " ---> Type: message" for each cause
};

/// A response record of the manager. `present` is 0 if the manager returned null.
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

/// The arguments for creating a manager, and the result.
struct ManagedCreation {
    void (*loginHandler)();  ///< called for each sign-in event; null for none
    void (*logoutHandler)();
    std::int32_t language;
    ManagerHandle manager = 0;  ///< out
};

/// UTF-16 text for a managed member. May contain any units; needs no terminator.
struct TextArgument {
    const wchar_t* chars;
    std::int32_t length;
};

/// The signature of every call into the managed part. Arguments that a member does not take are null. `result` points
/// to a `ManagedString`, a `ManagedRecord`, a `std::int32_t` or a `ManagedCreation`, or is null; the rows below say
/// which.
///
/// Returns 0 if the member returned; otherwise `failure` was filled in. No exception crosses the boundary.
using ManagedCall = std::int32_t (*)(ManagerHandle manager, const TextArgument* first, const TextArgument* second,
                                     void* result, ManagedFailure* failure);

/// A member, identified by its name in the managed part.
struct ManagedMember {
    const wchar_t* name;
    ManagedCall call = nullptr;  ///< filled in by the managed part
};

/// The table of members. The managed part finds each by its name, so the order matters to this side only. A name that
/// the managed part lacks fails the binding.
struct ManagerMembers {
    ManagedMember create{L"create"};    ///< result: ManagedCreation
    ManagedMember dispose{L"dispose"};  ///< releases the handle, too
    ManagedMember login{L"login"};      ///< result: ManagedRecord
    ManagedMember loginWithPassword{L"loginWithPassword"};
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

/// Calls `member` with the runtime's floating-point control. Returns true if the member returned; otherwise `failure`
/// holds its exception. Throws `loginRuntimeException` if the process is ending.
bool callManaged(ManagedCall member, ManagerHandle manager, const TextArgument* first, const TextArgument* second,
                 void* result, ManagedFailure& failure);

/// Throws the managed exception that `failure` describes as `loginRuntimeException`.
[[noreturn]] void throwUntranslated(const ManagedFailure& failure);

/// Starts the runtime if necessary and registers the resolve handler `LoadLoginClientManaged` with the current
/// application domain. Each call registers it again, which is harmless. Throws `loginRuntimeException`.
void registerResolveHandler();

/// The manager's members. The first call makes the runtime load the outside assemblies. If that fails, throws
/// `loginRuntimeException`, and the next call tries again.
const ManagerMembers& managerMembers();

}  // namespace OrvelLoginClientCLR
