#pragma once

#include <cstdint>
#include <string>

#include "login/boundary/ManagedPart.h"

namespace OrvelLoginClientCLR {

/// The data of the first call into the managed part: the sizes that the native side uses, then what the managed part
/// fills in. C# half: login/managed/EntryPoint.cs. Delivering the two calls loads no outside assembly; making them may.
struct Handshake {
    std::int32_t handshakeSize = sizeof(Handshake);
    std::int32_t failureSize = sizeof(ManagedFailure);
    std::int32_t recordSize = sizeof(ManagedRecord);
    std::int32_t creationSize = sizeof(ManagedCreation);
    std::int32_t textSize = sizeof(TextArgument);
    std::int32_t memberSize = sizeof(ManagedMember);
    ManagedCall registerResolveHandler = nullptr;
    ManagedCall bindManagerMembers = nullptr;  ///< result: ManagerMembers; handle: the number of its members
};

/// Starts the runtime if necessary and makes the first call into the managed part.
///
/// `nativePart`, `managedPart`: full paths of the two files. Throws `loginRuntimeException` if the managed part is
/// missing, if the runtime refuses it, or, naming both versions, if the two do not belong together.
Handshake enterManagedPart(const std::wstring& nativePart, const std::wstring& managedPart);

}  // namespace OrvelLoginClientCLR
