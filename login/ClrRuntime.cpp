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

void check(HRESULT result) {
    if (FAILED(result)) {
        throw cannotStart(result);
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
        throw cannotRun(std::wstring(typeName) + L"." + method + L" of " + assembly, result);
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
