#include "login/hosting/ClrRuntime.h"

#include <windows.h>

#include <corerror.h>
#include <initguid.h>  // no library defines the identifiers of mscoree.h, so this file does
#include <wrl/client.h>

#include <atomic>
#include <memory>

#include "login/hosting/ClrHosting.h"
#include "login/hosting/FloatingPointControl.h"
#include "login/hosting/RuntimeFailure.h"

using Microsoft::WRL::ComPtr;

namespace OrvelLoginClientCLR {

namespace {

// True from before the system ends the other threads at process exit. Undocumented, but no documented function tells;
// absent, the process counts as not ending.
using ShutdownInProgress = BOOLEAN(NTAPI*)();
const auto shutdownInProgress = reinterpret_cast<ShutdownInProgress>(
    reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress")));

// The runtime begins its shutdown earlier than that, in CorExitProcess, which the C runtime's exit() calls. From then
// on it answers calls of native code with a structured exception (0xC0020001) that no C++ handler catches.
constexpr std::int32_t neverEnding = 0;
std::atomic<const volatile std::int32_t*> runtimeEnding{&neverEnding};

void check(HRESULT result) {
    if (FAILED(result)) {
        throw runtimeStartFailure(result);
    }
}

// Loads mscoree.dll at run time: as an import it would keep this library from loading, and from saying what is missing,
// on a machine without the .NET Framework.
CLRCreateInstanceFunction clrCreateInstance() {
    // By full path, so that no mscoree.dll beside the host is loaded. LOAD_LIBRARY_SEARCH_SYSTEM32 would do the same,
    // but Windows 7 only supports it after an update.
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
    check(metaHost->GetRuntime(runtimeVersion, iidClrRuntimeInfo, &info));
    ComPtr<ICLRRuntimeHost> host;
    check(info->GetInterface(CLSID_CLRRuntimeHost, IID_ICLRRuntimeHost, &host));
    const HRESULT started = host->Start();
    if (started != E_NOTIMPL) {  // returned by Wine, whose runtime starts with the first call
        check(started);
    }
    return host;
}

// Serialises callers in the whole process, because concurrent first starts sometimes crash the runtime. The mutex is
// named, because two copies of this library in one process share no other lock.
class ProcessWideLock {
public:
    ProcessWideLock()
        : mutex(CreateMutexW(nullptr, FALSE,
                             (L"Local\\orvellogin-runtime-" + std::to_wstring(GetCurrentProcessId())).c_str())) {
        // With a time limit, because any program of this user may hold a mutex of that name. After it the runtime is
        // started without the lock, which is better than not at all.
        owned = WaitForSingleObject(mutex.get(), 60000) != WAIT_TIMEOUT;
    }
    ~ProcessWideLock() {
        if (owned) {
            ReleaseMutex(mutex.get());
        }
    }
    ProcessWideLock(const ProcessWideLock&) = delete;
    ProcessWideLock& operator=(const ProcessWideLock&) = delete;

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
    const ProcessWideLock lock;
    const ManagedCodeScope managed;
    // Never released: the runtime cannot be stopped, and may be down when this library's static objects are destroyed.
    static ICLRRuntimeHost* const host = startRuntime().Detach();
    DWORD returned = 0;
    const HRESULT result =
        host->ExecuteInDefaultAppDomain(assembly.c_str(), typeName, method, argument.c_str(), &returned);
    if (FAILED(result)) {
        throw methodRunFailure(std::wstring(typeName) + L"." + method + L" of " + assembly, result);
    }
    return returned;
}

void watchRuntimeEnding(const volatile std::int32_t* flag) noexcept {
    runtimeEnding = flag;
}

bool processIsEnding() noexcept {
    return *runtimeEnding.load(std::memory_order_acquire) != 0 || (shutdownInProgress && shutdownInProgress());
}

void refuseWhileProcessIsEnding() {
    if (processIsEnding()) {
        throw nativeFailure(L"the process is ending, and the runtime cannot be called any more",
                            HOST_E_CLRNOTAVAILABLE);
    }
}

}  // namespace OrvelLoginClientCLR
