#include "login/ClrRuntime.h"

#include <windows.h>

#include <corerror.h>
#include <initguid.h>  // the identifiers of mscoree.h are in no library; this defines them here
#include <wrl/client.h>

#include <memory>

#include "login/ClrHosting.h"
#include "login/FloatingPointControl.h"
#include "login/RuntimeFailure.h"

using Microsoft::WRL::ComPtr;

namespace OrvelLoginClientCLR {

namespace {

// Set by the system before it ends the other threads. No documented function tells.
using ShutdownInProgress = BOOLEAN(NTAPI*)();
const auto shutdownInProgress = reinterpret_cast<ShutdownInProgress>(
    reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress")));

struct Meaning {
    HRESULT code;
    const wchar_t* words;
};

// What the codes that occur most in the field mean to the person who has to mend the machine.

constexpr Meaning startMeanings[] = {
    {CLR_E_SHIM_RUNTIMELOAD, L"the .NET Framework 4 is not installed or cannot be loaded"},
    {CLR_E_SHIM_LEGACYRUNTIMEALREADYBOUND, L"the host program has bound this process to an older runtime"},
    {HOST_E_CLRNOTAVAILABLE, L"the runtime is not available in this process (it has failed or is shutting down)"},
    {HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND), L"mscoree.dll is missing: the .NET Framework is not installed"},
    {HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND), L"mscoree.dll is older than the .NET Framework 4"},
    {E_ACCESSDENIED, L"access is denied"},
    {E_OUTOFMEMORY, L"memory is exhausted"},
    {HRESULT_FROM_WIN32(ERROR_BAD_FORMAT), L"a file is not a valid image for a 32-bit process"},
    {HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT), L"a file is not a valid image for a 32-bit process"},
};

constexpr Meaning runMeanings[] = {
    {COR_E_NOTSUPPORTED,
     L"the file is marked as coming from the internet; unblock the ZIP in its properties and unpack it again"},
    {COR_E_MISSINGMETHOD, L"the file is of another version, which lacks this method"},
    {COR_E_TYPELOAD, L"the file is of another version, which lacks this class"},
    {COR_E_FORMAT, L"the file is of another version, which does not understand this one"},
    {COR_E_ASSEMBLYEXPECTED, L"the file is damaged, is no assembly, or is for 64-bit processes"},
    {HRESULT_FROM_WIN32(ERROR_BAD_FORMAT), L"the file is damaged, is no assembly, or is for 64-bit processes"},
    {COR_E_NEWER_RUNTIME, L"the file needs a newer runtime than the one in this process"},
    {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), L"the file, or one that it needs, is missing"},
    {E_ACCESSDENIED, L"access is denied"},
    {E_OUTOFMEMORY, L"memory is exhausted"},
    {HOST_E_CLRNOTAVAILABLE, L"the runtime is not available in this process (it has failed or is shutting down)"},
};

template <std::size_t count>
std::wstring meaning(const Meaning (&rows)[count], HRESULT result) {
    for (const Meaning& row : rows) {
        if (row.code == result) {
            return row.words;
        }
    }
    return L"the runtime gives no other reason than its code";
}

void check(HRESULT result) {
    if (FAILED(result)) {
        throw startFailure(L"the .NET Framework 4 runtime cannot be started: " + meaning(startMeanings, result),
                           result);
    }
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

ComPtr<ICLRRuntimeHost> startRuntime() {
    ComPtr<ICLRMetaHost> metaHost;
    check(clrCreateInstance()(clsidClrMetaHost, iidClrMetaHost, &metaHost));
    ComPtr<ICLRRuntimeInfo> info;
    check(metaHost->GetRuntime(L"v4.0.30319", iidClrRuntimeInfo, &info));
    ComPtr<ICLRRuntimeHost> host;
    check(info->GetInterface(CLSID_CLRRuntimeHost, IID_ICLRRuntimeHost, &host));
    const HRESULT started = host->Start();
    if (started != E_NOTIMPL) {  // Wine's answer; its runtime starts with the first call
        check(started);
    }
    return host;
}

// One caller at a time in the whole process. Starting the runtime on two threads at once sometimes crashes it, and two
// copies of this library in one process share no lock but a named one.
class TurnInProcess {
public:
    TurnInProcess()
        : mutex(CreateMutexW(nullptr, FALSE,
                             (L"Local\\orvellogin-runtime-" + std::to_wstring(GetCurrentProcessId())).c_str())) {
        // Bounded, because any program of this user may hold a mutex of that name. Without the turn the start is a
        // little less safe, which is better than none.
        owned = WaitForSingleObject(mutex.get(), 60000) != WAIT_TIMEOUT;
    }
    ~TurnInProcess() {
        if (owned) {
            ReleaseMutex(mutex.get());
        }
    }
    TurnInProcess(const TurnInProcess&) = delete;
    TurnInProcess& operator=(const TurnInProcess&) = delete;

private:
    struct Close {
        void operator()(HANDLE handle) const { CloseHandle(handle); }
    };
    const std::unique_ptr<void, Close> mutex;
    bool owned;
};

}  // namespace

std::uint32_t executeInDefaultAppDomain(const std::wstring& assembly, const wchar_t* typeName, const wchar_t* method,
                                        const std::wstring& argument) {
    refuseWhileProcessIsEnding();
    const TurnInProcess turn;
    const ManagedCodeScope managed;
    // Never released: the runtime cannot be stopped, and may be gone when this library's static objects are destroyed.
    static ICLRRuntimeHost* const host = startRuntime().Detach();
    DWORD returned = 0;
    const HRESULT result =
        host->ExecuteInDefaultAppDomain(assembly.c_str(), typeName, method, argument.c_str(), &returned);
    if (FAILED(result)) {
        throw startFailure(L"the runtime cannot run " + std::wstring(typeName) + L"." + method + L" of " + assembly +
                               L": " + meaning(runMeanings, result),
                           result);
    }
    return returned;
}

bool processIsEnding() noexcept {
    return shutdownInProgress && shutdownInProgress();
}

void refuseWhileProcessIsEnding() {
    if (processIsEnding()) {
        throw startFailure(L"the process is ending, and the runtime cannot be called any more", HOST_E_CLRNOTAVAILABLE);
    }
}

}  // namespace OrvelLoginClientCLR
