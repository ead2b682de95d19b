#include "login/boundary/Handshake.h"

#include <windows.h>

#include <corerror.h>

#include "login/hosting/ClrRuntime.h"
#include "login/hosting/LibraryFile.h"
#include "login/hosting/RuntimeFailure.h"

namespace OrvelLoginClientCLR {

namespace {

// The version comes first, because a managed part of version 1 expects the address alone: it rejects two numbers,
// instead of writing to the wrong address.
std::wstring handshakeArgument(const Handshake& handshake) {
    return std::to_wstring(interfaceVersion) + L" " + std::to_wstring(reinterpret_cast<std::uintptr_t>(&handshake));
}

loginRuntimeException otherVersion(const std::wstring& nativePart, const std::wstring& managedPart,
                                   const std::wstring& symptom, std::int32_t hresult) {
    const auto described = [](const std::wstring& path) {
        const std::wstring version = fileVersion(path);
        return path + L" (" + (version.empty() ? L"of no version" : L"version " + version) + L")";
    };
    return nativeFailure(L"these two files do not belong together: " + described(nativePart) + L" and " +
                             described(managedPart) + L"; take both from one package (" + symptom + L")",
                         hresult);
}

}  // namespace

Handshake enterManagedPart(const std::wstring& nativePart, const std::wstring& managedPart) {
    // Checked first, because the runtime reports a missing file with the same code as other failures.
    if (GetFileAttributesW(managedPart.c_str()) == INVALID_FILE_ATTRIBUTES) {
        throw nativeFailure(L"the managed part of the login library is missing: " + managedPart,
                            HRESULT_FROM_WIN32(GetLastError()));
    }
    Handshake handshake;
    std::uint32_t managedVersion = 0;
    try {
        // The .NET Framework's runtime rejects paths with the prefix \\?\.
        managedVersion =
            executeInDefaultAppDomain(withoutLongPathPrefix(managedPart), L"OrvelLoginClientCLR.EntryPoint", L"Enter",
                                      handshakeArgument(handshake));
    } catch (const loginRuntimeException& failure) {
        // A managed part of another version can fail in many ways, and none of the messages says why. So compare.
        const std::wstring version = fileVersion(managedPart);
        if (version.empty() || version == fileVersion(nativePart)) {
            throw;
        }
        throw otherVersion(nativePart, managedPart, failure.message, failure.hresult);
    }
    if (managedVersion != interfaceVersion || !handshake.registerResolveHandler || !handshake.bindManagerMembers) {
        throw otherVersion(nativePart, managedPart, L"their handshake failed", COR_E_TYPELOAD);
    }
    return handshake;
}

}  // namespace OrvelLoginClientCLR
