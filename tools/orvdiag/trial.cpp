#include "tools/orvdiag/trial.h"

#include <windows.h>

#include <cstdint>
#include <cwchar>
#include <memory>
#include <string_view>
#include <vector>

#include "login/boundary/Handshake.h"
#include "login/hosting/ClrRuntime.h"
#include "login/loginRuntimeException.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

using orvsecutils::filehandle;
using orvsecutils::kernelhandle;

namespace {

constexpr DWORD sharedunits = 32768;
constexpr DWORD patiencemilliseconds = 60000;
constexpr wchar_t loadtask[] = L"load";
constexpr wchar_t assembliestask[] = L"assemblies";

// Exit statuses of the trial process; any other means that it ended before it was done. Not 0 and 1, because the
// library may end the process itself.
constexpr UINT succeeded = 0x20000000;  // the bit that the system leaves to applications
constexpr UINT failed = 0x20000001;

using view = std::unique_ptr<wchar_t, orvsecutils::releasing<UnmapViewOfFile>>;

view map(HANDLE memory) {
    return view(static_cast<wchar_t*>(MapViewOfFile(memory, FILE_MAP_ALL_ACCESS, 0, 0, 0)));
}

std::wstring ownpath() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::wstring systemfolder() {
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    return folder;
}

// The arguments are passed in one command line without escaping, so none may contain a quote; paths and names never do.
trial runinanotherprocess(const std::vector<std::wstring>& arguments) {
    SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
    // The other process returns its text in shared memory: a pipe could fill up, and the runtime may write to standard
    // output and error.
    const kernelhandle memory(
        CreateFileMappingW(INVALID_HANDLE_VALUE, &inherit, PAGE_READWRITE, 0, sharedunits * sizeof(wchar_t), nullptr));
    const view text = map(memory.get());
    const filehandle nowhere(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                         &inherit, OPEN_EXISTING, 0, nullptr));
    if (!text || !nowhere) {
        return {false, systemmessage(GetLastError())};
    }
    const std::wstring program = ownpath();
    std::wstring commandline = L"\"" + program + L"\" " + trialargument + L" " +
                               std::to_wstring(reinterpret_cast<std::uintptr_t>(memory.get()));
    for (const std::wstring& argument : arguments) {
        commandline += L" \"" + argument + L"\"";
    }
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = start.hStdOutput = start.hStdError = nowhere.get();
    PROCESS_INFORMATION info = {};
    // In the system's folder, because Windows also searches the current folder for DLLs.
    if (!CreateProcessW(program.c_str(), commandline.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                        systemfolder().c_str(), &start, &info)) {
        return {false, "the process to try it in cannot be started: " + systemmessage(GetLastError())};
    }
    const kernelhandle process(info.hProcess);
    const kernelhandle thread(info.hThread);
    if (WaitForSingleObject(process.get(), patiencemilliseconds) != WAIT_OBJECT_0) {
        TerminateProcess(process.get(), failed);
        return {false, "does not finish within a minute"};
    }
    DWORD status = 0;
    GetExitCodeProcess(process.get(), &status);
    if (status != succeeded && status != failed) {
        wchar_t code[16];
        std::swprintf(code, std::size(code), L"0x%08lX", status);
        return {false, "ends the process (status " + toutf8lossy(std::wstring_view(code)) + ")"};
    }
    return {status == succeeded, toutf8lossy(std::wstring_view(text.get()))};
}

// The imports of the DLL at `path` that cannot be loaded, with the reasons.
std::wstring missingimports(const std::wstring& path) {
    const auto base = reinterpret_cast<const BYTE*>(LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES));
    if (!base) {
        return std::wstring();
    }
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos.e_lfanew);
    const DWORD imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    std::wstring text;
    const std::wstring folder = path.substr(0, path.find_last_of(L'\\') + 1);
    for (auto row = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports); imports && row->Name; ++row) {
        const std::string_view name = reinterpret_cast<const char*>(base + row->Name);
        const std::wstring file(name.begin(), name.end());
        // Searches as for a program in the library's folder; a plain LoadLibrary would start in this program's folder.
        if (!GetModuleHandleW(file.c_str()) &&
            !LoadLibraryExW((folder + file).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) &&
            !LoadLibraryExW(file.c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)) {
            text += L"; it needs " + file + L": " + orvsecutils::toutf16(systemmessage(GetLastError()));
        }
    }
    return text;
}

// Does not throw: see the top of trial.h.
bool load(const std::wstring& path, const std::wstring& exported, std::wstring& text) {
    const HMODULE library = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!library) {
        const DWORD reason = GetLastError();
        text = orvsecutils::toutf16(systemmessage(reason)) + missingimports(path);
        return false;
    }
    if (!GetProcAddress(library, std::string(exported.begin(), exported.end()).c_str())) {
        text = L"it is not the login library: it does not export " + exported;
        return false;
    }
    return true;
}

}  // namespace

trial tryloading(const std::wstring& path, const char* exported) {
    const std::string_view name = exported;
    return runinanotherprocess({loadtask, path, std::wstring(name.begin(), name.end())});
}

trial tryassemblies(const std::wstring& path, const std::wstring& library) {
    return runinanotherprocess({assembliestask, path, library});
}

int runtrial(int count, wchar_t** arguments) {
    const view shared = count < 6 ? nullptr : map(reinterpret_cast<HANDLE>(std::wcstoul(arguments[2], nullptr, 10)));
    if (!shared) {
        return 2;
    }
    // A broken library must not put a message box on the customer's screen.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    const std::wstring task = arguments[3];
    std::wstring text;
    bool good = true;
    if (task == loadtask) {
        good = load(arguments[4], arguments[5], text);
    } else {
        try {
            OrvelLoginClientCLR::enterManagedPart(arguments[5], arguments[4]);
            OrvelLoginClientCLR::executeInDefaultAppDomain(
                arguments[4], L"OrvelLoginClientCLR.Inspection", L"Inspect",
                std::to_wstring(reinterpret_cast<std::uintptr_t>(shared.get())) + L"," + std::to_wstring(sharedunits));
        } catch (const loginRuntimeException& failure) {
            good = false;
            text = orvsecutils::toutf16(failure.what());
        }
    }
    if (!text.empty()) {
        text.copy(shared.get(), sharedunits - 1);
    }
    // Ends the process without unloading the library, which could hang.
    TerminateProcess(GetCurrentProcess(), good ? succeeded : failed);
    return 0;
}

}  // namespace orvdiag
