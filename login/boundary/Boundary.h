#pragma once

#include <cstdint>

#include "login/boundary/ManagedString.h"

/// The structures that the native side and the managed part `OrvelLoginClientCLR.dll` exchange. C# half:
/// `login/managed/Boundary.cs`, with the same fields in the same order.
///
/// The two are separate files and may come from different versions. So the first call is a handshake that compares
/// `interfaceVersion` and the sizes of the structures; binding then compares the names of the members.
namespace OrvelLoginClientCLR {

/// Version of this interface; the C# half has the same. Raise both when a structure or the meaning of a call changes.
constexpr std::int32_t interfaceVersion = 3;

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

/// A UTF-16 string for a managed member. May contain any code units; needs no terminator.
struct StringArgument {
    const wchar_t* chars;
    std::int32_t length;
};

/// The signature of every call into the managed part. Arguments that a member does not take are null. `result` points
/// to a `ManagedString`, a `ManagedRecord`, a `std::int32_t` or a `ManagedCreation`, or is null, depending on the
/// member.
///
/// Returns 0 if the member returned; otherwise `failure` was filled in. No exception crosses the boundary.
using ManagedCall = std::int32_t (*)(ManagerHandle manager, const StringArgument* first, const StringArgument* second,
                                     void* result, ManagedFailure* failure);

/// What the manager's own exception becomes: a `loginManagerException*`, or a `loginRuntimeException` like any other.
enum ExceptionRule : std::int32_t { translated, untranslated };

/// What a null from the manager becomes. `noNull`: the member returns nothing that could be null.
enum NullRule : std::int32_t { noNull, nullIsEmpty, nullFails, nullIsNoResponse };

/// What a member does while the client is offline: reach the manager, or return an empty string.
enum OfflineRule : std::int32_t { calledOffline, emptyOffline };

/// A member of the manager: its name in the managed part, its rules, which only the native side reads, and the function
/// that calls it, which the managed part fills in.
struct ManagedMember {
    const wchar_t* name;
    ExceptionRule exceptionRule = untranslated;
    NullRule nullRule = noNull;
    OfflineRule offlineRule = calledOffline;
    ManagedCall call = nullptr;
};

/// The data of the first call into the managed part: the sizes that the native side uses, then what the managed part
/// fills in. Obtaining the two pointers loads no outside assembly; calling them may.
struct Handshake {
    std::int32_t handshakeSize = sizeof(Handshake);
    std::int32_t failureSize = sizeof(ManagedFailure);
    std::int32_t recordSize = sizeof(ManagedRecord);
    std::int32_t creationSize = sizeof(ManagedCreation);
    std::int32_t stringSize = sizeof(StringArgument);
    std::int32_t memberSize = sizeof(ManagedMember);
    ManagedCall registerResolveHandler = nullptr;
    ManagedCall bindManagerMembers = nullptr;  ///< result: ManagerMembers; handle: the number of its members
    const volatile std::int32_t* runtimeEnding = nullptr;  ///< 1 from the beginning of the runtime's shutdown
};

}  // namespace OrvelLoginClientCLR
