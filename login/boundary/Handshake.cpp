#include "login/boundary/Handshake.h"

#include <windows.h>

#include <corerror.h>

#include <algorithm>
#include <cwchar>

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

constexpr wchar_t entryPoint[] = L"OrvelLoginClientCLR.EntryPoint";

std::wstring described(const std::wstring& path) {
    const std::wstring version = fileVersion(path);
    return path + L" (" + (version.empty() ? L"of no version" : L"version " + version) + L")";
}

// The file of the managed part that the runtime runs when it is asked for `managedPart`. The runtime goes by an
// assembly's identity, so that is another file if the process had loaded one from elsewhere before.
std::wstring loadedManagedPart(const std::wstring& nativePart, const std::wstring& managedPart) {
    try {
        std::wstring path(32768, L'\0');
        const std::wstring argument =
            std::to_wstring(reinterpret_cast<std::uintptr_t>(path.data())) + L" " + std::to_wstring(path.size());
        path.resize(std::min<std::size_t>(path.size(),
                                          executeInDefaultAppDomain(managedPart, entryPoint, L"Location", argument)));
        return path;
    } catch (const loginRuntimeException&) {
        // One from before version 2, which cannot say. It came with another copy of the native library.
        for (const std::wstring& library : loadedLibraries()) {
            std::wstring path = beside(library, managedPartName);
            const std::wstring version = fileVersion(path);
            if (!version.empty() && version != fileVersion(nativePart)) {
                return path;
            }
        }
        return managedPart;
    }
}

[[noreturn]] void throwOtherVersion(const std::wstring& nativePart, const std::wstring& managedPart,
                                    const std::wstring& loadedPart, const std::wstring& symptom, std::int32_t hresult) {
    if (_wcsicmp(loadedPart.c_str(), managedPart.c_str()) != 0) {
        throw nativeFailure(L"this process has already loaded the managed part of another copy of the login library, " +
                                described(loadedPart) + L", so " + described(nativePart) + L" cannot use its own, " +
                                described(managedPart) +
                                L"; use one version of the login library in the whole process (" + symptom + L")",
                            hresult);
    }
    throw nativeFailure(L"these two files do not belong together: " + described(nativePart) + L" and " +
                            described(managedPart) + L"; take both from one package (" + symptom + L")",
                        hresult);
}

}  // namespace

Handshake enterManagedPart(const std::wstring& nativePart, const std::wstring& managedPartIn) {
    // The .NET Framework's runtime rejects paths with the prefix \\?\.
    const std::wstring managedPart = withoutLongPathPrefix(managedPartIn);
    // Checked first, because the runtime reports a missing file with the same code as other failures.
    if (GetFileAttributesW(managedPartIn.c_str()) == INVALID_FILE_ATTRIBUTES) {
        throw nativeFailure(L"the managed part of the login library is missing: " + managedPartIn,
                            HRESULT_FROM_WIN32(GetLastError()));
    }
    Handshake handshake;
    std::uint32_t managedVersion = 0;
    try {
        managedVersion = executeInDefaultAppDomain(managedPart, entryPoint, L"Enter", handshakeArgument(handshake));
    } catch (const loginRuntimeException& failure) {
        // A managed part of another version can fail in many ways, and none of the messages says why. So compare.
        const std::wstring loadedPart = loadedManagedPart(nativePart, managedPart);
        const std::wstring version = fileVersion(loadedPart);
        if (version.empty() || version == fileVersion(nativePart)) {
            throw;
        }
        throwOtherVersion(nativePart, managedPart, loadedPart, failure.message, failure.hresult);
    }
    if (managedVersion != interfaceVersion || !handshake.registerResolveHandler || !handshake.bindManagerMembers ||
        !handshake.runtimeEnding) {
        throwOtherVersion(nativePart, managedPart, loadedManagedPart(nativePart, managedPart),
                          L"their handshake failed", COR_E_TYPELOAD);
    }
    watchRuntimeEnding(handshake.runtimeEnding);
    return handshake;
}

}  // namespace OrvelLoginClientCLR
