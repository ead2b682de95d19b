#pragma once

#include "login/boundary/Boundary.h"
#include "login/boundary/ManagerMembers.h"

/// The calls into the managed part.
namespace OrvelLoginClientCLR {

/// Calls `member` with the control words that the runtime expects. Returns true if the member returned; otherwise
/// `failure` holds its exception. Throws `loginRuntimeException` if the process is ending.
bool callManaged(ManagedCall member, ManagerHandle manager, const StringArgument* first, const StringArgument* second,
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
