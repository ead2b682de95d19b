#pragma once

#include <cstdint>
#include <string>

#include "login/ManagedPart.h"

namespace OrvelLoginClientCLR {

/// What the native side says of itself in the first call, followed by what the managed part answers. Its C# half is in
/// login/managed/EntryPoint.cs. Neither of the two calls touches a type of the outside assemblies until it is made.
struct Handshake {
    std::int32_t handshakeSize = sizeof(Handshake);
    std::int32_t failureSize = sizeof(ManagedFailure);
    std::int32_t recordSize = sizeof(ManagedRecord);
    std::int32_t creationSize = sizeof(ManagedCreation);
    std::int32_t textSize = sizeof(TextArgument);
    std::int32_t memberSize = sizeof(ManagedMember);
    ManagedCall registerResolveHandler = nullptr;
    ManagedCall bindManagerMembers = nullptr;  ///< result: ManagerMembers; handle: how many they are
};

/// Starts the runtime if need be and enters the managed part for the first time.
///
/// `nativePart`, `managedPart`: full paths of the two files. Throws `loginRuntimeException` that says which file is
/// missing, why the runtime refuses it, or, with both versions, that the two do not belong together.
Handshake enterManagedPart(const std::wstring& nativePart, const std::wstring& managedPart);

}  // namespace OrvelLoginClientCLR
