#include "login/boundary/ManagedPart.h"

#include "login/boundary/Handshake.h"
#include "login/hosting/ClrRuntime.h"
#include "login/hosting/FloatingPointControl.h"
#include "login/hosting/LibraryFile.h"
#include "login/hosting/RuntimeFailure.h"

namespace OrvelLoginClientCLR {

namespace {

const Handshake& managedPart() {
    // A static local, here and in managerMembers(): if its initialisation throws, the next call tries again.
    static const Handshake handshake = [] {
        const std::wstring library = libraryPath();
        const Handshake entered = enterManagedPart(library, beside(library, managedPartName));
        // Because a manager's events call into this library at any time. And because each time that it is loaded, the
        // compiler's thread library in it takes two handles and a TLS index for good, of which a process has about
        // 1,000.
        pinLibrary();
        return entered;
    }();
    return handshake;
}

void callOrThrow(ManagedCall call, ManagerHandle number, void* result) {
    ManagedFailure failure;
    if (!callManaged(call, number, nullptr, nullptr, result, failure)) {
        throwUntranslated(failure);
    }
}

ManagerMembers bindManagerMembers() {
    ManagerMembers members;
    callOrThrow(managedPart().bindManagerMembers, managerMemberCount, &members);
    return members;
}

}  // namespace

bool callManaged(ManagedCall member, ManagerHandle manager, const StringArgument* first, const StringArgument* second,
                 void* result, ManagedFailure& failure) {
    refuseWhileProcessIsEnding();
    const ManagedCodeScope managed;
    return member(manager, first, second, result, &failure) == 0;
}

void throwUntranslated(const ManagedFailure& failure) {
    throw managedFailure(failure.typeName.toNativeOrEmpty(), failure.message.toNativeOrEmpty(), failure.hresult);
}

void registerResolveHandler() {
    callOrThrow(managedPart().registerResolveHandler, 0, nullptr);
}

const ManagerMembers& managerMembers() {
    static const ManagerMembers members = bindManagerMembers();
    return members;
}

}  // namespace OrvelLoginClientCLR
