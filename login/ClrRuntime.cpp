#include "login/ClrRuntime.h"

#include <memory>

#include "login/ClrHosting.h"
#include "login/RuntimeFailure.h"

namespace OrvelLoginClientCLR {

namespace {

struct ReleaseInterface {
    void operator()(IUnknown* object) const { object->Release(); }
};

template <class Interface>
using InterfacePointer = std::unique_ptr<Interface, ReleaseInterface>;

// What the codes met most in the field mean to the person who has to mend the machine.
const wchar_t* meaning(HRESULT result) {
    struct Row {
        unsigned code;
        const wchar_t* words;
    };
    static constexpr Row rows[] = {
        // CLR_E_SHIM_RUNTIMELOAD, corerror.h
        {0x80131700, L"the .NET Framework 4 is not installed or cannot be loaded"},
        // CLR_E_SHIM_LEGACYRUNTIMEALREADYBOUND
        {0x80131704, L"the host program has bound this process to an older runtime"},
        // HOST_E_CLRNOTAVAILABLE
        {0x80131020, L"the runtime is not available in this process (it has failed or is shutting down)"},
        {0x8007007E, L"mscoree.dll is missing: the .NET Framework is not installed"},
        {0x8007007F, L"mscoree.dll is older than the .NET Framework 4"},
        {0x80070005, L"access is denied"},
        {0x8007000E, L"memory is exhausted"},
        {0x8007000B, L"a file is not a valid image for a 32-bit process"},
    };
    for (const Row& row : rows) {
        if (row.code == static_cast<unsigned>(result)) {
            return row.words;
        }
    }
    return L"the runtime gives no other reason than its code";
}

void check(HRESULT result) {
    if (FAILED(result)) {
        throw startFailure(std::wstring(L"the .NET Framework 4 runtime cannot be started: ") + meaning(result), result);
    }
}

template <class Interface, class Call>
InterfacePointer<Interface> obtain(Call call) {
    void* object = nullptr;
    check(call(&object));
    return InterfacePointer<Interface>(static_cast<Interface*>(object));
}

// Loaded by hand, so that this library itself loads on a machine without the runtime and can say what is missing.
CLRCreateInstanceFunction clrCreateInstance() {
    // By its full path: the flag that confines a search to the system's folder came to Windows 7 with an update only.
    wchar_t folder[MAX_PATH];
    const UINT length = GetSystemDirectoryW(folder, MAX_PATH);
    // Never freed: a runtime that was started cannot be unloaded.
    const HMODULE mscoree = LoadLibraryW((std::wstring(folder, length) + L"\\mscoree.dll").c_str());
    if (!mscoree) {
        check(HRESULT_FROM_WIN32(GetLastError()));
    }
    const FARPROC create = GetProcAddress(mscoree, "CLRCreateInstance");
    if (!create) {
        check(HRESULT_FROM_WIN32(GetLastError()));
    }
    return reinterpret_cast<CLRCreateInstanceFunction>(reinterpret_cast<void*>(create));
}

InterfacePointer<ICLRRuntimeHost> startRuntime() {
    const CLRCreateInstanceFunction create = clrCreateInstance();
    const auto metaHost =
        obtain<ICLRMetaHost>([&](void** object) { return create(clsidClrMetaHost, iidClrMetaHost, object); });
    const auto info = obtain<ICLRRuntimeInfo>(
        [&](void** object) { return metaHost->GetRuntime(L"v4.0.30319", iidClrRuntimeInfo, object); });
    auto host = obtain<ICLRRuntimeHost>(
        [&](void** object) { return info->GetInterface(clsidClrRuntimeHost, iidClrRuntimeHost, object); });
    const HRESULT started = host->Start();
    if (started != E_NOTIMPL) {  // Wine's answer; its runtime starts with the first call
        check(started);
    }
    return host;
}

}  // namespace

void executeInDefaultAppDomain(const std::wstring& assembly, const wchar_t* typeName, const wchar_t* method,
                               const std::wstring& argument) {
    // The first start must not be raced: the runtime does not survive it every time. Never released, as the runtime
    // cannot be stopped and may be gone already when this library's static objects are destroyed.
    static ICLRRuntimeHost* const host = startRuntime().release();
    DWORD ignored = 0;
    const HRESULT result =
        host->ExecuteInDefaultAppDomain(assembly.c_str(), typeName, method, argument.c_str(), &ignored);
    if (FAILED(result)) {
        throw startFailure(L"the runtime cannot run " + std::wstring(typeName) + L"." + method + L" of " + assembly,
                           result);
    }
}

}  // namespace OrvelLoginClientCLR
