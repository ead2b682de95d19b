#include "tools/orvdiag/trial.h"

#include <windows.h>

#include <cstdint>
#include <cwchar>
#include <memory>
#include <string_view>
#include <vector>

#include "login/boundary/Handshake.h"
#include "login/hosting/ClrRuntime.h"
#include "login/hosting/LibraryFile.h"
#include "login/loginRuntimeException.h"
#include "orvsecutils/platform/platform.h"
#include "orvsecutils/platform/unicode.h"
#include "orvsecutils/platform/windows/handles.h"
#include "tools/orvdiag/childprocess.h"
#include "tools/orvdiag/text.h"

namespace orvdiag {

using orvsecutils::kernelhandle;

namespace {

constexpr DWORD sharedunits = 32768;
// The first start of the runtime on a slow disk, with a virus scanner, takes many seconds.
constexpr DWORD loadseconds = 60;
// A WMI service that has to start first answers within a few seconds.
constexpr DWORD networkseconds = 20;
constexpr wchar_t loadtask[] = L"load";
constexpr wchar_t assembliestask[] = L"assemblies";
constexpr wchar_t networktask[] = L"network";

// Exit statuses of the trial process; any other means that it ended before it was done. Not 0 and 1, because the
// library may end the process itself.
constexpr UINT succeeded = 0x20000000;  // the bit that the system leaves to applications
constexpr UINT failed = 0x20000001;

using view = std::unique_ptr<wchar_t, orvsecutils::releasing<UnmapViewOfFile>>;

view map(HANDLE memory) {
    return view(static_cast<wchar_t*>(MapViewOfFile(memory, FILE_MAP_ALL_ACCESS, 0, 0, 0)));
}

std::wstring systemfolder() {
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    return folder;
}

trial runinanotherprocess(std::vector<std::wstring> arguments, DWORD limitseconds) {
    // The other process returns its text in shared memory: a pipe could fill up, and the runtime may write to standard
    // output and error.
    const kernelhandle memory(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sharedunits * sizeof(wchar_t), nullptr));
    const view text = map(memory.get());
    if (!text) {
        return {false, false, systemmessage(GetLastError())};
    }
    arguments.insert(arguments.begin(),
                     {trialargument, std::to_wstring(reinterpret_cast<std::uintptr_t>(memory.get()))});
    const childprocess child = runchild(arguments, nullptr, memory.get(), limitseconds);
    if (!child.ended) {
        return {false, false, child.reason};
    }
    if (child.status != succeeded && child.status != failed) {
        wchar_t code[16];
        std::swprintf(code, std::size(code), L"0x%08lX", child.status);
        return {false, false, "terminated the trial process (status " + toutf8lossy(std::wstring_view(code)) + ")"};
    }
    return {child.status == succeeded, true, toutf8lossy(std::wstring_view(text.get()))};
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
        HMODULE module = GetModuleHandleW(file.c_str());
        module = module ? module : LoadLibraryExW((folder + file).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        module = module ? module : LoadLibraryExW((systemfolder() + L"\\" + file).c_str(), nullptr, 0);
        if (!module) {
            text += L"; it needs " + file + L": " + orvsecutils::toutf16(systemmessage(GetLastError()));
            continue;
        }
        for (auto entry = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + row->OriginalFirstThunk);
             entry->u1.AddressOfData != 0; ++entry) {
            const auto function = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + entry->u1.AddressOfData);
            if (!IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal) && !GetProcAddress(module, function->Name)) {
                const std::string_view symbol = function->Name;
                text += L"; " + file + L" lacks " + std::wstring(symbol.begin(), symbol.end());
            }
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
    return runinanotherprocess({loadtask, path, std::wstring(name.begin(), name.end())}, loadseconds);
}

trial tryassemblies(const std::wstring& path, const std::wstring& library) {
    return runinanotherprocess({assembliestask, path, library}, loadseconds);
}

trial trynetworkaddress() {
    return runinanotherprocess({networktask, L"", L""}, networkseconds);
}

int runtrial(int count, wchar_t** arguments) {
    const view shared =
        count < 6
            ? nullptr
            : map(reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(std::wcstoull(arguments[2], nullptr, 10))));
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
    } else if (task == networktask) {
        text = orvsecutils::toutf16(orvsecutils::currentplatform().macaddress());
    } else {
        try {
            OrvelLoginClientCLR::enterManagedPart(arguments[5], arguments[4]);
            OrvelLoginClientCLR::executeInDefaultAppDomain(
                OrvelLoginClientCLR::withoutLongPathPrefix(arguments[4]), L"OrvelLoginClientCLR.Inspection", L"Inspect",
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
