#include "login/ManagedPart.h"

#include <windows.h>

#include <string>

#include "login/ClrRuntime.h"
#include "login/RuntimeFailure.h"

namespace OrvelLoginClientCLR {

namespace {

// What the managed part's entry point fills in. Neither member touches a type of the outside assemblies until called.
struct EntryPoints {
    Outcome (*registerResolveHandler)(ManagedFailure*);
    Outcome (*bindManagerMembers)(ManagerMembers*, ManagedFailure*);
};

HMODULE thisModule(DWORD flags) {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags, reinterpret_cast<LPCWSTR>(&thisModule), &module);
    return module;
}

// The library's own folder with its trailing separator, wherever the host program lies.
std::wstring libraryFolder() {
    const HMODULE module = thisModule(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(module, &path[0], static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path.substr(0, path.find_last_of(L'\\') + 1);
        }
        path.resize(path.size() * 2);
    }
}

EntryPoints enterManagedPart() {
    const std::wstring path = libraryFolder() + L"OrvelLoginClientCLR.dll";
    // The runtime reports a missing assembly, class or method with one and the same code, so look beforehand.
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
        throw startFailure(L"the managed part of the login library is missing: " + path,
                           HRESULT_FROM_WIN32(GetLastError()));
    }
    EntryPoints points = {};
    executeInDefaultAppDomain(path, L"OrvelLoginClientCLR.EntryPoint", L"Enter",
                              std::to_wstring(reinterpret_cast<std::uintptr_t>(&points)));
    if (!points.registerResolveHandler || !points.bindManagerMembers) {
        throw startFailure(L"the managed part of the login library does not belong to it: " + path, E_UNEXPECTED);
    }
    return points;
}

const EntryPoints& entryPoints() {
    static const EntryPoints points = enterManagedPart();
    return points;
}

ManagerMembers bindManagerMembers() {
    ManagerMembers members = {};
    ManagedFailure failure;
    if (entryPoints().bindManagerMembers(&members, &failure) != 0) {
        throwUntranslated(failure);
    }
    return members;
}

}  // namespace

void throwUntranslated(const ManagedFailure& failure) {
    throw managedFailure(failure.typeName.toNativeOrEmpty(), failure.message.toNativeOrEmpty(), failure.hresult);
}

void registerResolveHandler() {
    ManagedFailure failure;
    if (entryPoints().registerResolveHandler(&failure) != 0) {
        throwUntranslated(failure);
    }
}

const ManagerMembers& managerMembers() {
    static const ManagerMembers members = bindManagerMembers();
    return members;
}

void pinLibrary() {
    thisModule(GET_MODULE_HANDLE_EX_FLAG_PIN);
}

}  // namespace OrvelLoginClientCLR
